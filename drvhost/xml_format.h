// An indented rendering of a DOM document for people to read.
#pragma once

#include <msxml2.h>

#include <string>

namespace drvhost {

std::wstring FormatXml(IXMLDOMNode* document);

}  // namespace drvhost
