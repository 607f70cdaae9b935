// The object that the XPS document converter asks, before it renders a page, for the imageable
// area, the image compression and the rasterisation resolution of a job. It reads the job's
// public DEVMODE and the plug-in's private block and keeps no state of its own.
#pragma once

#include "ddk/prcomoem.h"

class IOEMUIMXDC : public IPrintOemUIMXDC {
public:
    IOEMUIMXDC() noexcept = default;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    // Each adjustment answers S_OK whatever it is given; what it cannot read it leaves alone.
    STDMETHODIMP AdjustImageableArea(HANDLE hPrinter, ULONG cbDevMode, const PDEVMODEW pDevMode, ULONG cbOEMDM,
                                     const PVOID pOEMDM, PRECTL prclImageableArea) override;
    STDMETHODIMP AdjustImageCompression(HANDLE hPrinter, ULONG cbDevMode, const PDEVMODEW pDevMode, ULONG cbOEMDM,
                                        const PVOID pOEMDM, INT* pCompressionMode) override;
    STDMETHODIMP AdjustDPI(HANDLE hPrinter, ULONG cbDevMode, const PDEVMODEW pDevMode, ULONG cbOEMDM,
                           const PVOID pOEMDM, INT* pDPI) override;

    virtual ~IOEMUIMXDC() = default;

private:
    volatile LONG m_refCount = 1;
};
