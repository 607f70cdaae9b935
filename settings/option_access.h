// Reading the core driver's current options and option lists through its helper interface.
// Option keywords and lists stay owned by the core driver; a null keyword from the helper counts
// as a missing feature.
#pragma once

#include "ddk/prcomoem.h"
#include "util/result.h"

#include <span>
#include <string_view>

namespace zx {

// The DEVMODE size that the core helper expects: the public part plus the driver-extra part.
inline DWORD DevModeTotalSize(const DEVMODEW* devMode) noexcept {
    return devMode ? static_cast<DWORD>(devMode->dmSize) + devMode->dmDriverExtra : 0;
}

// The current option of a feature in a DEVMODE of the given size. S_OK with a non-null keyword,
// or a failure: the helper's own, or zx::kNotFound for a null answer.
inline HRESULT GetOptionOf(IPrintCoreHelper* helper, const DEVMODEW* devMode, DWORD devModeSize, PCSTR feature,
                           PCSTR* option) noexcept {
    *option = nullptr;
    if (helper == nullptr) return E_POINTER;
    PCSTR answer = nullptr;
    const HRESULT hr = helper->GetOption(devMode, devModeSize, feature, &answer);
    if (FAILED(hr)) return hr;
    if (answer == nullptr) return zx::kNotFound;
    *option = answer;
    return hr;
}

// The current option of a feature in a job's DEVMODE (outside a property sheet).
inline HRESULT GetJobOption(IPrintCoreHelper* helper, const DEVMODEW* devMode, PCSTR feature, PCSTR* option) noexcept {
    return GetOptionOf(helper, devMode, DevModeTotalSize(devMode), feature, option);
}

// The current option of a feature while a property sheet is open (no DEVMODE, size 0); null
// when the feature does not exist or the helper fails.
inline PCSTR CurrentOption(IPrintCoreHelper* helper, PCSTR feature) noexcept {
    PCSTR option = nullptr;
    return SUCCEEDED(GetOptionOf(helper, nullptr, 0, feature, &option)) ? option : nullptr;
}

// The option keywords of a feature, in the core driver's order; empty when the helper fails or
// lists none. Entries may still be null.
inline std::span<const PCSTR> FeatureOptions(IPrintCoreHelper* helper, PCSTR feature) noexcept {
    PCSTR* list = nullptr;
    DWORD count = 0;
    if (helper == nullptr || FAILED(helper->EnumOptions(feature, &list, &count)) || list == nullptr) return {};
    return {list, count};
}

// Byte-wise equality of a keyword from the core driver (possibly null) with a known one.
inline bool KeywordIs(PCSTR keyword, std::string_view expected) noexcept {
    return keyword != nullptr && std::string_view(keyword) == expected;
}

}  // namespace zx
