#include "printschema/nup_converter.h"

#include "printschema/devmode_options.h"
#include "printschema/option_names.h"
#include "printschema/print_schema_names.h"
#include "printschema/ticket_writer.h"
#include "settings/feature_keywords.h"

#include <cwchar>
#include <iterator>

namespace {

using PrintSchema::Prefix::Framework;
using PrintSchema::Prefix::Private;

// By entry index: the Print Schema feature and the DEVMODE features of pages and their order.
constexpr const wchar_t* kNUpFeatures[] = {L"JobNUpAllDocumentsContiguously", L"DocumentNUp"};
constexpr PCSTR kPagesFeatures[] = {Feature::JobNUpAllDocumentsContiguously, Feature::DocumentNUp};
constexpr PCSTR kDirectionFeatures[] = {Feature::JobNUpContiguouslyPresentationOrder, Feature::PresentationDirection};

constexpr const wchar_t* kDirectionNames[] = {L"RightBottom", L"BottomRight", L"LeftBottom", L"BottomLeft",
                                              L"RightTop",    L"TopRight",    L"LeftTop",    L"TopLeft"};
constexpr DWORD kDirectionCount = std::size(kDirectionNames);

class VNUpTicketWriter {
public:
    explicit VNUpTicketWriter(VTicketWriter& ticket) noexcept : m_ticket(ticket) {}

    // The first N-up feature of the ticket that shows more than one page per sheet, with its
    // direction; zx::kNotFound when the ticket has none.
    HRESULT ReadNUp(NUpEntry& entry) {
        HRESULT hr = zx::kNotFound;
        for (DWORD feature = 0; feature < std::size(kNUpFeatures); ++feature) {
            zx::unique_bstr direction;  // an absent feature has no direction either: not found
            INT32 pages = 0;
            hr = m_ticket.GetSubFeatureOption(kNUpFeatures[feature], L"PresentationDirection", direction.put());
            if (SUCCEEDED(hr)) hr = m_ticket.GetScoredPropertyInt(kNUpFeatures[feature], L"PagesPerSheet", &pages);
            if (FAILED(hr) && hr != zx::kNotFound) return hr;
            if (FAILED(hr) || pages <= 1) continue;
            entry.featureIndex = feature;
            entry.pagesPerSheet = static_cast<DWORD>(pages);
            const size_t position =
                direction ? PositionOfOptionName(direction.get(), kDirectionNames) : kDirectionCount;
            if (position < kDirectionCount) entry.direction = static_cast<DWORD>(position);
            return S_OK;
        }
        return hr;
    }

    // A ticket without the N-up feature skips the N-up steps without failing, so that the
    // converters after this one still write theirs.
    HRESULT WriteNUp(const NUpEntry& entry) {
        if (entry.featureIndex > 1 || entry.direction >= kDirectionCount) return E_INVALIDARG;
        zx::ComPtr<IXMLDOMNode> nup;
        HRESULT hr = m_ticket.FindFeature(kNUpFeatures[entry.featureIndex], &nup);
        if (SUCCEEDED(hr)) {
            hr = WriteDirection(nup.Get(), entry.direction);
            if (entry.borders == 1) hr = WriteBorders(nup.Get());
        } else if (hr == zx::kNotFound) {
            hr = S_OK;
        }
        WritePageRanges();
        return hr;
    }

private:
    // The direction as a psk:PresentationDirection inside the N-up feature, in place of the
    // private one the ticket may carry.
    HRESULT WriteDirection(IXMLDOMNode* nup, DWORD direction) {
        HRESULT hr = m_ticket.DeletePrefixedFeature(L"PresentationDirection", Private);
        zx::ComPtr<IXMLDOMElement> feature, option;
        if (SUCCEEDED(hr))
            hr = m_ticket.CreateFeatureOption(L"PresentationDirection", kDirectionNames[direction], &feature, &option);
        if (SUCCEEDED(hr)) hr = m_ticket.AppendChild(nup, feature.Get());
        return hr;
    }

    // ns0000:NUpBorders = ns0000:On inside the N-up feature, its border width a parameter of 0.
    HRESULT WriteBorders(IXMLDOMNode* nup) {
        zx::ComPtr<IXMLDOMElement> feature, option, reference, initialiser, width;
        HRESULT hr = m_ticket.CreatePrefixedFeatureOption(L"NUpBorders", L"On", &feature, &option, Private, Private);
        if (SUCCEEDED(hr))
            hr = m_ticket.CreateIntegerParameter(L"DocumentNUpPageBorderWidth", 0, &reference, &initialiser);
        if (SUCCEEDED(hr)) hr = m_ticket.WrapInPrefixedScoredProperty(L"BorderWidth", reference.Get(), &width, Private);
        if (SUCCEEDED(hr)) hr = m_ticket.AppendChild(option.Get(), width.Get());
        if (SUCCEEDED(hr)) hr = m_ticket.AppendChild(nup, feature.Get());
        if (SUCCEEDED(hr)) hr = m_ticket.AppendToRoot(PrintSchema::Vocabulary::PrintTicket, initialiser.Get());
        return hr;
    }

    // A page range other than all pages is printed at the printer's impression stage: the range
    // is rewritten with a nested ns0000:Stage = ns0000:PrinterImpression. Failures leave it.
    void WritePageRanges() {
        zx::unique_bstr option;
        if (FAILED(m_ticket.GetPrefixedSelectedOption(L"DocumentPageRanges", option.put(), Private)) || !option ||
            std::wcscmp(option.get(), L"AllPages") == 0) {
            return;
        }
        VStringBuffer range;
        if (FAILED(m_ticket.RemovePrefix(std::move(option), Private, range)) ||
            FAILED(m_ticket.DeletePrefixedFeature(L"DocumentPageRanges", Private))) {
            return;
        }
        zx::ComPtr<IXMLDOMElement> ranges, rangeOption, stage, stageOption;
        if (SUCCEEDED(m_ticket.CreatePrefixedFeatureOption(L"DocumentPageRanges", range.c_str(), &ranges, &rangeOption,
                                                           Private, Private)) &&
            SUCCEEDED(m_ticket.CreatePrefixedFeatureOption(L"Stage", L"PrinterImpression", &stage, &stageOption,
                                                           Private, Private)) &&
            SUCCEEDED(m_ticket.AppendChild(ranges.Get(), stage.Get()))) {
            m_ticket.AppendToRoot(PrintSchema::Vocabulary::PrintTicket, ranges.Get());
        }
    }

    VTicketWriter& m_ticket;
};

}  // namespace

HRESULT CNUpDMPTConv::ReadDevMode(PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock, ULONG privateSize,
                                  NUpSettings& settings) {
    ZX_RETURN_IF_FAILED(zx::CheckDevModeArguments(devMode, privateBlock, devModeSize, privateSize));
    HRESULT hr = S_OK;
    for (DWORD index = 0; index < std::size(settings.entries); ++index) {
        NUpEntry& entry = settings.entries[index];
        entry.featureIndex = index;
        hr = zx::LookupDevModeOption(Helper(), devMode, devModeSize, kPagesFeatures[index], DevModeTable::PagesPerSheet,
                                     &entry.pagesPerSheet);
        if (FAILED(hr)) continue;
        zx::LookupDevModeOption(Helper(), devMode, devModeSize, kDirectionFeatures[index], DevModeTable::Direction,
                                &entry.direction);
        hr = zx::LookupDevModeOption(Helper(), devMode, devModeSize, Feature::DrawBorders, DevModeTable::Borders,
                                     &entry.borders);
    }
    return hr;
}

HRESULT CNUpDMPTConv::ReadPrintTicket(VConversionDocument& ticket, NUpSettings& settings) {
    VNUpTicketWriter writer(ticket.Ticket());
    NUpEntry local{};
    const HRESULT hr = writer.ReadNUp(local);
    if (hr == zx::kNotFound) {
        for (NUpEntry& entry : settings.entries) entry.pagesPerSheet = 1;
        return S_OK;
    }
    if (FAILED(hr)) return hr;
    if (local.featureIndex > 1 || local.direction >= kDirectionCount) return E_FAIL;
    settings.entries[local.featureIndex] = local;
    return S_OK;
}

HRESULT CNUpDMPTConv::WriteDevMode(const NUpSettings&, PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock,
                                   ULONG privateSize) {
    return zx::CheckDevModeArguments(devMode, privateBlock, devModeSize, privateSize);
}

HRESULT CNUpDMPTConv::WritePrintTicket(const NUpSettings& settings, VConversionDocument& ticket) {
    VNUpTicketWriter writer(ticket.Ticket());
    const NUpEntry& entry = settings.entries[0].pagesPerSheet < 2 ? settings.entries[1] : settings.entries[0];
    return entry.pagesPerSheet > 1 ? writer.WriteNUp(entry) : S_OK;
}

HRESULT CNUpDMPTConv::CompletePrintCapabilities(IXMLDOMDocument2*, VConversionDocument& capabilities) {
    return zx::CheckCapabilitiesDocument(capabilities);
}
