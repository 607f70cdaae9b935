#include "ui/shortcuts_page.h"

#include "ddk/property_sheet_page.h"
#include "resources/resource_libraries.h"
#include "resources/string_ids.h"
#include "settings/feature_keywords.h"
#include "settings/option_items.h"
#include "shortcuts/shortcut_job.h"
#include "ui/page_messages.h"
#include "ui/page_resource_ids.h"
#include "util/module_instance.h"

#include <commctrl.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>

namespace {

// The page object hangs on its dialog window as this property (an integer atom).
const wchar_t* const kPageProperty = MAKEINTATOM(1000);

// The labels and combo boxes of the five setting positions.
constexpr int32_t kSettingLabels[] = {IDC_PS_LABEL_0, IDC_PS_LABEL_1, IDC_PS_LABEL_2, IDC_PS_LABEL_3, IDC_PS_LABEL_4};
constexpr size_t kSettingPositions = std::size(kSettingLabels);

// Control kinds of a "PS_Schema" declaration "Feature_Id_Kind".
enum ControlKind { kComboControl = 1, kButtonControl = 2, kListControl = 3 };

// The most shortcuts a collection holds, the one being named included.
constexpr int32_t kMaxShortcuts = 25;

// How far the media type combo box's drop-down list is wider than the box, in pixels.
constexpr int kMediaDropDownExtraWidth = 20;

bool g_firstActivationPending = false;

// A decimal number at the start of a text; nothing when it has no digits.
std::optional<int32_t> LeadingNumber(std::string_view text) {
    int32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end == text.data()) return std::nullopt;
    return number;
}

void EnableControl(HWND dialog, int32_t id, bool enable) {
    if (HWND control = ::GetDlgItem(dialog, id)) ::EnableWindow(control, enable);
}

void SetDialogText(HWND dialog, int32_t id, UINT stringId) {
    if (HWND control = ::GetDlgItem(dialog, id)) zx::SetUiText(control, stringId);
}

bool HasSelectedOptionMark(const OPTITEM& item) {
    const OPTPARAM* option = zx::SelectedOption(item);
    return option != nullptr && (option->Flags & OPTPF_OVERLAY_WARNING_ICON);
}

bool EqualIgnoringCase(std::wstring_view a, std::wstring_view b) {
    return ::CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) ==
           CSTR_EQUAL;
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
            const std::optional<int32_t> id = LeadingNumber(text.substr(first + 1));
            const std::optional<int32_t> kind =
                second == std::string_view::npos ? std::nullopt : LeadingNumber(text.substr(second + 1));
            if (!id || !kind) continue;
            const std::string feature(text.substr(0, first));
            if (*kind == kComboControl) {
                m_controls[*id] = std::make_unique<VPrintShortcutComboBox>(*id, feature);
            } else if (*kind == kButtonControl) {
                m_controls[*id] = std::make_unique<VButtonControl>(*id);
            } else if (*kind == kListControl) {
                m_controls[*id] = std::make_unique<VUICtrlPSPrintingShortcutListControl>();
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

// --- The user's actions ------------------------------------------------------------------------

void VPrintingShortcutPropPage::OnCommand(HWND dialog, WORD controlId, WORD code) {
    const auto control = m_controls.find(controlId);
    if (control == m_controls.end()) return;
    control->second->OnCommand(dialog, code);
    if (code != BN_CLICKED) return;
    if (controlId == IDC_PS_SAVE_AS) StartNaming(dialog);
    if (controlId == IDC_PS_DELETE) DeleteSelectedShortcut(dialog);
}

void VPrintingShortcutPropPage::OnShortcutSelected(HWND dialog, int listIndex) {
    if (m_fillingList || !m_shortcuts || m_properties == nullptr) return;
    const int32_t recordIndex = RecordOfListItem(listIndex);
    if (recordIndex < 0 || recordIndex >= m_shortcuts->Count()) return;
    PrintShortcutRecord record = m_shortcuts->Records()[static_cast<size_t>(recordIndex)];

    const auto media = std::find(record.features.begin(), record.features.end(), Feature::MediaType);
    if (media != record.features.end()) {
        const size_t position = static_cast<size_t>(media - record.features.begin());
        const int32_t chosen = m_shortcuts->ToDriverOption(record, position, record.SettingOf(Feature::MediaType));
        const auto& job = m_shortcuts->CurrentSettings();
        const auto current = job.find(Feature::MediaType);
        if (chosen != (current == job.end() ? 0 : current->second)) SetTouchByUser();
    }
    SetPageTexts(dialog, record);
    if (!m_properties->ReadOnly()) {
        PrintShortcutRecord& shown = m_shortcuts->Records()[static_cast<size_t>(recordIndex)];
        FillCombos(dialog, shown);
        ApplyShortcutToJob(dialog, recordIndex, false, 2);
    }
    CheckDuplex(dialog, record);
    UpdateButtons(dialog, record);

    zx::UiString locked;
    zx::LoadUiString(StringId::LockedShortcutName, locked);
    const bool lockedShortcut = std::wstring_view(record.name) == locked;
    if (!lockedShortcut && !m_properties->ReadOnly()) {
        for (size_t position = 0; position < kSettingPositions; ++position) {
            EnableControl(dialog, kSettingLabels[position], true);
            EnableControl(dialog, ComboOfSettingPosition(position), true);
        }
        ApplyMaximumResolutionRule(dialog);
        if (m_properties->BindingAndMarginsSuppressed()) {
            if (VPrintShortcutComboBox* duplex = ComboOfFeature(Feature::Duplex)) {
                ::EnableWindow(duplex->Window(), FALSE);
            }
        }
    } else if (lockedShortcut) {
        for (size_t position = 0; position < kSettingPositions; ++position) {
            EnableControl(dialog, ComboOfSettingPosition(position), false);
        }
    }
}

// Save as, first half: the user names the pending shortcut in the list.
void VPrintingShortcutPropPage::StartNaming(HWND) {
    VUICtrlPSPrintingShortcutListControl* list = List();
    if (list == nullptr) return;
    const std::wstring newName = NewShortcutName();
    LVFINDINFOW find{};
    find.flags = LVFI_STRING | LVFI_WRAP;
    find.psz = newName.c_str();
    const LRESULT item =
        ::SendMessageW(list->Window(), LVM_FINDITEMW, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&find));
    if (item < 0) return;
    ::SetFocus(list->Window());
    ::SendMessageW(list->Window(), LVM_EDITLABELW, static_cast<WPARAM>(item), 0);
}

// Save as, second half: the list accepted the name the user typed.
void VPrintingShortcutPropPage::OnNameAccepted(HWND dialog, const NMLVDISPINFOW* edit) {
    VUICtrlPSPrintingShortcutListControl* list = List();
    const int32_t pending = m_shortcuts ? m_shortcuts->PendingIndex() : -1;
    if (edit == nullptr || edit->item.pszText == nullptr || list == nullptr || pending < 0) return;
    const int item = edit->item.iItem;
    const std::wstring name = edit->item.pszText;
    const std::wstring newName = NewShortcutName();

    if (m_shortcuts->Count() > kMaxShortcuts) {
        zx::ShowUiMessage(dialog, StringId::TooManyShortcutsMessage, StringId::ShortcutMessageCaption);
        ::SendMessageW(list->Window(), LVM_DELETEITEM, static_cast<WPARAM>(item), 0);
        m_shortcuts->Records().erase(m_shortcuts->Records().begin() + pending);
        list->SelectItem(dialog, item > 0 ? item - 1 : 0);
        return;
    }
    if (EqualIgnoringCase(name, newName)) return;
    if (m_shortcuts->FindByNameIgnoringCase(name) >= 0) {
        zx::ShowUiMessage(dialog, StringId::DuplicateNameMessage, StringId::ShortcutMessageCaption);
        LVITEMW text{};
        text.pszText = const_cast<wchar_t*>(newName.c_str());
        ::SendMessageW(list->Window(), LVM_SETITEMTEXTW, static_cast<WPARAM>(item), reinterpret_cast<LPARAM>(&text));
        ::PostMessageW(dialog, WMU_RESTART_LABEL_EDIT, static_cast<WPARAM>(item), 0);
        return;
    }
    PrintShortcutRecord& record = m_shortcuts->Records()[static_cast<size_t>(pending)];
    for (size_t position = 0; position < record.features.size() && position < kSettingPositions; ++position) {
        const LRESULT selection = ::SendDlgItemMessageW(dialog, ComboOfSettingPosition(position), CB_GETCURSEL, 0, 0);
        if (selection != CB_ERR) record.settings[record.features[position]] = static_cast<int32_t>(selection);
    }
    record.SetName(name);
    record.isNamed = true;
    EnableControl(dialog, IDC_PS_SAVE_AS, false);
}

void VPrintingShortcutPropPage::DeleteSelectedShortcut(HWND dialog) {
    VUICtrlPSPrintingShortcutListControl* list = List();
    if (list == nullptr || !m_shortcuts) return;
    const int mark = list->SelectionMark();
    if (mark < 0) return;
    const int32_t record = RecordOfListItem(mark);
    ::SendMessageW(list->Window(), LVM_DELETEITEM, static_cast<WPARAM>(mark), 0);
    if (record >= 0) m_shortcuts->DeleteRecord(record);
    ::SendMessageW(list->Window(), LVM_SETCOLUMNWIDTH, 0, LVSCW_AUTOSIZE_USEHEADER);
    list->SelectItem(dialog, mark > 0 ? mark - 1 : 0);
    ::SetFocus(list->Window());
}

void VPrintingShortcutPropPage::OnSettingChanged(HWND dialog, int32_t selection, int32_t comboId) {
    if (!m_shortcuts || m_properties == nullptr) return;
    m_changedList = List();
    const auto combo = m_controls.find(comboId);
    auto* box = combo == m_controls.end() ? nullptr : dynamic_cast<VPrintShortcutComboBox*>(combo->second.get());
    const int32_t source = SelectedRecord();
    if (box == nullptr || source < 0) return;
    const std::string feature = box->Feature();

    const PrintShortcutRecord& current = m_shortcuts->Records()[static_cast<size_t>(source)];
    if (current.SettingOf(feature) == selection) return;
    PrintShortcutRecord pending = zx::PendingShortcutFrom(current, source);
    pending.settings[feature] = selection;

    if (feature == Feature::MediaType || feature == Feature::PageOutputQuality) SetTouchByUser();
    if (POPTITEM binding = Item(Feature::DocumentBinding)) {
        const bool singleSided = feature == Feature::Duplex && selection == 0;
        const bool notTwoUp = feature == Feature::DocumentNUp && selection != 1;
        if ((singleSided || notTwoUp) && (binding->Sel == 1 || binding->Sel == 2)) {
            binding->Sel = 0;
            m_properties->CommitOptItem(binding);
        }
    }
    if (current.isBuiltIn) m_shortcuts->WriteCustomBitmapId(pending.bitmapId);
    MakePendingShortcut(dialog, std::move(pending));
    ::SetFocus(box->Window());

    // The changed setting reaches the core driver's item at once, so that the standard pages
    // and Apply see what the page shows.
    const int32_t made = m_shortcuts->PendingIndex();
    const int position = SettingPositionOfCombo(comboId);
    if (made >= 0 && position >= 0) {
        ApplySettingToJob(dialog, m_shortcuts->Records()[static_cast<size_t>(made)], static_cast<size_t>(position),
                          false, 1);
    }
}

// Puts `pending` in place of the pending shortcut (or adds it) and selects its new list item.
void VPrintingShortcutPropPage::MakePendingShortcut(HWND dialog, PrintShortcutRecord pending) {
    VUICtrlPSPrintingShortcutListControl* list = List();
    if (list == nullptr) return;
    if (m_shortcuts->PendingIndex() >= 0) {
        const int last = list->ItemCount() - 1;
        if (last >= 0) ::SendMessageW(list->Window(), LVM_DELETEITEM, static_cast<WPARAM>(last), 0);
    }
    const int32_t index = m_shortcuts->SetPendingShortcut(std::move(pending), NewShortcutName());
    list->AddShortcutItem(dialog, m_shortcuts->Records()[static_cast<size_t>(index)]);
    EnableControl(dialog, IDC_PS_SAVE_AS, true);
    EnableControl(dialog, IDC_PS_DELETE, true);
}

// The job's settings that the selected shortcut does not have become the pending shortcut's.
void VPrintingShortcutPropPage::TakeOverJobSettings(HWND dialog, bool writeBitmap) {
    m_shortcuts->SetCurrentSettings(zx::CurrentJobSettings(*m_properties, *m_shortcuts));
    const int32_t source = SelectedRecord();
    if (source < 0) return;
    PrintShortcutRecord pending = m_shortcuts->Records()[static_cast<size_t>(source)];
    const bool customPaper = m_properties->IsCustomPaperSize();
    bool changed = false;
    for (size_t position = 0; position < pending.features.size(); ++position) {
        const int32_t before = pending.SettingOf(pending.features[position]);
        const int32_t shown = zx::TakeOverJobSetting(*m_shortcuts, pending, position, customPaper);
        changed |= shown >= 0 && shown != before;
    }
    if (!changed) return;
    const PrintShortcutRecord& current = m_shortcuts->Records()[static_cast<size_t>(source)];
    PrintShortcutRecord made = zx::PendingShortcutFrom(current, source);
    made.settings = pending.settings;
    if (writeBitmap && current.isBuiltIn) m_shortcuts->WriteCustomBitmapId(made.bitmapId);
    MakePendingShortcut(dialog, std::move(made));
}

// --- Showing a shortcut ------------------------------------------------------------------------

void VPrintingShortcutPropPage::SetPageTexts(HWND dialog, const PrintShortcutRecord& record) {
    for (size_t position = 0; position < kSettingPositions; ++position) {
        const bool present = position < record.features.size();
        HWND label = ::GetDlgItem(dialog, kSettingLabels[position]);
        if (label != nullptr) {
            if (present) {
                zx::SetUiText(label, static_cast<UINT>(record.featureIds[position]));
            } else {
                ::SetWindowTextW(label, L"");
            }
        }
        if (HWND combo = ::GetDlgItem(dialog, ComboOfSettingPosition(position))) {
            ::ShowWindow(combo, present ? SW_SHOW : SW_HIDE);
        }
    }
}

void VPrintingShortcutPropPage::FillCombos(HWND dialog, PrintShortcutRecord& record) {
    for (auto& [id, control] : m_controls) control->Refresh(dialog, record, id);
}

void VPrintingShortcutPropPage::UpdateButtons(HWND dialog, const PrintShortcutRecord& record) {
    if (m_properties != nullptr && m_properties->ReadOnly()) return;
    const bool restrictedShared = m_shortcuts->Store().IsRestricted() && record.inPrinterData;
    EnableControl(dialog, IDC_PS_DELETE, !record.isBuiltIn && !restrictedShared);
    EnableControl(dialog, IDC_PS_SAVE_AS, !record.isNamed);
}

// Without a two-sided unit (and without manual two-sided support) the two-sided setting is the
// manual one, and its label says so.
void VPrintingShortcutPropPage::CheckDuplex(HWND dialog, const PrintShortcutRecord& record) {
    if (m_properties->ManualDuplexSupported() != 0) return;
    if (!zx::KeywordIs(m_properties->CurrentOption(Feature::DuplexUnit), Option::False)) return;
    m_duplexUnavailable = 1;
    const auto duplex = std::find(record.features.begin(), record.features.end(), Feature::Duplex);
    const size_t position = static_cast<size_t>(duplex - record.features.begin());
    if (duplex != record.features.end() && position < kSettingPositions) {
        SetDialogText(dialog, kSettingLabels[position], StringId::ManualDuplexLabel);
    }
}

// With maximum resolution on, the print quality is fixed. A read-only sheet keeps it disabled.
void VPrintingShortcutPropPage::ApplyMaximumResolutionRule(HWND) {
    VPrintShortcutComboBox* quality = ComboOfFeature(Feature::PageOutputQuality);
    if (quality == nullptr) return;
    const POPTITEM maxDpi = Item(Feature::ZXMaxDpi);
    const bool locked = maxDpi != nullptr && maxDpi->Sel != 0;
    ::EnableWindow(quality->Window(), !locked && !m_properties->ReadOnly());
}

void VPrintingShortcutPropPage::OnStandardItemsChanged(HWND standardPage, const VUIProperties& properties) {
    if (standardPage == nullptr || !m_shortcuts) return;
    const bool version6 = zx::GetSystemMajorVersion() >= 6;
    VPrivateDevMode* block = properties.PrivateDevMode();
    auto setList = [standardPage](WORD id, LONG position) {
        ::SendDlgItemMessageW(standardPage, id, CB_SETCURSEL, static_cast<WPARAM>(position), 0);
    };
    auto checkButtons = [standardPage](WORD first, LONG selection) {
        if (selection < 0 || selection > 2) return;
        for (LONG button = 0; button < 3; ++button) {
            ::SendDlgItemMessageW(standardPage, first + 2 * (button + 1), BM_SETCHECK,
                                  button == selection ? BST_CHECKED : BST_UNCHECKED, 0);
        }
    };
    for (const auto& [combo, feature] : m_featureMap) {
        POPTITEM item = nullptr;
        if (feature.empty() || FAILED(properties.FindItem(feature.c_str(), &item)) || item == nullptr ||
            item->pOptType == nullptr) {
            continue;
        }
        const WORD first = item->pOptType->BegCtrlID;
        if (feature == Feature::MediaType) {
            // The standard page lists only the media types that are not hidden.
            LONG position = 0;
            for (LONG option = 0; option < item->Sel && option < item->pOptType->Count; ++option) {
                if (!(item->pOptType->pOptParam[option].Flags & OPTPF_HIDE)) ++position;
            }
            setList(static_cast<WORD>(first + 2), position);
        } else if (feature == Feature::PageOutputQuality) {
            checkButtons(first, item->Sel);
        } else if (feature == Feature::DocumentNUp && block != nullptr) {
            setList(static_cast<WORD>(first + (version6 ? 4 : 2)), static_cast<LONG>(block->dwNUpIndex));
            item->Sel = static_cast<LONG>(block->dwNUpIndex);
            item->Flags |= OPTIF_CHANGED;
        } else if (feature == Feature::Duplex) {
            if (version6) {
                setList(static_cast<WORD>(first + 2), item->Sel);
            } else {
                checkButtons(first, item->Sel);
            }
        }
    }
}

void VPrintingShortcutPropPage::OnStandardSelectionChanged(const VUIProperties& properties) {
    if (!m_shortcuts) return;
    const int32_t selected = SelectedRecord();
    if (selected < 0) return;
    const PrintShortcutRecord& record = m_shortcuts->Records()[static_cast<size_t>(selected)];
    if (!record.isBuiltIn) return;
    // Every setting whose item exists gives the same picture: written once.
    for (const auto& [combo, feature] : m_featureMap) {
        POPTITEM item = nullptr;
        if (feature.empty() || FAILED(properties.FindItem(feature.c_str(), &item)) || item == nullptr) continue;
        m_shortcuts->WriteCustomBitmapId(zx::StandardSheetModifiedBitmap(record.bitmapId));
        return;
    }
}

// --- Handing shortcuts to the job --------------------------------------------------------------

void VPrintingShortcutPropPage::ApplyShortcutToJob(HWND dialog, int32_t recordIndex, bool commit, DWORD mode) {
    if (recordIndex < 0 || recordIndex >= m_shortcuts->Count()) return;
    const PrintShortcutRecord record = m_shortcuts->Records()[static_cast<size_t>(recordIndex)];
    const auto duplexSetting = std::find(record.features.begin(), record.features.end(), Feature::Duplex);
    if (mode == 2 && duplexSetting != record.features.end()) {
        if (POPTITEM duplex = Item(Feature::Duplex)) {
            if (m_uiParams->pPublicDM != nullptr) m_uiParams->pPublicDM->dmDuplex = 0;
            duplex->Sel = 0;
            const int32_t combo = ComboOfSettingPosition(static_cast<size_t>(duplexSetting - record.features.begin()));
            if (::SendDlgItemMessageW(dialog, combo, CB_GETCURSEL, 0, 0) == CB_ERR) {
                ::OutputDebugStringW(L"No item is selected...");
            }
            HandToCoreDriver(duplex);
        }
    }
    for (size_t position = 0; position < record.features.size() && position < kSettingPositions; ++position) {
        ApplySettingToJob(dialog, record, position, commit, mode);
    }
    if (POPTITEM orientation = Item(Feature::Orientation)) HandToCoreDriver(orientation);
    POPTITEM paper = Item(Feature::PaperSize);
    POPTITEM bin = Item(Feature::InputBin);
    if (paper != nullptr && bin != nullptr) {
        m_properties->CommitOptItem(paper);
        m_properties->CommitOptItem(bin);
    }
}

// One setting of a shortcut, as its combo box shows it, handed to the feature's item.
void VPrintingShortcutPropPage::ApplySettingToJob(HWND dialog, const PrintShortcutRecord& record, size_t position,
                                                  bool commit, DWORD mode) {
    const std::string& feature = record.features[position];
    POPTITEM item = Item(feature.c_str());
    if (item == nullptr || (feature == Feature::Duplex && (item->Flags & OPTIF_DISABLED))) return;
    const LRESULT selection = ::SendDlgItemMessageW(dialog, ComboOfSettingPosition(position), CB_GETCURSEL, 0, 0);
    const int32_t comboSelection = selection == CB_ERR ? 0 : static_cast<int32_t>(selection);
    if (feature == Feature::DocumentNUp) {
        if (VPrivateDevMode* block = PrivateBlock()) {
            block->dwNUpIndex = static_cast<DWORD>(m_shortcuts->ToDriverOption(record, position, comboSelection));
        }
        if (!commit) return;
    }
    if (mode != 0) {
        const LONG itemSelection =
            zx::ItemSelectionForSetting(*m_shortcuts, record, position, comboSelection, *m_properties);
        if (selection != CB_ERR && itemSelection >= 0 && item->pOptType != nullptr &&
            itemSelection < item->pOptType->Count) {
            item->Sel = itemSelection;
        }
        item->Flags |= OPTIF_CHANGED;
        ::SendMessageW(::GetParent(dialog), PSM_CHANGED, reinterpret_cast<WPARAM>(dialog), 0);
    }
    if (commit) m_properties->CommitOptItem(item);
}

HRESULT VPrintingShortcutPropPage::HandToCoreDriver(POPTITEM item) const {
    if (item == nullptr || !m_driverUI || m_uiParams == nullptr) return E_FAIL;
    return m_driverUI->DrvUpdateUISetting(m_uiParams->poemuiobj, item, 0, OEMCUIP_DOCPROP);
}

POPTITEM VPrintingShortcutPropPage::Item(const char* feature) const {
    POPTITEM item = nullptr;
    if (m_properties == nullptr || FAILED(m_properties->FindItem(feature, &item))) return nullptr;
    return item;
}

// The media type or quality was chosen by the user: snapping no longer changes them.
void VPrintingShortcutPropPage::SetTouchByUser() {
    if (POPTITEM touch = Item(Feature::TouchByUser)) {
        touch->Sel = 1;
        m_properties->CommitOptItem(touch);
        touch->Flags |= OPTIF_HIDE;
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
