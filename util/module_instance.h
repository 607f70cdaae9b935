// The instance handle of the plug-in's own module, stored by the module entry point. The dialog
// templates and bitmaps are loaded from it, and the logging library names its log after it.
#pragma once

#include <windows.h>

namespace zx {

HINSTANCE ModuleInstance() noexcept;
void SetModuleInstance(HINSTANCE instance) noexcept;

}  // namespace zx
