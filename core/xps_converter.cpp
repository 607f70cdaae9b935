#include "core/xps_converter.h"

#include "settings/private_devmode.h"

#include <climits>
#include <cstddef>

namespace {

constexpr DWORD kDuplexLongEdge = DMDUP_VERTICAL;
constexpr DWORD kDuplexShortEdge = DMDUP_HORIZONTAL;
constexpr INT kCompressionFor300Dpi = 2;
constexpr INT kCompressionOtherwise = 4;
constexpr INT kForcedDpi = 300;
constexpr LONG kMicrometresPerTenthMm = 100;

// The converter hands the DEVMODE and private block with their sizes; a field that lies beyond
// the size it gave is treated as absent rather than read.
template <typename Struct>
bool Covers(ULONG size, std::size_t fieldEnd, const Struct* block) noexcept {
    return block != nullptr && size >= fieldEnd;
}

#define ZX_FIELD_END(type, field) (offsetof(type, field) + sizeof(type::field))

const VPrivateDevMode* PrivateBlock(ULONG cbOEMDM, const void* pOEMDM, std::size_t fieldEnd) noexcept {
    const auto* block = static_cast<const VPrivateDevMode*>(pOEMDM);
    return Covers(cbOEMDM, fieldEnd, block) ? block : nullptr;
}

LONG ClampToLong(long long value) noexcept {
    if (value > LONG_MAX) return LONG_MAX;
    if (value < LONG_MIN) return LONG_MIN;
    return static_cast<LONG>(value);
}

}  // namespace

STDMETHODIMP IOEMUIMXDC::QueryInterface(REFIID riid, void** ppv) {
    if (ppv == nullptr) return E_POINTER;
    if (::IsEqualIID(riid, IID_IUnknown) || ::IsEqualIID(riid, IID_IPrintOemUIMXDC)) {
        *ppv = static_cast<IPrintOemUIMXDC*>(this);
        AddRef();
        return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) IOEMUIMXDC::AddRef() { return static_cast<ULONG>(::InterlockedIncrement(&m_refCount)); }

STDMETHODIMP_(ULONG) IOEMUIMXDC::Release() {
    const LONG remaining = ::InterlockedDecrement(&m_refCount);
    if (remaining == 0) delete this;
    return static_cast<ULONG>(remaining);
}

STDMETHODIMP IOEMUIMXDC::AdjustImageableArea(HANDLE, ULONG cbDevMode, const PDEVMODEW pDevMode, ULONG cbOEMDM,
                                             const PVOID pOEMDM, PRECTL prclImageableArea) {
    if (prclImageableArea == nullptr || !Covers(cbDevMode, ZX_FIELD_END(DEVMODEW, dmDuplex), pDevMode)) return S_OK;
    RECTL& area = *prclImageableArea;
    const long long paperLength = static_cast<long long>(pDevMode->dmPaperLength) * kMicrometresPerTenthMm;
    const long long paperWidth = static_cast<long long>(pDevMode->dmPaperWidth) * kMicrometresPerTenthMm;

    // Two-sided pages get a top margin at least as large as the bottom one, so that the
    // printable areas of front and back coincide.
    if (pDevMode->dmDuplex == kDuplexLongEdge || pDevMode->dmDuplex == kDuplexShortEdge) {
        const long long bottomMargin = paperLength - area.bottom;
        if (bottomMargin > area.top) area.top = ClampToLong(bottomMargin);
    }

    const VPrivateDevMode* block = PrivateBlock(cbOEMDM, pOEMDM, ZX_FIELD_END(VPrivateDevMode, dwBorderless));
    if (block != nullptr && block->dwBorderless == 1) {
        area.left = 0;
        area.top = 0;
        area.right = ClampToLong(paperWidth);
        area.bottom = ClampToLong(paperLength);
    }
    return S_OK;
}

STDMETHODIMP IOEMUIMXDC::AdjustImageCompression(HANDLE, ULONG cbDevMode, const PDEVMODEW pDevMode, ULONG, const PVOID,
                                                INT* pCompressionMode) {
    if (pCompressionMode == nullptr) return S_OK;
    const bool is300Dpi =
        Covers(cbDevMode, ZX_FIELD_END(DEVMODEW, dmPrintQuality), pDevMode) && pDevMode->dmPrintQuality == 300;
    *pCompressionMode = is300Dpi ? kCompressionFor300Dpi : kCompressionOtherwise;
    return S_OK;
}

STDMETHODIMP IOEMUIMXDC::AdjustDPI(HANDLE, ULONG, const PDEVMODEW, ULONG cbOEMDM, const PVOID pOEMDM, INT* pDPI) {
    const VPrivateDevMode* block = PrivateBlock(cbOEMDM, pOEMDM, ZX_FIELD_END(VPrivateDevMode, dwForce300Dpi));
    if (pDPI != nullptr && block != nullptr && block->dwForce300Dpi == 1) *pDPI = kForcedDpi;
    return S_OK;
}
