// The plug-in's private block inside every DEVMODE, and the two IPrintOemCommon methods through
// which the core driver sizes, defaults, converts and merges it. The block travels with print
// jobs and stored defaults, so its layout is a stored format: never reorder or resize it.
#pragma once

#include "ddk/prcomoem.h"

#include <cstddef>

struct VPrivateDevMode {
    DWORD dwSize;  // standard private-DEVMODE header
    DWORD dwSignature;
    DWORD dwVersion;
    DWORD dwReserved12;
    DWORD dwReserved16;
    DWORD dwUserChanges;  // kUserChangedMediaType | kUserChangedQuality, set by PrintTicket reads
    DWORD dwBorderless;   // BorderlessPrint index when the document sheet was opened
    DWORD dwReserved28;
    DWORD dwReserved32;
    DWORD dwReserved36;
    DWORD dwMarginsByUser;      // 1 once the user chose DocumentMargins while two-sided printing is on
    DWORD dwDuplexCtrlWidened;  // 1 once the two-sided control was widened in this sheet session
    DWORD dwNUpIndex;           // DocumentNUp index as last selected or set by the UI
    DWORD dwForce300Dpi;        // 1 asks the XPS document converter to rasterise at 300 dpi
    DWORD dwInputBinIndex;      // InputBin index as the UI last stored it
    DWORD dwReserved60;
};

static_assert(sizeof(VPrivateDevMode) == 64);
static_assert(offsetof(VPrivateDevMode, dwSize) == 0);
static_assert(offsetof(VPrivateDevMode, dwSignature) == 4);
static_assert(offsetof(VPrivateDevMode, dwVersion) == 8);
static_assert(offsetof(VPrivateDevMode, dwReserved12) == 12);
static_assert(offsetof(VPrivateDevMode, dwReserved16) == 16);
static_assert(offsetof(VPrivateDevMode, dwUserChanges) == 20);
static_assert(offsetof(VPrivateDevMode, dwBorderless) == 24);
static_assert(offsetof(VPrivateDevMode, dwReserved28) == 28);
static_assert(offsetof(VPrivateDevMode, dwReserved32) == 32);
static_assert(offsetof(VPrivateDevMode, dwReserved36) == 36);
static_assert(offsetof(VPrivateDevMode, dwMarginsByUser) == 40);
static_assert(offsetof(VPrivateDevMode, dwDuplexCtrlWidened) == 44);
static_assert(offsetof(VPrivateDevMode, dwNUpIndex) == 48);
static_assert(offsetof(VPrivateDevMode, dwForce300Dpi) == 52);
static_assert(offsetof(VPrivateDevMode, dwInputBinIndex) == 56);
static_assert(offsetof(VPrivateDevMode, dwReserved60) == 60);

inline constexpr DWORD kPrivateDevModeSize = sizeof(VPrivateDevMode);
inline constexpr DWORD kPluginSignature = 0x5844534D;
inline constexpr DWORD kPrivateDevModeVersion = 1;

// Bits of dwUserChanges.
inline constexpr DWORD kUserChangedMediaType = 0x4;
inline constexpr DWORD kUserChangedQuality = 0x10;

namespace zx {

// IPrintOemCommon::GetInfo: signature, version and the requested helper interfaces.
HRESULT GetPluginInfo(DWORD mode, PVOID buffer, DWORD cbSize, PDWORD pcbNeeded) noexcept;

// IPrintOemCommon::DevMode. The core helper (may be null) is needed to recompute dwForce300Dpi.
HRESULT HandleDevMode(DWORD mode, POEMDMPARAM param, IPrintCoreHelper* coreHelper) noexcept;

// Writes the header fields and clears the flags that never survive a copy. E_PENDING without a block.
HRESULT WritePrivateDevModeHeader(VPrivateDevMode* block) noexcept;

// Fills `out` from `in`. A block with a foreign signature is not copied: `out` gets the defaults.
HRESULT CopyPrivateDevMode(const VPrivateDevMode* in, VPrivateDevMode* out) noexcept;

// Sets dwForce300Dpi from the job: 1 for a PCL device printing in draft quality, or without a
// quality option, on a medium whose fourth number is 2.
void Recompute300DpiFlag(IPrintCoreHelper* coreHelper, const DEVMODEW* publicDevMode, VPrivateDevMode* block) noexcept;

}  // namespace zx
