#include "printschema/feature_converter.h"

#include "printschema/ticket_handler.h"
#include "util/result.h"

#include <exception>

namespace zx {

namespace {
constexpr ULONG kPublicDevModeSize = sizeof(DEVMODEW);
}

HRESULT ConverterExceptionToHResult() noexcept {
    try {
        throw;
    } catch (const std::exception&) {
        return E_FAIL;
    } catch (...) {
        return CurrentExceptionToHResult();
    }
}

HRESULT CheckConversionArguments(const void* devMode, const void* privateBlock, const void* ticket, ULONG devModeSize,
                                 ULONG privateSize) noexcept {
    if (devMode == nullptr || privateBlock == nullptr || ticket == nullptr) return E_POINTER;
    return CheckDevModeArguments(devMode, privateBlock, devModeSize, privateSize);
}

HRESULT CheckDevModeArguments(const void* devMode, const void* privateBlock, ULONG devModeSize,
                              ULONG privateSize) noexcept {
    if (devMode == nullptr || privateBlock == nullptr) return E_POINTER;
    if (devModeSize < kPublicDevModeSize || privateSize == 0) return E_INVALIDARG;
    return S_OK;
}

HRESULT CheckCapabilitiesDocument(VConversionDocument& capabilities) {
    if (capabilities.Get() == nullptr) return E_POINTER;
    return GuardConverter([&capabilities] {
        capabilities.Capabilities();
        return S_OK;
    });
}

}  // namespace zx
