// Finds where and why a text is not well-formed XML. MSXML under Wine refuses such documents
// without a reason or a position, so drvhost looks for the problem itself to tell the user.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace drvhost {

struct XmlProblem {
    int line = 1;    // 1-based
    int column = 1;  // 1-based, in UTF-16 characters
    std::string reason;
};

// The first well-formedness problem of the text, or nullopt when it has none that this check
// knows (namespaces and DTD contents are not checked).
std::optional<XmlProblem> FindXmlProblem(std::wstring_view text);

}  // namespace drvhost
