#include "printschema/host_process.h"

#include "util/platform_seam.h"
#include "util/scoped.h"

#include <psapi.h>

namespace {

BOOL WINAPI LookUpPrintExecutionData(PrintExecutionData* data) {
    using GetPrintExecutionDataFn = BOOL(WINAPI*)(PrintExecutionData*);
    const zx::unique_hmodule spooler(::LoadLibraryW(L"winspool.drv"));
    if (!spooler) return FALSE;
    const auto function = reinterpret_cast<GetPrintExecutionDataFn>(
        reinterpret_cast<void*>(::GetProcAddress(spooler.get(), "GetPrintExecutionData")));
    return function != nullptr && function(data);
}

zx::PlatformSeam<ProcessInspection> g_inspection({::GetModuleFileNameW, ::OpenProcess, ::CloseHandle,
                                                  ::GetCurrentProcessId, ::K32EnumProcessModules,
                                                  ::K32GetModuleFileNameExW, ::GetCommandLineW,
                                                  LookUpPrintExecutionData});

volatile LONG g_generation = 0;

}  // namespace

const ProcessInspection& CurrentProcessInspection() noexcept { return g_inspection.Current(); }

const ProcessInspection& RealProcessInspection() noexcept { return g_inspection.Real(); }

// What was found with the table replaced is forgotten.
ProcessInspection ReplaceProcessInspection(const ProcessInspection& inspection) noexcept {
    const ProcessInspection previous = g_inspection.Replace(inspection);
    ::InterlockedIncrement(&g_generation);
    return previous;
}

unsigned ProcessInspectionGeneration() noexcept { return static_cast<unsigned>(g_generation); }
