// The wrappers of the Printing Shortcuts page's controls. The page keeps one wrapper per control
// id, forwards WM_COMMAND and WM_NOTIFY to the wrapper of the control that sent them, and asks the
// wrappers to show a shortcut. The wrappers turn control events into the page's private messages
// (ui/page_messages.h), so that the page sees one message per user action. All of them run on the
// dialog's thread only.
#pragma once

#include "resources/resource_names.h"
#include "shortcuts/shortcut_record.h"

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

// Any control of the page.
class VUIControl {
public:
    explicit VUIControl(int32_t controlId);
    virtual ~VUIControl() = default;
    VUIControl(const VUIControl&) = delete;
    VUIControl& operator=(const VUIControl&) = delete;

    // Finds the control in the dialog; a wrapper never keeps a window of an earlier dialog.
    virtual HRESULT Attach(HWND dialog);
    // WM_COMMAND with the control's notification code. 0 unless a derived class reacts.
    virtual HRESULT OnCommand(HWND dialog, UINT code);
    // WM_NOTIFY from the control. 0 unless a derived class reacts.
    virtual LRESULT OnNotify(HWND dialog, WPARAM wParam, NMHDR* header);
    // Shows the shortcut, for the wrappers that show one. 0 otherwise.
    virtual HRESULT Refresh(HWND dialog, PrintShortcutRecord& record, int32_t controlId);

    HWND Window() const noexcept { return m_window; }
    int32_t ControlId() const noexcept { return m_controlId; }

protected:
    // The number of a text or picture that the driver's feature description names; nothing when
    // the name is unknown.
    std::optional<int32_t> LookupResourceName(std::string_view name) const { return m_names.LookupResourceName(name); }

private:
    zx::PrintShortcutNameTable m_names;
    HWND m_window = nullptr;
    int32_t m_controlId;
};

// The Save as and Delete buttons: the page itself reacts to their clicks.
class VButtonControl : public VUIControl {
public:
    using VUIControl::VUIControl;
    // BN_CLICKED: OnClicked; other codes: E_NOTIMPL.
    HRESULT OnCommand(HWND dialog, UINT code) override;

protected:
    virtual HRESULT OnClicked(HWND dialog);
};

// A drop-down list.
class VComboBoxControl : public VUIControl {
public:
    using VUIControl::VUIControl;
    // CBN_SELCHANGE: OnSelChange; other codes: E_NOTIMPL.
    HRESULT OnCommand(HWND dialog, UINT code) override;

    // Adds text `stringId` of "mortalures18", or of "unires" when "mortalures18" lacks it.
    //   S_OK       added
    //   E_FAIL     the control refused the text
    //   otherwise  neither library has the text: the HRESULT of the thread's last error (S_OK
    //              when that is 0), and nothing is added
    HRESULT AddStringById(HWND dialog, UINT stringId);
    // Empties the list.
    void ResetContent();

protected:
    virtual HRESULT OnSelChange(HWND dialog, WPARAM wParam);
};

// A combo box that shows one setting of the selected shortcut.
class VPrintShortcutComboBox : public VComboBoxControl {
public:
    VPrintShortcutComboBox(int32_t controlId, std::string feature)
        : VComboBoxControl(controlId), m_feature(std::move(feature)) {}

    // Fills the list with the options the shortcut offers for this combo's setting position and
    // selects the shortcut's option.
    HRESULT Refresh(HWND dialog, PrintShortcutRecord& record, int32_t controlId) override;
    HRESULT Fill(HWND dialog, PrintShortcutRecord& record, int32_t controlId);

    const std::string& Feature() const noexcept { return m_feature; }

protected:
    // Tells the page the new selection (WMU_SETTING_CHANGED); nothing for no selection.
    HRESULT OnSelChange(HWND dialog, WPARAM wParam) override;

private:
    std::string m_feature;
};

// The setting position that a combo box of the page shows: 0 to 4 for 1031, 1033, 1035, 1029 and
// 1037; -1 for any other control id.
int SettingPositionOfCombo(int32_t controlId) noexcept;
// The combo box of a setting position; 0 for a position the page has no combo box for.
int32_t ComboOfSettingPosition(size_t position) noexcept;
