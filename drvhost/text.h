// Conversions between the UTF-8 of files and consoles and the UTF-16 of the Windows API, and
// text files read whole.
#pragma once

#include <string>
#include <string_view>

namespace drvhost {

// False for text that is not valid UTF-8.
bool Utf8ToWide(std::string_view text, std::wstring& wide);
std::wstring Utf8ToWide(std::string_view text);
std::string WideToUtf8(std::wstring_view text);

// A text file: UTF-16 after its byte-order mark, otherwise UTF-8 (with or without a mark).
// Throws std::runtime_error naming the file and saying why it cannot be read.
std::wstring ReadTextFile(const std::wstring& path);

}  // namespace drvhost
