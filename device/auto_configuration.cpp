#include "device/auto_configuration.h"

#include "device/port_discovery.h"
#include "device/printer_access.h"
#include "resources/resource_libraries.h"
#include "resources/resource_names.h"
#include "settings/feature_keywords.h"
#include "settings/option_items.h"
#include "util/text.h"

#include <algorithm>
#include <cwchar>
#include <string>
#include <string_view>

namespace zx {
namespace {

// Option 0 of a configuration item is "installed", option 1 "not installed".
constexpr LONG kInstalled = 0;
constexpr LONG kNotInstalled = 1;

// The ports whose printers are attached directly, so that there is no device to ask again.
constexpr std::wstring_view kLocalPortDescriptions[] = {L"Printer Port", L"Serial Port", L"Local Port"};

// A configuration item that the device's answer can set, with its manual-change value.
struct Accessory {
    const char* feature;
    const wchar_t* manualChange;
    int32_t (IBiDiData::*reported)() const;
};
constexpr Accessory kTray2Accessory{Feature::Tray2, kTray2ManuallyChanged, &IBiDiData::GetTrayState2};
constexpr Accessory kPhotoTrayAccessory{Feature::PhotoTrayUnit, kPhotoTrayManuallyChanged, &IBiDiData::GetPhotoTray};
constexpr Accessory kManualChanges[] = {
    {Feature::DuplexUnit, kDuplexUnitManuallyChanged, &IBiDiData::GetDuplexUnit},
    kTray2Accessory,
    kPhotoTrayAccessory,
};

// The input bin that a missing tray takes away, by the bin's display name.
struct TrayBin {
    Accessory accessory;
    const wchar_t* binName;
};
constexpr TrayBin kTrayBins[] = {{kTray2Accessory, L"Tray 2"}, {kPhotoTrayAccessory, L"Photo Tray"}};

VPrinterAccess PrinterOf(const VUICallbackContext& context) {
    const OEMCUIPPARAM* params = context.UiParams();
    return VPrinterAccess(params->pPrinterName, params->hPrinter);
}

// The manual-change value as read; empty when the printer's data lacks it.
void ReadManualChange(VPrinterAccess& printer, const wchar_t* name, unique_variant& value) {
    if (printer.ReadValue(name, value) != VPrinterAccess::ValueRead::Read) value.reset();
}

bool IsAbsent(const unique_variant& value) noexcept { return value.type() == VT_EMPTY; }

bool IsSetFlag(const unique_variant& value) noexcept { return value.type() == VT_BOOL && (*value).boolVal != 0; }

bool ChangedByHand(VPrinterAccess& printer, const wchar_t* name) {
    unique_variant value;
    ReadManualChange(printer, name, value);
    return !IsAbsent(value);
}

void SetPrinterItem(const VUICallbackContext& context, OPTITEM& item, LONG selection, DWORD addedFlags) {
    item.Sel = selection;
    item.Flags |= addedFlags;
    context.CommitPrinterOptItem(&item);
}

void AdaptDuplexUnit(const VUICallbackContext& context, VPrinterAccess& printer, const IBiDiData& record) {
    POPTITEM item = context.Item(Feature::DuplexUnit);
    if (item == nullptr || ChangedByHand(printer, kDuplexUnitManuallyChanged)) return;
    if (record.GetDuplexUnit()) {
        SetPrinterItem(context, *item, kInstalled, 0);
    } else {
        SetPrinterItem(context, *item, kNotInstalled, OPTIF_DISABLED);
    }
}

// A tray that the device reports is selected and locked; one it reports missing is locked only
// when the answer is reliable, since defaults after a failed query know nothing of trays.
void AdaptTray(const VUICallbackContext& context, VPrinterAccess& printer, const IBiDiData& record,
               const Accessory& tray) {
    POPTITEM item = context.Item(tray.feature);
    if (item == nullptr || ChangedByHand(printer, tray.manualChange)) return;
    if ((record.*tray.reported)()) {
        SetPrinterItem(context, *item, kInstalled, OPTIF_DISABLED);
    } else if (record.IsReliable()) {
        SetPrinterItem(context, *item, kNotInstalled, OPTIF_DISABLED);
    }
}

bool IsLocalPort(const std::wstring& description) {
    for (std::wstring_view local : kLocalPortDescriptions) {
        if (description == local) return true;
    }
    return false;
}

void DisableAutoconfigOnLocalPort(const VUICallbackContext& context, VPrinterAccess& printer) {
    POPTITEM item = context.Item(Feature::Autoconfig);
    if (item == nullptr) return;
    const PRINTER_INFO_2W* info = printer.GetPrinterInfo();
    if (info == nullptr || info->pPortName == nullptr || info->pPortName[0] == L'\0') return;
    if (IsLocalPort(GetPortDescription(info->pPortName))) SetPrinterItem(context, *item, 0, OPTIF_DISABLED);
}

// Hides every option from index 1 on whose display name is `binName`, selects option 1 and hands
// the item back once.
void HideInputBin(const VUICallbackContext& context, const wchar_t* binName) {
    POPTITEM bins = context.Item(Feature::InputBin);
    if (bins == nullptr || bins->pOptType == nullptr || bins->pOptType->pOptParam == nullptr) return;
    for (WORD option = 1; option < bins->pOptType->Count; ++option) {
        OPTPARAM& param = bins->pOptType->pOptParam[option];
        if (param.pData == nullptr || IS_INTRESOURCE(param.pData) || std::wcscmp(param.pData, binName) != 0) continue;
        param.Flags = OPTPF_HIDE;
        bins->Sel = 1;
    }
    context.CommitOptItem(bins);
}

void AdaptTrayBin(const VUICallbackContext& context, VPrinterAccess& printer, const IBiDiData& record,
                  const TrayBin& tray) {
    const PCSTR current = context.CurrentOption(tray.accessory.feature);
    unique_variant manual;
    if (current != nullptr) ReadManualChange(printer, tray.accessory.manualChange, manual);
    const bool missing = !(record.*tray.accessory.reported)() && IsAbsent(manual);
    const bool removedByHand = KeywordIs(current, Option::False) && IsSetFlag(manual);
    if (missing || removedByHand) HideInputBin(context, tray.binName);
}

// The display text of option `index` of an item; empty when there is none.
const wchar_t* OptionText(const OPTITEM* item, size_t index) {
    if (item == nullptr || item->pOptType == nullptr || item->pOptType->pOptParam == nullptr) return L"";
    if (index >= item->pOptType->Count) return L"";
    const LPWSTR text = item->pOptType->pOptParam[index].pData;
    return text == nullptr || IS_INTRESOURCE(text) ? L"" : text;
}

// Hides the MediaType options whose display names are the texts of the names listed in
// `names` (separated by ";"), handing the item back once per hidden option.
HRESULT HideMonoMediaTypes(const VUICallbackContext& context, const std::string& names, HRESULT last) {
    POPTITEM media = context.Item(Feature::MediaType);
    if (media == nullptr || media->pOptType == nullptr || media->pOptType->pOptParam == nullptr) return last;
    const PrintShortcutNameTable table;
    size_t start = 0;
    while (start <= names.size()) {
        const size_t end = std::min(names.find(';', start), names.size());
        const std::optional<int32_t> stringId =
            table.LookupResourceName(std::string_view(names).substr(start, end - start));
        start = end + 1;
        if (!stringId) continue;
        UiString text;
        if (LoadUiString(static_cast<UINT>(*stringId), text) == 0) continue;
        for (WORD option = 0; option < media->pOptType->Count; ++option) {
            if (std::wcscmp(OptionText(media, option), text) != 0) continue;
            media->pOptType->pOptParam[option].Flags |= OPTPF_HIDE;
            last = context.CommitOptItem(media);
        }
    }
    return last;
}

}  // namespace

HRESULT AdaptPrinterProperties(VUICallbackContext& context) {
    const IBiDiData* record = context.BiDiData();
    if (record == nullptr || context.UiParams() == nullptr) return E_FAIL;
    VPrinterAccess printer = PrinterOf(context);
    AdaptDuplexUnit(context, printer, *record);
    AdaptTray(context, printer, *record, kPhotoTrayAccessory);
    AdaptTray(context, printer, *record, kTray2Accessory);
    DisableAutoconfigOnLocalPort(context, printer);
    return S_OK;
}

HRESULT OnSelectionChanged(VUICallbackContext& context, IDeviceRequery& plugin) {
    if (context.UiParams() == nullptr) return S_OK;
    const OPTITEM* changed = context.CurrentItem();
    for (const Accessory& accessory : kManualChanges) {
        if (!ItemIsFeature(changed, accessory.feature)) continue;
        VPrinterAccess printer = PrinterOf(context);
        printer.WriteNumber(accessory.manualChange, 1);
    }
    RunAutoconfig(context, plugin);
    return S_OK;
}

void RunAutoconfig(VUICallbackContext& context, IDeviceRequery& plugin) {
    POPTITEM autoconfig = context.Item(Feature::Autoconfig);
    if (autoconfig == nullptr || autoconfig != context.CurrentItem() || context.UiParams() == nullptr) return;
    plugin.RequeryDevice(context.UiParams()->pPrinterName);
    SetPrinterItem(context, *autoconfig, 0, 0);

    const IBiDiData* record = plugin.CurrentDeviceRecord();
    if (record == nullptr) return;
    if (POPTITEM duplexUnit = context.Item(Feature::DuplexUnit)) {
        SetPrinterItem(context, *duplexUnit, record->GetDuplexUnit() ? kInstalled : kNotInstalled, OPTIF_CHANGED);
    }
    if (POPTITEM tray2 = context.Item(Feature::Tray2)) {
        SetPrinterItem(context, *tray2, record->GetTrayState2() ? kInstalled : kNotInstalled, OPTIF_CHANGED);
    }
}

HRESULT AdaptDocumentProperties(VUICallbackContext& context) {
    const IBiDiData* record = context.BiDiData();
    if (record == nullptr) {
        context.SetTwoSidedAvailable(1);
        return S_OK;
    }
    if (context.UiParams() == nullptr || context.UiObject() == nullptr) return S_OK;

    if (record->GetColorPrinting() == 0 && SUCCEEDED(HideMonoFeatures(context))) {
        ::OutputDebugStringW(L"DocProperties for MonoDevice has been updated successfully...");
    }
    VPrinterAccess printer = PrinterOf(context);
    for (const TrayBin& tray : kTrayBins) AdaptTrayBin(context, printer, *record, tray);

    PCSTR duplexUnit = nullptr;
    const HRESULT read = GetOptionOf(context.CoreHelper(), nullptr, 0, Feature::DuplexUnit, &duplexUnit);
    unique_variant manual;
    ReadManualChange(printer, kDuplexUnitManuallyChanged, manual);
    if (IsSetFlag(manual) && SUCCEEDED(read)) {
        context.SetTwoSidedAvailable(KeywordIs(duplexUnit, Option::False) ? 0 : 1);
    } else if (record->GetDuplexUnit()) {
        context.SetTwoSidedAvailable(1);
    }
    return read;
}

HRESULT HideMonoFeatures(VUICallbackContext& context) {
    const std::span<const PCSTR> keywords = context.FeatureOptions(Feature::MonoConfig);
    HRESULT last = S_OK;
    for (size_t index = 0; index < keywords.size(); ++index) {
        const PCSTR keyword = keywords[index];
        if (keyword == nullptr || *keyword == '\0') continue;
        if (KeywordIs(keyword, Feature::MediaType)) {
            last = HideMonoMediaTypes(context, NarrowText(OptionText(context.Item(Feature::MonoConfig), index)), last);
        } else if (POPTITEM item = context.Item(keyword)) {
            item->Flags |= OPTIF_HIDE;
            last = context.CommitOptItem(item);
        }
    }
    return last;
}

}  // namespace zx
