// The platform calls through which the plug-in looks at the process it runs in. Application
// detection reaches the platform only through this table, so that tests can stand in for the
// print host, DllHost, Explorer and the other hosts by replacing the whole table.
#pragma once

#include <windows.h>

// The spooler's record of who is printing: the execution context, then the client process id.
struct PrintExecutionData {
    DWORD context;
    DWORD clientProcessId;
};

struct ProcessInspection {
    DWORD(WINAPI* getModuleFileName)(HMODULE module, LPWSTR path, DWORD capacity);
    HANDLE(WINAPI* openProcess)(DWORD access, BOOL inherit, DWORD processId);
    BOOL(WINAPI* closeHandle)(HANDLE handle);
    DWORD(WINAPI* getCurrentProcessId)();
    BOOL(WINAPI* enumProcessModules)(HANDLE process, HMODULE* modules, DWORD capacityBytes, LPDWORD neededBytes);
    DWORD(WINAPI* getModuleFileNameEx)(HANDLE process, HMODULE module, LPWSTR path, DWORD capacity);
    LPWSTR(WINAPI* getCommandLine)();
    // The spooler's GetPrintExecutionData, looked up in winspool.drv at each call; FALSE when the
    // library or the function is missing.
    BOOL(WINAPI* getPrintExecutionData)(PrintExecutionData* data);
};

// The table the plug-in uses: the platform's functions unless a test replaced it.
const ProcessInspection& CurrentProcessInspection() noexcept;
const ProcessInspection& RealProcessInspection() noexcept;
// Replaces the whole table and returns the one it replaces.
ProcessInspection ReplaceProcessInspection(const ProcessInspection& inspection) noexcept;
// Changes with every replacement: what was learnt through an earlier table is forgotten.
unsigned ProcessInspectionGeneration() noexcept;
