// zxbuio.dll of the device simulator: device addresses for a port name or an IP address, given
// while a profile is installed that does not refuse them.
#include "devicesim/counted_object.h"
#include "devicesim/device_sim.h"

#include <string>

namespace devicesim {
namespace {

class SimAddress final : public CountedObject<ISimDeviceAddress> {
public:
    explicit SimAddress(std::wstring source) : m_source(std::move(source)) {}
    const wchar_t* Source() const override { return m_source.c_str(); }

private:
    std::wstring m_source;
};

IDeviceAddress* CreateAddress(const wchar_t* kind, const wchar_t* text) {
    if (text == nullptr || text[0] == L'\0') return nullptr;
    const std::optional<DeviceProfile> profile = LoadProfileBesideModule();
    if (!profile || profile->noAddress) return nullptr;
    return new SimAddress(std::wstring(kind) + text);
}

}  // namespace
}  // namespace devicesim

extern "C" IDeviceAddress* __cdecl CreateAddressFromPortName(const wchar_t* portName) {
    return devicesim::CreateAddress(L"port:", portName);
}

extern "C" IDeviceAddress* __cdecl CreateAddressFromIPAddress(const wchar_t* ipAddress) {
    return devicesim::CreateAddress(L"ip:", ipAddress);
}

extern "C" LONG __cdecl DeviceSimLiveObjects() { return devicesim::LiveObjects(); }
