#include "settings/sheet_snapping.h"

#include "resources/resource_libraries.h"
#include "resources/resource_names.h"
#include "resources/string_ids.h"
#include "settings/feature_keywords.h"
#include "settings/option_access.h"
#include "settings/option_items.h"

#include <algorithm>
#include <string>

namespace zx {
namespace {

// Rule fields read by the sheet.
constexpr int kInputBinField = 2;
constexpr int kQualityField = 3;
constexpr int kMediaNameField = 4;
constexpr int kBorderlessField = 5;

LONG OptionCount(const OPTITEM& item) noexcept { return item.pOptType != nullptr ? item.pOptType->Count : 0; }

// The job's paper as the core driver keeps it in the sheet's public DEVMODE.
PCSTR CurrentPaper(const VUIProperties& settings) noexcept {
    const OEMCUIPPARAM* params = settings.UiParams();
    PCSTR paper = nullptr;
    GetJobOption(settings.CoreHelper(), params != nullptr ? params->pPublicDM : nullptr, Feature::PaperSize, &paper);
    return paper;
}

// The position of `keyword` among the first `shown` option keywords of the feature; 0 when none.
LONG PositionAmong(std::span<const PCSTR> options, LONG shown, std::string_view keyword) noexcept {
    const size_t compared = std::min(options.size(), static_cast<size_t>(std::max(shown, LONG{0})));
    for (size_t position = 0; position < compared; ++position) {
        if (KeywordIs(options[position], keyword)) return static_cast<LONG>(position);
    }
    return 0;
}

UINT MediaNameStringId(std::optional<std::string_view> rule) {
    const std::string_view name = rule ? SnappingRuleField(*rule, kMediaNameField) : std::string_view();
    if (name.empty()) return StringId::FallbackMediaType;
    static const PrintShortcutNameTable names;
    const std::optional<int32_t> number = names.LookupResourceName(name);
    return number && *number >= 0 ? static_cast<UINT>(*number) : StringId::FallbackMediaType;
}

}  // namespace

std::optional<std::string_view> FindSheetSnappingRule(const VUIProperties& settings, const VSnappingTable& table,
                                                      const OPTITEM* borderless) {
    const PCSTR paper = CurrentPaper(settings);
    if (paper == nullptr) return std::nullopt;
    if (borderless != nullptr && borderless->Sel != 0) {
        if (auto rule = table.Find(std::string(kBorderlessRulePrefix) + paper)) return rule;
    }
    return table.Find(paper);
}

void SnapPaperSource(const VUIProperties& settings, const VSnappingTable& table, OPTITEM& inputBin,
                     OPTITEM* borderless) {
    const std::optional<std::string_view> rule = FindSheetSnappingRule(settings, table, borderless);
    if (!rule) {
        inputBin.Sel = 0;
        return;
    }
    inputBin.Sel = PositionAmong(settings.FeatureOptions(Feature::InputBin), OptionCount(inputBin),
                                 SnappingRuleField(*rule, kInputBinField));
    const INT32 borderlessOption = SnappingRuleNumber(*rule, kBorderlessField);
    if (borderlessOption != 0 && borderless != nullptr && IsOptionIndex(*borderless, borderlessOption)) {
        borderless->Sel = borderlessOption;
    }
}

void SnapPrintQuality(const VUIProperties& settings, const VSnappingTable& table, OPTITEM& quality,
                      const OPTITEM* borderless) {
    const std::optional<std::string_view> rule = FindSheetSnappingRule(settings, table, borderless);
    if (!rule) return;
    const INT32 option = SnappingRuleNumber(*rule, kQualityField);
    quality.Sel = IsOptionIndex(quality, option) ? option : 1;
}

void SnapMediaType(const VUIProperties& settings, const VSnappingTable& table, OPTITEM& mediaType,
                   const OPTITEM* borderless) {
    UiString name{};
    LoadUiString(MediaNameStringId(FindSheetSnappingRule(settings, table, borderless)), name);
    mediaType.Sel = FindOptionByDisplayName(mediaType, name, false).value_or(0);
}

}  // namespace zx
