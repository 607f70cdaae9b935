#include "settings/option_items.h"

#include "util/result.h"

#include <cstring>

namespace zx {
namespace {

// What an item's user data points at, as far as the plug-in reads it.
struct CoreFeatureRecord {
    const void* reserved0;
    const void* reserved1;
    PCSTR keyword;
};

bool IsLookupFailure(HRESULT hr) noexcept { return hr == E_POINTER || hr == E_PENDING; }

}  // namespace

std::span<OPTITEM> DriverItems(const OEMCUIPPARAM* params) noexcept {
    if (params == nullptr || params->pDrvOptItems == nullptr) return {};
    const auto count = static_cast<LONG>(params->cDrvOptItems);
    if (count <= 0) return {};
    return {params->pDrvOptItems, static_cast<size_t>(count)};
}

PCSTR FeatureKeywordOf(const OPTITEM& item) noexcept {
    if (item.UserData == 0) return nullptr;
    return reinterpret_cast<const CoreFeatureRecord*>(item.UserData)->keyword;
}

bool ItemIsFeature(const OPTITEM* item, std::string_view feature) noexcept {
    if (item == nullptr) return false;
    const PCSTR keyword = FeatureKeywordOf(*item);
    return keyword != nullptr && feature == keyword;
}

bool IsOptionIndex(const OPTITEM& item, LONG index) noexcept {
    return item.pOptType != nullptr && index >= 0 && index < item.pOptType->Count;
}

POPTPARAM SelectedOption(const OPTITEM& item) noexcept {
    const POPTTYPE type = item.pOptType;
    if (type == nullptr || type->pOptParam == nullptr || !IsOptionIndex(item, item.Sel)) return nullptr;
    return &type->pOptParam[item.Sel];
}

std::wstring_view OptionDisplayName(const OPTPARAM& option) noexcept {
    if (option.pData == nullptr || IS_INTRESOURCE(option.pData)) return {};
    return option.pData;
}

std::optional<LONG> FindOptionByDisplayName(const OPTITEM& item, std::wstring_view name, bool ignoreCase) noexcept {
    const POPTTYPE type = item.pOptType;
    if (type == nullptr || type->pOptParam == nullptr || name.empty()) return std::nullopt;
    for (WORD position = 0; position < type->Count; ++position) {
        const std::wstring_view candidate = OptionDisplayName(type->pOptParam[position]);
        if (::CompareStringOrdinal(name.data(), static_cast<int>(name.size()), candidate.data(),
                                   static_cast<int>(candidate.size()), ignoreCase) == CSTR_EQUAL) {
            return position;
        }
    }
    return std::nullopt;
}

HRESULT GetFeatureOptItem(const OEMCUIPPARAM* params, PCSTR feature, POPTITEM* item) noexcept {
    if (params == nullptr || feature == nullptr || item == nullptr) return E_POINTER;
    if (params->pDrvOptItems == nullptr) return E_PENDING;
    *item = nullptr;

    const size_t wantedLength = std::strlen(feature);
    HRESULT recorded = S_OK;
    for (OPTITEM& candidate : DriverItems(params)) {
        const PCSTR keyword = FeatureKeywordOf(candidate);
        if (keyword == nullptr) {
            recorded = E_FAIL;
        } else if (std::strncmp(keyword, feature, wantedLength) != 0) {
            recorded = zx::kNotFound;
        } else {
            *item = &candidate;
            return S_OK;
        }
    }
    return recorded;
}

POPTITEM FindItemForDevModeField(const OEMCUIPPARAM* params, BYTE dmPubId) noexcept {
    for (OPTITEM& item : DriverItems(params)) {
        if (item.DMPubID == dmPubId) return &item;
    }
    return nullptr;
}

HRESULT HideFeatureItem(const OEMCUIPPARAM* params, PCSTR feature) noexcept {
    POPTITEM item = nullptr;
    const HRESULT hr = GetFeatureOptItem(params, feature, &item);
    if (IsLookupFailure(hr)) return hr;
    if (item != nullptr) item->Flags |= OPTIF_HIDE;
    return S_OK;
}

}  // namespace zx
