// The class factory and the logic behind the module's two exports.
#pragma once

#include "util/unknown.h"

#include <unknwn.h>

// Hands out the plug-in's objects. The choice is made from the interface identifier alone: a
// request is offered to the UI plug-in object, then to the PrintTicket provider, then to the XPS
// converter object, and each rejected object is destroyed before the next is tried.
class VUIClassFactory : public CUnknown<IClassFactory> {
public:
    VUIClassFactory() noexcept : CUnknown(IID_IClassFactory) {}

    STDMETHODIMP CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppv) override;
    STDMETHODIMP LockServer(BOOL fLock) override;
};

namespace zx {

// DllGetClassObject: a new factory for any of the three class identifiers.
HRESULT GetPluginClassObject(REFCLSID rclsid, REFIID riid, void** ppv) noexcept;

// DllCanUnloadNow: only LockServer holds the module; live objects do not.
HRESULT CanUnloadPluginNow() noexcept;

}  // namespace zx
