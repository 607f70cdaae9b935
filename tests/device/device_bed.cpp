#include "tests/device/device_bed.h"

#include "device/device_library.h"
#include "devicesim/device_sim.h"

#include <stdexcept>
#include <string>

namespace zxtest {
namespace {

constexpr const wchar_t* kBedFiles[] = {kDeviceModelLibrary, kBidiIoLibrary, L"mortaluDataMap.xml", kDeviceProfileFile};

long LiveObjectsOf(HMODULE module) {
    const auto count = reinterpret_cast<SimLiveObjectsFn>(
        reinterpret_cast<void*>(::GetProcAddress(module, kSimLiveObjects)));
    return count ? count() : 0;
}

}  // namespace

std::wstring TestProgramDirectory() {
    wchar_t path[MAX_PATH];
    const DWORD length = ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring directory(path, length);
    return directory.substr(0, directory.find_last_of(L'\\') + 1);
}

DeviceBed::DeviceBed() {
    static int beds = 0;
    wchar_t temp[MAX_PATH];
    ::GetTempPathW(MAX_PATH, temp);
    m_directory = std::wstring(temp) + L"zxdevicebed-" + std::to_wstring(::GetCurrentProcessId()) + L"-" +
                  std::to_wstring(++beds) + L"\\";
    if (!::CreateDirectoryW(m_directory.c_str(), nullptr)) throw std::runtime_error("cannot create a device bed");
    const std::wstring bin = TestProgramDirectory();
    Copy(bin, kDeviceModelLibrary);
    Copy(bin, kBidiIoLibrary);
    Copy(bin, L"mortaluDataMap.xml");
    UseSampleProfile(L"colour-duplex.profile");
}

DeviceBed::~DeviceBed() {
    if (m_bidiIo) ::FreeLibrary(m_bidiIo);
    if (m_deviceModel) ::FreeLibrary(m_deviceModel);
    for (const wchar_t* file : kBedFiles) ::DeleteFileW((m_directory + file).c_str());
    ::RemoveDirectoryW(m_directory.c_str());
}

void DeviceBed::Copy(const std::wstring& from, const wchar_t* fileName) {
    if (!::CopyFileW((from + fileName).c_str(), (m_directory + fileName).c_str(), FALSE)) {
        throw std::runtime_error("cannot copy a file into the device bed");
    }
}

void DeviceBed::Write(const wchar_t* fileName, const std::string& text) {
    const HANDLE file = ::CreateFileW((m_directory + fileName).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) throw std::runtime_error("cannot write into the device bed");
    DWORD written = 0;
    ::WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    ::CloseHandle(file);
}

void DeviceBed::WriteProfile(const std::string& text) { Write(kDeviceProfileFile, text); }

void DeviceBed::UseSampleProfile(const std::wstring& name) {
    const std::wstring from = TestProgramDirectory() + L"devices\\" + name;
    if (!::CopyFileW(from.c_str(), (m_directory + kDeviceProfileFile).c_str(), FALSE)) {
        throw std::runtime_error("no such sample profile");
    }
}

void DeviceBed::RemoveProfile() { ::DeleteFileW((m_directory + kDeviceProfileFile).c_str()); }

void DeviceBed::WriteDataMap(const std::string& text) { Write(L"mortaluDataMap.xml", text); }

void DeviceBed::UseLibraryWithoutEntryPoints(const wchar_t* fileName) {
    Copy(TestProgramDirectory() + L"devicesim-bare\\", fileName);
}

void DeviceBed::PinLibraries() {
    if (!m_bidiIo) m_bidiIo = ::LoadLibraryW((m_directory + kBidiIoLibrary).c_str());
    if (!m_deviceModel) m_deviceModel = ::LoadLibraryW((m_directory + kDeviceModelLibrary).c_str());
}

long DeviceBed::LiveSimulatorObjects() const { return LiveObjectsOf(m_bidiIo) + LiveObjectsOf(m_deviceModel); }

}  // namespace zxtest
