// Scoped owners for the platform's resources: one template for every handle-like type (BSTR,
// printer handles, registry keys, modules, kernel handles, CoTaskMem blocks) and a VARIANT owner.
// Interfaces use Microsoft::WRL::ComPtr. Closing never changes the thread's last error, so a
// cleanup on an error path does not hide the error being reported.
#pragma once

#include "util/exceptions.h"

#include <windows.h>
#include <oleauto.h>
#include <winspool.h>
#include <wrl/client.h>

#include <utility>

namespace zx {

using Microsoft::WRL::ComPtr;

template <typename Traits>
class unique_any {
public:
    using pointer = typename Traits::type;

    unique_any() noexcept = default;
    explicit unique_any(pointer value) noexcept : m_value(value) {}
    unique_any(unique_any&& other) noexcept : m_value(other.release()) {}
    unique_any& operator=(unique_any&& other) noexcept {
        if (this != &other) reset(other.release());
        return *this;
    }
    unique_any(const unique_any&) = delete;
    unique_any& operator=(const unique_any&) = delete;
    ~unique_any() { reset(); }

    pointer get() const noexcept { return m_value; }
    bool valid() const noexcept { return m_value != Traits::invalid(); }
    explicit operator bool() const noexcept { return valid(); }

    void reset(pointer value = Traits::invalid()) noexcept {
        if (valid()) {
            const DWORD lastError = ::GetLastError();
            Traits::close(m_value);
            ::SetLastError(lastError);
        }
        m_value = value;
    }

    pointer release() noexcept { return std::exchange(m_value, Traits::invalid()); }

    // The address of the owned value for an out-parameter; the old value is closed first.
    pointer* put() noexcept {
        reset();
        return &m_value;
    }

private:
    pointer m_value = Traits::invalid();
};

namespace traits {
template <typename T, auto Close>
struct null_invalid {
    using type = T;
    static constexpr T invalid() noexcept { return T{}; }
    static void close(T value) noexcept { Close(value); }
};

struct file_handle {
    using type = HANDLE;
    static HANDLE invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(HANDLE value) noexcept { ::CloseHandle(value); }
};

inline void free_bstr(BSTR value) noexcept { ::SysFreeString(value); }
inline void close_printer(HANDLE value) noexcept { ::ClosePrinter(value); }
inline void close_key(HKEY value) noexcept { ::RegCloseKey(value); }
inline void free_library(HMODULE value) noexcept { ::FreeLibrary(value); }
inline void close_handle(HANDLE value) noexcept { ::CloseHandle(value); }
inline void free_cotaskmem(void* value) noexcept { ::CoTaskMemFree(value); }
inline void free_local(HLOCAL value) noexcept { ::LocalFree(value); }
}  // namespace traits

using unique_bstr = unique_any<traits::null_invalid<BSTR, traits::free_bstr>>;
using unique_printer = unique_any<traits::null_invalid<HANDLE, traits::close_printer>>;
using unique_hkey = unique_any<traits::null_invalid<HKEY, traits::close_key>>;
using unique_hmodule = unique_any<traits::null_invalid<HMODULE, traits::free_library>>;
using unique_handle = unique_any<traits::null_invalid<HANDLE, traits::close_handle>>;
using unique_file = unique_any<traits::file_handle>;
using unique_cotaskmem = unique_any<traits::null_invalid<void*, traits::free_cotaskmem>>;
using unique_hlocal = unique_any<traits::null_invalid<HLOCAL, traits::free_local>>;

// A VARIANT that is cleared when it goes out of scope.
class unique_variant {
public:
    unique_variant() noexcept { ::VariantInit(&m_value); }
    unique_variant(const unique_variant&) = delete;
    unique_variant& operator=(const unique_variant&) = delete;
    ~unique_variant() { reset(); }

    void reset() noexcept {
        const DWORD lastError = ::GetLastError();
        ::VariantClear(&m_value);
        ::SetLastError(lastError);
    }
    // The address for an out-parameter; the old value is cleared first.
    VARIANT* put() noexcept {
        reset();
        return &m_value;
    }
    VARIANT* get() noexcept { return &m_value; }
    const VARIANT* get() const noexcept { return &m_value; }
    const VARIANT& operator*() const noexcept { return m_value; }
    VARTYPE type() const noexcept { return m_value.vt; }

private:
    VARIANT m_value;
};

// A new BSTR copy of text; throws the BSTR allocation exception when memory runs out.
inline unique_bstr MakeBstr(const wchar_t* text) {
    unique_bstr copy(::SysAllocString(text ? text : L""));
    if (!copy) throw ATL::CAtlException(E_OUTOFMEMORY);
    return copy;
}

inline unique_bstr MakeBstr(const wchar_t* text, UINT length) {
    unique_bstr copy(::SysAllocStringLen(text, length));
    if (!copy) throw ATL::CAtlException(E_OUTOFMEMORY);
    return copy;
}

}  // namespace zx
