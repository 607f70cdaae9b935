#include "printschema/host_process.h"

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

constexpr ProcessInspection kPlatform = {
    ::GetModuleFileNameW,    ::OpenProcess,
    ::CloseHandle,           ::GetCurrentProcessId,
    ::K32EnumProcessModules, ::K32GetModuleFileNameExW,
    ::GetCommandLineW,       LookUpPrintExecutionData,
};

// Replaced only by tests, before the code under test runs.
ProcessInspection g_current = kPlatform;
volatile LONG g_generation = 0;

}  // namespace

const ProcessInspection& CurrentProcessInspection() noexcept { return g_current; }

const ProcessInspection& RealProcessInspection() noexcept { return kPlatform; }

ProcessInspection ReplaceProcessInspection(const ProcessInspection& inspection) noexcept {
    const ProcessInspection previous = g_current;
    g_current = inspection;
    ::InterlockedIncrement(&g_generation);
    return previous;
}

unsigned ProcessInspectionGeneration() noexcept { return static_cast<unsigned>(g_generation); }
