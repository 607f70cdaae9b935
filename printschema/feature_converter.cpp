#include "printschema/feature_converter.h"

#include <exception>

namespace zx {

namespace {
constexpr ULONG kPublicDevModeSize = sizeof(DEVMODEW);
}

HRESULT ConverterExceptionToHResult() noexcept {
    try {
        throw;
    } catch (const VUtilException& e) {
        return e.Result();
    } catch (const CXDException& e) {
        return e.Result();
    } catch (const ATL::CAtlException& e) {
        return static_cast<HRESULT>(e);
    } catch (...) {
        return E_FAIL;
    }
}

HRESULT CheckConversionArguments(const void* devMode, const void* privateBlock, const void* ticket,
                                 ULONG devModeSize, ULONG privateSize) noexcept {
    if (devMode == nullptr || privateBlock == nullptr || ticket == nullptr) return E_POINTER;
    return CheckDevModeArguments(devMode, privateBlock, devModeSize, privateSize);
}

HRESULT CheckDevModeArguments(const void* devMode, const void* privateBlock, ULONG devModeSize,
                              ULONG privateSize) noexcept {
    if (devMode == nullptr || privateBlock == nullptr) return E_POINTER;
    if (devModeSize < kPublicDevModeSize || privateSize == 0) return E_INVALIDARG;
    return S_OK;
}

}  // namespace zx
