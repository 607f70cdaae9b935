// The simulated core driver's module file. drvhost does the core driver's work in-process; this
// DLL only stands in the driver directory as the driver and configuration file the spooler
// records, so that the plug-in finds its neighbours through it as it would through the real one.
#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID) { return TRUE; }
