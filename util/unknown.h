// Reference counting and QueryInterface shared by the class factory, the UI plug-in object and
// the PrintTicket provider. The object answers to IUnknown and to the one interface identifier
// that its concrete class hands to the constructor.
#pragma once

#include <windows.h>
#include <unknwn.h>

template <typename I>
class CUnknown : public I {
public:
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
        if (ppv == nullptr) return E_POINTER;
        if (::IsEqualIID(riid, IID_IUnknown) || ::IsEqualIID(riid, m_iid)) {
            *ppv = static_cast<I*>(this);
            this->AddRef();
            return S_OK;
        }
        *ppv = nullptr;
        return E_NOINTERFACE;
    }

    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(::InterlockedIncrement(&m_refCount)); }

    STDMETHODIMP_(ULONG) Release() override {
        const LONG remaining = ::InterlockedDecrement(&m_refCount);
        if (remaining == 0) delete this;
        return static_cast<ULONG>(remaining);
    }

    // Declared after the interface's methods, so it takes the vtable slot that follows them.
    virtual ~CUnknown() = default;

protected:
    explicit CUnknown(REFIID iid) noexcept : m_iid(iid) {}

private:
    volatile LONG m_refCount = 1;  // the creator owns the first reference
    IID m_iid;
};
