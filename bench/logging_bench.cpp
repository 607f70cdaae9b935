// Cost of the logging library's calls, against an empty function call measured in the same run:
// a line whose category is disabled (with logging configured for other categories, and with no
// configuration at all, where every check reads the registry), and a line written to a file.
// One figure per line: name, then value.
#include "diagnostics/log_module.h"

#include <cstdio>
#include <string>

using namespace NGLogging;

namespace {

constexpr wchar_t kRoot[] = L"Software\\ZX\\NG\\Logging";
constexpr int kCalls = 20000;

__attribute__((noinline)) void EmptyCall(const wchar_t* text) { asm volatile("" : : "r"(text) : "memory"); }

template <typename Call>
double MicrosecondsPerCall(Call call) {
    LARGE_INTEGER frequency, start, stop;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&start);
    for (int i = 0; i < kCalls; ++i) call();
    QueryPerformanceCounter(&stop);
    return 1e6 * static_cast<double>(stop.QuadPart - start.QuadPart) / frequency.QuadPart / kCalls;
}

void Configure(const std::wstring& file) {
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_LOCAL_MACHINE, kRoot, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    const DWORD categories = Category::Warning;
    RegSetValueExW(key, L"LogCategories", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&categories), sizeof(categories));
    RegSetValueExW(key, L"LogFileName", 0, REG_SZ, reinterpret_cast<const BYTE*>(file.c_str()),
                   static_cast<DWORD>((file.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(key);
}

void Print(const char* name, double value) { std::printf("%s %.4f\n", name, value); }

}  // namespace

int wmain() {
    wchar_t temp[MAX_PATH];
    GetTempPathW(MAX_PATH, temp);
    const std::wstring file = std::wstring(temp) + L"logging_bench.log";
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kRoot);
    DeleteFileW(file.c_str());

    const double empty = MicrosecondsPerCall([] { EmptyCall(L"text"); });
    CLogModule unconfigured(L"BenchModule", __DATE__, __TIME__, 0, 30);
    const double unconfiguredCall =
        MicrosecondsPerCall([&] { unconfigured.WriteLine(nullptr, Category::Debug, nullptr, L"text"); });

    Configure(file);
    CLogModule log(L"BenchModule", __DATE__, __TIME__, 0, 30);
    const double disabled = MicrosecondsPerCall([&] { log.WriteLine(nullptr, Category::Debug, nullptr, L"text"); });
    const double written = MicrosecondsPerCall([&] { log.WriteLine(nullptr, Category::Warning, nullptr, L"text"); });

    Print("empty_call_us", empty);
    Print("disabled_line_us", disabled);
    Print("disabled_line_ratio_to_empty_call", disabled / empty);
    Print("unconfigured_line_us", unconfiguredCall);
    Print("unconfigured_line_ratio_to_empty_call", unconfiguredCall / empty);
    Print("file_line_us", written);
    Print("file_line_ratio_to_empty_call", written / empty);

    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kRoot);
    DeleteFileW(file.c_str());
    return 0;
}
