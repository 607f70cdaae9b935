// The two string libraries installed beside the driver's main file, from which every
// user-interface text is loaded by number: "mortalures18" (the plug-in's texts) and "unires"
// (the fallback for texts that "mortalures18" lacks, numbered 10000 and above). Both are loaded
// together and freed together; their handles are process-wide and, like every user-interface
// state of the plug-in, changed without a lock on the property sheet's thread.
#pragma once

#include <windows.h>

namespace zx {

inline constexpr wchar_t kUiStringLibrary[] = L"mortalures18";
inline constexpr wchar_t kFallbackStringLibrary[] = L"unires";

// A user-interface text: at most 255 characters and the terminator.
inline constexpr int kUiStringLength = 256;
using UiString = wchar_t[kUiStringLength];

// The platform calls behind the string libraries, message boxes and the system version, apart
// from the spooler's (util/spooler_platform.h). Filled with the real API; tests replace the whole
// table to change the user's language or the system version, or to record library loads.
struct ResourcePlatform {
    decltype(&::GetUserDefaultUILanguage) userDefaultUILanguage;
    decltype(&::LoadLibraryExW) loadLibrary;
    decltype(&::FreeLibrary) freeLibrary;
    decltype(&::MessageBoxW) messageBox;
    // The operating system's version; false when it cannot be read.
    bool (*osVersion)(RTL_OSVERSIONINFOW* version);
};

// The table in use.
const ResourcePlatform& CurrentResourcePlatform() noexcept;
// The table of the real API.
const ResourcePlatform& RealResourcePlatform() noexcept;
// Puts a table in force and returns the one it replaces.
ResourcePlatform ReplaceResourcePlatform(const ResourcePlatform& platform) noexcept;

// Loads <directory of the printer's driver file>\<baseName>.dll as a resource-only module.
// Without a printer handle the printer is opened by name for the call. Null on any failure.
HMODULE LoadResourceLibrary(PCWSTR printerName, PCWSTR baseName, HANDLE printer = nullptr) noexcept;

// Loads both libraries unless they are loaded already. When either is missing, neither stays
// loaded and the result is E_FAIL.
HRESULT LoadResourceLibraries(PCWSTR printerName) noexcept;

// Frees "mortalures18", then "unires", and forgets both.
void FreeResourceLibraries() noexcept;

HMODULE UiStringLibrary() noexcept;
HMODULE FallbackStringLibrary() noexcept;

// Loads text `id` of a library into `text`; returns its length, 0 (and an empty text) when the
// library is not loaded or lacks the text.
int LoadUiString(HMODULE library, UINT id, UiString& text) noexcept;
// The same from "mortalures18".
int LoadUiString(UINT id, UiString& text) noexcept;

// Sets text `id` of "mortalures18" as the window's text (empty when the library lacks it).
BOOL SetUiText(HWND window, UINT id) noexcept;

// True when the primary language of the user's default user-interface language is written
// right to left (Arabic or Hebrew).
bool UserUiLanguageIsRightToLeft() noexcept;

// A message box with an OK button whose text and caption are texts of "mortalures18", read
// right to left in Arabic and Hebrew. Returns the message box's result, or 0 when memory for the
// texts cannot be had.
int ShowUiMessage(HWND owner, UINT textId, UINT captionId) noexcept;

// The operating system's major version; 6 when it cannot be read.
DWORD GetSystemMajorVersion() noexcept;

}  // namespace zx
