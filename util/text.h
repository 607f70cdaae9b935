// Conversions between the core driver's 8-bit keywords (the system's ANSI code page) and the wide
// texts of the user interface.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace zx {

inline std::string NarrowText(std::wstring_view text) {
    if (text.empty()) return {};
    const int length = static_cast<int>(text.size());
    const int needed = ::WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<size_t>(needed > 0 ? needed : 0), '\0');
    if (needed > 0) ::WideCharToMultiByte(CP_ACP, 0, text.data(), length, narrow.data(), needed, nullptr, nullptr);
    return narrow;
}

inline std::wstring WideText(std::string_view text) {
    if (text.empty()) return {};
    const int length = static_cast<int>(text.size());
    const int needed = ::MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0);
    std::wstring wide(static_cast<size_t>(needed > 0 ? needed : 0), L'\0');
    if (needed > 0) ::MultiByteToWideChar(CP_ACP, 0, text.data(), length, wide.data(), needed);
    return wide;
}

}  // namespace zx
