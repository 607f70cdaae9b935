// Accessory detection: the device is asked once per query cycle through the device-model
// library, its answers are kept in the printer's driver data, and the accessory record is
// filled from them, or from the driver's "BidiDefaults" table when the device cannot be asked.
#include "device/data_map.h"
#include "device/udm_client.h"
#include "settings/feature_keywords.h"

#include <cstring>
#include <cwctype>
#include <optional>

namespace {

// "BidiQuery" is 1 while the stored answers are current; 0 or missing asks the device again.
constexpr wchar_t kQueryDone[] = L"BidiQuery";
constexpr wchar_t kQueryRestart[] = L"BiDiQuery";  // the same value, as the restart names it
constexpr wchar_t kIdentity[] = L"CID";

constexpr const wchar_t* kProtocolItems[] = {L"cfg:Protocol", L"Protocol"};

// Stored answers read into the record, in this order, each over its preset.
struct StoredAnswer {
    const wchar_t* name;
    void (VIOData::*set)(int32_t);
    int32_t preset;
};
constexpr StoredAnswer kStoredAnswers[] = {
    {L"DuplexUnit", &VIOData::SetDuplexUnit, 0},       {L"Duplex", &VIOData::SetDuplex, 0},
    {L"TrayState2", &VIOData::SetTrayState2, 0},       {L"PhotoTray", &VIOData::SetPhotoTray, 1},
    {L"ColorPrinting", &VIOData::SetColorPrinting, 1},
};

// How the device's answer to an item is stored, by the item's key.
enum class AnswerForm { Identity, Text, Flag };
struct AnswerRule {
    const wchar_t* key;
    AnswerForm form;
    const wchar_t* yes;  // for Flag: the answer that stores 1
};
constexpr AnswerRule kAnswerRules[] = {
    {L"CID", AnswerForm::Identity, nullptr},          {L"Protocol", AnswerForm::Text, nullptr},
    {L"ColorPrinting", AnswerForm::Flag, L"enabled"}, {L"DuplexUnit", AnswerForm::Flag, L"Installed"},
    {L"Duplex", AnswerForm::Flag, L"enabled"},
};

// "BidiDefaults" keys and the values they set.
struct DefaultKey {
    const char* key;
    int32_t AccessoryDefaults::*first;
    int32_t AccessoryDefaults::*second;  // may be null
};
constexpr DefaultKey kDefaultKeys[] = {
    {"DUPLEXUNIT", &AccessoryDefaults::duplexUnit, &AccessoryDefaults::duplex},
    {"TRAY2", &AccessoryDefaults::tray2, nullptr},
    {"PHOTOTRAY", &AccessoryDefaults::photoTray, nullptr},
    {"COLORSUPPORT", &AccessoryDefaults::colorPrinting, nullptr},
};
constexpr size_t kMaxDefaultKey = 259;

struct ModelMarker {
    const wchar_t* marker;
    int32_t family;
};
constexpr ModelMarker kModelMarkers[] = {{L"QAMA", kFamilyQamA}, {L"QAMB", kFamilyQamB}, {L"TORVELL", kFamilyTorvell}};

void SetBool(zx::unique_variant& value, int16_t number) {
    VARIANT* out = value.put();
    out->vt = VT_BOOL;
    out->boolVal = number;
}

void SetText(zx::unique_variant& value, const std::wstring& text) {
    zx::unique_bstr copy = zx::MakeBstr(text.data(), static_cast<UINT>(text.size()));
    VARIANT* out = value.put();
    out->vt = VT_BSTR;
    out->bstrVal = copy.release();
}

// A device answer as text; an answer that cannot be turned into text reads as empty.
std::wstring AnswerText(zx::unique_variant& answer) {
    if (answer.type() != VT_BSTR && FAILED(::VariantChangeType(answer.get(), answer.get(), 0, VT_BSTR))) {
        return {};
    }
    const BSTR text = (*answer).bstrVal;
    return text ? std::wstring(text, ::SysStringLen(text)) : std::wstring();
}

bool AskItem(IDeviceDataCollection* collection, const std::wstring& item, zx::unique_variant& answer) {
    return collection->GetValue(item.c_str(), answer.put()) == S_OK;
}

bool AskProtocol(IDeviceDataCollection* collection, zx::unique_variant& protocol) {
    for (const wchar_t* item : kProtocolItems) {
        if (AskItem(collection, item, protocol)) return true;
    }
    return false;
}

// The part of an item string under which its answer is kept: what follows the first colon.
std::wstring ItemKey(const std::wstring& item) {
    const size_t colon = item.find(L':');
    return colon == std::wstring::npos ? item : item.substr(colon + 1);
}

// "CID:" up to the next ";"; nothing when the answer has no "CID:".
std::optional<std::wstring> IdentityPart(const std::wstring& text) {
    const size_t start = text.find(L"CID:");
    if (start == std::wstring::npos) return std::nullopt;
    const size_t end = text.find(L';', start);
    return text.substr(start, end == std::wstring::npos ? std::wstring::npos : end - start);
}

// The value stored for an answered item; false when nothing is stored.
bool StoredFormOfAnswer(const std::wstring& key, const std::wstring& text, zx::unique_variant& stored) {
    for (const AnswerRule& rule : kAnswerRules) {
        if (key != rule.key) continue;
        switch (rule.form) {
        case AnswerForm::Identity: {
            const std::optional<std::wstring> identity = IdentityPart(text);
            if (identity) SetText(stored, *identity);
            return identity.has_value();
        }
        case AnswerForm::Text: SetText(stored, text); return true;
        case AnswerForm::Flag: SetBool(stored, text == rule.yes ? 1 : 0); return true;
        }
    }
    SetBool(stored, 1);
    return true;
}

// The value of a "BidiDefaults" keyword: 1 when a "1" comes before any "0" after the colon.
int32_t DefaultValue(const char* text) {
    const char* digit = std::strpbrk(text, "01");
    return digit != nullptr && *digit == '1' ? 1 : 0;
}

const DefaultKey* DefaultKeyFor(const char* key, size_t length) {
    for (const DefaultKey& entry : kDefaultKeys) {
        if (std::strlen(entry.key) == length && std::memcmp(entry.key, key, length) == 0) return &entry;
    }
    return nullptr;
}

bool Contains(const std::wstring& upper, const wchar_t* marker) { return upper.find(marker) != std::wstring::npos; }

}  // namespace

std::shared_ptr<VIOData> VUDMClient::QueryAccessories() {
    if (!m_connected) {
        EnsureRecord();
        return m_record;
    }
    // The driver data is read once for the cycle mark and the answers, and again after asking.
    std::optional<VStoredValues> stored(std::in_place, m_printer);
    zx::unique_variant queryDone;
    stored->Read(kQueryDone, queryDone);
    const bool answersCurrent = queryDone.type() == VT_BOOL && (*queryDone).boolVal != 0;
    if (!answersCurrent) {
        if (RunDeviceQuery() != S_OK) {
            if (!m_record) m_record = DefaultsRecord();
            return m_record;
        }
        m_printer.WriteNumber(kQueryDone, 1);
        stored.emplace(m_printer);
    }
    ApplyStoredAnswers(*stored, EnsureRecord());
    MatchModelFamily(*m_record, StoredIdentity(*stored));
    return m_record;
}

// The record of a device that could not be asked, from the driver's defaults.
std::shared_ptr<VIOData> VUDMClient::DefaultsRecord() {
    AccessoryDefaults values;
    ReadBidiDefaults(values);
    auto record = std::make_shared<VIOData>(values.duplexUnit, values.tray2, values.photoTray, values.colorPrinting,
                                            values.duplex);
    record->SetReliable(0);
    return record;
}

// Only answers stored as numbers replace the presets.
void VUDMClient::ApplyStoredAnswers(const VStoredValues& stored, VIOData& record) {
    for (const StoredAnswer& answer : kStoredAnswers) {
        zx::unique_variant value;
        const bool number =
            stored.Read(answer.name, value) == VPrinterAccess::ValueRead::Read && value.type() == VT_BOOL;
        (record.*answer.set)(number ? static_cast<int32_t>((*value).boolVal) : answer.preset);
    }
}

std::wstring VUDMClient::StoredIdentity(const VStoredValues& stored) {
    zx::unique_variant identity;
    if (stored.Read(kIdentity, identity) != VPrinterAccess::ValueRead::Read || identity.type() != VT_BSTR) return {};
    return AnswerText(identity);
}

HRESULT VUDMClient::RunDeviceQuery() {
    zx::unique_device_address address;
    if (!CreateDeviceAddress(address)) return E_FAIL;
    zx::ComPtr<IDeviceDataCollection> collection;
    std::wstring dataMapPath;
    CreateDataCollection(address.get(), collection.GetAddressOf(), dataMapPath);
    if (!collection) return E_FAIL;

    zx::unique_variant protocol;
    if (!AskProtocol(collection.Get(), protocol)) return S_OK;  // a device without a protocol tells nothing

    std::vector<std::wstring> items;
    if (zx::EvaluateDataMap(items, dataMapPath, AnswerText(protocol))) StoreDeviceAnswers(items, collection.Get());
    return S_OK;
}

// A failed write leaves the earlier answer, or none, in place. An item that the data map names
// like one of the plug-in's own values is not asked: its answer would overwrite that value.
void VUDMClient::StoreDeviceAnswers(const std::vector<std::wstring>& items, IDeviceDataCollection* collection) {
    for (const std::wstring& item : items) {
        const std::wstring key = ItemKey(item);
        if (IsPluginDriverDataValue(key)) continue;
        zx::unique_variant answer, stored;
        if (!AskItem(collection, item, answer)) {
            SetBool(stored, 0);
        } else if (!StoredFormOfAnswer(key, AnswerText(answer), stored)) {
            continue;
        }
        m_printer.WriteValue(key.c_str(), *stored);
    }
}

// A keyword is a key, a colon and a text; keywords without a colon are skipped and an
// overlong key ends the table.
bool VUDMClient::ReadBidiDefaults(AccessoryDefaults& values) {
    if (!m_coreHelper) return false;
    PCSTR* keywords = nullptr;
    DWORD count = 0;
    if (FAILED(m_coreHelper->EnumOptions(Feature::BidiDefaults, &keywords, &count))) return false;
    for (DWORD i = 0; keywords != nullptr && i < count; ++i) {
        const char* keyword = keywords[i];
        const char* colon = keyword ? std::strchr(keyword, ':') : nullptr;
        if (colon == nullptr) continue;
        const size_t keyLength = static_cast<size_t>(colon - keyword);
        if (keyLength > kMaxDefaultKey) break;
        const DefaultKey* entry = DefaultKeyFor(keyword, keyLength);
        if (entry == nullptr) continue;
        const int32_t value = DefaultValue(colon + 1);
        values.*entry->first = value;
        if (entry->second) values.*entry->second = value;
    }
    return true;
}

void MatchModelFamily(VIOData& record, const std::wstring& identity) {
    std::wstring upper = identity;
    for (wchar_t& c : upper) c = static_cast<wchar_t>(std::towupper(c));
    record.SetModelFamilyA(Contains(upper, L"QAMA") ? 1 : 0);
    for (const ModelMarker& marker : kModelMarkers) {
        if (!Contains(upper, marker.marker)) continue;
        record.SetModelFamily(marker.family);
        return;
    }
}

void RequeryDevice(const wchar_t* printerName, IPrintCoreHelper* coreHelper, IDeviceClientHolder& holder) {
    auto client = std::make_shared<VUDMClient>(printerName, nullptr, coreHelper);
    client->PrinterAccess().WriteNumber(kQueryRestart, 0);
    const bool connected = client->Connect();
    holder.ReplaceDeviceClient(client);
    if (connected) client->QueryAccessories();
}
