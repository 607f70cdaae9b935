// The simulated core driver's module file. drvhost does the core driver's work in-process; this
// DLL only stands in the driver directory as the driver and configuration file the spooler
// records, so that the plug-in finds its neighbours through it as it would through the real one.
//
// The spooler calls the configuration file's two entry points without checking that they exist,
// for instance for the default DEVMODE of a printer being added. They answer that the simulated
// driver has none to give; drvhost builds its DEVMODEs itself.
#include <windows.h>
#include <winddiui.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID) { return TRUE; }

extern "C" __declspec(dllexport) LONG WINAPI DrvDocumentPropertySheets(PPROPSHEETUI_INFO, LPARAM) {
    ::SetLastError(ERROR_NOT_SUPPORTED);
    return -1;
}

extern "C" __declspec(dllexport) DWORD WINAPI DrvDeviceCapabilities(HANDLE, PWSTR, WORD, PVOID, PDEVMODEW) {
    return GDI_ERROR;
}
