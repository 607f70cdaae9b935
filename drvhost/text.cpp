#include "drvhost/text.h"

#include "drvhost/hresult_text.h"
#include "util/scoped.h"

#include <windows.h>

#include <cstring>
#include <stdexcept>

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

namespace drvhost {
namespace {

std::string ReadFileBytes(const std::wstring& path) {
    zx::unique_file file(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                       FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) throw std::runtime_error("cannot read " + WideToUtf8(path) + ": " + Win32ErrorText(::GetLastError()));
    std::string bytes;
    char buffer[4096];
    DWORD read = 0;
    while (::ReadFile(file.get(), buffer, sizeof(buffer), &read, nullptr) && read > 0) bytes.append(buffer, read);
    return bytes;
}

}  // namespace

std::wstring ReadTextFile(const std::wstring& path) {
    const std::string bytes = ReadFileBytes(path);
    if (bytes.rfind("\xFF\xFE", 0) == 0) {
        std::wstring text((bytes.size() - 2) / 2, L'\0');
        std::memcpy(text.data(), bytes.data() + 2, text.size() * sizeof(wchar_t));
        return text;
    }
    const std::string_view utf8 = bytes.rfind("\xEF\xBB\xBF", 0) == 0 ? std::string_view(bytes).substr(3) : bytes;
    std::wstring text;
    if (!Utf8ToWide(utf8, text)) throw std::runtime_error(WideToUtf8(path) + ": not UTF-8 text");
    return text;
}

}  // namespace drvhost
