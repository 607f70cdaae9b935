// The module entry point and the DLL's two exports. Everything else is reached through them.
#include "core/class_factory.h"
#include "diagnostics/log_module.h"
#include "util/module_instance.h"

#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID /*reserved*/) {
    // The loader lock is held: the log module is made and destroyed here, but it reads the
    // registry, creates its shared blocks and starts COM only when a line is first written.
    if (reason == DLL_PROCESS_ATTACH) {
        zx::SetModuleInstance(instance);
        NGLogging::CreatePluginLog();
    } else if (reason == DLL_PROCESS_DETACH) {
        NGLogging::DestroyPluginLog();
    }
    return TRUE;
}

extern "C" HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppv) {
    return zx::GetPluginClassObject(rclsid, riid, ppv);
}

extern "C" HRESULT STDAPICALLTYPE DllCanUnloadNow() { return zx::CanUnloadPluginNow(); }
