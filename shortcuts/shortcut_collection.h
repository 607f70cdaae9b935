// The shortcut collection of one Printing Shortcuts page: the built-in shortcuts that the driver's
// feature description declares (the hidden feature PrintingShortcut, one hidden feature per
// shortcut, ShortcutBitmaps), the all-settings record with every option of every shortcut
// setting (AllSettingsfor_PS), the user's stored shortcuts, and at most one pending shortcut at
// the end. It also translates between a shortcut's options and the core driver's option indexes
// (through the display-name keys that both sides share) and finds the shortcut that matches the
// job's current settings.
#pragma once

#include "device/bidi_data.h"
#include "settings/ui_properties.h"
#include "shortcuts/shortcut_record.h"
#include "shortcuts/shortcut_store.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The job's settings: feature keyword -> the core driver's option index (for PaperSize, the
// paper index, which does not count the custom size).
using JobSettings = std::map<std::string, int32_t>;

// What ListToRecord needs of the page's list view, without the list view itself.
struct ShortcutListView {
    std::function<int32_t()> selectionMark;                 // -1 without one
    std::function<std::wstring(int32_t listIndex)> itemText;  // at most 255 characters
};

inline constexpr wchar_t kAllSettingsShortcutName[] = L"All Settings Shortcut";

class VUIPSItem {
public:
    // The accessory record may be null when the page never shows shortcuts; it is not owned.
    explicit VUIPSItem(IBiDiData* biDiData) noexcept : m_biDiData(biDiData) {}
    virtual ~VUIPSItem() = default;
    VUIPSItem(const VUIPSItem&) = delete;
    VUIPSItem& operator=(const VUIPSItem&) = delete;

    // Builds the all-settings record from the options of AllSettingsfor_PS and their display
    // names. False when the feature has no item. Throws std::bad_alloc.
    bool BuildAllSettings(const VUIProperties& properties, const OEMCUIPPARAM* uiParams);
    // Builds the shortcut list: the built-in shortcuts in the driver's order with their pictures
    // and settings, then the stored user shortcuts (the store is created for the printer of the
    // parameter block); hides two-sided shortcuts when the printer has no duplex unit and no
    // manual two-sided printing. Run after BuildAllSettings. False when PrintingShortcut has no
    // item. Throws std::bad_alloc.
    bool BuildShortcuts(const VUIProperties& properties, const OEMCUIPPARAM* uiParams);

    void SetCurrentSettings(const JobSettings& settings) { m_currentSettings = settings; }
    const JobSettings& CurrentSettings() const noexcept { return m_currentSettings; }

    // The shortcut list: built-in shortcuts, stored user shortcuts, then the pending shortcut.
    const std::vector<PrintShortcutRecord>& Records() const noexcept { return m_records; }
    std::vector<PrintShortcutRecord>& Records() noexcept { return m_records; }
    int32_t Count() const noexcept { return static_cast<int32_t>(m_records.size()); }
    // Copies the record; false when the index is negative or not below the count.
    bool GetRecord(int32_t index, PrintShortcutRecord& record) const;

    const PrintShortcutRecord& AllSettingsRecord() const noexcept { return m_allSettings; }
    // The all-settings option lists of a feature; empty when the feature is not listed.
    const ShortcutOptionNames& AllSettingsOptionNames(std::string_view feature) const;
    const ShortcutOptionIndexes& AllSettingsOptionIndexes(std::string_view feature) const;
    // The media a black-only device does not offer in shortcuts; empty on a colour device.
    const zx::MonochromeMediaMap& MonochromeMedia() const noexcept { return m_monochromeMedia; }

    // False while a pending shortcut (not yet stored) exists.
    bool AllStored() const noexcept;

    VPrintShortcutStore& Store() noexcept { return m_store; }
    const VPrintShortcutStore& Store() const noexcept { return m_store; }
    DWORD ReadCurrentShortcut(DWORD& index) const { return m_store.ReadCurrentShortcut(index); }
    DWORD WriteCurrentShortcut(int32_t index) const { return m_store.WriteCurrentShortcut(index); }
    DWORD WriteCustomBitmapId(int32_t bitmapId) const { return m_store.WriteCustomBitmapId(bitmapId); }
    DWORD SaveShortcut(const PrintShortcutRecord& record) const { return m_store.SaveShortcut(record); }
    DWORD DeleteShortcut(const wchar_t* name) const { return m_store.DeleteShortcut(name); }

    // Deletes the stored value named after the record and removes the record from the list.
    // Always true; an index outside the list changes nothing.
    bool DeleteRecord(int32_t index);

    // A combo selection of setting position k of a record as the core driver's option index of
    // the setting's feature: the option's key looked up in the all-settings lists; 0 when the
    // record or the all-settings lists lack it.
    int32_t ToDriverOption(const PrintShortcutRecord& record, size_t position, int32_t comboSelection) const;
    // The other way: the record's option index for a driver option, or -1 when the record does
    // not offer that option.
    int32_t ToShortcutOption(const PrintShortcutRecord& record, size_t position, int32_t driverOption) const;
    // True when every setting of the record chooses the option the job has (a job without the
    // feature has option 0; a setting whose feature the all-settings lists lack matches).
    bool Matches(const PrintShortcutRecord& record) const;
    // The shortcut that matches the job: the preferred one (the last applied) when it matches,
    // else the first listed one that does. Shortcuts that are not listed (not available) never
    // match. False when none matches.
    bool FindMatching(int32_t preferredIndex, int32_t& index) const;
    // The record that an item of the page's list shows (-1: the list's selection mark). The list
    // leaves out records that are not available; while any is left out, an item is matched to
    // the first record of its text from its own index on. -1 for no item.
    int32_t ListToRecord(int32_t listIndex, const ShortcutListView& list) const;

    // The index of the pending shortcut (the last record, while it is not stored), or -1.
    int32_t PendingIndex() const noexcept;
    // Makes `record` the pending shortcut at the end of the list. It takes over the name and
    // naming state of the pending shortcut it replaces; without one it is unnamed and called
    // `newShortcutName`. Returns its index.
    int32_t SetPendingShortcut(PrintShortcutRecord record, std::wstring_view newShortcutName);
    // Stores the pending shortcut when the user has named it (its name is not `newShortcutName`,
    // compared ignoring case); it then stays in the list as a stored shortcut. kStoreOk when
    // stored, kStoreFailed when there was nothing to store or the store refused.
    DWORD StorePendingShortcut(std::wstring_view newShortcutName);
    // The first record with that name, compared ignoring case, or -1.
    int32_t FindByNameIgnoringCase(std::wstring_view name) const;

private:
    std::optional<size_t> AllSettingsPosition(std::string_view feature) const;
    void PrepareMonochromeMedia(const VUIProperties& properties, const OEMCUIPPARAM* uiParams);
    PrintShortcutRecord BuiltInShortcut(const VUIProperties& properties, const OEMCUIPPARAM* uiParams,
                                        const OPTITEM& shortcuts, const OPTITEM* bitmaps, size_t index,
                                        const char* keyword) const;
    void HideTwoSidedShortcuts(const VUIProperties& properties);

    std::vector<PrintShortcutRecord> m_records;
    JobSettings m_currentSettings;
    PrintShortcutRecord m_allSettings;
    zx::MonochromeMediaMap m_monochromeMedia;
    VPrintShortcutStore m_store;
    IBiDiData* m_biDiData = nullptr;
};
