// The Printing Shortcuts page: its set-up and creation, its dialog procedure, the dialog's start
// and the sheet's notifications. The user's actions are in shortcuts_page_actions.cpp, what the
// page hands to the job in shortcuts_page_job.cpp.
#include "ui/shortcuts_page.h"

#include "resources/resource_libraries.h"
#include "resources/string_ids.h"
#include "settings/feature_keywords.h"
#include "settings/option_items.h"
#include "shortcuts/shortcut_job.h"
#include "shortcuts/leading_number.h"
#include "ddk/property_sheet_page.h"
#include "ui/page_messages.h"
#include "ui/shortcuts_page_parts.h"
#include "util/module_instance.h"

#include <commctrl.h>

#include <algorithm>

using namespace page;

namespace {

// The page object hangs on its dialog window as this property (an integer atom).
const wchar_t* const kPageProperty = MAKEINTATOM(1000);

// Control kinds of a "PS_Schema" declaration "Feature_Id_Kind".
enum ControlKind { kComboControl = 1, kButtonControl = 2, kListControl = 3 };

// How far the media type combo box's drop-down list is wider than the box, in pixels.
constexpr int kMediaDropDownExtraWidth = 20;

bool g_firstActivationPending = false;

bool HasSelectedOptionMark(const OPTITEM& item) {
    const OPTPARAM* option = zx::SelectedOption(item);
    return option != nullptr && (option->Flags & OPTPF_OVERLAY_WARNING_ICON);
}

}  // namespace

void ResetFirstShortcutPageActivation() noexcept { g_firstActivationPending = true; }

VPrintingShortcutPropPage::VPrintingShortcutPropPage() = default;

VPrintingShortcutPropPage::~VPrintingShortcutPropPage() {
    if (m_activationContext != INVALID_HANDLE_VALUE) ::ReleaseActCtx(m_activationContext);
}

void VPrintingShortcutPropPage::Update(ISubject* subject) { m_biDiData = subject ? subject->GetData() : nullptr; }

HRESULT VPrintingShortcutPropPage::SetCoreInterfaces(IPrintOemDriverUI* driverUI, IPrintCoreHelper* coreHelper) {
    if (driverUI == nullptr) return E_POINTER;
    m_driverUI = driverUI;
    m_coreHelper = coreHelper;
    return S_OK;
}

HRESULT VPrintingShortcutPropPage::SetUIParams(POEMCUIPPARAM params) {
    if (params == nullptr) return E_POINTER;
    m_uiParams = params;
    return S_OK;
}

HRESULT VPrintingShortcutPropPage::SetProperties(VUIProperties* properties) {
    if (properties == nullptr) return E_POINTER;
    m_properties = properties;
    return S_OK;
}

HRESULT VPrintingShortcutPropPage::Initialise() {
    if (m_properties == nullptr) return E_POINTER;
    return zx::CatchAll([&] {
        m_controls.clear();
        const auto declarations = m_properties->FeatureOptions(Feature::PS_Schema);
        for (PCSTR declaration : declarations) {
            if (declaration == nullptr) continue;
            const std::string_view text(declaration);
            const size_t first = text.find('_');
            if (first == std::string_view::npos) continue;
            const size_t second = text.find('_', first + 1);
            const int32_t id = zx::LeadingNumber(text.substr(first + 1));
            const int32_t kind = second == std::string_view::npos ? 0 : zx::LeadingNumber(text.substr(second + 1));
            const std::string feature(text.substr(0, first));
            if (kind == kComboControl) {
                m_controls[id] = std::make_unique<VPrintShortcutComboBox>(id, feature);
            } else if (kind == kButtonControl) {
                m_controls[id] = std::make_unique<VButtonControl>(id);
            } else if (kind == kListControl) {
                m_controls[id] = std::make_unique<VUICtrlPSPrintingShortcutListControl>();
            }
        }
        if (declarations.empty()) {
            m_controls[IDC_PS_LIST] = std::make_unique<VUICtrlPSPrintingShortcutListControl>();
            m_controls[IDC_PS_COMBO_0] = std::make_unique<VPrintShortcutComboBox>(IDC_PS_COMBO_0, Feature::MediaType);
            m_controls[IDC_PS_COMBO_1] =
                std::make_unique<VPrintShortcutComboBox>(IDC_PS_COMBO_1, Feature::PageOutputQuality);
            m_controls[IDC_PS_COMBO_2] = std::make_unique<VPrintShortcutComboBox>(IDC_PS_COMBO_2, Feature::DocumentNUp);
            m_controls[IDC_PS_COMBO_3] =
                std::make_unique<VPrintShortcutComboBox>(IDC_PS_COMBO_3, Feature::BorderlessPrint);
            m_controls[IDC_PS_COMBO_4] = std::make_unique<VPrintShortcutComboBox>(IDC_PS_COMBO_4, Feature::Duplex);
            m_controls[IDC_PS_SAVE_AS] = std::make_unique<VButtonControl>(IDC_PS_SAVE_AS);
            m_controls[IDC_PS_DELETE] = std::make_unique<VButtonControl>(IDC_PS_DELETE);
        }

        m_featureMap.clear();
        size_t position = 0;
        for (PCSTR option : m_properties->FeatureOptions(Feature::AllSettingsfor_PS)) {
            if (position == kSettingPositions) break;
            const int32_t combo = ComboOfSettingPosition(position++);
            if (option == nullptr) continue;
            const std::optional<ShortcutSetting> setting = zx::ParseSettingDefinition(option);
            m_featureMap[combo] = setting ? setting->feature : std::string();
        }
        return S_OK;
    });
}

HRESULT VPrintingShortcutPropPage::CreatePage(PPROPSHEETUI_INFO sheet, const JobSettings& currentSettings) {
    if (sheet == nullptr) return E_POINTER;
    if (m_properties == nullptr || m_uiParams == nullptr) return E_POINTER;
    return zx::CatchAll([&] {
        const WORD dialogTemplate =
            zx::UserUiLanguageIsRightToLeft() ? IDD_PRINTING_SHORTCUTS_RTL : IDD_PRINTING_SHORTCUTS;
        zx::LoadUiString(StringId::ShortcutPageTitle, m_title);

        wchar_t modulePath[MAX_PATH] = {};
        ::GetModuleFileNameW(zx::ModuleInstance(), modulePath, MAX_PATH);
        ACTCTXW context{};
        context.cbSize = sizeof(context);
        context.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID;
        context.lpSource = modulePath;
        context.lpResourceName = MAKEINTRESOURCEW(IDR_PAGE_MANIFEST);
        m_activationContext = ::CreateActCtxW(&context);

        PROPSHEETPAGEW_V4 page{};
        page.dwSize = sizeof(page);
        page.dwFlags = PSP_USETITLE | PSP_USEFUSIONCONTEXT;
        page.hInstance = zx::ModuleInstance();
        page.pszTemplate = MAKEINTRESOURCEW(dialogTemplate);
        page.pszTitle = m_title;
        page.pfnDlgProc = &DialogProc;
        page.lParam = reinterpret_cast<LPARAM>(this);
        page.hActCtx = m_activationContext == INVALID_HANDLE_VALUE ? nullptr : m_activationContext;

        m_comPropSheet = sheet->pfnComPropSheet;
        m_sheet = sheet->hComPropSheet;
        if (m_comPropSheet != nullptr) {
            m_page = reinterpret_cast<HANDLE>(
                m_comPropSheet(m_sheet, CPSFUNC_ADD_PROPSHEETPAGEW, reinterpret_cast<LPARAM>(&page), 0));
            sheet->Result = reinterpret_cast<LONG_PTR>(m_page);
            sheet->Result = m_comPropSheet(m_sheet, CPSFUNC_SET_HSTARTPAGE, reinterpret_cast<LPARAM>(m_page), 0);
        }

        m_shortcuts = std::make_unique<VUIPSItem>(m_biDiData);
        const bool built = m_shortcuts->BuildAllSettings(*m_properties, m_uiParams) &&
                           m_shortcuts->BuildShortcuts(*m_properties, m_uiParams);
        m_shortcuts->SetCurrentSettings(currentSettings);
        return built ? S_OK : E_FAIL;
    });
}

INT_PTR CALLBACK VPrintingShortcutPropPage::DialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        const auto* description = reinterpret_cast<const PROPSHEETPAGEW*>(lParam);
        if (description == nullptr || description->lParam == 0) return TRUE;
        ::SetPropW(dialog, kPageProperty, reinterpret_cast<HANDLE>(description->lParam));
    }
    auto* page = static_cast<VPrintingShortcutPropPage*>(::GetPropW(dialog, kPageProperty));
    if (page == nullptr) return FALSE;
    if (message == WM_NCDESTROY) {
        ::RemovePropW(dialog, kPageProperty);
        return FALSE;
    }
    // Nothing that the page's code throws may cross into the dialog manager.
    try {
        return page->HandleMessage(dialog, message, wParam, lParam);
    } catch (...) {
        return FALSE;
    }
}

INT_PTR VPrintingShortcutPropPage::HandleMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG: OnInitDialog(dialog); return TRUE;
    case WM_COMMAND: OnCommand(dialog, LOWORD(wParam), HIWORD(wParam)); return FALSE;
    case WM_NOTIFY: return OnNotify(dialog, wParam, reinterpret_cast<NMHDR*>(lParam));
    case WMU_SHORTCUT_SELECTED: OnShortcutSelected(dialog, static_cast<int>(lParam)); return FALSE;
    case WMU_SETTING_CHANGED:
        OnSettingChanged(dialog, static_cast<int32_t>(wParam), static_cast<int32_t>(lParam));
        return FALSE;
    case WMU_NAME_ACCEPTED: OnNameAccepted(dialog, reinterpret_cast<const NMLVDISPINFOW*>(lParam)); return FALSE;
    case WMU_RESTART_LABEL_EDIT:
        if (VUICtrlPSPrintingShortcutListControl* list = List()) {
            ::SetFocus(list->Window());
            ::SendMessageW(list->Window(), LVM_EDITLABELW, wParam, 0);
        }
        return FALSE;
    case WM_DESTROY: OnDestroy(dialog); return FALSE;
    default: return FALSE;
    }
}

// --- Dialog start ------------------------------------------------------------------------------

void VPrintingShortcutPropPage::OnInitDialog(HWND dialog) {
    if (!m_shortcuts || m_properties == nullptr) return;
    for (auto& [id, control] : m_controls) control->Attach(dialog);
    m_fillingList = true;
    int32_t selected = SelectOrMakeStartShortcut(dialog);
    m_startIndex = selected;

    std::vector<PrintShortcutRecord>& records = m_shortcuts->Records();
    if (VUICtrlPSPrintingShortcutListControl* list = List()) {
        const bool keepSelectionIndex =
            m_properties->DuplexUnitInstalled() == 0 && m_properties->ManualDuplexSupported();
        int position = selected;
        list->FillList(dialog, records, position, keepSelectionIndex);
    }
    m_fillingList = false;
    if (selected < 0 || selected >= m_shortcuts->Count()) return;
    PrintShortcutRecord& record = records[static_cast<size_t>(selected)];

    UpdateButtons(dialog, record);
    SetDialogText(dialog, IDC_PS_DESCRIPTION, StringId::ShortcutPageDescription);
    SetDialogText(dialog, IDC_PS_LIST_LABEL, StringId::ShortcutListLabel);
    SetDialogText(dialog, IDC_PS_SAVE_AS, StringId::SaveAsButton);
    SetDialogText(dialog, IDC_PS_DELETE, StringId::DeleteButton);
    SetPageTexts(dialog, record);
    if (m_properties->ReadOnly()) {
        for (const auto& [id, control] : m_controls) EnableControl(dialog, id, false);
    }
    FillCombos(dialog, record);
    CheckDuplex(dialog, record);
    if (VPrintShortcutComboBox* media = ComboOfFeature(Feature::MediaType)) {
        const LRESULT width = ::SendMessageW(media->Window(), CB_GETDROPPEDWIDTH, 0, 0);
        if (width != CB_ERR) {
            ::SendMessageW(media->Window(), CB_SETDROPPEDWIDTH, static_cast<WPARAM>(width + kMediaDropDownExtraWidth),
                           0);
        }
    }
    if (m_properties->BindingAndMarginsSuppressed()) {
        if (VPrintShortcutComboBox* duplex = ComboOfFeature(Feature::Duplex)) ::EnableWindow(duplex->Window(), FALSE);
    }
}

// The shortcut that the page starts with: the one that matches the job, preferring the one
// applied last; without one, a pending shortcut made from the last applied one and the job's
// settings. Its record index.
int32_t VPrintingShortcutPropPage::SelectOrMakeStartShortcut(HWND) {
    const int32_t count = m_shortcuts->Count();
    if (count == 0) return -1;
    DWORD stored = 0;
    m_shortcuts->ReadCurrentShortcut(stored);
    const int32_t preferred = stored < static_cast<DWORD>(count) ? static_cast<int32_t>(stored) : count - 1;
    int32_t found = -1;
    if (m_shortcuts->FindMatching(preferred, found)) return found;

    PrintShortcutRecord pending =
        zx::PendingShortcutFrom(m_shortcuts->Records()[static_cast<size_t>(preferred)], preferred);
    const bool customPaper = m_properties->IsCustomPaperSize();
    for (size_t position = 0; position < pending.features.size(); ++position) {
        zx::TakeOverJobSetting(*m_shortcuts, pending, position, customPaper);
    }
    return m_shortcuts->SetPendingShortcut(std::move(pending), NewShortcutName());
}

// --- Notifications -----------------------------------------------------------------------------

INT_PTR VPrintingShortcutPropPage::OnNotify(HWND dialog, WPARAM wParam, NMHDR* header) {
    if (header == nullptr) return FALSE;
    switch (header->code) {
    case PSN_SETACTIVE: OnSetActive(dialog); break;
    case PSN_KILLACTIVE: OnKillActive(dialog); break;
    case PSN_APPLY:
        OnApply(dialog);
        ::SetWindowLongPtrW(dialog, DWLP_MSGRESULT, PSNRET_NOERROR);
        ::SendMessageW(::GetParent(dialog), PSM_UNCHANGED, reinterpret_cast<WPARAM>(dialog), 0);
        if (m_comPropSheet != nullptr) {
            m_comPropSheet(m_sheet, CPSFUNC_SET_RESULT, reinterpret_cast<LPARAM>(m_page), CPSUI_OK);
        }
        return TRUE;
    case PSN_RESET: m_cancelled = 1; break;
    case LVN_BEGINLABELEDITW: return OnBeginLabelEdit(dialog, reinterpret_cast<const NMLVDISPINFOW*>(header));
    default: {
        const auto control = m_controls.find(static_cast<int32_t>(header->idFrom));
        if (control != m_controls.end()) return control->second->OnNotify(dialog, wParam, header);
        return FALSE;
    }
    }
    ::SetWindowLongPtrW(dialog, DWLP_MSGRESULT, 0);
    return FALSE;
}

void VPrintingShortcutPropPage::OnSetActive(HWND dialog) {
    m_active = 1;
    m_inactive = 0;
    if (!m_shortcuts || m_properties == nullptr) return;
    VPrivateDevMode* block = PrivateBlock();
    if (m_properties->NUpChanged() && block != nullptr) {
        if (POPTITEM nup = Item(Feature::DocumentNUp)) {
            nup->Sel = static_cast<LONG>(block->dwNUpIndex);
            m_properties->CommitOptItem(nup);
        }
    }
    // At the sheet's opening the page has just taken the job's settings.
    if (!std::exchange(g_firstActivationPending, false)) TakeOverJobSettings(dialog, false);
    const int32_t selected = SelectedRecord();
    if (selected >= 0) CheckDuplex(dialog, m_shortcuts->Records()[static_cast<size_t>(selected)]);
    ApplyMaximumResolutionRule(dialog);
}

void VPrintingShortcutPropPage::OnKillActive(HWND dialog) {
    m_inactive = 1;
    m_active = 0;
    if (!m_shortcuts || m_properties == nullptr) return;
    const int32_t selected = SelectedRecord();
    if (selected >= 0) ApplyShortcutToJob(dialog, selected, true, 0);
    VPrivateDevMode* block = PrivateBlock();
    const DWORD nupIndex = block != nullptr ? block->dwNUpIndex : 0;
    if (nupIndex == 0) {
        if (POPTITEM borders = Item(Feature::DrawBorders)) {
            borders->Sel = 0;
            borders->Flags |= OPTIF_CHANGED;
            m_properties->CommitOptItem(borders);
        }
    }
    const POPTITEM duplex = Item(Feature::Duplex);
    const bool twoUpTwoSided = nupIndex == 1 && (duplex == nullptr || duplex->Sel != 0);
    if (!twoUpTwoSided) {
        POPTITEM binding = Item(Feature::DocumentBinding);
        if (binding != nullptr && binding->Sel != 0) {
            binding->Sel = 0;
            binding->Flags |= OPTIF_CHANGED;
            m_properties->CommitOptItem(binding);
        }
    }
}

void VPrintingShortcutPropPage::OnApply(HWND dialog) {
    if (!m_shortcuts || m_properties == nullptr) return;
    const int32_t selected = SelectedRecord();
    m_shortcuts->StorePendingShortcut(NewShortcutName());
    if (selected >= 0 && selected < m_shortcuts->Count() && m_shortcuts->Records()[selected].isStored) {
        m_shortcuts->WriteCurrentShortcut(selected);
    }
    if (m_active && selected >= 0) ApplyShortcutToJob(dialog, selected, true, 1);
    ResolveConflictMarks();
    m_applied = 1;
}

// A conflict that the core driver marked on the shortcut settings' items is handed back once
// more; a two-sided setting that conflicts with the paper size gives way to the paper.
void VPrintingShortcutPropPage::ResolveConflictMarks() {
    POPTITEM marked = nullptr;
    for (const auto& [combo, feature] : m_featureMap) {
        POPTITEM item = feature.empty() ? nullptr : Item(feature.c_str());
        if (item != nullptr && HasSelectedOptionMark(*item)) {
            marked = item;
            break;
        }
    }
    POPTITEM duplex = Item(Feature::Duplex);
    POPTITEM paper = Item(Feature::PaperSize);
    if (duplex != nullptr && paper != nullptr && HasSelectedOptionMark(*duplex) && HasSelectedOptionMark(*paper)) {
        m_properties->CommitOptItem(paper);
        for (const char* feature : {Feature::Duplex, Feature::DocumentBinding, Feature::DocumentMargins}) {
            if (POPTITEM item = Item(feature)) {
                item->Sel = 0;
                item->Flags |= OPTIF_CHANGED;
                m_properties->CommitOptItem(item);
            }
        }
    } else if (marked != nullptr) {
        HandToCoreDriver(marked);
    }
}

INT_PTR VPrintingShortcutPropPage::OnBeginLabelEdit(HWND dialog, const NMLVDISPINFOW* edit) {
    const int32_t record = edit != nullptr ? RecordOfListItem(edit->item.iItem) : -1;
    const bool named = !m_shortcuts || record < 0 || m_shortcuts->Records()[static_cast<size_t>(record)].isNamed;
    ::SetWindowLongPtrW(dialog, DWLP_MSGRESULT, named ? TRUE : FALSE);
    return named ? TRUE : FALSE;
}

void VPrintingShortcutPropPage::OnDestroy(HWND) {
    const bool cancelledWithoutApply = m_cancelled && !m_applied;
    VPrivateDevMode* block = PrivateBlock();
    if (!cancelledWithoutApply && m_properties != nullptr && block != nullptr) {
        if (POPTITEM nup = Item(Feature::DocumentNUp)) {
            nup->Sel = static_cast<LONG>(block->dwNUpIndex);
            nup->Flags |= OPTIF_CHANGED;
            m_properties->CommitOptItem(nup);
        }
    }
    if (m_comPropSheet != nullptr) {
        m_comPropSheet(m_sheet, CPSFUNC_SET_RESULT, reinterpret_cast<LPARAM>(m_page), CPSUI_OK);
    }
}

// --- The list and its records ------------------------------------------------------------------

VUICtrlPSPrintingShortcutListControl* VPrintingShortcutPropPage::List() const {
    const auto list = m_controls.find(IDC_PS_LIST);
    return list == m_controls.end() ? nullptr : dynamic_cast<VUICtrlPSPrintingShortcutListControl*>(list->second.get());
}

VPrintShortcutComboBox* VPrintingShortcutPropPage::ComboOfFeature(std::string_view feature) const {
    for (const auto& [id, control] : m_controls) {
        auto* combo = dynamic_cast<VPrintShortcutComboBox*>(control.get());
        if (combo != nullptr && combo->Feature() == feature) return combo;
    }
    return nullptr;
}

ShortcutListView VPrintingShortcutPropPage::ListView() const {
    VUICtrlPSPrintingShortcutListControl* list = List();
    return {[list] { return list ? list->SelectionMark() : -1; },
            [list](int32_t index) { return list ? list->ItemText(index) : std::wstring(); }};
}

int32_t VPrintingShortcutPropPage::RecordOfListItem(int listIndex) const {
    return m_shortcuts ? m_shortcuts->ListToRecord(listIndex, ListView()) : -1;
}

int32_t VPrintingShortcutPropPage::SelectedRecord() const { return RecordOfListItem(-1); }

std::wstring VPrintingShortcutPropPage::NewShortcutName() const {
    zx::UiString name;
    zx::LoadUiString(StringId::NewShortcutName, name);
    return name;
}

VPrivateDevMode* VPrintingShortcutPropPage::PrivateBlock() const {
    return m_properties != nullptr ? m_properties->PrivateDevMode() : nullptr;
}
