// HRESULT helpers: early returns that evaluate their argument once, and the one boundary helper
// that turns every exception of the program into its HRESULT before a COM method returns.
#pragma once

#include "util/exceptions.h"

#include <exception>
#include <new>

#define ZX_RETURN_IF_FAILED(expr)          \
    do {                                   \
        const HRESULT zx_hr_ = (expr);     \
        if (FAILED(zx_hr_)) return zx_hr_; \
    } while (0)

#define ZX_RETURN_HR_IF(hr, condition) \
    do {                               \
        if (condition) return (hr);    \
    } while (0)

#define ZX_RETURN_HR_IF_NULL(hr, pointer) ZX_RETURN_HR_IF(hr, (pointer) == nullptr)

namespace zx {

// HRESULT_FROM_WIN32(ERROR_NOT_FOUND): a lookup that found nothing. Every caller that treats "not
// found" apart from other failures compares with exactly this value.
inline constexpr HRESULT kNotFound = static_cast<HRESULT>(0x80070490);

// Throws VUtilException for a failed HRESULT; returns a successful one unchanged.
inline HRESULT ThrowIfFailed(HRESULT hr) {
    if (FAILED(hr)) throw VUtilException(hr);
    return hr;
}

// The HRESULT that an exception in flight stands for. Call only from inside a catch block.
inline HRESULT CurrentExceptionToHResult() noexcept {
    try {
        throw;
    } catch (const VUtilException& e) {
        return e.Result();
    } catch (const CXDException& e) {
        return e.Result();
    } catch (const ATL::CAtlException& e) {
        return static_cast<HRESULT>(e);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

// Runs the body of an interface method and maps whatever it throws to an HRESULT.
template <typename Body>
HRESULT CatchAll(Body&& body) noexcept {
    try {
        return body();
    } catch (...) {
        return CurrentExceptionToHResult();
    }
}

}  // namespace zx
