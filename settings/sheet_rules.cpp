#include "settings/sheet_rules.h"

#include "settings/feature_keywords.h"
#include "settings/option_items.h"
#include "settings/sheet_snapping.h"
#include "util/result.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <span>

namespace {

// Enabling an item sets exactly these flags; each rule that disables one names the flags that go
// with the disabled flag.
constexpr DWORD kEnabled = OPTIF_CALLBACK | OPTIF_CHANGED;
constexpr DWORD kDisabledChangedCallback = OPTIF_DISABLED | OPTIF_CHANGED | OPTIF_CALLBACK;
constexpr DWORD kDisabledCallback = OPTIF_DISABLED | OPTIF_CALLBACK;
constexpr DWORD kDisabledChanged = OPTIF_DISABLED | OPTIF_CHANGED;

// DocumentNUp option of two pages per sheet; DocumentMargins option of the binding margins.
constexpr LONG kTwoPagesPerSheet = 1;
constexpr LONG kBindingMargins = 1;

// The papers printed edge to edge, which need borderless printing.
constexpr std::string_view kEdgeToEdgePapers[] = {Option::EdgeToEdgeA4, Option::EdgeToEdgeLetter,
                                                  Option::EdgeToEdgeTabloid, Option::EdgeToEdgeA3};

void Enable(POPTITEM item) noexcept {
    if (item != nullptr) item->Flags = kEnabled;
}

void Disable(POPTITEM item, DWORD flags) noexcept {
    if (item != nullptr) item->Flags |= flags;
}

bool IsBooklet(LONG binding) noexcept { return binding == 1 || binding == 2; }

// What a rule set tells beyond the items: the session's settings object and the window and page
// hooks; each null when the caller has none.
struct RuleHooks {
    VUIProperties* session = nullptr;
    IStandardSheetWindows* windows = nullptr;
    IShortcutPagesObserver* pages = nullptr;
};

// One run of a rule set over the items of one callback.
class RuleRun {
public:
    RuleRun(const VUICallbackContext& context, VDocumentSheetRules& rules, RuleHooks hooks = {}) noexcept
        : hooks(hooks), m_context(context), m_rules(rules) {}

    const RuleHooks hooks;

    const VUICallbackContext& Context() const noexcept { return m_context; }
    VDocumentSheetRules& Rules() const noexcept { return m_rules; }

    POPTITEM Item(PCSTR feature) const noexcept { return m_context.Item(feature); }
    POPTITEM Current() const noexcept { return m_context.CurrentItem(); }
    bool CurrentIs(PCSTR feature) const noexcept { return zx::ItemIsFeature(Current(), feature); }
    bool CurrentIsAnyOf(std::initializer_list<PCSTR> features) const noexcept {
        return std::any_of(features.begin(), features.end(), [this](PCSTR feature) { return CurrentIs(feature); });
    }
    LONG PreviousSelection() const noexcept {
        return m_context.CallbackParams() != nullptr ? m_context.CallbackParams()->OldSel : 0;
    }
    HWND Dialog() const noexcept {
        return m_context.CallbackParams() != nullptr ? m_context.CallbackParams()->hDlg : nullptr;
    }

    // Hands an item (may be null) back to the core driver.
    void Commit(POPTITEM item) const noexcept { m_context.CommitCallbackOptItem(item); }
    void SelectAndCommit(POPTITEM item, LONG selection) const noexcept {
        if (item == nullptr) return;
        item->Sel = selection;
        Commit(item);
    }
    void CopyToHiddenFeature(PCSTR hiddenFeature, const OPTITEM* visible) const noexcept {
        m_context.SetHiddenFeature(hiddenFeature, visible);
    }

    // Two-sided printing is on or off by the Duplex item; neither without one.
    bool TwoSidedOn() const noexcept {
        const POPTITEM duplex = Item(Feature::Duplex);
        return duplex != nullptr && duplex->Sel != 0;
    }
    bool TwoSidedOff() const noexcept {
        const POPTITEM duplex = Item(Feature::Duplex);
        return duplex != nullptr && duplex->Sel == 0;
    }
    bool ManualTwoSidedOn() const noexcept {
        const POPTITEM manual = Item(Feature::ZXPrintOnBothSidesManually);
        return manual != nullptr && manual->Sel == 1;
    }

    VPrivateDevMode* Block() const noexcept { return m_context.PrivateDevMode(); }
    DWORD MarginsByUser() const noexcept { return Block() != nullptr ? Block()->dwMarginsByUser : 0; }
    void SetMarginsByUser(DWORD chosen) const noexcept {
        if (Block() != nullptr) Block()->dwMarginsByUser = chosen;
    }
    void SetNUpIndex(LONG selection) const noexcept {
        if (Block() != nullptr) Block()->dwNUpIndex = static_cast<DWORD>(selection);
    }
    void SetInputBinIndex(const OPTITEM* inputBin) const noexcept {
        if (inputBin != nullptr && Block() != nullptr) Block()->dwInputBinIndex = static_cast<DWORD>(inputBin->Sel);
    }

private:
    const VUICallbackContext& m_context;
    VDocumentSheetRules& m_rules;
};

// Rules shared by several callbacks.

// Maximum resolution locks the quality choice.
void LockQualityAtMaximumResolution(const RuleRun& run) {
    const POPTITEM quality = run.Item(Feature::PageOutputQuality);
    const POPTITEM maxDpi = run.Item(Feature::ZXMaxDpi);
    if (quality == nullptr || maxDpi == nullptr) return;
    if (maxDpi->Sel == 0) {
        Enable(quality);
    } else {
        Disable(quality, kDisabledCallback);
    }
}

// Draft quality prints at the second resolution (300 dpi), every other quality at the first.
void SetResolutionFromQuality(const RuleRun& run, const OPTITEM& quality) {
    run.SelectAndCommit(run.Item(Feature::Resolution), quality.Sel == 0 ? 1 : 0);
}

void OverrideSnappingWhenTouched(const RuleRun& run) {
    const POPTITEM touch = run.Item(Feature::TouchByUser);
    if (touch != nullptr && touch->Sel == 1) run.Rules().SetUserOverride();
}

// Page borders are offered only with more than one page per sheet.
void PageBordersFollowNUp(const RuleRun& run, DWORD disabledFlags) {
    const POPTITEM borders = run.Item(Feature::DrawBorders);
    if (borders == nullptr || run.Block() == nullptr) return;
    if (run.Block()->dwNUpIndex != 0) {
        Enable(borders);
        return;
    }
    run.SelectAndCommit(borders, 0);
    Disable(borders, disabledFlags);
}

// Booklet binding needs two pages per sheet.
void BookletNeedsTwoUp(const RuleRun& run) {
    const POPTITEM nup = run.Item(Feature::DocumentNUp);
    const POPTITEM binding = run.Item(Feature::DocumentBinding);
    if (nup == nullptr || binding == nullptr || nup->Sel == kTwoPagesPerSheet) return;
    run.SelectAndCommit(binding, 0);
    nup->Flags |= OPTIF_CHANGED;
}

void SnapMediaTypeAndRemember(const RuleRun& run, POPTITEM borderless) {
    const POPTITEM media = run.Item(Feature::MediaType);
    if (media == nullptr) return;
    zx::SnapMediaType(run.Context(), run.Rules().SnappingTable(), *media, borderless);
    run.Commit(media);
    run.CopyToHiddenFeature(Feature::MediaTypePrev, media);
}

void SnapPaperSourceAndCommit(const RuleRun& run, POPTITEM borderless) {
    const POPTITEM inputBin = run.Item(Feature::InputBin);
    if (inputBin == nullptr) return;
    zx::SnapPaperSource(run.Context(), run.Rules().SnappingTable(), *inputBin, borderless);
    run.Commit(inputBin);
}

// The change rules, in the order in which they run.

void QualityLock(const RuleRun& run) { LockQualityAtMaximumResolution(run); }

void QualityToResolution(const RuleRun& run) {
    if (run.CurrentIs(Feature::PageOutputQuality)) SetResolutionFromQuality(run, *run.Current());
}

void OrientationLabel(const RuleRun& run) {
    if (!run.CurrentIs(Feature::Orientation) || run.hooks.windows == nullptr) return;
    if (run.Item(Feature::ZXPrintOnBothSidesManually) == nullptr || run.ManualTwoSidedOn()) {
        run.hooks.windows->RefreshTwoSidedLabel(run.Context());
    }
}

// The user's own media type and quality end snapping and are remembered in hidden features.
void Memories(const RuleRun& run) {
    if (run.CurrentIs(Feature::MediaType)) {
        run.Rules().SetUserOverride();
        run.CopyToHiddenFeature(Feature::MediaTypePrev, run.Current());
    } else if (run.CurrentIs(Feature::PageOutputQuality)) {
        run.Rules().SetUserOverride();
        run.CopyToHiddenFeature(Feature::OutputQualityPrev, run.Current());
    }
}

void Touch(const RuleRun& run) {
    if (!run.CurrentIsAnyOf({Feature::MediaType, Feature::InputBin, Feature::PageOutputQuality})) return;
    const POPTITEM touch = run.Item(Feature::TouchByUser);
    if (touch == nullptr) return;
    run.SelectAndCommit(touch, 1);
    touch->Flags |= OPTIF_HIDE;
}

void MarginsChosen(const RuleRun& run) {
    if (run.CurrentIs(Feature::DocumentMargins) && run.Current()->Sel != run.PreviousSelection()) {
        run.SetMarginsByUser(1);
    }
}

// One-sided printing has no margins choice; two-sided printing offers it, with the binding
// margins unless the user chose before.
void TwoSidedSwitch(const RuleRun& run) {
    if (!run.CurrentIs(Feature::Duplex)) return;
    run.Commit(run.Current());
    const POPTITEM margins = run.Item(Feature::DocumentMargins);
    if (run.Current()->Sel == 0) {
        run.SetMarginsByUser(0);
        if (margins == nullptr) return;
        margins->Sel = 0;
        Disable(margins, kDisabledChangedCallback);
        run.Commit(margins);
    } else if (run.MarginsByUser() == 1) {
        Enable(margins);
    } else if (margins != nullptr) {
        margins->Sel = kBindingMargins;
        Enable(margins);
        run.Commit(margins);
    }
}

void EdgeToEdgePaper(const RuleRun& run) {
    if (!run.CurrentIs(Feature::PaperSize)) return;
    const std::span<const PCSTR> papers = run.Context().FeatureOptions(Feature::PaperSize);
    const LONG selection = run.Current()->Sel;
    if (selection < 0 || static_cast<size_t>(selection) >= papers.size() || papers[selection] == nullptr) return;
    if (std::find(std::begin(kEdgeToEdgePapers), std::end(kEdgeToEdgePapers), papers[selection]) ==
        std::end(kEdgeToEdgePapers)) {
        return;
    }
    const POPTITEM borderless = run.Item(Feature::BorderlessPrint);
    const POPTITEM media = run.Item(Feature::MediaType);
    if (borderless == nullptr || media == nullptr) return;
    borderless->Sel = 1;
    run.Commit(media);
    run.Commit(borderless);
}

void BorderlessSwitch(const RuleRun& run) {
    if (!run.CurrentIs(Feature::BorderlessPrint) || !run.Rules().SnappingApplies()) return;
    const POPTITEM media = run.Item(Feature::MediaType);
    if (media == nullptr) return;
    zx::SnapMediaType(run.Context(), run.Rules().SnappingTable(), *media, run.Current());
    run.Commit(media);
}

void NUpChanged(const RuleRun& run) {
    if (!run.CurrentIs(Feature::DocumentNUp)) return;
    if (run.hooks.session != nullptr) run.hooks.session->SetNUpChanged(1);
    run.SetNUpIndex(run.Current()->Sel);
}

void RememberPaperSource(const RuleRun& run) {
    if (!run.CurrentIsAnyOf(
            {Feature::InputBin, Feature::PaperSize, Feature::Duplex, Feature::BorderlessPrint, Feature::MediaType})) {
        return;
    }
    const POPTITEM inputBin = run.Item(Feature::InputBin);
    run.SetInputBinIndex(inputBin);
    run.Commit(inputBin);
    run.Commit(run.Item(Feature::MediaType));
    run.Commit(run.Item(Feature::Duplex));
}

void PaperChange(const RuleRun& run) {
    if (!run.CurrentIs(Feature::PaperSize) || !run.Rules().SnappingApplies()) return;
    const POPTITEM borderless = run.Item(Feature::BorderlessPrint);
    SnapMediaTypeAndRemember(run, borderless);
    SnapPaperSourceAndCommit(run, borderless);
    run.Commit(borderless);
}

void QualitySnap(const RuleRun& run) {
    if (!run.CurrentIsAnyOf({Feature::PaperSize, Feature::BorderlessPrint})) return;
    const POPTITEM quality = run.Item(Feature::PageOutputQuality);
    if (quality == nullptr || !run.Rules().SnappingApplies()) return;
    zx::SnapPrintQuality(run.Context(), run.Rules().SnappingTable(), *quality, run.Item(Feature::BorderlessPrint));
    run.Commit(quality);
    run.CopyToHiddenFeature(Feature::OutputQualityPrev, quality);
}

// A booklet is printed two pages per sheet on both sides, with binding margins; no binding goes
// back to one page per sheet, one-sided, without a margins choice.
void Booklet(const RuleRun& run) {
    if (!run.CurrentIs(Feature::DocumentBinding)) return;
    const POPTITEM nup = run.Item(Feature::DocumentNUp);
    const POPTITEM duplex = run.Item(Feature::Duplex);
    const POPTITEM margins = run.Item(Feature::DocumentMargins);
    const bool booklet = IsBooklet(run.Current()->Sel);
    if (nup != nullptr) {
        run.SelectAndCommit(nup, booklet ? kTwoPagesPerSheet : 0);
        run.SetNUpIndex(nup->Sel);
    }
    if (booklet) {
        if (duplex != nullptr && duplex->Sel == 0) {
            run.SelectAndCommit(duplex, 1);
            run.SelectAndCommit(margins, kBindingMargins);
            Enable(margins);
        }
        if (run.hooks.pages != nullptr) run.hooks.pages->OnStandardItemsChanged(run.Dialog(), run.Context());
        return;
    }
    if (duplex != nullptr && duplex->Sel != 0) run.SelectAndCommit(duplex, 0);
    run.SelectAndCommit(margins, 0);
    Disable(margins, kDisabledChangedCallback);
}

void BookletNeedsTwoSided(const RuleRun& run) {
    if (!run.CurrentIs(Feature::Duplex) || run.Current()->Sel != 0) return;
    const POPTITEM binding = run.Item(Feature::DocumentBinding);
    if (binding != nullptr && IsBooklet(binding->Sel)) run.SelectAndCommit(binding, 0);
}

void PageBorders(const RuleRun& run) { PageBordersFollowNUp(run, kDisabledChangedCallback); }

void ManualTwoSidedLabels(const RuleRun& run) {
    if (run.hooks.windows != nullptr) run.hooks.windows->FollowManualTwoSidedLabel(run.Context());
}

// Pages turned by hand get no binding margins.
void MarginsUnderManualTwoSided(const RuleRun& run) {
    const POPTITEM margins = run.Item(Feature::DocumentMargins);
    if (margins == nullptr) return;
    if (run.ManualTwoSidedOn()) {
        margins->Sel = 0;
        Disable(margins, kDisabledChangedCallback);
    } else if (!run.CurrentIs(Feature::DocumentMargins) && run.TwoSidedOn()) {
        if (run.MarginsByUser() == 0) margins->Sel = kBindingMargins;
        Enable(margins);
        run.Commit(margins);
    }
}

using Rule = void (*)(const RuleRun&);

constexpr Rule kChangeRules[] = {
    QualityLock,
    QualityToResolution,
    OrientationLabel,
    Memories,
    Touch,
    MarginsChosen,
    TwoSidedSwitch,
    EdgeToEdgePaper,
    OverrideSnappingWhenTouched,
    BorderlessSwitch,
    NUpChanged,
    RememberPaperSource,
    PaperChange,
    QualitySnap,
    Booklet,
    BookletNeedsTwoUp,
    BookletNeedsTwoSided,
    PageBorders,
    ManualTwoSidedLabels,
    MarginsUnderManualTwoSided,
};
static_assert(std::size(kChangeRules) == 20);

// The page-active rules.

void KeepMemories(const RuleRun& run) {
    const POPTITEM media = run.Item(Feature::MediaType);
    const POPTITEM mediaPrev = run.Item(Feature::MediaTypePrev);
    if (media != nullptr && mediaPrev != nullptr && mediaPrev->Sel != media->Sel) mediaPrev->Sel = media->Sel;
    const POPTITEM quality = run.Item(Feature::PageOutputQuality);
    const POPTITEM qualityPrev = run.Item(Feature::OutputQualityPrev);
    if (quality == nullptr || qualityPrev == nullptr) return;
    SetResolutionFromQuality(run, *quality);
    if (qualityPrev->Sel != quality->Sel) qualityPrev->Sel = quality->Sel;
}

void NoUserMarginsWhenOneSided(const RuleRun& run) {
    if (run.TwoSidedOff()) run.SetMarginsByUser(0);
}

void BordersAtActivation(const RuleRun& run) { PageBordersFollowNUp(run, kDisabledCallback); }

void SnapAtActivation(const RuleRun& run) {
    run.Commit(run.Item(Feature::InputBin));
    if (run.Rules().SnappingApplies()) {
        const POPTITEM borderless = run.Item(Feature::BorderlessPrint);
        SnapMediaTypeAndRemember(run, borderless);
        SnapPaperSourceAndCommit(run, borderless);
    }
    if (run.hooks.pages != nullptr) run.hooks.pages->OnStandardSelectionChanged(run.Context());
}

void QualityLockedAtActivation(const RuleRun& run) {
    const POPTITEM maxDpi = run.Item(Feature::ZXMaxDpi);
    if (maxDpi != nullptr && maxDpi->Sel != 0) Disable(run.Item(Feature::PageOutputQuality), kDisabledCallback);
}

void MarginsAtActivation(const RuleRun& run) {
    const POPTITEM margins = run.Item(Feature::DocumentMargins);
    if (margins == nullptr) return;
    if (run.TwoSidedOff()) {
        Disable(margins, kDisabledChanged);
    } else if (run.TwoSidedOn()) {
        Enable(margins);
    }
    const POPTITEM manual = run.Item(Feature::ZXPrintOnBothSidesManually);
    if (manual == nullptr) return;
    if (manual->Sel == 1) {
        margins->Sel = 0;
        Disable(margins, kDisabledChanged);
    } else if (manual->Sel == 0 && run.TwoSidedOn()) {
        Enable(margins);
    }
}

// The revert rules.

void NUpIndexFollowsItem(const RuleRun& run) {
    const POPTITEM nup = run.Item(Feature::DocumentNUp);
    if (nup == nullptr) return;
    run.SetNUpIndex(nup->Sel);
    if (nup->Sel != 0) return;
    const POPTITEM borders = run.Item(Feature::DrawBorders);
    if (borders == nullptr) return;
    run.SelectAndCommit(borders, 0);
    Disable(borders, kDisabledChangedCallback);
}

void NoMarginsWhenOneSided(const RuleRun& run) {
    const POPTITEM margins = run.Item(Feature::DocumentMargins);
    if (margins == nullptr || !run.TwoSidedOff()) return;
    run.SetMarginsByUser(0);
    margins->Sel = 0;
    Disable(margins, kDisabledChangedCallback);
    run.Commit(margins);
}

void ReapplyAllSettings(const RuleRun& run) {
    for (const auto& [controlId, feature] : run.Rules().AllSettingsFeatures()) {
        const POPTITEM nup = feature == Feature::DocumentNUp ? run.Item(Feature::DocumentNUp) : nullptr;
        // The block comes from a DEVMODE: an index beyond the options is not handed on.
        if (nup != nullptr && run.Block() != nullptr &&
            zx::IsOptionIndex(*nup, static_cast<LONG>(run.Block()->dwNUpIndex))) {
            nup->Sel = static_cast<LONG>(run.Block()->dwNUpIndex);
            nup->Flags |= OPTIF_CHANGED;
            run.Commit(nup);
        }
        run.Commit(run.Item(Feature::Orientation));
    }
}

void RunAll(const RuleRun& run, std::initializer_list<Rule> rules) {
    for (Rule rule : rules) rule(run);
}

bool ContextIsComplete(const VUICallbackContext& context) noexcept {
    return context.UiParams() != nullptr && context.UiObject() != nullptr;
}

// Runs a rule set for a complete context and turns what it throws into an HRESULT.
template <typename Body>
HRESULT RunRuleSet(const VUICallbackContext& context, Body&& body) noexcept {
    if (!ContextIsComplete(context)) return E_FAIL;
    return zx::CatchAll([&] {
        body();
        return S_OK;
    });
}

}  // namespace

HRESULT VDocumentSheetRules::LoadSnappingTable(IPrintCoreHelper* helper) noexcept {
    return zx::CatchAll([&] {
        m_snapping.Load(helper);
        return S_OK;
    });
}

HRESULT VDocumentSheetRules::ReadAllSettingsFeatures(IPrintCoreHelper* helper) noexcept {
    return zx::CatchAll([&] {
        m_allSettingsFeatures.clear();
        const std::span<const PCSTR> options = zx::FeatureOptions(helper, Feature::AllSettingsfor_PS);
        const size_t used = std::min(options.size(), kAllSettingsControlIds.size());
        for (size_t position = 0; position < used; ++position) {
            const std::string_view option = options[position] != nullptr ? options[position] : "";
            const size_t separator = option.find(':');
            const std::string_view feature = separator == std::string_view::npos ? "" : option.substr(0, separator);
            m_allSettingsFeatures[kAllSettingsControlIds[position]] = std::string(feature);
        }
        return S_OK;
    });
}

HRESULT VDocumentSheetRules::OnSelectionChanged(const VUICallbackContext& context, VUIProperties* session,
                                                IStandardSheetWindows* windows,
                                                IShortcutPagesObserver* pages) noexcept {
    return RunRuleSet(context, [&] {
        if (context.CurrentItem() == nullptr) return;
        const RuleRun run(context, *this, {session, windows, pages});
        for (Rule rule : kChangeRules) rule(run);
    });
}

HRESULT VDocumentSheetRules::OnPageActive(const VUICallbackContext& context, std::string_view deviceLanguage,
                                          IShortcutPagesObserver* pages) noexcept {
    return RunRuleSet(context, [&] {
        const RuleRun run(context, *this, {.pages = pages});
        RunAll(run, {KeepMemories, OverrideSnappingWhenTouched, NoUserMarginsWhenOneSided, BordersAtActivation});
        if (deviceLanguage != Option::PCLmS) SnapAtActivation(run);
        RunAll(run, {QualityLockedAtActivation, MarginsAtActivation});
    });
}

HRESULT VDocumentSheetRules::OnPageLeft(const VUICallbackContext& context) noexcept {
    return RunRuleSet(context, [&] {
        const RuleRun run(context, *this);
        run.Commit(run.Item(Feature::MediaType));
        const POPTITEM inputBin = run.Item(Feature::InputBin);
        run.SetInputBinIndex(inputBin);
        run.Commit(inputBin);
        run.Commit(run.Item(Feature::Duplex));
        ReapplyAllSettings(run);
    });
}

HRESULT VDocumentSheetRules::OnApply(const VUICallbackContext& context) noexcept {
    return RunRuleSet(context, [&] {
        const RuleRun run(context, *this);
        LockQualityAtMaximumResolution(run);
        run.Commit(run.Item(Feature::MediaType));
        ReapplyAllSettings(run);
    });
}

HRESULT VDocumentSheetRules::OnItemsReverted(const VUICallbackContext& context) noexcept {
    return RunRuleSet(context, [&] {
        RunAll(RuleRun(context, *this), {BookletNeedsTwoUp, NUpIndexFollowsItem, NoMarginsWhenOneSided});
    });
}

HRESULT VDocumentSheetRules::ReapplyAllSettingsFeatures(const VUICallbackContext& context) noexcept {
    return RunRuleSet(context, [&] { ReapplyAllSettings(RuleRun(context, *this)); });
}
