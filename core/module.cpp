// The module entry point and the DLL's two exports. Everything else is reached through them.
#include "core/class_factory.h"
#include "core/module_state.h"

#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID /*reserved*/) {
    // Only the instance handle is taken here: the loader lock is held, so anything that loads
    // libraries, reads the registry or starts COM waits for first use.
    if (reason == DLL_PROCESS_ATTACH) zx::SetModuleInstance(instance);
    return TRUE;
}

extern "C" HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppv) {
    return zx::GetPluginClassObject(rclsid, riid, ppv);
}

extern "C" HRESULT STDAPICALLTYPE DllCanUnloadNow() { return zx::CanUnloadPluginNow(); }
