#include "drvhost/hresult_text.h"

#include "drvhost/text.h"
#include "util/scoped.h"

#include <cstdio>

namespace drvhost {
namespace {

struct NamedResult {
    HRESULT hr;
    const char* name;
};

constexpr NamedResult kNames[] = {
    {S_OK, "S_OK"},
    {S_FALSE, "S_FALSE"},
    {E_NOTIMPL, "E_NOTIMPL"},
    {E_NOINTERFACE, "E_NOINTERFACE"},
    {E_POINTER, "E_POINTER"},
    {E_ABORT, "E_ABORT"},
    {E_FAIL, "E_FAIL"},
    {E_UNEXPECTED, "E_UNEXPECTED"},
    {E_PENDING, "E_PENDING"},
    {E_ACCESSDENIED, "E_ACCESSDENIED"},
    {E_HANDLE, "E_HANDLE"},
    {E_OUTOFMEMORY, "E_OUTOFMEMORY"},
    {E_INVALIDARG, "E_INVALIDARG"},
    {CLASS_E_NOAGGREGATION, "CLASS_E_NOAGGREGATION"},
    {CLASS_E_CLASSNOTAVAILABLE, "CLASS_E_CLASSNOTAVAILABLE"},
    {HRESULT_FROM_WIN32(ERROR_NOT_FOUND), "HRESULT_FROM_WIN32(ERROR_NOT_FOUND)"},
    {HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), "HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)"},
    {HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER), "HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER)"},
};

struct NormalResult {
    PluginCall call;
    HRESULT hr;
    const char* meaning;
};

constexpr NormalResult kNormalResults[] = {
    {PluginCall::UiMethod, E_NOTIMPL, "left to the core driver"},
    {PluginCall::PublishDriverInterface, E_NOINTERFACE, "ignored by the core driver, which goes on"},
    {PluginCall::PublishDriverInterface, E_FAIL, "ignored by the core driver, which goes on"},
};

}  // namespace

std::string HresultName(HRESULT hr) {
    for (const NamedResult& named : kNames) {
        if (named.hr == hr) return named.name;
    }
    if (HRESULT_FACILITY(hr) == FACILITY_WIN32 && FAILED(hr)) {
        return "HRESULT_FROM_WIN32(" + std::to_string(HRESULT_CODE(hr)) + ")";
    }
    return {};
}

std::string HresultText(HRESULT hr) {
    char number[16];
    std::snprintf(number, sizeof(number), "0x%08lX", static_cast<unsigned long>(hr));
    const std::string name = HresultName(hr);
    return name.empty() ? std::string(number) : std::string(number) + " " + name;
}

std::string PluginResultText(PluginCall call, HRESULT hr) {
    for (const NormalResult& normal : kNormalResults) {
        if (normal.call == call && normal.hr == hr) return HresultText(hr) + ": " + normal.meaning;
    }
    return HresultText(hr);
}

std::string Win32ErrorText(DWORD error) {
    zx::unique_hlocal buffer;
    const DWORD length =
        ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                         nullptr, error, 0, reinterpret_cast<LPWSTR>(buffer.put()), 0, nullptr);
    std::string text =
        length ? WideToUtf8(std::wstring_view(static_cast<const wchar_t*>(buffer.get()), length)) : std::string();
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == '.' || text.back() == ' '))
        text.pop_back();
    return text.empty() ? "error " + std::to_string(error) : text + " (error " + std::to_string(error) + ")";
}

}  // namespace drvhost
