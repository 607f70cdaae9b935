#include "shortcuts/shortcut_job.h"

#include "settings/feature_keywords.h"
#include "settings/option_access.h"

#include <array>
#include <utility>

namespace zx {
namespace {

// Built-in picture -> picture of the modified shortcut.
constexpr std::array<std::pair<int32_t, int32_t>, 5> kModifiedBitmaps = {{
    {148, 155},
    {149, 157},
    {151, 158},
    {152, 159},
    {153, 160},
}};
constexpr int32_t kModifiedGeneralBitmap = 154;
constexpr int32_t kFactoryDefaultsBitmap = 153;

// The position of the current option among the feature's options; nothing when either is unknown.
std::optional<int32_t> CurrentOptionIndex(const VUIProperties& properties, const std::string& feature) {
    const PCSTR current = properties.CurrentOption(feature.c_str());
    if (current == nullptr) return std::nullopt;
    const std::span<const PCSTR> options = properties.FeatureOptions(feature.c_str());
    for (size_t index = 0; index < options.size(); ++index) {
        if (KeywordIs(options[index], current)) return static_cast<int32_t>(index);
    }
    return std::nullopt;
}

}  // namespace

JobSettings CurrentJobSettings(const VUIProperties& properties, const VUIPSItem& shortcuts) {
    JobSettings settings;
    for (const std::string& feature : shortcuts.AllSettingsRecord().features) {
        if (feature == Feature::PaperSize) {
            if (properties.CurrentOption(Feature::PaperSize) != nullptr) {
                settings[feature] = static_cast<int32_t>(properties.PaperIndex());
            }
        } else if (const std::optional<int32_t> index = CurrentOptionIndex(properties, feature)) {
            settings[feature] = *index;
        }
    }
    return settings;
}

LONG ItemSelectionForSetting(const VUIPSItem& shortcuts, const PrintShortcutRecord& record, size_t position,
                             int32_t comboSelection, const VUIProperties& properties) {
    const int32_t driverOption = shortcuts.ToDriverOption(record, position, comboSelection);
    if (position < record.features.size() && record.features[position] == Feature::PaperSize) {
        return properties.PaperItemPosition(static_cast<DWORD>(driverOption));
    }
    return driverOption;
}

HRESULT ApplyShortcutSetting(const VUIPSItem& shortcuts, const PrintShortcutRecord& record, size_t position,
                             int32_t comboSelection, const VUIProperties& properties) {
    if (position >= record.features.size()) return E_INVALIDARG;
    const std::string& feature = record.features[position];
    const POPTITEM item = properties.Item(feature.c_str());
    if (item == nullptr) return S_FALSE;

    const LONG selection = ItemSelectionForSetting(shortcuts, record, position, comboSelection, properties);
    if (item->pOptType == nullptr || selection < 0 || selection >= item->pOptType->Count) return E_INVALIDARG;
    if (feature == Feature::DocumentNUp && properties.PrivateDevMode() != nullptr) {
        properties.PrivateDevMode()->dwNUpIndex = static_cast<DWORD>(selection);
    }
    item->Sel = selection;
    return properties.CommitOptItem(item);
}

int32_t TakeOverJobSetting(const VUIPSItem& shortcuts, PrintShortcutRecord& pending, size_t position,
                           bool jobHasCustomPaperSize) {
    if (position >= pending.features.size()) return -1;
    const std::string& feature = pending.features[position];
    if (feature == Feature::PaperSize && jobHasCustomPaperSize) return -1;
    const auto job = shortcuts.CurrentSettings().find(feature);
    const int32_t jobOption = job == shortcuts.CurrentSettings().end() ? 0 : job->second;
    const int32_t option = shortcuts.ToShortcutOption(pending, position, jobOption);
    if (option >= 0) pending.settings[feature] = option;
    return option;
}

int32_t ModifiedShortcutBitmap(int32_t builtInBitmap) noexcept {
    for (const auto& [builtIn, modified] : kModifiedBitmaps) {
        if (builtIn == builtInBitmap) return modified;
    }
    return kModifiedGeneralBitmap;
}

int32_t StandardSheetModifiedBitmap(int32_t builtInBitmap) noexcept {
    if (builtInBitmap == kFactoryDefaultsBitmap) return kModifiedGeneralBitmap;
    return ModifiedShortcutBitmap(builtInBitmap);
}

PrintShortcutRecord PendingShortcutFrom(const PrintShortcutRecord& source, int32_t sourceIndex) {
    PrintShortcutRecord pending = source;
    pending.isBuiltIn = pending.isStored = pending.inPrinterData = false;
    pending.isAvailable = true;
    if (source.isBuiltIn) {
        pending.bitmapId = ModifiedShortcutBitmap(source.bitmapId);
        pending.baseIndex = sourceIndex;
    }
    return pending;
}

}  // namespace zx
