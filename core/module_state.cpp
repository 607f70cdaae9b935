#include "core/module_state.h"

namespace zx {
namespace {
HINSTANCE g_moduleInstance = nullptr;
volatile LONG g_moduleLockCount = 0;
}  // namespace

HINSTANCE ModuleInstance() noexcept { return g_moduleInstance; }
void SetModuleInstance(HINSTANCE instance) noexcept { g_moduleInstance = instance; }

void LockModule() noexcept { ::InterlockedIncrement(&g_moduleLockCount); }
void UnlockModule() noexcept { ::InterlockedDecrement(&g_moduleLockCount); }
LONG ModuleLockCount() noexcept { return ::InterlockedCompareExchange(&g_moduleLockCount, 0, 0); }

}  // namespace zx
