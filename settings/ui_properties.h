// The settings object of a property-sheet session: the plug-in's private block, counted
// references to the core driver's helper interfaces, the common-UI parameter block and the
// session flags, with the operations through which the plug-in reads and changes the core
// driver's items. The callback context extends it for one call of the property-sheet callback.
#pragma once

#include "ddk/prcomoem.h"
#include "settings/option_access.h"
#include "settings/private_devmode.h"
#include "util/scoped.h"

#include <span>

class IBiDiData;

// The UI plug-in object as the settings model sees it: whoever put itself, as this interface, in
// the parameter block's user-data field when it set up the property sheet, and lends the core
// driver's helper interfaces to the callbacks.
class IUIPlugin {
public:
    virtual IPrintOemDriverUI* DriverUI() const noexcept = 0;
    virtual IPrintCoreHelper* CoreHelper() const noexcept = 0;

protected:
    ~IUIPlugin() = default;
};

class VUIProperties {
public:
    // For the property-sheet callbacks.
    VUIProperties() noexcept = default;
    // For DevMode: the private block alone.
    explicit VUIProperties(VPrivateDevMode* privateDevMode) noexcept : m_privateDevMode(privateDevMode) {}
    // Copies every field and takes a reference of its own on both interfaces.
    VUIProperties(const VUIProperties& other) = default;
    VUIProperties& operator=(const VUIProperties& other) = default;
    // Releases both interfaces; the private block and the parameter block belong to the core driver.
    virtual ~VUIProperties() = default;

    // Session set-up by the UI plug-in object.
    void SetInterfaces(IPrintOemDriverUI* driverUI, IPrintCoreHelper* coreHelper) noexcept;
    // Remembers the parameter block and takes the read-only flag from the flags it carries.
    void AttachSheet(POEMCUIPPARAM params) noexcept;

    VPrivateDevMode* PrivateDevMode() const noexcept { return m_privateDevMode; }
    IPrintOemDriverUI* DriverUI() const noexcept { return m_driverUI.Get(); }
    IPrintCoreHelper* CoreHelper() const noexcept { return m_coreHelper.Get(); }
    POEMCUIPPARAM UiParams() const noexcept { return m_uiParams; }

    DWORD DuplexUnitInstalled() const noexcept { return m_duplexUnitInstalled; }
    void SetDuplexUnitInstalled(DWORD installed) noexcept { m_duplexUnitInstalled = installed; }
    BYTE ManualDuplexSupported() const noexcept { return m_manualDuplexSupported; }
    void SetManualDuplexSupported(BYTE supported) noexcept { m_manualDuplexSupported = supported; }
    // While set, the binding and margins items are hidden (two-sided printing is unavailable).
    DWORD BindingAndMarginsSuppressed() const noexcept { return m_bindingAndMarginsSuppressed; }
    void SetBindingAndMarginsSuppressed(DWORD suppressed) noexcept { m_bindingAndMarginsSuppressed = suppressed; }
    DWORD ReadOnly() const noexcept { return m_readOnly; }
    DWORD NUpChanged() const noexcept { return m_nupChanged; }
    void SetNUpChanged(DWORD changed) noexcept { m_nupChanged = changed; }

    // The three ways of reading the core driver's settings while a sheet is open: a feature's
    // current option (null when the feature is missing), its option list, and its item in the
    // session's parameter block (GetFeatureOptItem).
    PCSTR CurrentOption(PCSTR feature) const noexcept { return zx::CurrentOption(CoreHelper(), feature); }
    std::span<const PCSTR> FeatureOptions(PCSTR feature) const noexcept {
        return zx::FeatureOptions(CoreHelper(), feature);
    }
    HRESULT FindItem(PCSTR feature, POPTITEM* item) const noexcept;
    // The item of a feature, or null when the sheet has none (or no item array).
    POPTITEM Item(PCSTR feature) const noexcept;

    // Hands a changed item back to the core driver for the document sheet, with the selected
    // option's conflict mark cleared for the duration of the call, and marks the item changed.
    // Returns what DrvUpdateUISetting returned; E_FAIL for an item without options or without
    // a driver-UI interface or parameter block.
    HRESULT CommitOptItem(POPTITEM item) const noexcept;

    // The printer-sheet form: DrvUpdateUISetting in printer-properties mode, with neither the
    // mark handling nor the changed flag. S_OK for a null item.
    HRESULT CommitPrinterOptItem(POPTITEM item) const noexcept;

    // Copies the selection of a visible item into the item of a hidden feature and commits it.
    HRESULT SetHiddenFeature(PCSTR hiddenFeature, const OPTITEM* visibleItem) const noexcept;

    // Hides the bookkeeping items of a document sheet: the items named by the PrintingShortcut
    // options, copies and collation, the paper source's first option, TouchByUser,
    // PrintingShortcut, AllSettingsfor_PS, ShortcutBitmaps, DocumentBinding and DocumentMargins
    // while suppressed, MediaTypePrev, OutputQualityPrev, PS_Schema and MonoConfig. Missing
    // items are skipped; fails only without a parameter block or item array.
    HRESULT HideBookkeepingItems() const noexcept;

    // Paper-size helpers over the current PaperSize option (see settings/paper.h).
    DWORD PaperIndex() const noexcept;
    bool IsCustomPaperSize() const noexcept;
    LONG PaperItemPosition(DWORD paperIndex) const noexcept;

protected:
    void SetPrivateDevMode(VPrivateDevMode* privateDevMode) noexcept { m_privateDevMode = privateDevMode; }
    // Hands the item back in document mode with the conflict mark cleared, and marks it changed.
    HRESULT HandBackDocumentItem(OPTITEM& item) const noexcept;

private:
    HRESULT HidePrintingShortcutItems() const noexcept;

    VPrivateDevMode* m_privateDevMode = nullptr;
    zx::ComPtr<IPrintOemDriverUI> m_driverUI;
    POEMCUIPPARAM m_uiParams = nullptr;
    DWORD m_duplexUnitInstalled = 0;
    BYTE m_manualDuplexSupported = 1;
    zx::ComPtr<IPrintCoreHelper> m_coreHelper;
    DWORD m_bindingAndMarginsSuppressed = 0;
    DWORD m_readOnly = 0;
    DWORD m_nupChanged = 0;
};

// The settings of one call of a property-sheet callback. Built on the stack for the call. The UI
// plug-in object is the IUIPlugin pointer in the parameter block's user-data field; the private
// block is the block's pOEMDM.
class VUICallbackContext : public VUIProperties {
public:
    // The item callbacks: the UI plug-in object lends its helper interfaces; no accessory record.
    VUICallbackContext(POEMCUIPPARAM params, PCPSUICBPARAM callbackParams) noexcept;
    // CommonUIProp: the helper interfaces and the accessory record are given.
    VUICallbackContext(POEMCUIPPARAM params, IPrintOemDriverUI* driverUI, IBiDiData* biDiData,
                       IPrintCoreHelper* coreHelper) noexcept;
    VUICallbackContext(const VUICallbackContext&) = delete;
    VUICallbackContext& operator=(const VUICallbackContext&) = delete;

    PCPSUICBPARAM CallbackParams() const noexcept { return m_callbackParams; }
    IUIPlugin* UiObject() const noexcept { return m_uiObject; }
    IBiDiData* BiDiData() const noexcept { return m_biDiData; }
    // The item whose selection the user just changed; null outside an item callback.
    POPTITEM CurrentItem() const noexcept;

    DWORD TwoSidedAvailable() const noexcept { return m_twoSidedAvailable; }
    void SetTwoSidedAvailable(DWORD available) noexcept { m_twoSidedAvailable = available; }

    // The callbacks' commit: as CommitOptItem, but the core driver is called only when there is
    // a UI plug-in object. S_OK for a null item and after the commit; E_FAIL for an item
    // without options.
    HRESULT CommitCallbackOptItem(POPTITEM item) const noexcept;

private:
    void TakeParams(POEMCUIPPARAM params) noexcept;

    PCPSUICBPARAM m_callbackParams = nullptr;
    IUIPlugin* m_uiObject = nullptr;
    IBiDiData* m_biDiData = nullptr;
    DWORD m_twoSidedAvailable = 0;
};

namespace zx {

// The UI plug-in object that a parameter block carries in its user-data field; null without one.
inline IUIPlugin* UiPluginOf(const OEMCUIPPARAM* params) noexcept {
    return params != nullptr ? static_cast<IUIPlugin*>(params->pOEMUserData) : nullptr;
}
// Puts the UI plug-in object in the parameter block's user-data field, as UiPluginOf reads it.
inline void SetUiPluginOf(OEMCUIPPARAM& params, IUIPlugin* plugin) noexcept { params.pOEMUserData = plugin; }

// True for the flags of a property sheet opened without permission to change the job: their
// low byte is exactly 0x2C.
inline bool IsReadOnlySheet(DWORD sheetFlags) noexcept { return (sheetFlags & 0xFF) == 0x2C; }

}  // namespace zx
