// Reference counting for the simulator's objects, which the plug-in releases through IUnknown.
#pragma once

#include "devicesim/device_profile.h"

#include <unknwn.h>

namespace devicesim {

template <typename Interface>
class CountedObject : public Interface {
public:
    CountedObject() noexcept { CountObjectCreated(); }
    virtual ~CountedObject() { CountObjectDestroyed(); }
    CountedObject(const CountedObject&) = delete;
    CountedObject& operator=(const CountedObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (!IsEqualIID(iid, IID_IUnknown)) return E_NOINTERFACE;
        *object = static_cast<IUnknown*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(::InterlockedIncrement(&m_references)); }
    ULONG STDMETHODCALLTYPE Release() override {
        const LONG left = ::InterlockedDecrement(&m_references);
        if (left == 0) delete this;
        return static_cast<ULONG>(left);
    }

private:
    volatile LONG m_references = 1;
};

}  // namespace devicesim
