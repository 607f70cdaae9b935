// A driver directory of a test's own, holding copies of the device simulator's libraries, the
// sample data map and a device profile, so that a device-model client can load the helper
// libraries from it and ask a simulated device.
#pragma once

#include <windows.h>

#include <string>

namespace zxtest {

class DeviceBed {
public:
    DeviceBed();
    ~DeviceBed();
    DeviceBed(const DeviceBed&) = delete;
    DeviceBed& operator=(const DeviceBed&) = delete;

    // The directory, with its trailing backslash, and a driver path inside it.
    const std::wstring& Directory() const { return m_directory; }
    std::wstring DriverPath() const { return m_directory + L"zxcoresim.dll"; }

    void WriteProfile(const std::string& text);
    void UseSampleProfile(const std::wstring& name);  // from the build's devices folder
    void RemoveProfile();
    void WriteDataMap(const std::string& text);
    // Puts the simulator's library without entry points in place of the named one.
    void UseLibraryWithoutEntryPoints(const wchar_t* fileName);

    // Keeps the simulator's libraries loaded for the bed's life, so that their count of live
    // objects outlasts the clients that load and free them.
    void PinLibraries();
    long LiveSimulatorObjects() const;

private:
    void Copy(const std::wstring& from, const wchar_t* fileName);
    void Write(const wchar_t* fileName, const std::string& text);

    std::wstring m_directory;
    HMODULE m_bidiIo = nullptr;
    HMODULE m_deviceModel = nullptr;
};

// The directory of the running test program, with its trailing backslash.
std::wstring TestProgramDirectory();

}  // namespace zxtest
