#include "resources/resource_libraries.h"

#include "util/platform_seam.h"
#include "util/spooler_platform.h"

#include <cwchar>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zx {
namespace {

bool ReadOsVersion(RTL_OSVERSIONINFOW* version) noexcept {
    // RtlGetVersion tells the truth whatever the calling program's manifest declares.
    using RtlGetVersionFn = LONG(WINAPI*)(RTL_OSVERSIONINFOW*);
    const HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
    const FARPROC address = ntdll ? ::GetProcAddress(ntdll, "RtlGetVersion") : nullptr;
    if (address == nullptr) return false;
    const auto getVersion = reinterpret_cast<RtlGetVersionFn>(reinterpret_cast<void (*)()>(address));
    version->dwOSVersionInfoSize = sizeof(*version);
    return getVersion(version) == 0;
}

PlatformSeam<ResourcePlatform> g_seam({&::GetUserDefaultUILanguage, &::LoadLibraryExW, &::FreeLibrary, &::MessageBoxW,
                                       &ReadOsVersion});

HMODULE g_uiStrings = nullptr;
HMODULE g_fallbackStrings = nullptr;

// The libraries hold resources only: mapped as images for their resources, never run.
constexpr DWORD kResourceOnly = LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE;

HMODULE LoadFromDriverDirectory(PCWSTR printerName, PCWSTR baseName, HANDLE printer) {
    if (baseName == nullptr) return nullptr;
    unique_spooler_handle opened;
    if (printer == nullptr) {
        opened = OpenPrinterThroughPlatform(printerName, nullptr);
        if (!opened) return nullptr;
        printer = opened.get();
    }
    const std::wstring directory = PrinterDriverDirectory(printer);
    if (directory.empty()) return nullptr;
    const std::wstring path = directory + baseName + L".dll";
    return g_seam.Current().loadLibrary(path.c_str(), nullptr, kResourceOnly);
}

}  // namespace

const ResourcePlatform& CurrentResourcePlatform() noexcept { return g_seam.Current(); }

const ResourcePlatform& RealResourcePlatform() noexcept { return g_seam.Real(); }

ResourcePlatform ReplaceResourcePlatform(const ResourcePlatform& platform) noexcept { return g_seam.Replace(platform); }

HMODULE LoadResourceLibrary(PCWSTR printerName, PCWSTR baseName, HANDLE printer) noexcept {
    try {
        return LoadFromDriverDirectory(printerName, baseName, printer);
    } catch (...) {
        return nullptr;
    }
}

HRESULT LoadResourceLibraries(PCWSTR printerName) noexcept {
    if (g_uiStrings != nullptr && g_fallbackStrings != nullptr) return S_OK;
    FreeResourceLibraries();
    g_uiStrings = LoadResourceLibrary(printerName, kUiStringLibrary);
    g_fallbackStrings = LoadResourceLibrary(printerName, kFallbackStringLibrary);
    if (g_uiStrings != nullptr && g_fallbackStrings != nullptr) return S_OK;
    FreeResourceLibraries();
    return E_FAIL;
}

void FreeResourceLibraries() noexcept {
    if (g_uiStrings != nullptr) g_seam.Current().freeLibrary(g_uiStrings);
    if (g_fallbackStrings != nullptr) g_seam.Current().freeLibrary(g_fallbackStrings);
    g_uiStrings = nullptr;
    g_fallbackStrings = nullptr;
}

HMODULE UiStringLibrary() noexcept { return g_uiStrings; }

HMODULE FallbackStringLibrary() noexcept { return g_fallbackStrings; }

int LoadUiString(HMODULE library, UINT id, UiString& text) noexcept {
    text[0] = L'\0';
    if (library == nullptr) return 0;
    const int length = ::LoadStringW(library, id, text, kUiStringLength);
    if (length > 0) return length;
    text[0] = L'\0';
    return 0;
}

int LoadUiString(UINT id, UiString& text) noexcept { return LoadUiString(g_uiStrings, id, text); }

BOOL SetUiText(HWND window, UINT id) noexcept {
    UiString text;
    LoadUiString(id, text);
    return ::SetWindowTextW(window, text);
}

bool UserUiLanguageIsRightToLeft() noexcept {
    const WORD language = PRIMARYLANGID(g_seam.Current().userDefaultUILanguage());
    return language == LANG_ARABIC || language == LANG_HEBREW;
}

int ShowUiMessage(HWND owner, UINT textId, UINT captionId) noexcept {
    struct MessageTexts {
        UiString text;
        UiString caption;
    };
    const std::unique_ptr<MessageTexts> texts(new (std::nothrow) MessageTexts);
    if (!texts) return 0;
    LoadUiString(textId, texts->text);
    LoadUiString(captionId, texts->caption);
    const UINT type = MB_OK | (UserUiLanguageIsRightToLeft() ? MB_RTLREADING : 0);
    return g_seam.Current().messageBox(owner, texts->text, texts->caption, type);
}

DWORD GetSystemMajorVersion() noexcept {
    RTL_OSVERSIONINFOW version{};
    return g_seam.Current().osVersion(&version) ? version.dwMajorVersion : 6;
}

}  // namespace zx
