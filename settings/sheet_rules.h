// The dependent-settings rules of the document property sheet: while the user works on the core
// driver's own pages, a paper size brings its paper source, media type and quality (snapping), an
// edge-to-edge paper turns borderless printing on, booklet binding brings two pages per sheet and
// two-sided printing, two-sided printing decides the margins choice and maximum resolution locks
// the quality.
//
// The rules run on the items of one property-sheet callback (VUICallbackContext). For a change,
// the current item already carries its new selection and the callback block its previous one.
// The window work of the callbacks (labels, window procedures) is not done here: the two steps of
// the change rules that need it call IStandardSheetWindows, and the shortcuts pages follow the
// standard page through IShortcutPagesObserver. Every rule is skipped when an item that it works
// on is missing; no rule reports an error.
#pragma once

#include "settings/snapping.h"
#include "settings/ui_properties.h"

#include <array>
#include <map>
#include <string>
#include <string_view>

// The window side of the change rules, implemented by the UI plug-in object. Both are called
// whether or not the callback has a dialog window; without one the window work is skipped.
class IStandardSheetWindows {
public:
    // The orientation changed while manual two-sided printing is on (or has no item): the
    // two-sided control shows the manual two-sided label again.
    virtual void RefreshTwoSidedLabel(const VUICallbackContext& context) = 0;
    // The step between the page-borders rule and the margins rule: the two-sided control's label
    // follows the manual two-sided item.
    virtual void FollowManualTwoSidedLabel(const VUICallbackContext& context) = 0;

protected:
    ~IStandardSheetWindows() = default;
};

// The Printing Shortcuts pages added to the sheet, as the rules tell them that the standard page
// changed; implemented by the UI plug-in object over its pages.
class IShortcutPagesObserver {
public:
    // Booklet binding changed N-up, two-sided printing and margins: every page puts the standard
    // page's controls of its settings in line with the items. `standardPage` is the callback's
    // dialog window, null without one.
    virtual void OnStandardItemsChanged(HWND standardPage, const VUIProperties& settings) = 0;
    // The standard page became active with the settings snapped: every page updates the picture
    // of its selected shortcut.
    virtual void OnStandardSelectionChanged(const VUIProperties& settings) = 0;

protected:
    ~IShortcutPagesObserver() = default;
};

// What the rules keep for one document property-sheet session; owned by the UI plug-in object.
class VDocumentSheetRules {
public:
    // The combo boxes of the shortcuts page's five setting positions, in position order.
    static constexpr std::array<int, 5> kAllSettingsControlIds = {1031, 1033, 1035, 1029, 1037};

    // Session set-up: reads the snapping rules of SnappingData (nothing without a core helper).
    HRESULT LoadSnappingTable(IPrintCoreHelper* helper) noexcept;
    // When the shortcuts page is added: the option keywords of AllSettingsfor_PS, in order, bind
    // the feature before their first ":" (empty without one) to the control ids above.
    HRESULT ReadAllSettingsFeatures(IPrintCoreHelper* helper) noexcept;

    const VSnappingTable& SnappingTable() const noexcept { return m_snapping; }
    // Set once the user chose media type or quality, or TouchByUser says so; kept for the session.
    bool UserOverride() const noexcept { return m_userOverride; }
    void SetUserOverride() noexcept { m_userOverride = true; }
    // Snapping is applied while there are rules and the user has not overridden them.
    bool SnappingApplies() const noexcept { return m_snapping.Enabled() && !m_userOverride; }
    // Control id -> feature keyword; empty until the shortcuts page is added.
    const std::map<int, std::string>& AllSettingsFeatures() const noexcept { return m_allSettingsFeatures; }

    // The rule sets, one per callback reason. Each answers E_FAIL when the context has no
    // parameter block or no UI plug-in object, otherwise S_OK (or the HRESULT of an exception,
    // such as E_OUTOFMEMORY).

    // The user changed the current item: the twenty change rules in order. `session` is the
    // session's settings object (null: not told that N-up changed); the hooks may be null.
    HRESULT OnSelectionChanged(const VUICallbackContext& context, VUIProperties* session,
                               IStandardSheetWindows* windows, IShortcutPagesObserver* pages) noexcept;
    // The document page became active. `deviceLanguage` is the session's DeviceLanguage option.
    HRESULT OnPageActive(const VUICallbackContext& context, std::string_view deviceLanguage,
                         IShortcutPagesObserver* pages) noexcept;
    // The document page was left.
    HRESULT OnPageLeft(const VUICallbackContext& context) noexcept;
    // The sheet's Apply.
    HRESULT OnApply(const VUICallbackContext& context) noexcept;
    // The items were reverted. The window procedures that the labels need are the caller's,
    // before this.
    HRESULT OnItemsReverted(const VUICallbackContext& context) noexcept;
    // Hands the shortcut settings' items to the core driver again after the shortcuts page may
    // have changed them: DocumentNUp takes the private block's N-up index; Orientation follows
    // each entry. Nothing before the shortcuts page is added.
    HRESULT ReapplyAllSettingsFeatures(const VUICallbackContext& context) noexcept;

private:
    VSnappingTable m_snapping;
    bool m_userOverride = false;
    std::map<int, std::string> m_allSettingsFeatures;
};
