// One printing shortcut and the pieces it is built from: the field table that turns the names of
// the driver's shortcut definitions into feature keywords and label texts, and the parsing of a
// setting's definition text ("S;K0;K1;...": the chosen key, then the keys the setting offers).
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zx {

// A shortcut's display name: at most 255 characters and the terminator.
inline constexpr size_t kShortcutNameLength = 256;
// The picture of a shortcut when nothing else is known.
inline constexpr int32_t kDefaultShortcutBitmap = 147;

}  // namespace zx

// Per setting position: option index -> display-name resource key (an IDS_ name), and back.
using ShortcutOptionNames = std::map<int32_t, std::string>;
using ShortcutOptionIndexes = std::map<std::string, int32_t>;

struct PrintShortcutRecord {
    int32_t bitmapId = zx::kDefaultShortcutBitmap;
    wchar_t name[zx::kShortcutNameLength] = {};
    bool isBuiltIn = false;
    bool isStored = false;
    bool isNamed = false;
    bool inPrinterData = false;
    bool isAvailable = false;
    // One entry per setting position, parallel to `features`.
    std::vector<ShortcutOptionNames> optionNames;
    std::vector<ShortcutOptionIndexes> optionIndexByName;
    // Feature keyword -> the shortcut's option index; the map's order is the storage order.
    std::map<std::string, int32_t> settings;
    // The settings in definition order: position k is shown by the page's k-th combo box.
    std::vector<std::string> features;
    // The label text of each setting position.
    std::vector<int32_t> featureIds;
    bool usesAllSettings = false;
    // For a user shortcut: the list index of the shortcut it was derived from.
    int32_t baseIndex = 0;

    // Copies at most 255 characters of `text` and terminates the name.
    void SetName(std::wstring_view text) noexcept;
    std::wstring_view Name() const noexcept;

    // The shortcut's option index for a feature; 0 when the shortcut does not set it.
    int32_t SettingOf(std::string_view feature) const;
    // The display-name key of an option of setting position k; empty when either is unknown.
    std::string_view OptionKey(size_t position, int32_t option) const;

    bool operator==(const PrintShortcutRecord&) const = default;
};

// A setting of a shortcut definition: the feature it sets and the string id of its label.
struct ShortcutSetting {
    std::string feature;
    int32_t labelId = 0;
    bool operator==(const ShortcutSetting&) const = default;
};

struct ShortcutField {
    const char* name;
    const char* feature;
    int32_t labelId;
};

// The names that the driver's shortcut definitions use for settings: "MediaType", "PrintQuality",
// "PaperSize", "Borderless", "Duplex", "PagesPerSheet", "Orientation".
class ShortcutFieldTable {
public:
    static std::span<const ShortcutField> Rows() noexcept;
    // Whole-name, case-sensitive lookup in row order; nothing when no row has the name.
    static std::optional<ShortcutSetting> Lookup(std::string_view name);
};

namespace zx {

// The setting a definition option keyword stands for: "Feature:Number" gives the feature and the
// number as label string id (no digits read as 0); any other keyword is looked up in the field
// table. Nothing for an unknown name or an empty feature keyword: such an option adds no setting.
std::optional<ShortcutSetting> ParseSettingDefinition(std::string_view keyword);

// The option lists of one setting position, from the display name "S;K0;K1;...;Kn" of the option
// that defines it: K0..Kn numbered 0..n in both maps (a key listed twice keeps its first number,
// except that the last piece always takes its own), and the number of the first offered key
// equal to S as the chosen option. A text without ";" offers nothing and chooses nothing.
struct SettingOptionLists {
    ShortcutOptionNames optionNames;
    ShortcutOptionIndexes optionIndexByName;
    std::optional<int32_t> chosen;
};
SettingOptionLists ParseSettingOptions(std::string_view definition);

// Adds a setting position to a record: its feature, label and option lists; the chosen option,
// when the definition names one of the offered keys, becomes the record's setting.
void AppendSetting(PrintShortcutRecord& record, const ShortcutSetting& setting, std::string_view definition);

// The media keys that the driver's "MonoConfig" feature lists for a black-only device, each with
// its option index in the core driver's media list (-1 when the all-settings lists lack it). The
// standard sheet hides these media on such a device, so the shortcuts do not offer them either.
using MonochromeMediaMap = std::map<std::string, int32_t>;

// The definition of a MediaType setting as a black-only device offers it: every piece before the
// last ";" stays only when the map does not hold it; the last piece always stays. `chosenDropped`
// tells whether the chosen medium (the first piece) was dropped.
std::string RestrictToMonochromeMedia(std::string_view definition, const MonochromeMediaMap& media,
                                      bool& chosenDropped);

// Splits a text at every `separator`.
std::vector<std::string_view> SplitPieces(std::string_view text, char separator);

}  // namespace zx
