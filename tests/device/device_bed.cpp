#include "tests/device/device_bed.h"

#include "devicesim/device_sim.h"
#include "drvhost/printer_install.h"

#include <stdexcept>

namespace zxtest {
namespace {

constexpr const wchar_t* kLibraries[] = {kDeviceModelLibrary, kBidiIoLibrary};
constexpr const wchar_t* kFiles[] = {kDeviceModelLibrary, kBidiIoLibrary, L"mortaluDataMap.xml", kDeviceProfileFile};

void CopyInto(const std::wstring& from, const std::wstring& to) {
    if (!::CopyFileW(from.c_str(), to.c_str(), FALSE)) throw std::runtime_error("cannot fill the device bed");
}

}  // namespace

DeviceBed::DeviceBed() {
    static int beds = 0;
    wchar_t temp[MAX_PATH];
    ::GetTempPathW(MAX_PATH, temp);
    m_directory = temp + std::to_wstring(::GetCurrentProcessId()) + L"-bed" + std::to_wstring(++beds) + L"\\";
    ::CreateDirectoryW(m_directory.c_str(), nullptr);
    for (const wchar_t* file : {kDeviceModelLibrary, kBidiIoLibrary, L"mortaluDataMap.xml"}) {
        CopyInto(drvhost::ProgramDirectory() + file, m_directory + file);
    }
    UseSampleProfile(L"colour-duplex.profile");
}

DeviceBed::~DeviceBed() {
    for (HMODULE module : m_pinned) {
        if (module) ::FreeLibrary(module);
    }
    for (const wchar_t* file : kFiles) ::DeleteFileW((m_directory + file).c_str());
    ::RemoveDirectoryW(m_directory.c_str());
}

void DeviceBed::Write(const wchar_t* fileName, const std::string& text) const {
    const HANDLE file =
        ::CreateFileW((m_directory + fileName).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    if (file == INVALID_HANDLE_VALUE ||
        !::WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr)) {
        throw std::runtime_error("cannot write into the device bed");
    }
    ::CloseHandle(file);
}

void DeviceBed::WriteProfile(const std::string& text) { Write(kDeviceProfileFile, text); }

void DeviceBed::UseSampleProfile(const wchar_t* name) {
    CopyInto(drvhost::ProgramDirectory() + L"devices\\" + name, m_directory + kDeviceProfileFile);
}

void DeviceBed::WriteDataMap(const std::string& text) { Write(L"mortaluDataMap.xml", text); }

void DeviceBed::UseLibraryWithoutEntryPoints(const wchar_t* fileName) {
    CopyInto(drvhost::ProgramDirectory() + L"devicesim-bare\\" + fileName, m_directory + fileName);
}

void DeviceBed::PinLibraries() {
    for (size_t i = 0; i < 2; ++i) m_pinned[i] = ::LoadLibraryW((m_directory + kLibraries[i]).c_str());
}

long DeviceBed::LiveSimulatorObjects() const {
    long live = 0;
    for (HMODULE module : m_pinned) {
        const auto count =
            reinterpret_cast<SimLiveObjectsFn>(reinterpret_cast<void*>(::GetProcAddress(module, kSimLiveObjects)));
        if (count) live += count();
    }
    return live;
}

}  // namespace zxtest
