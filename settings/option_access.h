// Reading the core driver's current options through its helper interface.
#pragma once

#include "ddk/prcomoem.h"

namespace zx {

// The DEVMODE size that the core helper expects: the public part plus the driver-extra part.
inline DWORD DevModeTotalSize(const DEVMODEW* devMode) noexcept {
    return devMode ? static_cast<DWORD>(devMode->dmSize) + devMode->dmDriverExtra : 0;
}

// The current option of a feature in a job's DEVMODE (outside a property sheet). S_OK with a
// non-null keyword, or a failure; a null keyword from the helper counts as a missing feature.
inline HRESULT GetJobOption(IPrintCoreHelper* helper, const DEVMODEW* devMode, PCSTR feature,
                            PCSTR* option) noexcept {
    *option = nullptr;
    if (helper == nullptr) return E_POINTER;
    PCSTR answer = nullptr;
    const HRESULT hr = helper->GetOption(devMode, DevModeTotalSize(devMode), feature, &answer);
    if (FAILED(hr)) return hr;
    if (answer == nullptr) return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
    *option = answer;
    return hr;
}

}  // namespace zx
