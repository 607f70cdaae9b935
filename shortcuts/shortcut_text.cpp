#include "shortcuts/shortcut_text.h"

#include "shortcuts/leading_number.h"

#include <cwchar>

namespace zx {
namespace {

// Reads the comma-terminated fields of a stored text one by one; text after the last comma is
// never a field.
class FieldReader {
public:
    explicit FieldReader(std::wstring_view text) : m_text(text) {}

    std::optional<int32_t> Next() {
        const size_t comma = m_text.find(L',');
        if (comma == std::wstring_view::npos) return std::nullopt;
        const int32_t value = LeadingNumber(m_text.substr(0, comma));
        m_text.remove_prefix(comma + 1);
        return value;
    }

private:
    std::wstring_view m_text;
};

void AppendField(std::wstring& text, int32_t value) { text.append(std::to_wstring(value)).push_back(L','); }

// Gives every feature of the record that the all-settings record also lists the all-settings
// option lists of that feature.
void TakeAllSettingsOptionLists(PrintShortcutRecord& record, const PrintShortcutRecord& allSettings) {
    for (size_t position = 0; position < record.features.size() && position < record.optionNames.size() &&
                              position < record.optionIndexByName.size();
         ++position) {
        for (size_t listed = 0; listed < allSettings.features.size(); ++listed) {
            if (allSettings.features[listed] != record.features[position]) continue;
            if (listed < allSettings.optionNames.size()) {
                record.optionNames[position] = allSettings.optionNames[listed];
            }
            if (listed < allSettings.optionIndexByName.size()) {
                record.optionIndexByName[position] = allSettings.optionIndexByName[listed];
            }
            break;
        }
    }
}

}  // namespace

std::optional<std::wstring> FormatShortcutText(const PrintShortcutRecord& record) {
    std::wstring text;
    AppendField(text, record.baseIndex);
    AppendField(text, record.usesAllSettings ? 1 : 0);
    AppendField(text, record.bitmapId);
    for (const auto& setting : record.settings) AppendField(text, setting.second);
    if (text.size() >= kShortcutTextLength) return std::nullopt;
    return text;
}

bool IsShortcutBitmap(int32_t bitmapId) noexcept {
    return bitmapId >= 147 && bitmapId <= 160 && bitmapId != 150 && bitmapId != 156;
}

std::optional<PrintShortcutRecord> ParseShortcutText(std::wstring_view name, std::wstring_view text,
                                                     bool inPrinterData,
                                                     const std::vector<PrintShortcutRecord>& list,
                                                     const PrintShortcutRecord& allSettings) {
    if (list.empty() || text.size() >= kShortcutTextLength) return std::nullopt;
    FieldReader fields(text);

    int32_t base = fields.Next().value_or(0);
    if (base < 0 || static_cast<size_t>(base) >= list.size()) base = 0;
    PrintShortcutRecord record = list[static_cast<size_t>(base)];

    if (const std::optional<int32_t> allSettingsFlag = fields.Next(); allSettingsFlag && *allSettingsFlag != 0) {
        TakeAllSettingsOptionLists(record, allSettings);
        record.usesAllSettings = true;
    }
    record.SetName(name);
    record.isBuiltIn = false;
    record.inPrinterData = inPrinterData;
    record.isAvailable = true;
    if (const std::optional<int32_t> bitmap = fields.Next()) {
        record.bitmapId = IsShortcutBitmap(*bitmap) ? *bitmap : kDefaultShortcutBitmap;
    }
    for (auto& setting : record.settings) {
        const std::optional<int32_t> value = fields.Next();
        if (!value) break;
        setting.second = *value;
    }
    record.baseIndex = base;
    return record;
}

std::wstring FormatPrinterGuid(const GUID& guid) {
    wchar_t text[kShortcutTextLength] = {};
    std::swprintf(text, kShortcutTextLength, L"%x-%x-%x-%x%x%x%x%x%x%x%x", static_cast<unsigned>(guid.Data1),
                  static_cast<unsigned>(guid.Data2), static_cast<unsigned>(guid.Data3), guid.Data4[0], guid.Data4[1],
                  guid.Data4[2], guid.Data4[3], guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
    return text;
}

}  // namespace zx
