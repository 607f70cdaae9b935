#include "core/color_profile.h"

#include "settings/feature_keywords.h"
#include "settings/option_access.h"

#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace zx {
namespace {

constexpr long kSrgbOption = 0;
constexpr long kAdobeRgbOption = 4;

const wchar_t* ProfileForOption(PCSTR option) noexcept {
    // Read as a decimal number; text that is not a number counts as 0.
    switch (std::strtol(option, nullptr, 10)) {
    case kSrgbOption: return L"sRGB_Color_Space_Profile.icm";
    case kAdobeRgbOption: return L"AdobeRGB.icc";
    default: return nullptr;
    }
}

}  // namespace

HRESULT QueryColorProfileFor(IPrintCoreHelper* coreHelper, const DEVMODEW* publicDevMode, ULONG queryMode,
                             void* profileData, ULONG* profileDataSize, FLONG* profileFlags) noexcept {
    if (queryMode == QCP_SOURCEPROFILE || coreHelper == nullptr) return E_NOTIMPL;

    // The job's own settings decide when the converter hands its DEVMODE; otherwise the helper
    // answers with the settings it holds.
    PCSTR option = nullptr;
    const ULONG devModeSize = DevModeTotalSize(publicDevMode);
    if (coreHelper->GetOption(publicDevMode, devModeSize, Feature::ZXColorManagement, &option) != S_OK) {
        return E_NOTIMPL;
    }
    if (option == nullptr) return E_NOTIMPL;
    const wchar_t* profile = ProfileForOption(option);
    if (profile == nullptr) return E_NOTIMPL;
    if (profileDataSize == nullptr) return E_POINTER;

    const ULONG needed = static_cast<ULONG>((std::wcslen(profile) + 1) * sizeof(wchar_t));
    if (*profileDataSize < needed || profileData == nullptr) {
        ::SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return E_FAIL;
    }
    *profileDataSize = needed;
    std::memcpy(profileData, profile, needed);
    if (profileFlags != nullptr) *profileFlags = QCP_PROFILEDISK;
    return S_OK;
}

}  // namespace zx
