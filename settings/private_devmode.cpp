#include "settings/private_devmode.h"

#include "settings/feature_keywords.h"
#include "settings/option_access.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace zx {
namespace {

HRESULT InvalidParameter() noexcept {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return E_INVALIDARG;
}

bool Equals(PCSTR text, PCSTR expected) noexcept { return text != nullptr && std::strcmp(text, expected) == 0; }

// Media type keywords read "%d.%d.%x_%d_%dx%d"; the fourth number 2 marks media that the XPS
// document converter rasterises at 300 dpi in PCL mode. Fields that do not parse count as 0.
int MediaTypeFourthNumber(PCSTR keyword) noexcept {
    int first = 0, second = 0, fourth = 0, fifth = 0, sixth = 0;
    unsigned int third = 0;
    std::sscanf(keyword, "%d.%d.%x_%d_%dx%d", &first, &second, &third, &fourth, &fifth, &sixth);
    return fourth;
}

}  // namespace

HRESULT GetPluginInfo(DWORD mode, PVOID buffer, DWORD cbSize, PDWORD pcbNeeded) noexcept {
    DWORD answer = 0;
    switch (mode) {
    case OEMGI_GETSIGNATURE: answer = kPluginSignature; break;
    case OEMGI_GETVERSION: answer = kPrivateDevModeVersion; break;
    case OEMGI_GETREQUESTEDHELPERINTERFACES: answer = OEMPUBLISH_IPRINTCOREHELPER; break;
    default: return InvalidParameter();
    }
    if (pcbNeeded == nullptr) return InvalidParameter();

    *pcbNeeded = sizeof(DWORD);
    if (buffer == nullptr || cbSize < sizeof(DWORD)) {
        ::SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(buffer, &answer, sizeof(answer));
    return S_OK;
}

HRESULT WritePrivateDevModeHeader(VPrivateDevMode* block) noexcept {
    if (block == nullptr) return E_PENDING;
    block->dwSize = kPrivateDevModeSize;
    block->dwSignature = kPluginSignature;
    block->dwVersion = kPrivateDevModeVersion;
    block->dwUserChanges = 0;
    block->dwMarginsByUser = 0;
    block->dwForce300Dpi = 0;
    return S_OK;
}

HRESULT CopyPrivateDevMode(const VPrivateDevMode* in, VPrivateDevMode* out) noexcept {
    if (in == nullptr) return E_POINTER;
    if (out == nullptr) return E_PENDING;
    if (in->dwSignature != out->dwSignature) return WritePrivateDevModeHeader(out);

    // A shorter, older block fills only its own length; a longer one is cut to ours.
    const DWORD inSize = in->dwSize;
    WritePrivateDevModeHeader(out);
    std::memmove(out, in, std::min(out->dwSize, inSize));
    return WritePrivateDevModeHeader(out);
}

void Recompute300DpiFlag(IPrintCoreHelper* coreHelper, const DEVMODEW* publicDevMode, VPrivateDevMode* block) noexcept {
    if (coreHelper == nullptr || publicDevMode == nullptr) return;
    if (block != nullptr) block->dwForce300Dpi = 0;

    PCSTR language = nullptr;
    if (FAILED(GetJobOption(coreHelper, publicDevMode, Feature::DeviceLanguage, &language)) ||
        !Equals(language, Option::PCL)) {
        return;
    }

    bool force300Dpi = false;
    PCSTR quality = nullptr;
    if (SUCCEEDED(GetJobOption(coreHelper, publicDevMode, Feature::PageOutputQuality, &quality))) {
        force300Dpi = Equals(quality, Option::Draft);
    } else {
        PCSTR mediaType = nullptr;
        if (FAILED(GetJobOption(coreHelper, publicDevMode, Feature::MediaType, &mediaType))) return;
        force300Dpi = MediaTypeFourthNumber(mediaType) == 2;
    }
    if (block != nullptr && force300Dpi) block->dwForce300Dpi = 1;
}

HRESULT HandleDevMode(DWORD mode, POEMDMPARAM param, IPrintCoreHelper* coreHelper) noexcept {
    if (param == nullptr) {
        return (mode >= OEMDM_SIZE && mode <= OEMDM_MERGE) ? S_OK : InvalidParameter();
    }

    auto* out = static_cast<VPrivateDevMode*>(param->pOEMDMOut);
    const auto* in = static_cast<const VPrivateDevMode*>(param->pOEMDMIn);
    switch (mode) {
    case OEMDM_SIZE: param->cbBufSize = kPrivateDevModeSize; return S_OK;

    case OEMDM_DEFAULT: {
        if (out == nullptr) return E_POINTER;
        const HRESULT hr = WritePrivateDevModeHeader(out);
        param->cbBufSize = kPrivateDevModeSize;
        return hr;
    }

    case OEMDM_CONVERT: {
        if (out == nullptr || in == nullptr) return E_POINTER;
        const HRESULT hr = CopyPrivateDevMode(in, out);
        Recompute300DpiFlag(coreHelper, param->pPublicDMOut, out);
        return hr;
    }

    case OEMDM_MERGE: {
        if (out == nullptr || in == nullptr) return E_POINTER;
        const HRESULT hr = CopyPrivateDevMode(in, out);
        if (FAILED(hr)) return hr;
        const HRESULT headerHr = WritePrivateDevModeHeader(out);
        Recompute300DpiFlag(coreHelper, param->pPublicDMOut, out);
        return headerHr;
    }

    default: return S_OK;
    }
}

}  // namespace zx
