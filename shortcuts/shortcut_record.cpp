#include "shortcuts/shortcut_record.h"

#include "settings/feature_keywords.h"
#include "shortcuts/leading_number.h"

#include <array>
#include <cwchar>

namespace {

constexpr std::array<ShortcutField, 7> kFieldRows = {{
    {"MediaType", Feature::MediaType, 27},
    {"PrintQuality", Feature::PageOutputQuality, 29},
    {"PaperSize", Feature::PaperSize, 52},
    {"Borderless", Feature::BorderlessPrint, 28},
    {"Duplex", Feature::Duplex, 21},
    {"PagesPerSheet", Feature::DocumentNUp, 26},
    {"Orientation", Feature::Orientation, 0},
}};

}  // namespace

void PrintShortcutRecord::SetName(std::wstring_view text) noexcept {
    const size_t length = text.size() < zx::kShortcutNameLength - 1 ? text.size() : zx::kShortcutNameLength - 1;
    text.copy(name, length);
    name[length] = L'\0';
}

std::wstring_view PrintShortcutRecord::Name() const noexcept {
    return std::wstring_view(name, ::wcsnlen(name, zx::kShortcutNameLength));
}

int32_t PrintShortcutRecord::SettingOf(std::string_view feature) const {
    const auto found = settings.find(std::string(feature));
    return found == settings.end() ? 0 : found->second;
}

std::string_view PrintShortcutRecord::OptionKey(size_t position, int32_t option) const {
    if (position >= optionNames.size()) return {};
    const auto found = optionNames[position].find(option);
    return found == optionNames[position].end() ? std::string_view() : std::string_view(found->second);
}

std::span<const ShortcutField> ShortcutFieldTable::Rows() noexcept { return kFieldRows; }

std::optional<ShortcutSetting> ShortcutFieldTable::Lookup(std::string_view name) {
    for (const ShortcutField& row : kFieldRows) {
        if (name == row.name) return ShortcutSetting{row.feature, row.labelId};
    }
    return std::nullopt;
}

namespace zx {

std::vector<std::string_view> SplitPieces(std::string_view text, char separator) {
    std::vector<std::string_view> pieces;
    for (size_t start = 0;;) {
        const size_t end = text.find(separator, start);
        pieces.push_back(text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
        if (end == std::string_view::npos) return pieces;
        start = end + 1;
    }
}

std::optional<ShortcutSetting> ParseSettingDefinition(std::string_view keyword) {
    const size_t colon = keyword.find(':');
    if (colon == std::string_view::npos) return ShortcutFieldTable::Lookup(keyword);
    if (colon == 0) return std::nullopt;
    return ShortcutSetting{std::string(keyword.substr(0, colon)), LeadingNumber(keyword.substr(colon + 1))};
}

SettingOptionLists ParseSettingOptions(std::string_view definition) {
    SettingOptionLists lists;
    const std::vector<std::string_view> pieces = SplitPieces(definition, ';');
    if (pieces.size() < 2) return lists;

    // Pieces are numbered from -1: the chosen key S, then the offered keys.
    const int32_t last = static_cast<int32_t>(pieces.size()) - 2;
    for (int32_t number = 0; number < last; ++number) {
        const std::string key(pieces[static_cast<size_t>(number) + 1]);
        lists.optionNames.emplace(number, key);
        lists.optionIndexByName.emplace(key, number);
    }
    const std::string lastKey(pieces.back());
    lists.optionNames[last] = lastKey;
    lists.optionIndexByName[lastKey] = last;

    const std::string_view chosenKey = pieces.front();
    for (const auto& [number, key] : lists.optionNames) {
        if (key == chosenKey) {
            lists.chosen = number;
            break;
        }
    }
    return lists;
}

void AppendSetting(PrintShortcutRecord& record, const ShortcutSetting& setting, std::string_view definition) {
    SettingOptionLists lists = ParseSettingOptions(definition);
    record.features.push_back(setting.feature);
    record.featureIds.push_back(setting.labelId);
    record.optionNames.push_back(std::move(lists.optionNames));
    record.optionIndexByName.push_back(std::move(lists.optionIndexByName));
    if (lists.chosen) record.settings[setting.feature] = *lists.chosen;
}

std::string RestrictToMonochromeMedia(std::string_view definition, const MonochromeMediaMap& media,
                                      bool& chosenDropped) {
    const std::vector<std::string_view> pieces = SplitPieces(definition, ';');
    chosenDropped = false;
    std::string kept;
    for (size_t i = 0; i + 1 < pieces.size(); ++i) {
        if (media.count(std::string(pieces[i])) == 0) {
            kept.append(pieces[i]).push_back(';');
        } else if (i == 0) {
            chosenDropped = true;
        }
    }
    return kept.append(pieces.back());
}

}  // namespace zx
