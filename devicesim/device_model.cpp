// zxtaluudm.dll of the device simulator: the data collection of a device address, answering
// items from the installed profile.
#include "devicesim/counted_object.h"
#include "devicesim/device_sim.h"

#include <oleauto.h>

#include <string>

namespace devicesim {
namespace {

class SimDataCollection final : public CountedObject<IDeviceDataCollection> {
public:
    SimDataCollection(ISimDeviceAddress* address, DeviceProfile profile)
        : m_address(address), m_profile(std::move(profile)) {
        static_cast<IUnknown*>(m_address)->AddRef();
    }
    ~SimDataCollection() override { static_cast<IUnknown*>(m_address)->Release(); }

    HRESULT STDMETHODCALLTYPE Refresh() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetItemCount(LONG* count) override {
        if (count == nullptr) return E_POINTER;
        *count = static_cast<LONG>(m_profile.answers.size());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetValue(const wchar_t* item, VARIANT* value) override {
        if (item == nullptr || value == nullptr) return E_POINTER;
        ::VariantInit(value);
        if (std::wstring(item) == kSimAddressItem) return TextAnswer(m_address->Source(), value);
        const auto found = m_profile.answers.find(item);
        if (found == m_profile.answers.end()) return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
        if (found->second.type == VT_I4) {
            value->vt = VT_I4;
            value->lVal = found->second.number;
            return S_OK;
        }
        return TextAnswer(found->second.text, value);
    }

private:
    static HRESULT TextAnswer(const std::wstring& text, VARIANT* value) {
        value->bstrVal = ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
        if (value->bstrVal == nullptr) return E_OUTOFMEMORY;
        value->vt = VT_BSTR;
        return S_OK;
    }

    ISimDeviceAddress* m_address;
    DeviceProfile m_profile;
};

}  // namespace
}  // namespace devicesim

// The data map is the one the plug-in reads too; the simulator only requires that it is there.
extern "C" HRESULT __cdecl CreateDataCollectionFromFile(IDeviceAddress* address, const wchar_t* dataMapPath,
                                                        IDeviceDataCollection** collection, void*) {
    using namespace devicesim;
    if (collection == nullptr) return E_POINTER;
    *collection = nullptr;
    if (address == nullptr) return E_INVALIDARG;
    if (dataMapPath == nullptr || ::GetFileAttributesW(dataMapPath) == INVALID_FILE_ATTRIBUTES) {
        return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    }
    std::optional<DeviceProfile> profile = LoadProfileBesideModule();
    if (!profile || profile->noCollection) return E_FAIL;
    *collection = new SimDataCollection(static_cast<ISimDeviceAddress*>(address), std::move(*profile));
    return S_OK;
}

extern "C" LONG __cdecl DeviceSimLiveObjects() { return devicesim::LiveObjects(); }
