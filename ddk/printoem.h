// Structures and constants of the Windows printer-driver plug-in interfaces (the core driver's
// side of the contract), declared here because mingw-w64 does not ship them. Layouts are those of
// the public Windows documentation for x64; the static_asserts pin every size and offset that
// crosses the boundary between the core driver and the plug-in.
#pragma once

#include <windows.h>
#include <winspool.h>
#include <compstui.h>
#include <winddiui.h>

#include <cstddef>

// IPrintOemCommon::GetInfo modes.
#define OEMGI_GETSIGNATURE                 1
#define OEMGI_GETINTERFACEVERSION          2
#define OEMGI_GETVERSION                   3
#define OEMGI_GETPUBLISHERINFO             4
#define OEMGI_GETREQUESTEDHELPERINTERFACES 5

// Bits of the OEMGI_GETREQUESTEDHELPERINTERFACES answer.
#define OEMPUBLISH_DEFAULT          0x00000000
#define OEMPUBLISH_IPRINTCOREHELPER 0x00000001

// IPrintOemCommon::DevMode modes.
#define OEMDM_SIZE    1
#define OEMDM_DEFAULT 2
#define OEMDM_CONVERT 3
#define OEMDM_MERGE   4

// IPrintOemUI::CommonUIProp modes, also the dwMode of DrvUpdateUISetting.
#define OEMCUIP_DOCPROP 1
#define OEMCUIP_PRNPROP 2

// IPrintOemUI::QueryColorProfile query modes and profile flags.
#ifndef QCP_DEVICEPROFILE
#define QCP_DEVICEPROFILE 0x0000
#define QCP_SOURCEPROFILE 0x0001
#define QCP_PROFILEMEMORY 0x0001
#define QCP_PROFILEDISK   0x0002
#endif

// IPrintCoreHelper::SetOptions: how a conflict between the new settings ended.
#define SETOPTIONS_RESULT_NO_CONFLICT       0
#define SETOPTIONS_RESULT_CONFLICT_RESOLVED 1
#define SETOPTIONS_RESULT_CONFLICT_REMAINED 2

// PrintTicket provider results.
#ifndef S_PT_NO_CONFLICT
#define S_PT_NO_CONFLICT ((HRESULT)0x00040001L)
#endif
#ifndef S_PT_CONFLICT_RESOLVED
#define S_PT_CONFLICT_RESOLVED ((HRESULT)0x00040002L)
#endif
#ifndef E_VERSION_NOT_SUPPORTED
#define E_VERSION_NOT_SUPPORTED ((HRESULT)0x80040001L)
#endif

// Parameter block of DevQueryPrintEx (winddiui.h of the Windows SDK; mingw-w64 lacks it).
typedef struct _DEVQUERYPRINT_INFO {
    WORD cbSize;
    WORD Level;
    HANDLE hPrinter;
    DEVMODEW* pDevMode;
    LPWSTR pszErrorStr;
    DWORD cchErrorStr;
    DWORD cchNeeded;
} DEVQUERYPRINT_INFO, *PDEVQUERYPRINT_INFO;

// The standard header that starts every plug-in's private DEVMODE block.
typedef struct _OEM_DMEXTRAHEADER {
    DWORD dwSize;
    DWORD dwSignature;
    DWORD dwVersion;
} OEM_DMEXTRAHEADER, *POEM_DMEXTRAHEADER;

// Parameter block of IPrintOemCommon::DevMode.
typedef struct _OEMDMPARAM {
    DWORD cbSize;
    PVOID pdriverobj;
    HANDLE hPrinter;
    HANDLE hModule;
    PDEVMODEW pPublicDMIn;
    PDEVMODEW pPublicDMOut;
    PVOID pOEMDMIn;
    PVOID pOEMDMOut;
    DWORD cbBufSize;
} OEMDMPARAM, *POEMDMPARAM;

typedef BOOL(APIENTRY* PFN_DrvGetDriverSetting)(PVOID pdriverobj, PCSTR Feature, PVOID pOutput, DWORD cbSize,
                                                 PDWORD pcbNeeded, PDWORD pdwOptionsReturned);
typedef BOOL(APIENTRY* PFN_DrvUpdateUISetting)(PVOID pdriverobj, PVOID pOptItem, DWORD dwPreviousSelection,
                                                DWORD dwMode);
typedef BOOL(APIENTRY* PFN_DrvUpgradeRegistrySetting)(HANDLE hPrinter, PCSTR pFeature, PCSTR pOption);

typedef struct _OEMUIPROCS {
    PFN_DrvGetDriverSetting DrvGetDriverSetting;
    PFN_DrvUpdateUISetting DrvUpdateUISetting;
} OEMUIPROCS, *POEMUIPROCS;

// The core driver's user-interface object, handed back to it with DrvUpdateUISetting.
typedef struct _OEMUIOBJ {
    DWORD cbSize;
    POEMUIPROCS pOemUIProcs;
} OEMUIOBJ, *POEMUIOBJ;

struct _OEMCUIPPARAM;
typedef LONG(APIENTRY* OEMCUIPCALLBACK)(PCPSUICBPARAM, struct _OEMCUIPPARAM*);

// Parameter block of IPrintOemUI::CommonUIProp.
typedef struct _OEMCUIPPARAM {
    DWORD cbSize;
    POEMUIOBJ poemuiobj;
    HANDLE hPrinter;
    PWSTR pPrinterName;
    HANDLE hModule;
    HANDLE hOEMHeap;
    PDEVMODEW pPublicDM;
    PVOID pOEMDM;
    DWORD dwFlags;
    POPTITEM pDrvOptItems;
    DWORD cDrvOptItems;
    POPTITEM pOEMOptItems;
    DWORD cOEMOptItems;
    PVOID pOEMUserData;
    OEMCUIPCALLBACK OEMCUIPCallback;
} OEMCUIPPARAM, *POEMCUIPPARAM;

// Parameter block that PROPSHEETUI_INFO::lParamInit points to in DocumentPropertySheets and
// DevicePropertySheets.
typedef struct _OEMUIPSPARAM {
    DWORD cbSize;
    POEMUIOBJ poemuiobj;
    HANDLE hPrinter;
    PWSTR pPrinterName;
    HANDLE hModule;
    HANDLE hOEMHeap;
    PDEVMODEW pPublicDM;
    PVOID pOEMDM;
    PVOID pOEMUserData;
    DWORD dwFlags;
    PVOID pOemEntry;
} OEMUIPSPARAM, *POEMUIPSPARAM;

// One feature/option pair of IPrintCoreHelper::SetOptions.
typedef struct _PRINT_FEATURE_OPTION {
    PCSTR pszFeature;
    PCSTR pszOption;
} PRINT_FEATURE_OPTION, *PPRINT_FEATURE_OPTION;

// Options that IPrintOemPrintTicketProvider::BindPrinter hands back.
typedef enum {
    OEMPT_DEFAULT = 0x00000000,
    OEMPT_NOSNAPSHOT = 0x00000001,
} OEMPTOPTS, *POEMPTOPTS;

#ifdef _WIN64
static_assert(sizeof(OEM_DMEXTRAHEADER) == 12);

static_assert(sizeof(OEMDMPARAM) == 72);
static_assert(offsetof(OEMDMPARAM, pdriverobj) == 8);
static_assert(offsetof(OEMDMPARAM, hPrinter) == 16);
static_assert(offsetof(OEMDMPARAM, hModule) == 24);
static_assert(offsetof(OEMDMPARAM, pPublicDMIn) == 32);
static_assert(offsetof(OEMDMPARAM, pPublicDMOut) == 40);
static_assert(offsetof(OEMDMPARAM, pOEMDMIn) == 48);
static_assert(offsetof(OEMDMPARAM, pOEMDMOut) == 56);
static_assert(offsetof(OEMDMPARAM, cbBufSize) == 64);

static_assert(sizeof(OEMUIPROCS) == 16);
static_assert(sizeof(OEMUIOBJ) == 16);
static_assert(offsetof(OEMUIOBJ, pOemUIProcs) == 8);

static_assert(sizeof(OEMCUIPPARAM) == 120);
static_assert(offsetof(OEMCUIPPARAM, poemuiobj) == 8);
static_assert(offsetof(OEMCUIPPARAM, hPrinter) == 16);
static_assert(offsetof(OEMCUIPPARAM, pPrinterName) == 24);
static_assert(offsetof(OEMCUIPPARAM, hModule) == 32);
static_assert(offsetof(OEMCUIPPARAM, hOEMHeap) == 40);
static_assert(offsetof(OEMCUIPPARAM, pPublicDM) == 48);
static_assert(offsetof(OEMCUIPPARAM, pOEMDM) == 56);
static_assert(offsetof(OEMCUIPPARAM, dwFlags) == 64);
static_assert(offsetof(OEMCUIPPARAM, pDrvOptItems) == 72);
static_assert(offsetof(OEMCUIPPARAM, cDrvOptItems) == 80);
static_assert(offsetof(OEMCUIPPARAM, pOEMOptItems) == 88);
static_assert(offsetof(OEMCUIPPARAM, cOEMOptItems) == 96);
static_assert(offsetof(OEMCUIPPARAM, pOEMUserData) == 104);
static_assert(offsetof(OEMCUIPPARAM, OEMCUIPCallback) == 112);

static_assert(sizeof(OEMUIPSPARAM) == 88);
static_assert(offsetof(OEMUIPSPARAM, pPublicDM) == 48);
static_assert(offsetof(OEMUIPSPARAM, pOEMDM) == 56);
static_assert(offsetof(OEMUIPSPARAM, pOEMUserData) == 64);
static_assert(offsetof(OEMUIPSPARAM, dwFlags) == 72);
static_assert(offsetof(OEMUIPSPARAM, pOemEntry) == 80);

static_assert(sizeof(PRINT_FEATURE_OPTION) == 16);
static_assert(sizeof(DEVQUERYPRINT_INFO) == 40);

// The common property-sheet UI structures come from compstui.h; the plug-in and the driver host
// both depend on their x64 layout, so pin it here as well.
static_assert(sizeof(OPTITEM) == 88);
static_assert(offsetof(OPTITEM, Flags) == 4);
static_assert(offsetof(OPTITEM, UserData) == 8);
static_assert(offsetof(OPTITEM, pName) == 16);
static_assert(offsetof(OPTITEM, Sel) == 24);
static_assert(offsetof(OPTITEM, pOptType) == 40);
static_assert(offsetof(OPTITEM, DMPubID) == 52);
static_assert(sizeof(OPTTYPE) == 48);
static_assert(offsetof(OPTTYPE, Count) == 4);
static_assert(offsetof(OPTTYPE, BegCtrlID) == 6);
static_assert(offsetof(OPTTYPE, pOptParam) == 8);
static_assert(sizeof(OPTPARAM) == 48);
static_assert(offsetof(OPTPARAM, Flags) == 2);
static_assert(offsetof(OPTPARAM, pData) == 8);
static_assert(sizeof(CPSUICBPARAM) == 64);
static_assert(offsetof(CPSUICBPARAM, pCurItem) == 32);
static_assert(offsetof(CPSUICBPARAM, OldSel) == 40);
static_assert(sizeof(PROPSHEETUI_INFO) == 48);
static_assert(sizeof(DEVMODEW) == 220);
#endif
