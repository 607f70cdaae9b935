// A device profile of the simulator, read from the profile file beside the loaded library.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <map>
#include <optional>
#include <string>

namespace devicesim {

struct Answer {
    VARTYPE type = VT_BSTR;  // VT_BSTR or VT_I4
    std::wstring text;
    LONG number = 0;
};

struct DeviceProfile {
    std::map<std::wstring, Answer> answers;  // by exact item string
    bool noAddress = false;
    bool noCollection = false;
};

// Parses profile text; unknown directives are ignored.
DeviceProfile ParseProfile(const std::wstring& text);

// The profile in the directory of the library that contains this code; none when it is missing.
std::optional<DeviceProfile> LoadProfileBesideModule();

// Counts the objects of the library alive, for DeviceSimLiveObjects.
void CountObjectCreated() noexcept;
void CountObjectDestroyed() noexcept;
LONG LiveObjects() noexcept;

}  // namespace devicesim
