// A UI plug-in object of the test bed's own that leaves everything to the core driver: every
// method answers E_NOTIMPL unless a derived class gives it a body. The base of the stand-in
// plug-ins that the tests and benchmarks put in place of the real one.
#pragma once

#include "ddk/prcomoem.h"

namespace drvhost {

class PluginStub : public IPrintOemUI {
public:
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
        if (!IsEqualIID(riid, IID_IUnknown) && !IsEqualIID(riid, IID_IPrintOemUI)) {
            *ppv = nullptr;
            return E_NOINTERFACE;
        }
        *ppv = this;
        AddRef();
        return S_OK;
    }
    // Lives on the caller's stack: counted, never deleted.
    STDMETHODIMP_(ULONG) AddRef() override { return ++refCount; }
    STDMETHODIMP_(ULONG) Release() override { return --refCount; }

    STDMETHODIMP GetInfo(DWORD, PVOID, DWORD, PDWORD) override { return E_NOTIMPL; }
    STDMETHODIMP DevMode(DWORD, POEMDMPARAM) override { return E_NOTIMPL; }
    STDMETHODIMP PublishDriverInterface(IUnknown*) override { return E_NOTIMPL; }
    STDMETHODIMP CommonUIProp(DWORD, POEMCUIPPARAM) override { return E_NOTIMPL; }
    STDMETHODIMP DocumentPropertySheets(PPROPSHEETUI_INFO, LPARAM) override { return E_NOTIMPL; }
    STDMETHODIMP DevicePropertySheets(PPROPSHEETUI_INFO, LPARAM) override { return E_NOTIMPL; }
    STDMETHODIMP DevQueryPrintEx(POEMUIOBJ, PDEVQUERYPRINT_INFO, PDEVMODEW, PVOID) override { return E_NOTIMPL; }
    STDMETHODIMP DeviceCapabilities(POEMUIOBJ, HANDLE, PWSTR, WORD, PVOID, PDEVMODEW, PVOID, DWORD, DWORD*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP UpgradePrinter(DWORD, PBYTE) override { return E_NOTIMPL; }
    STDMETHODIMP PrinterEvent(PWSTR, INT, DWORD, LPARAM) override { return E_NOTIMPL; }
    STDMETHODIMP DriverEvent(DWORD, DWORD, LPBYTE, LPARAM) override { return E_NOTIMPL; }
    STDMETHODIMP QueryColorProfile(HANDLE, POEMUIOBJ, PDEVMODEW, PVOID, ULONG, VOID*, ULONG*, FLONG*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP FontInstallerDlgProc(HWND, UINT, WPARAM, LPARAM) override { return E_NOTIMPL; }
    STDMETHODIMP UpdateExternalFonts(HANDLE, HANDLE, PWSTR) override { return E_NOTIMPL; }

    ULONG refCount = 1;
};

}  // namespace drvhost
