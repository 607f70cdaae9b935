// A helper library of the simulator without any entry point: the plug-in must cope with a
// library that loads but lacks what it looks up.
#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID) { return TRUE; }
