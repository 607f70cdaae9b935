// A driver directory of a test's own with copies of the device simulator's libraries, the
// sample data map and a device profile, from which a device-model client asks a simulated device.
#pragma once

#include <windows.h>

#include <string>

namespace zxtest {

class DeviceBed {
public:
    DeviceBed();  // with the colour device's profile
    ~DeviceBed();

    const std::wstring& Directory() const { return m_directory; }  // with its trailing backslash
    std::wstring DriverPath() const { return m_directory + L"zxcoresim.dll"; }

    void WriteProfile(const std::string& text);
    void UseSampleProfile(const wchar_t* name);  // from the build's devices folder
    void WriteDataMap(const std::string& text);
    // Puts the simulator's library without entry points in place of the named one.
    void UseLibraryWithoutEntryPoints(const wchar_t* fileName);

    // Keeps the libraries loaded, so that their count of live objects outlasts the clients.
    void PinLibraries();
    long LiveSimulatorObjects() const;

private:
    void Write(const wchar_t* fileName, const std::string& text) const;

    std::wstring m_directory;
    HMODULE m_pinned[2] = {};
};

}  // namespace zxtest
