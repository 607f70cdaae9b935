#include "settings/paper.h"

#include "resources/paper_names.h"
#include "settings/feature_keywords.h"
#include "settings/option_access.h"
#include "settings/option_items.h"

#include <cstring>

namespace zx {
namespace {

// The option at the paper index: the index counts the options without CUSTOMSIZE.
PCSTR PaperKeywordAt(std::span<const PCSTR> options, DWORD paperIndex) noexcept {
    DWORD position = 0;
    for (PCSTR option : options) {
        if (KeywordIs(option, Option::CustomSize)) continue;
        if (position++ == paperIndex) return option;
    }
    return nullptr;
}

}  // namespace

DWORD PaperIndexAmong(std::span<const PCSTR> options, PCSTR current) noexcept {
    if (current == nullptr) return 0;
    DWORD customSizes = 0;
    for (size_t position = 0; position < options.size(); ++position) {
        if (KeywordIs(options[position], Option::CustomSize)) ++customSizes;
        if (KeywordIs(options[position], current)) {
            return position >= customSizes ? static_cast<DWORD>(position - customSizes) : 0;
        }
    }
    return 0;
}

DWORD CurrentPaperIndex(IPrintCoreHelper* helper) noexcept {
    return PaperIndexAmong(FeatureOptions(helper, Feature::PaperSize), CurrentOption(helper, Feature::PaperSize));
}

bool IsCustomPaperSize(IPrintCoreHelper* helper) noexcept {
    return KeywordIs(CurrentOption(helper, Feature::PaperSize), Option::CustomSize);
}

bool PaperDisplayName(IPrintCoreHelper* helper, DWORD paperIndex, UiString& text) noexcept {
    const PCSTR keyword = PaperKeywordAt(FeatureOptions(helper, Feature::PaperSize), paperIndex);
    if (keyword == nullptr) return false;
    const std::optional<UINT> stringId = PaperStringId(keyword);
    if (!stringId) return false;
    UiString name;
    if (LoadUiString(*stringId, name) == 0) return false;
    std::memcpy(text, name, sizeof(UiString));
    return true;
}

LONG PaperItemPosition(const OEMCUIPPARAM* params, IPrintCoreHelper* helper, DWORD paperIndex) noexcept {
    UiString name{};
    if (!PaperDisplayName(helper, paperIndex, name)) return 0;
    POPTITEM paper = nullptr;
    if (FAILED(GetFeatureOptItem(params, Feature::PaperSize, &paper)) || paper == nullptr) return 0;
    return FindOptionByDisplayName(*paper, name, true).value_or(0);
}

}  // namespace zx
