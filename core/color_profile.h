// The colour profile that the job's colour-management option names.
#pragma once

#include "ddk/prcomoem.h"

namespace zx {

// IPrintOemUI::QueryColorProfile for a device profile: "sRGB_Color_Space_Profile.icm" for option
// 0, "AdobeRGB.icc" for option 4, written as a wide file name with its terminator.
HRESULT QueryColorProfileFor(IPrintCoreHelper* coreHelper, const DEVMODEW* publicDevMode, ULONG queryMode,
                             void* profileData, ULONG* profileDataSize, FLONG* profileFlags) noexcept;

}  // namespace zx
