// The COM server's lock count, which only IClassFactory::LockServer changes and only
// DllCanUnloadNow reads.
#pragma once

#include <windows.h>

namespace zx {

void LockModule() noexcept;
void UnlockModule() noexcept;
LONG ModuleLockCount() noexcept;

}  // namespace zx
