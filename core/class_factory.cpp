#include "core/class_factory.h"

#include "core/class_ids.h"
#include "core/module_state.h"
#include "core/ui_interface.h"
#include "core/xps_converter.h"
#include "printschema/ticket_provider.h"
#include "util/result.h"

#include <new>

namespace {

// Creates one object with its creator's reference. A failed allocation gives E_OUTOFMEMORY and
// an exception from the constructor gives the HRESULT it carries.
template <typename T>
HRESULT CreateObject(T** created) noexcept {
    *created = nullptr;
    try {
        *created = new (std::nothrow) T();
    } catch (...) {
        const HRESULT hr = zx::CurrentExceptionToHResult();
        return FAILED(hr) ? hr : E_UNEXPECTED;
    }
    return *created != nullptr ? S_OK : E_OUTOFMEMORY;
}

// Asks a new object for the caller's interface and drops the creator's reference, so that a
// rejected object is destroyed at once.
template <typename T>
HRESULT QueryAndRelease(T* object, REFIID riid, void** ppv) noexcept {
    const HRESULT hr = object->QueryInterface(riid, ppv);
    object->Release();
    return hr;
}

}  // namespace

STDMETHODIMP VUIClassFactory::CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppv) {
    if (ppv == nullptr) return E_POINTER;
    *ppv = nullptr;
    if (pUnkOuter != nullptr) return CLASS_E_NOAGGREGATION;

    VUIInterfaceImpl* ui = nullptr;
    HRESULT hr = CreateObject(&ui);
    if (FAILED(hr)) return hr;
    hr = QueryAndRelease(ui, riid, ppv);
    if (SUCCEEDED(hr)) return hr;

    // A provider that cannot be built only moves the request on to the converter object.
    VPrintTicketProvider* provider = nullptr;
    if (SUCCEEDED(CreateObject(&provider))) {
        hr = QueryAndRelease(provider, riid, ppv);
        if (SUCCEEDED(hr)) return hr;
    }

    IOEMUIMXDC* converter = nullptr;
    hr = CreateObject(&converter);
    if (FAILED(hr)) return hr;
    return QueryAndRelease(converter, riid, ppv);
}

STDMETHODIMP VUIClassFactory::LockServer(BOOL fLock) {
    if (fLock) {
        zx::LockModule();
    } else {
        zx::UnlockModule();
    }
    return S_OK;
}

namespace zx {

HRESULT GetPluginClassObject(REFCLSID rclsid, REFIID riid, void** ppv) noexcept {
    if (ppv == nullptr) return E_POINTER;
    *ppv = nullptr;
    if (!::IsEqualCLSID(rclsid, CLSID_OEMUI) && !::IsEqualCLSID(rclsid, CLSID_OEMPTPROVIDER) &&
        !::IsEqualCLSID(rclsid, CLSID_OEMUIMXDC)) {
        return CLASS_E_CLASSNOTAVAILABLE;
    }

    VUIClassFactory* factory = nullptr;
    const HRESULT hr = CreateObject(&factory);
    if (FAILED(hr)) return hr;
    return QueryAndRelease(factory, riid, ppv);
}

HRESULT CanUnloadPluginNow() noexcept { return ModuleLockCount() == 0 ? S_OK : S_FALSE; }

}  // namespace zx
