// COM initialised for the length of one piece of work on the caller's thread. A thread already
// in another apartment (RPC_E_CHANGED_MODE) can still use COM; only a successful initialisation
// is undone.
#pragma once

#include <objbase.h>

namespace zx {

class ComScope {
public:
    ComScope() noexcept : m_result(::CoInitialize(nullptr)) {}
    ~ComScope() {
        if (SUCCEEDED(m_result)) ::CoUninitialize();
    }
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;

    bool Usable() const noexcept { return SUCCEEDED(m_result) || m_result == RPC_E_CHANGED_MODE; }

private:
    HRESULT m_result;
};

}  // namespace zx
