// COM interfaces between the printer driver's core configuration module and its plug-ins,
// declared here because mingw-w64 does not ship them. Method order is the vtable order of the
// public Windows declarations; tests call the plug-in's objects through raw vtable slots to keep
// it honest. Both the plug-in (implementing side) and the driver host simulator use them.
#pragma once

#include "ddk/printoem.h"

#include <msxml2.h>
#include <objidl.h>
#include <ocidl.h>
#include <unknwn.h>

// Interface identifiers as the documentation publishes them.
inline constexpr IID IID_IPrintOemCommon = {0x7f42285e, 0x91d5, 0x11d1, {0x88, 0x20, 0x00, 0xc0, 0x4f, 0xb9, 0x61, 0xec}};
inline constexpr IID IID_IPrintOemUI = {0xc6a7a9d0, 0x774c, 0x11d1, {0x94, 0x7f, 0x00, 0xa0, 0xc9, 0x06, 0x40, 0xb8}};
inline constexpr IID IID_IPrintOemDriverUI = {0x92b05d50, 0x78bc, 0x11d1, {0x94, 0x80, 0x00, 0xa0, 0xc9, 0x06, 0x40, 0xb8}};
inline constexpr IID IID_IPrintCoreHelper = {0xa89ec53e, 0x3905, 0x49c6, {0x9c, 0x1a, 0xc0, 0xa8, 0x81, 0x17, 0xfd, 0xb6}};
inline constexpr IID IID_IPrintCoreHelperUni = {0x7e8e51d6, 0xe5ee, 0x4426, {0x81, 0x7b, 0x95, 0x8b, 0x94, 0x44, 0xeb, 0x79}};
inline constexpr IID IID_IPrintOemPrintTicketProvider = {0xbcf5e011, 0xf60a, 0x49ff, {0xab, 0x2f, 0xe0, 0x6f, 0x4a, 0xbd, 0xf2, 0x81}};
inline constexpr IID IID_IPrintOemUIMXDC = {0x7349d725, 0xe2c1, 0x4dca, {0xaf, 0xb5, 0xc1, 0x3e, 0x91, 0xbc, 0x93, 0x06}};

// GetInfo and DevMode, shared by the UI and rendering plug-in interfaces.
struct IPrintOemCommon : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetInfo(DWORD dwMode, PVOID pBuffer, DWORD cbSize, PDWORD pcbNeeded) = 0;
    virtual HRESULT STDMETHODCALLTYPE DevMode(DWORD dwMode, POEMDMPARAM pOemDMParam) = 0;
};

// The UI plug-in, implemented by the plug-in and driven by the core driver.
struct IPrintOemUI : public IPrintOemCommon {
    virtual HRESULT STDMETHODCALLTYPE PublishDriverInterface(IUnknown* pIUnknown) = 0;
    virtual HRESULT STDMETHODCALLTYPE CommonUIProp(DWORD dwMode, POEMCUIPPARAM pOemCUIPParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE DocumentPropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE DevicePropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE DevQueryPrintEx(POEMUIOBJ poemuiobj, PDEVQUERYPRINT_INFO pDQPInfo,
                                                      PDEVMODEW pPublicDM, PVOID pOEMDM) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeviceCapabilities(POEMUIOBJ poemuiobj, HANDLE hPrinter, PWSTR pDeviceName,
                                                         WORD wCapability, PVOID pOutput, PDEVMODEW pPublicDM,
                                                         PVOID pOEMDM, DWORD dwOld, DWORD* dwResult) = 0;
    virtual HRESULT STDMETHODCALLTYPE UpgradePrinter(DWORD dwLevel, PBYTE pDriverUpgradeInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE PrinterEvent(PWSTR pPrinterName, INT iDriverEvent, DWORD dwFlags,
                                                   LPARAM lParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE DriverEvent(DWORD dwDriverEvent, DWORD dwLevel, LPBYTE pDriverInfo,
                                                  LPARAM lParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryColorProfile(HANDLE hPrinter, POEMUIOBJ poemuiobj, PDEVMODEW pPublicDM,
                                                        PVOID pOEMDM, ULONG ulQueryMode, VOID* pvProfileData,
                                                        ULONG* pcbProfileData, FLONG* pflProfileData) = 0;
    virtual HRESULT STDMETHODCALLTYPE FontInstallerDlgProc(HWND hWnd, UINT usMsg, WPARAM wParam, LPARAM lParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE UpdateExternalFonts(HANDLE hPrinter, HANDLE hHeap, PWSTR pwstrCartridges) = 0;
};

// Offered by the core driver to UI plug-ins; DrvUpdateUISetting writes an item back.
struct IPrintOemDriverUI : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE DrvGetDriverSetting(PVOID pci, PCSTR Feature, PVOID pOutput, DWORD cbSize,
                                                          PDWORD pcbNeeded, PDWORD pdwOptionsReturned) = 0;
    virtual HRESULT STDMETHODCALLTYPE DrvUpgradeRegistrySetting(HANDLE hPrinter, PCSTR pFeature, PCSTR pOption) = 0;
    virtual HRESULT STDMETHODCALLTYPE DrvUpdateUISetting(PVOID pci, PVOID pOptItem, DWORD dwPreviousSelection,
                                                         DWORD dwMode) = 0;
};

// The core driver's feature model. Option keywords and lists it hands out are owned by it.
struct IPrintCoreHelper : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetOption(const DEVMODEW* pDevmode, DWORD cbSize, PCSTR pszFeatureRequested,
                                                PCSTR* ppszOption) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetOptions(DEVMODEW* pDevmode, DWORD cbSize, BOOL bResolveConflicts,
                                                 const PRINT_FEATURE_OPTION* pFOPairs, DWORD cPairs,
                                                 DWORD* pcPairsWritten, DWORD* pdwResult) = 0;
    virtual HRESULT STDMETHODCALLTYPE EnumConstrainedOptions(const DEVMODEW* pDevmode, DWORD cbSize,
                                                             PCSTR pszFeatureKeyword,
                                                             PCSTR** pConstrainedOptionList,
                                                             DWORD* pdwNumOptions) = 0;
    virtual HRESULT STDMETHODCALLTYPE WhyConstrained(const DEVMODEW* pDevmode, DWORD cbSize, PCSTR pszFeatureKeyword,
                                                     PCSTR pszOptionKeyword,
                                                     const PRINT_FEATURE_OPTION** ppFOConstraints,
                                                     DWORD* pdwNumOptions) = 0;
    virtual HRESULT STDMETHODCALLTYPE EnumFeatures(PCSTR** pFeatureList, DWORD* pdwNumFeatures) = 0;
    virtual HRESULT STDMETHODCALLTYPE EnumOptions(PCSTR pszFeatureKeyword, PCSTR** pOptionList,
                                                  DWORD* pdwNumOptions) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFontSubstitution(PCWSTR pszTrueTypeFontName, PCWSTR* ppszDevFontName) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetFontSubstitution(PCWSTR pszTrueTypeFontName, PCWSTR pszDevFontName) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateInstanceOfMSXMLObject(REFCLSID rclsid, IUnknown* punkOuter,
                                                                  DWORD dwClsContext, REFIID riid, LPVOID* ppv) = 0;
};

// The Unidrv-based core driver's helper.
struct IPrintCoreHelperUni : public IPrintCoreHelper {
    virtual HRESULT STDMETHODCALLTYPE CreateGDLSnapshot(DEVMODEW* pDevmode, DWORD cbSize, DWORD dwFlags,
                                                        IStream** ppSnapshotStream) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateDefaultGDLSnapshot(DWORD dwFlags, IStream** ppSnapshotStream) = 0;
};

// The plug-in's PrintTicket provider, driven by the core driver.
struct IPrintOemPrintTicketProvider : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetSupportedVersions(HANDLE hPrinter, INT* ppVersions[], INT* cVersions) = 0;
    virtual HRESULT STDMETHODCALLTYPE BindPrinter(HANDLE hPrinter, INT version, POEMPTOPTS pOptions,
                                                  INT* cNamespaces, BSTR** ppNamespaces) = 0;
    virtual HRESULT STDMETHODCALLTYPE PublishPrintTicketHelper(IUnknown* pHelper) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryDeviceDefaultNamespace(BSTR* pbstrNamespaceUri) = 0;
    virtual HRESULT STDMETHODCALLTYPE ConvertPrintTicketToDevMode(IXMLDOMDocument2* pPrintTicket, ULONG cbDevmode,
                                                                  PDEVMODEW pDevmode, ULONG cbDrvPrivateSize,
                                                                  PVOID pPrivateDevmode) = 0;
    virtual HRESULT STDMETHODCALLTYPE ConvertDevModeToPrintTicket(ULONG cbDevmode, PDEVMODEW pDevmode,
                                                                  ULONG cbDrvPrivateSize, PVOID pPrivateDevmode,
                                                                  IXMLDOMDocument2* pPrintTicket) = 0;
    virtual HRESULT STDMETHODCALLTYPE CompletePrintCapabilities(IXMLDOMDocument2* pPrintTicket,
                                                                IXMLDOMDocument2* pCapabilities) = 0;
    virtual HRESULT STDMETHODCALLTYPE ExpandIntentOptions(IXMLDOMDocument2* pPrintTicket) = 0;
    virtual HRESULT STDMETHODCALLTYPE ValidatePrintTicket(IXMLDOMDocument2* pBaseTicket) = 0;
};

// Asked by the XPS document converter before it renders a page.
struct IPrintOemUIMXDC : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE AdjustImageableArea(HANDLE hPrinter, ULONG cbDevMode, const PDEVMODEW pDevMode,
                                                          ULONG cbOEMDM, const PVOID pOEMDM,
                                                          PRECTL prclImageableArea) = 0;
    virtual HRESULT STDMETHODCALLTYPE AdjustImageCompression(HANDLE hPrinter, ULONG cbDevMode,
                                                             const PDEVMODEW pDevMode, ULONG cbOEMDM,
                                                             const PVOID pOEMDM, INT* pCompressionMode) = 0;
    virtual HRESULT STDMETHODCALLTYPE AdjustDPI(HANDLE hPrinter, ULONG cbDevMode, const PDEVMODEW pDevMode,
                                                ULONG cbOEMDM, const PVOID pOEMDM, INT* pDPI) = 0;
};

__CRT_UUID_DECL(IPrintOemCommon, 0x7f42285e, 0x91d5, 0x11d1, 0x88, 0x20, 0x00, 0xc0, 0x4f, 0xb9, 0x61, 0xec)
__CRT_UUID_DECL(IPrintOemUI, 0xc6a7a9d0, 0x774c, 0x11d1, 0x94, 0x7f, 0x00, 0xa0, 0xc9, 0x06, 0x40, 0xb8)
__CRT_UUID_DECL(IPrintOemDriverUI, 0x92b05d50, 0x78bc, 0x11d1, 0x94, 0x80, 0x00, 0xa0, 0xc9, 0x06, 0x40, 0xb8)
__CRT_UUID_DECL(IPrintCoreHelper, 0xa89ec53e, 0x3905, 0x49c6, 0x9c, 0x1a, 0xc0, 0xa8, 0x81, 0x17, 0xfd, 0xb6)
__CRT_UUID_DECL(IPrintCoreHelperUni, 0x7e8e51d6, 0xe5ee, 0x4426, 0x81, 0x7b, 0x95, 0x8b, 0x94, 0x44, 0xeb, 0x79)
__CRT_UUID_DECL(IPrintOemPrintTicketProvider, 0xbcf5e011, 0xf60a, 0x49ff, 0xab, 0x2f, 0xe0, 0x6f, 0x4a, 0xbd, 0xf2, 0x81)
__CRT_UUID_DECL(IPrintOemUIMXDC, 0x7349d725, 0xe2c1, 0x4dca, 0xaf, 0xb5, 0xc1, 0x3e, 0x91, 0xbc, 0x93, 0x06)

// Vtable slots as the documentation orders the methods (IUnknown takes 0 to 2). Tests call the
// plug-in through these to catch a declaration whose order drifted from the platform's.
namespace PrintOemSlot {
inline constexpr int GetInfo = 3, DevMode = 4, PublishDriverInterface = 5, CommonUIProp = 6,
                     DocumentPropertySheets = 7, DevicePropertySheets = 8, DevQueryPrintEx = 9,
                     DeviceCapabilities = 10, UpgradePrinter = 11, PrinterEvent = 12, DriverEvent = 13,
                     QueryColorProfile = 14, FontInstallerDlgProc = 15, UpdateExternalFonts = 16;
inline constexpr int DrvGetDriverSetting = 3, DrvUpgradeRegistrySetting = 4, DrvUpdateUISetting = 5;
inline constexpr int GetOption = 3, SetOptions = 4, EnumFeatures = 7, EnumOptions = 8,
                     CreateInstanceOfMSXMLObject = 11, CreateGDLSnapshot = 12, CreateDefaultGDLSnapshot = 13;
inline constexpr int GetSupportedVersions = 3, BindPrinter = 4, PublishPrintTicketHelper = 5,
                     QueryDeviceDefaultNamespace = 6, ConvertPrintTicketToDevMode = 7,
                     ConvertDevModeToPrintTicket = 8, CompletePrintCapabilities = 9, ExpandIntentOptions = 10,
                     ValidatePrintTicket = 11;
inline constexpr int AdjustImageableArea = 3, AdjustImageCompression = 4, AdjustDPI = 5;
}  // namespace PrintOemSlot
