#include "util/module_instance.h"

namespace zx {
namespace {
HINSTANCE g_moduleInstance = nullptr;
}  // namespace

HINSTANCE ModuleInstance() noexcept { return g_moduleInstance; }
void SetModuleInstance(HINSTANCE instance) noexcept { g_moduleInstance = instance; }

}  // namespace zx
