#include "printschema/paper_size_converter.h"

#include "printschema/application_detection.h"
#include "printschema/print_schema_names.h"
#include "printschema/ticket_writer.h"
#include "resources/resource_libraries.h"
#include "settings/feature_keywords.h"
#include "settings/option_access.h"
#include "settings/snapping.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <iterator>

namespace {

using PrintSchema::Prefix::Framework;
using PrintSchema::Prefix::Private;

constexpr size_t kPrivatePrefixLength = std::size(PrintSchema::Prefix::Private) - 1;
constexpr DWORD kFirstSystemWithManualTwoSided = 6;
constexpr const wchar_t* kQualityNames[] = {L"Draft", L"Normal", L"High"};
constexpr const wchar_t* kBorderlessNames[] = {L"None", L"Borderless"};

bool Equals(PCSTR option, PCSTR expected) { return option != nullptr && std::strcmp(option, expected) == 0; }

// The name of an index, or null for an index the table has no name for.
template <size_t N>
const wchar_t* NameOf(const wchar_t* const (&names)[N], INT32 index) {
    return index >= 0 && static_cast<size_t>(index) < N ? names[index] : nullptr;
}

void AnnounceAppend() { ::OutputDebugStringW(L"Element appended successfully..."); }

// A standard feature whose selection the trackers compare with the private feature that holds
// what was last written into the ticket from the DEVMODE.
struct TrackedFeature {
    const wchar_t* feature;
    const wchar_t* previousFeature;
    DWORD changeFlag;
    bool previousHasPrefix;    // compare the stored value after its "ns0000:"
    bool storesWithoutPrefix;  // the new stored value drops a private prefix of the current one
};

constexpr TrackedFeature kMediaType = {L"PageMediaType", L"JobMediaTypePrev", kUserChangedMediaType, false, true};
constexpr TrackedFeature kQuality = {L"PageOutputQuality", L"JobOutputQualityPrev", kUserChangedQuality, true, false};

class VPaperSizeTicketWriter {
public:
    explicit VPaperSizeTicketWriter(VTicketWriter& ticket) noexcept : m_ticket(ticket) {}

    // 1 when the ticket's choice differs from the one last written from the DEVMODE: the change
    // is flagged in the private block and recorded in the ticket; else 0.
    int Track(const TrackedFeature& tracked, const DevModeContext& context) {
        zx::unique_bstr current, previous;
        if (FAILED(m_ticket.GetSelectedOption(tracked.feature, current.put())) || !current ||
            FAILED(m_ticket.GetPrefixedSelectedOption(tracked.previousFeature, previous.put(), Private)) || !previous) {
            return 0;
        }
        if (SameChoice(tracked, current.get(), previous.get())) return 0;

        context.AddUserChange(tracked.changeFlag);
        if (SUCCEEDED(m_ticket.DeletePrefixedFeature(L"JobTouchByUser", Private)))
            m_ticket.AppendPrivateFeature(L"JobTouchByUser", L"On");
        if (SUCCEEDED(m_ticket.DeletePrefixedFeature(tracked.previousFeature, Private)) &&
            ::SysStringLen(current.get()) > 0) {
            VStringBuffer stored;
            if (tracked.storesWithoutPrefix) {
                m_ticket.RemovePrefix(std::move(current), Private, stored);
            } else {
                stored.Append(current.get());
            }
            m_ticket.AppendPrivateFeature(tracked.previousFeature, stored.c_str());
        }
        return 1;
    }

    HRESULT WriteFromDevMode(const DevModeContext& context) {
        RecordPrintingApplication(m_ticket);
        WriteManualTwoSided(context);
        WriteDraftResolution(context);
        return WriteSnappedSettings(context);
    }

private:
    static bool SameChoice(const TrackedFeature& tracked, const wchar_t* current, const wchar_t* previous) {
        if (!tracked.previousHasPrefix) return std::wcscmp(current, previous) == 0;
        // A stored value too short to hold the prefix counts as different.
        return std::wcslen(previous) >= kPrivatePrefixLength &&
               std::wcscmp(current, previous + kPrivatePrefixLength) == 0;
    }

    // Two-sided printing by hand is on when the user asked for it, or when the printer has no
    // two-sided unit, on systems that support it.
    void WriteManualTwoSided(const DevModeContext& context) {
        PCSTR manual = nullptr, unit = nullptr;
        context.Option(Feature::ZXPrintOnBothSidesManually, &manual);
        context.Option(Feature::DuplexUnit, &unit);
        if (FAILED(m_ticket.FindPrefixedFeature(L"JobZXPrintOnBothSidesManually", Framework, Private))) return;

        const bool wanted = Equals(manual, "ON") || Equals(unit, Option::False);
        const bool supported = zx::GetSystemMajorVersion() >= kFirstSystemWithManualTwoSided;
        if (wanted && !supported) StopTwoSidedPrinting(context);
        if (SUCCEEDED(m_ticket.ReplacePrivateFeature(L"JobZXPrintOnBothSidesManually",
                                                     wanted && supported ? L"ON" : L"OFF"))) {
            AnnounceAppend();
        }
    }

    // Without manual two-sided printing the job cannot print on both sides.
    void StopTwoSidedPrinting(const DevModeContext& context) {
        PCSTR duplex = nullptr;
        context.Option(Feature::Duplex, &duplex);
        if (FAILED(m_ticket.FindFeature(L"JobDuplexAllDocumentsContiguously")) || Equals(duplex, "NONE")) return;
        if (SUCCEEDED(m_ticket.DeleteFeature(L"JobDuplexAllDocumentsContiguously")) &&
            SUCCEEDED(m_ticket.AppendPrivateFeature(L"JobDuplexAllDocumentsContiguously", L"NONE"))) {
            AnnounceAppend();
        }
    }

    // Draft quality prints at 300 dpi: a ticket's resolution is replaced by ns0000:_300x300.
    void WriteDraftResolution(const DevModeContext& context) {
        PCSTR quality = nullptr;
        zx::ComPtr<IXMLDOMElement> feature, option;
        if (FAILED(context.Option(Feature::PageOutputQuality, &quality)) || !Equals(quality, Option::Draft) ||
            FAILED(m_ticket.FindFeature(L"PageResolution")) ||
            FAILED(m_ticket.CreatePrefixedFeatureOption(L"PageResolution", L"_300x300", &feature, &option,
                                                        m_ticket.KeywordsPrefix(), Private)) ||
            FAILED(m_ticket.ReplaceFeatures(m_ticket.KeywordsPrefix(), L"PageResolution", feature.Get()))) {
            return;
        }
        for (const wchar_t* axis : {L"ResolutionX", L"ResolutionY"}) {
            zx::ComPtr<IXMLDOMElement> resolution;
            if (SUCCEEDED(m_ticket.CreateIntegerScoredProperty(axis, 300, &resolution)))
                m_ticket.AppendChild(option.Get(), resolution.Get());
        }
    }

    // The media type, paper source, quality and borderless setting that the printer's snapping
    // rules give the job's paper size, unless the user chose media, quality or source himself.
    HRESULT WriteSnappedSettings(const DevModeContext& context) {
        PCSTR touched = nullptr;
        if (context.Option(Feature::TouchByUser, &touched) != S_OK || Equals(touched, "On")) return S_OK;
        zx::SnappingRecord record{};
        zx::MediaTypeName mediaName = {};
        if (zx::SnapForTicket(context.helper.Get(), context.devMode, context.devModeSize, &record, mediaName) != 0) {
            return S_OK;
        }

        const wchar_t* quality = NameOf(kQualityNames, record.quality);
        const wchar_t* borderless = NameOf(kBorderlessNames, record.borderless);
        wchar_t inputBin[16];
        std::swprintf(inputBin, std::size(inputBin), L"%c%d", L'_', record.inputBin);
        // Each feature is replaced only when the ticket has it.
        m_ticket.ReplaceStandardFeature(L"PageMediaType", mediaName, Private);
        m_ticket.ReplaceStandardFeature(L"JobInputBin", inputBin, Private);
        if (quality) m_ticket.ReplaceStandardFeature(L"PageOutputQuality", quality);
        if (borderless) m_ticket.ReplaceStandardFeature(L"PageBorderless", borderless);

        HRESULT hr = m_ticket.ReplacePrivateFeature(L"JobMediaTypePrev", mediaName);
        if (quality) {
            const HRESULT qualityMemory = m_ticket.ReplacePrivateFeature(L"JobOutputQualityPrev", quality);
            if (qualityMemory != zx::kNotFound) hr = qualityMemory;
        }
        return hr;
    }

    VTicketWriter& m_ticket;
};

}  // namespace

void DevModeContext::AddUserChange(DWORD flag) const noexcept {
    if (privateBlock != nullptr && privateSize >= offsetof(VPrivateDevMode, dwUserChanges) + sizeof(DWORD)) {
        privateBlock->dwUserChanges |= flag;
    }
}

// The DEVMODE's own header may claim more than the host passed: the core helper is told no more
// than the conversion's size, so that it never reads past the host's buffer.
HRESULT DevModeContext::Option(PCSTR feature, PCSTR* option) const noexcept {
    const DWORD size = std::min<DWORD>(zx::DevModeTotalSize(devMode), devModeSize);
    return zx::GetOptionOf(helper.Get(), devMode, size, feature, option);
}

HRESULT CPaperSizeDMPTConv::ReadDevMode(PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock, ULONG privateSize,
                                        PaperSizeData&) {
    ZX_RETURN_IF_FAILED(zx::CheckDevModeArguments(devMode, privateBlock, devModeSize, privateSize));
    auto context = std::make_unique<DevModeContext>();
    context->helper = Helper();
    context->devMode = devMode;
    context->devModeSize = devModeSize;
    context->privateBlock = static_cast<VPrivateDevMode*>(privateBlock);
    context->privateSize = privateSize;
    m_context = std::move(context);
    return S_OK;
}

HRESULT CPaperSizeDMPTConv::ReadPrintTicket(VConversionDocument& ticket, PaperSizeData&) {
    VPaperSizeTicketWriter writer(ticket.Ticket());
    writer.Track(kMediaType, *m_context);
    writer.Track(kQuality, *m_context);
    return S_OK;
}

HRESULT CPaperSizeDMPTConv::WriteDevMode(const PaperSizeData&, PDEVMODEW, ULONG, PVOID, ULONG) { return S_OK; }

HRESULT CPaperSizeDMPTConv::WritePrintTicket(const PaperSizeData&, VConversionDocument& ticket) {
    VPaperSizeTicketWriter writer(ticket.Ticket());
    return writer.WriteFromDevMode(*m_context);
}

HRESULT CPaperSizeDMPTConv::CompletePrintCapabilities(IXMLDOMDocument2*, VConversionDocument& capabilities) {
    return capabilities.Get() == nullptr ? E_POINTER : S_OK;
}
