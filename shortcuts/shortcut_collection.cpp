#include "shortcuts/shortcut_collection.h"

#include "resources/resource_names.h"
#include "settings/feature_keywords.h"
#include "settings/option_access.h"
#include "settings/option_items.h"
#include "shortcuts/shortcut_text.h"
#include "util/text.h"

#include <algorithm>
#include <cwchar>

namespace {

// The core driver's display names are read no further than this.
constexpr size_t kMaxDisplayName = 32768;

const ShortcutOptionNames kNoOptionNames;
const ShortcutOptionIndexes kNoOptionIndexes;

size_t OptionCount(const OPTITEM* item) noexcept {
    if (item == nullptr || item->pOptType == nullptr || item->pOptType->pOptParam == nullptr) return 0;
    return item->pOptType->Count;
}

// The display name of an option of an item; empty for a missing option or a resource number.
std::wstring_view DisplayNameOf(const OPTITEM* item, size_t option) noexcept {
    if (option >= OptionCount(item)) return {};
    const LPWSTR text = item->pOptType->pOptParam[option].pData;
    if (text == nullptr || IS_INTRESOURCE(text)) return {};
    return std::wstring_view(text, ::wcsnlen(text, kMaxDisplayName));
}

std::string NarrowDisplayName(const OPTITEM* item, size_t option) {
    return zx::NarrowText(DisplayNameOf(item, option));
}

// The item of a feature; null when there is none. An empty keyword would match the first item.
const OPTITEM* FeatureItem(const OEMCUIPPARAM* uiParams, const char* feature) noexcept {
    POPTITEM item = nullptr;
    if (feature == nullptr || *feature == '\0') return nullptr;
    if (FAILED(zx::GetFeatureOptItem(uiParams, feature, &item))) return nullptr;
    return item;
}

// The settings of an option list (keywords from the core helper, display names from the item),
// each passed through `adjust` before it is added. Keywords that name no setting add nothing.
template <typename Adjust>
void AppendSettings(PrintShortcutRecord& record, std::span<const PCSTR> keywords, const OPTITEM* item,
                    Adjust&& adjust) {
    const size_t count = std::min(keywords.size(), OptionCount(item));
    for (size_t option = 0; option < count; ++option) {
        if (keywords[option] == nullptr) continue;
        const std::optional<ShortcutSetting> setting = zx::ParseSettingDefinition(keywords[option]);
        if (!setting) continue;
        std::string definition = NarrowDisplayName(item, option);
        adjust(*setting, definition);
        zx::AppendSetting(record, *setting, definition);
    }
}

int32_t BitmapOfName(const std::string& name) {
    static const zx::PrintShortcutNameTable names;
    if (name.empty()) return zx::kDefaultShortcutBitmap;
    return names.LookupResourceName(name).value_or(zx::kDefaultShortcutBitmap);
}

bool NamesEqualIgnoringCase(std::wstring_view a, std::wstring_view b) noexcept {
    return ::CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) ==
           CSTR_EQUAL;
}

}  // namespace

bool VUIPSItem::BuildAllSettings(const VUIProperties& properties, const OEMCUIPPARAM* uiParams) {
    const std::span<const PCSTR> keywords = properties.FeatureOptions(Feature::AllSettingsfor_PS);
    const OPTITEM* item = FeatureItem(uiParams, Feature::AllSettingsfor_PS);
    if (item == nullptr) return false;

    m_allSettings = PrintShortcutRecord{};
    AppendSettings(m_allSettings, keywords, item, [](const ShortcutSetting&, std::string&) {});
    m_allSettings.SetName(kAllSettingsShortcutName);
    m_allSettings.bitmapId = zx::kDefaultShortcutBitmap;
    m_allSettings.isBuiltIn = m_allSettings.isStored = m_allSettings.isNamed = true;
    return true;
}

bool VUIPSItem::BuildShortcuts(const VUIProperties& properties, const OEMCUIPPARAM* uiParams) {
    m_store = VPrintShortcutStore(uiParams != nullptr ? uiParams->pPrinterName : nullptr, false);
    const std::span<const PCSTR> keywords = properties.FeatureOptions(Feature::PrintingShortcut);
    const OPTITEM* shortcuts = FeatureItem(uiParams, Feature::PrintingShortcut);
    if (shortcuts == nullptr) return false;
    const OPTITEM* bitmaps = FeatureItem(uiParams, Feature::ShortcutBitmaps);

    m_monochromeMedia.clear();
    if (m_biDiData != nullptr && m_biDiData->GetColorPrinting() == 0) PrepareMonochromeMedia(properties, uiParams);

    m_records.clear();
    for (size_t index = 0; index < OptionCount(shortcuts); ++index) {
        const char* keyword = index < keywords.size() ? keywords[index] : nullptr;
        m_records.push_back(BuiltInShortcut(properties, uiParams, *shortcuts, bitmaps, index, keyword));
    }
    m_store.LoadShortcuts(m_records, m_allSettings);
    HideTwoSidedShortcuts(properties);
    return true;
}

PrintShortcutRecord VUIPSItem::BuiltInShortcut(const VUIProperties& properties, const OEMCUIPPARAM* uiParams,
                                               const OPTITEM& shortcuts, const OPTITEM* bitmaps, size_t index,
                                               const char* keyword) const {
    PrintShortcutRecord record;
    record.SetName(DisplayNameOf(&shortcuts, index));
    record.bitmapId = BitmapOfName(NarrowDisplayName(bitmaps, index));
    record.isBuiltIn = record.isStored = record.isNamed = record.isAvailable = true;
    record.baseIndex = 0;

    const OPTITEM* definitions = FeatureItem(uiParams, keyword);
    if (definitions == nullptr) return record;
    const bool monochrome = !m_monochromeMedia.empty();
    AppendSettings(record, properties.FeatureOptions(keyword), definitions,
                   [&](const ShortcutSetting& setting, std::string& definition) {
                       if (!monochrome || setting.feature != Feature::MediaType) return;
                       bool chosenDropped = false;
                       definition = zx::RestrictToMonochromeMedia(definition, m_monochromeMedia, chosenDropped);
                       if (chosenDropped) record.isAvailable = false;
                   });
    return record;
}

// The media keys that the MediaType option of MonoConfig lists, each with its option index in
// the all-settings media list.
void VUIPSItem::PrepareMonochromeMedia(const VUIProperties& properties, const OEMCUIPPARAM* uiParams) {
    const std::span<const PCSTR> keywords = properties.FeatureOptions(Feature::MonoConfig);
    const OPTITEM* item = FeatureItem(uiParams, Feature::MonoConfig);
    const ShortcutOptionIndexes& mediaIndexes = AllSettingsOptionIndexes(Feature::MediaType);
    for (size_t option = 0; option < std::min(keywords.size(), OptionCount(item)); ++option) {
        if (!zx::KeywordIs(keywords[option], Feature::MediaType)) continue;
        const std::string keys = NarrowDisplayName(item, option);
        for (std::string_view key : zx::SplitPieces(keys, ';')) {
            if (key.empty()) continue;
            const auto index = mediaIndexes.find(std::string(key));
            m_monochromeMedia.emplace(key, index == mediaIndexes.end() ? -1 : index->second);
        }
    }
}

// Without a duplex unit and without manual two-sided printing, shortcuts that print on both
// sides are not listed, and modified two-sided pictures fall back to the general one.
void VUIPSItem::HideTwoSidedShortcuts(const VUIProperties& properties) {
    if (properties.ManualDuplexSupported() != 0 ||
        !zx::KeywordIs(properties.CurrentOption(Feature::DuplexUnit), Option::False)) {
        return;
    }
    for (PrintShortcutRecord& record : m_records) {
        // An absent Duplex setting counts as off; it is not added, so that the record's stored
        // text keeps the field count of its base record.
        if (record.SettingOf(Feature::Duplex) != 0) record.isAvailable = false;
        if (record.bitmapId >= 158 && record.bitmapId <= 160) record.bitmapId = 154;
    }
}

bool VUIPSItem::GetRecord(int32_t index, PrintShortcutRecord& record) const {
    if (index < 0 || index >= Count()) return false;
    record = m_records[static_cast<size_t>(index)];
    return true;
}

std::optional<size_t> VUIPSItem::AllSettingsPosition(std::string_view feature) const {
    const auto& features = m_allSettings.features;
    const auto found = std::find(features.begin(), features.end(), feature);
    if (found == features.end()) return std::nullopt;
    const size_t position = static_cast<size_t>(found - features.begin());
    if (position >= m_allSettings.optionNames.size() || position >= m_allSettings.optionIndexByName.size()) {
        return std::nullopt;
    }
    return position;
}

const ShortcutOptionNames& VUIPSItem::AllSettingsOptionNames(std::string_view feature) const {
    const std::optional<size_t> position = AllSettingsPosition(feature);
    return position ? m_allSettings.optionNames[*position] : kNoOptionNames;
}

const ShortcutOptionIndexes& VUIPSItem::AllSettingsOptionIndexes(std::string_view feature) const {
    const std::optional<size_t> position = AllSettingsPosition(feature);
    return position ? m_allSettings.optionIndexByName[*position] : kNoOptionIndexes;
}

bool VUIPSItem::AllStored() const noexcept {
    return std::all_of(m_records.begin(), m_records.end(), [](const PrintShortcutRecord& r) { return r.isStored; });
}

bool VUIPSItem::DeleteRecord(int32_t index) {
    if (index < 0 || index >= Count()) return true;
    const auto record = m_records.begin() + index;
    m_store.DeleteShortcut(record->name);
    m_records.erase(record);
    return true;
}

int32_t VUIPSItem::ToDriverOption(const PrintShortcutRecord& record, size_t position, int32_t comboSelection) const {
    if (position >= record.features.size()) return 0;
    const ShortcutOptionIndexes& driverOptions = AllSettingsOptionIndexes(record.features[position]);
    const auto found = driverOptions.find(std::string(record.OptionKey(position, comboSelection)));
    return found == driverOptions.end() ? 0 : found->second;
}

int32_t VUIPSItem::ToShortcutOption(const PrintShortcutRecord& record, size_t position, int32_t driverOption) const {
    if (position >= record.features.size() || position >= record.optionIndexByName.size()) return -1;
    const ShortcutOptionNames& driverKeys = AllSettingsOptionNames(record.features[position]);
    const auto key = driverKeys.find(driverOption);
    if (key == driverKeys.end()) return -1;
    const ShortcutOptionIndexes& offered = record.optionIndexByName[position];
    const auto found = offered.find(key->second);
    return found == offered.end() ? -1 : found->second;
}

bool VUIPSItem::Matches(const PrintShortcutRecord& record) const {
    for (size_t position = 0; position < record.features.size(); ++position) {
        const std::string& feature = record.features[position];
        const std::optional<size_t> listed = AllSettingsPosition(feature);
        if (!listed) continue;
        const auto job = m_currentSettings.find(feature);
        const int32_t jobOption = job == m_currentSettings.end() ? 0 : job->second;
        if (record.OptionKey(position, record.SettingOf(feature)) != m_allSettings.OptionKey(*listed, jobOption)) {
            return false;
        }
    }
    return true;
}

bool VUIPSItem::FindMatching(int32_t preferredIndex, int32_t& index) const {
    const auto matches = [this](int32_t candidate) {
        const PrintShortcutRecord& record = m_records[static_cast<size_t>(candidate)];
        return record.isAvailable && Matches(record);
    };
    if (preferredIndex >= 0 && preferredIndex < Count() && matches(preferredIndex)) {
        index = preferredIndex;
        return true;
    }
    for (int32_t candidate = 0; candidate < Count(); ++candidate) {
        if (candidate != preferredIndex && matches(candidate)) {
            index = candidate;
            return true;
        }
    }
    return false;
}

int32_t VUIPSItem::ListToRecord(int32_t listIndex, const ShortcutListView& list) const {
    if (listIndex == -1) listIndex = list.selectionMark ? list.selectionMark() : -1;
    if (listIndex < 0) return -1;
    const bool everyRecordListed =
        std::all_of(m_records.begin(), m_records.end(), [](const PrintShortcutRecord& r) { return r.isAvailable; });
    if (everyRecordListed || !list.itemText) return listIndex;

    PrintShortcutRecord item;
    item.SetName(list.itemText(listIndex));
    for (int32_t record = listIndex; record < Count(); ++record) {
        if (m_records[static_cast<size_t>(record)].Name() == item.Name()) return record;
    }
    return listIndex;
}

int32_t VUIPSItem::PendingIndex() const noexcept {
    if (m_records.empty() || m_records.back().isStored) return -1;
    return Count() - 1;
}

int32_t VUIPSItem::SetPendingShortcut(PrintShortcutRecord record, std::wstring_view newShortcutName) {
    const int32_t pending = PendingIndex();
    if (pending >= 0) {
        const PrintShortcutRecord& replaced = m_records[static_cast<size_t>(pending)];
        record.SetName(replaced.Name());
        record.isNamed = replaced.isNamed;
        m_records.pop_back();
    } else {
        record.SetName(newShortcutName);
        record.isNamed = false;
    }
    record.isStored = false;
    m_records.push_back(std::move(record));
    return Count() - 1;
}

DWORD VUIPSItem::StorePendingShortcut(std::wstring_view newShortcutName) {
    const int32_t pending = PendingIndex();
    if (pending < 0) return zx::kStoreFailed;
    PrintShortcutRecord& record = m_records[static_cast<size_t>(pending)];
    if (!record.isNamed || NamesEqualIgnoringCase(record.Name(), newShortcutName)) return zx::kStoreFailed;
    record.isStored = true;
    return m_store.SaveShortcut(record);
}

int32_t VUIPSItem::FindByNameIgnoringCase(std::wstring_view name) const {
    for (int32_t index = 0; index < Count(); ++index) {
        if (NamesEqualIgnoringCase(m_records[static_cast<size_t>(index)].Name(), name)) return index;
    }
    return -1;
}
