#include "printschema/booklet_converter.h"

#include "printschema/devmode_options.h"
#include "printschema/option_names.h"
#include "printschema/ticket_handler.h"
#include "settings/feature_keywords.h"

namespace {

constexpr DWORD kBindingNone = 14;
constexpr DWORD kBindingOptionCount = 15;

// Print Schema binding options by index; the DEVMODE table uses the same numbers.
constexpr const wchar_t* kBindingNames[kBindingOptionCount] = {L"Bale",
                                                               L"BindBottom",
                                                               L"BindLeft",
                                                               L"BindRight",
                                                               L"BindTop",
                                                               L"Booklet",
                                                               L"JapaneseBooklet",
                                                               L"EdgeStitchBottom",
                                                               L"EdgeStitchLeft",
                                                               L"EdgeStitchRight",
                                                               L"EdgeStitchTop",
                                                               L"Fold",
                                                               L"JogOffset",
                                                               L"Trim",
                                                               L"None"};

DWORD BindingIndexOf(BSTR option) {
    const size_t position = PositionOfOptionName(option, kBindingNames);
    return position < kBindingOptionCount ? static_cast<DWORD>(position) : kBindingNone;
}

// The binding option's index, or kBindingNone for a name outside the table.
HRESULT ReadBinding(VPrintTicketHandler& ticket, BookletSettings& entry) {
    zx::unique_bstr option;
    const HRESULT hr = ticket.GetSelectedOption(L"DocumentBinding", option.put());
    if (FAILED(hr)) return hr;
    entry.bindingOption = BindingIndexOf(option.get());
    INT32 gutter = 0;
    if (SUCCEEDED(ticket.GetScoredPropertyInt(L"DocumentBinding", L"BindingGutter", &gutter))) {
        entry.gutter = static_cast<DWORD>(gutter);
    }
    return S_OK;
}

bool IsValidEntry(const BookletSettings& entry) {
    return entry.featureIndex == 0 && entry.bindingOption < kBindingOptionCount;
}

}  // namespace

HRESULT VBookletDMPrintticketConv::ReadDevMode(PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock,
                                               ULONG privateSize, BookletSettings& settings) {
    ZX_RETURN_IF_FAILED(zx::CheckDevModeArguments(devMode, privateBlock, devModeSize, privateSize));
    settings.featureIndex = 0;
    return zx::LookupDevModeOption(Helper(), devMode, devModeSize, Feature::DocumentBinding, DevModeTable::Binding,
                                   &settings.bindingOption);
}

HRESULT VBookletDMPrintticketConv::ReadPrintTicket(VConversionDocument& ticket, BookletSettings& settings) {
    BookletSettings entry{};
    HRESULT hr = ReadBinding(ticket.Ticket(), entry);
    if (hr == zx::kNotFound) {
        entry.bindingOption = kBindingNone;
        hr = S_OK;
    }
    if (FAILED(hr)) return hr;
    if (!IsValidEntry(entry)) return E_FAIL;
    settings = entry;
    return S_OK;
}

HRESULT VBookletDMPrintticketConv::WriteDevMode(const BookletSettings& settings, PDEVMODEW devMode, ULONG devModeSize,
                                                PVOID privateBlock, ULONG privateSize) {
    ZX_RETURN_IF_FAILED(zx::CheckDevModeArguments(devMode, privateBlock, devModeSize, privateSize));
    const PCSTR keyword = zx::DevModeKeywordFor(DevModeTable::Binding, settings.bindingOption);
    if (keyword == nullptr) return S_OK;  // a binding the core driver does not offer
    if (Helper() == nullptr) return E_POINTER;
    const PRINT_FEATURE_OPTION pair = {Feature::DocumentBinding, keyword};
    DWORD written = 0, result = 0;
    return Helper()->SetOptions(devMode, devModeSize, TRUE, &pair, 1, &written, &result);
}

HRESULT VBookletDMPrintticketConv::WritePrintTicket(const BookletSettings& settings, VConversionDocument&) {
    if (settings.bindingOption != kBindingNone && !IsValidEntry(settings)) return E_INVALIDARG;
    return S_OK;
}

HRESULT VBookletDMPrintticketConv::CompletePrintCapabilities(IXMLDOMDocument2*, VConversionDocument& capabilities) {
    return zx::CheckCapabilitiesDocument(capabilities);
}
