#include "printschema/devmode_options.h"

#include "util/result.h"

#include <cstring>

namespace zx {
namespace {

constexpr ULONG kPublicDevModeSize = sizeof(DEVMODEW);
constexpr size_t kOptionCapacity = 256;  // an option keyword and its terminator

// The core driver's keyword, copied into a bounded buffer before it is compared.
void CopyOption(PCSTR option, char (&copy)[kOptionCapacity]) {
    const size_t length = strnlen(option, kOptionCapacity);
    if (length == kOptionCapacity) throw CXDException(HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER));
    std::memcpy(copy, option, length + 1);
}

}  // namespace

HRESULT LookupDevModeOption(IPrintCoreHelper* helper, const DEVMODEW* devMode, ULONG devModeSize, PCSTR feature,
                            std::span<const DevModeOption> table, DWORD* value) {
    if (devMode == nullptr || feature == nullptr || table.data() == nullptr || value == nullptr) return E_POINTER;
    if (devModeSize < kPublicDevModeSize) return E_INVALIDARG;
    if (table.empty() || helper == nullptr) return zx::kNotFound;

    PCSTR option = nullptr;
    if (FAILED(helper->GetOption(devMode, devModeSize, feature, &option)) || option == nullptr) return zx::kNotFound;
    char copy[kOptionCapacity];
    CopyOption(option, copy);
    for (const DevModeOption& row : table) {
        if (std::strcmp(copy, row.keyword) == 0) {
            *value = row.value;
            return S_OK;
        }
    }
    return zx::kNotFound;
}

PCSTR DevModeKeywordFor(std::span<const DevModeOption> table, DWORD value) noexcept {
    for (const DevModeOption& row : table) {
        if (row.value == value) return row.keyword;
    }
    return nullptr;
}

}  // namespace zx
