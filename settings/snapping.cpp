#include "settings/snapping.h"

#include "settings/feature_keywords.h"
#include "settings/option_access.h"
#include "util/result.h"

#include <charconv>
#include <cstring>
#include <span>
#include <string>

namespace zx {
namespace {

// A rule read field by field from left to right.
class RuleReader {
public:
    explicit RuleReader(std::string_view rule) noexcept : m_rest(rule) {}

    // The current field: the text up to the next ":" or the end.
    std::string_view Field() const noexcept { return m_rest.substr(0, m_rest.find(':')); }
    bool FieldIsClosed() const noexcept { return m_rest.find(':') != std::string_view::npos; }

    // Moves to the field after the next ":"; false when there is none.
    bool NextField() noexcept {
        const size_t separator = m_rest.find(':');
        if (separator == std::string_view::npos) return false;
        m_rest.remove_prefix(separator + 1);
        return true;
    }

private:
    std::string_view m_rest;
};

// A decimal number at the start of the text; 0 when there is none or it does not fit.
INT32 ReadDecimal(std::string_view text) noexcept {
    INT32 value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() ? value : 0;
}

// Writes the media suffix of a media code: "_" before each "."-separated part.
class MediaNameWriter {
public:
    explicit MediaNameWriter(MediaTypeName& name) noexcept : m_name(name) { m_name[0] = L'\0'; }

    void AppendPart(std::string_view part) noexcept {
        Append(L'_');
        for (char c : part) Append(static_cast<wchar_t>(static_cast<unsigned char>(c)));
    }

private:
    void Append(wchar_t c) noexcept {
        if (m_length + 1 >= kMediaTypeNameLength) return;
        m_name[m_length++] = c;
        m_name[m_length] = L'\0';
    }

    MediaTypeName& m_name;
    size_t m_length = 0;
};

void ReadMediaCode(std::string_view code, SnappingRecord& record, MediaTypeName& mediaName) noexcept {
    MediaNameWriter writer(mediaName);
    for (int part = 0;; ++part) {
        const size_t dot = code.find('.');
        const std::string_view number = code.substr(0, dot);
        writer.AppendPart(number);
        if (part == 0) record.mediaFirst = ReadDecimal(number);
        if (part == 1) record.mediaSecond = ReadDecimal(number);
        if (dot == std::string_view::npos) return;
        code.remove_prefix(dot + 1);
    }
}

std::string_view BoundedRule(PCSTR rule) noexcept { return {rule, ::strnlen(rule, kMaxSnappingRuleLength)}; }

// True when a rule key names the paper: the keyword itself, or for borderless printing the
// keyword behind "BORDERLESS_".
bool KeyNamesPaper(std::string_view key, bool borderless, std::string_view paper) noexcept {
    if (!borderless) return key == paper;
    const std::string_view prefix = kBorderlessRulePrefix;
    return key.starts_with(prefix) && key.substr(prefix.size()) == paper;
}

}  // namespace

std::optional<std::string_view> SnappingRuleKey(std::string_view rule) noexcept {
    const size_t separator = rule.find(':');
    if (separator == std::string_view::npos) return std::nullopt;
    return rule.substr(0, separator);
}

void ParseSnappingRule(PCSTR rule, SnappingRecord& record, MediaTypeName& mediaName) noexcept {
    if (rule == nullptr) return;
    RuleReader reader(BoundedRule(rule));
    if (!reader.NextField() || !reader.FieldIsClosed()) return;
    ReadMediaCode(reader.Field(), record, mediaName);
    reader.NextField();
    record.inputBin = ReadDecimal(reader.Field());
    if (!reader.NextField()) return;
    record.quality = ReadDecimal(reader.Field());
    // F4, the media type's resource name, is the property sheet's.
    if (!reader.NextField() || !reader.NextField()) return;
    record.borderless = ReadDecimal(reader.Field());
}

LONG SnapForTicket(IPrintCoreHelper* helper, const DEVMODEW* devMode, DWORD devModeSize, SnappingRecord* record,
                   MediaTypeName& mediaName) noexcept {
    if (helper == nullptr || record == nullptr) return E_POINTER;
    PCSTR rulesOption = nullptr, media = nullptr, borderless = nullptr, inputBin = nullptr, paper = nullptr;
    ZX_RETURN_IF_FAILED(GetOptionOf(helper, devMode, devModeSize, Feature::SnappingData, &rulesOption));
    ZX_RETURN_IF_FAILED(GetOptionOf(helper, devMode, devModeSize, Feature::MediaType, &media));
    GetOptionOf(helper, devMode, devModeSize, Feature::BorderlessPrint, &borderless);
    ZX_RETURN_IF_FAILED(GetOptionOf(helper, devMode, devModeSize, Feature::InputBin, &inputBin));
    if (FAILED(GetOptionOf(helper, devMode, devModeSize, Feature::PaperSize, &paper))) return kNoSnappingRule;

    PCSTR* rules = nullptr;
    DWORD count = 0;
    const HRESULT listed = helper->EnumOptions(Feature::SnappingData, &rules, &count);
    if (FAILED(listed) || rules == nullptr || count == 0) return kNoSnappingRule;

    const bool borderlessOn = KeywordIs(borderless, Option::BorderlessOverspray);
    for (PCSTR rule : std::span<const PCSTR>(rules, count)) {
        if (rule == nullptr) continue;
        const std::optional<std::string_view> key = SnappingRuleKey(BoundedRule(rule));
        if (!key || !KeyNamesPaper(*key, borderlessOn, paper)) continue;
        ParseSnappingRule(rule, *record, mediaName);
        return listed;
    }
    return kNoSnappingRule;
}

std::string_view SnappingRuleField(std::string_view remainder, int field) noexcept {
    if (field < 1) return {};
    RuleReader reader(remainder);
    for (int skipped = 1; skipped < field; ++skipped) {
        if (!reader.NextField()) return {};
    }
    return reader.Field();
}

INT32 SnappingRuleNumber(std::string_view remainder, int field) noexcept {
    return ReadDecimal(SnappingRuleField(remainder, field));
}

}  // namespace zx

void VSnappingTable::Load(IPrintCoreHelper* helper) {
    if (helper == nullptr) return;
    const std::span<const PCSTR> rules = zx::FeatureOptions(helper, Feature::SnappingData);
    m_enabled = !rules.empty();
    m_remainders.clear();
    for (PCSTR rule : rules) {
        if (rule == nullptr) continue;
        const std::string_view text = zx::BoundedRule(rule);
        const std::optional<std::string_view> key = zx::SnappingRuleKey(text);
        if (!key) continue;
        m_remainders.insert_or_assign(std::string(*key), std::string(text.substr(key->size() + 1)));
    }
}

std::optional<std::string_view> VSnappingTable::Find(std::string_view key) const {
    const auto found = m_remainders.find(key);
    if (found == m_remainders.end()) return std::nullopt;
    return found->second;
}
