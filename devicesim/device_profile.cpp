#include "devicesim/device_profile.h"

#include "devicesim/device_sim.h"

#include <string_view>
#include <vector>

namespace devicesim {
namespace {

volatile LONG g_liveObjects = 0;

constexpr std::wstring_view kNumberMark = L"(i4)";

struct Directive {
    const wchar_t* name;
    bool DeviceProfile::*flag;
};
constexpr Directive kDirectives[] = {
    {L"!no-address", &DeviceProfile::noAddress},
    {L"!no-collection", &DeviceProfile::noCollection},
};

Answer ParseAnswer(std::wstring_view text) {
    Answer answer;
    if (text.substr(0, kNumberMark.size()) == kNumberMark) {
        answer.type = VT_I4;
        answer.number = std::wcstol(std::wstring(text.substr(kNumberMark.size())).c_str(), nullptr, 10);
    } else {
        answer.text = text;
    }
    return answer;
}

void ParseLine(std::wstring_view line, DeviceProfile& profile) {
    if (line.empty() || line.front() == L';') return;
    if (line.front() == L'!') {
        for (const Directive& directive : kDirectives) {
            if (line == directive.name) profile.*directive.flag = true;
        }
        return;
    }
    const size_t equals = line.find(L'=');
    if (equals == std::wstring_view::npos || equals == 0) return;
    profile.answers[std::wstring(line.substr(0, equals))] = ParseAnswer(line.substr(equals + 1));
}

std::wstring ModuleDirectory() {
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCWSTR>(&ModuleDirectory), &module);
    std::vector<wchar_t> path(32768);
    const DWORD length = ::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    const std::wstring file(path.data(), length);
    return file.substr(0, file.find_last_of(L'\\') + 1);
}

std::optional<std::string> ReadFileBytes(const std::wstring& path) {
    const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return std::nullopt;
    std::string bytes;
    char buffer[4096];
    DWORD read = 0;
    while (::ReadFile(file, buffer, sizeof(buffer), &read, nullptr) && read > 0) bytes.append(buffer, read);
    ::CloseHandle(file);
    return bytes;
}

std::wstring FromUtf8(const std::string& bytes) {
    if (bytes.empty()) return {};
    const int length = ::MultiByteToWideChar(CP_UTF8, 0, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0);
    std::wstring text(static_cast<size_t>(length), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, bytes.data(), static_cast<int>(bytes.size()), text.data(), length);
    return text;
}

}  // namespace

DeviceProfile ParseProfile(const std::wstring& text) {
    DeviceProfile profile;
    size_t start = !text.empty() && text.front() == L'\xFEFF' ? 1 : 0;  // a byte-order mark
    while (start <= text.size()) {
        size_t end = text.find(L'\n', start);
        if (end == std::wstring::npos) end = text.size();
        std::wstring_view line(text.data() + start, end - start);
        if (!line.empty() && line.back() == L'\r') line.remove_suffix(1);
        ParseLine(line, profile);
        start = end + 1;
    }
    return profile;
}

std::optional<DeviceProfile> LoadProfileBesideModule() {
    const std::optional<std::string> bytes = ReadFileBytes(ModuleDirectory() + kDeviceProfileFile);
    if (!bytes) return std::nullopt;
    return ParseProfile(FromUtf8(*bytes));
}

void CountObjectCreated() noexcept { ::InterlockedIncrement(&g_liveObjects); }
void CountObjectDestroyed() noexcept { ::InterlockedDecrement(&g_liveObjects); }
LONG LiveObjects() noexcept { return g_liveObjects; }

}  // namespace devicesim
