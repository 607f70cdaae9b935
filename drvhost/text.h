// Conversions between the UTF-8 of files and consoles and the UTF-16 of the Windows API.
#pragma once

#include <string>
#include <string_view>

namespace drvhost {

// False for text that is not valid UTF-8.
bool Utf8ToWide(std::string_view text, std::wstring& wide);
std::wstring Utf8ToWide(std::string_view text);
std::string WideToUtf8(std::wstring_view text);

}  // namespace drvhost
