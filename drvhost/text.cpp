#include "drvhost/text.h"

#include <windows.h>

namespace drvhost {

bool Utf8ToWide(std::string_view text, std::wstring& wide) {
    wide.clear();
    if (text.empty()) return true;
    const int length =
        ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), static_cast<int>(text.size()), nullptr, 0);
    if (length <= 0) return false;
    wide.resize(static_cast<size_t>(length));
    ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), static_cast<int>(text.size()), wide.data(),
                          length);
    return true;
}

std::wstring Utf8ToWide(std::string_view text) {
    std::wstring wide;
    Utf8ToWide(text, wide);
    return wide;
}

std::string WideToUtf8(std::wstring_view text) {
    if (text.empty()) return {};
    const int length =
        ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<size_t>(length > 0 ? length : 0), '\0');
    if (length > 0) {
        ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), narrow.data(), length, nullptr,
                              nullptr);
    }
    return narrow;
}

}  // namespace drvhost
