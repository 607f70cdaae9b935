#include "core/module_state.h"

namespace zx {
namespace {
volatile LONG g_moduleLockCount = 0;
}  // namespace

void LockModule() noexcept { ::InterlockedIncrement(&g_moduleLockCount); }
void UnlockModule() noexcept { ::InterlockedDecrement(&g_moduleLockCount); }
LONG ModuleLockCount() noexcept { return ::InterlockedCompareExchange(&g_moduleLockCount, 0, 0); }

}  // namespace zx
