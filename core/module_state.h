// Module-wide state of the COM server: the instance handle stored by the module entry point and
// the lock count that only IClassFactory::LockServer changes.
#pragma once

#include <windows.h>

namespace zx {

HINSTANCE ModuleInstance() noexcept;
void SetModuleInstance(HINSTANCE instance) noexcept;

void LockModule() noexcept;
void UnlockModule() noexcept;
LONG ModuleLockCount() noexcept;

}  // namespace zx
