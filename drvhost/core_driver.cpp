#include "drvhost/core_driver.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace drvhost {
namespace {

// Reference counting shared by the two helper objects. The core driver holds the first
// reference; the plug-in takes its own.
template <typename... Interfaces>
class HelperObject : public Interfaces... {
public:
    explicit HelperObject(CoreDriver& driver) : m_driver(driver) {}
    virtual ~HelperObject() = default;

    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(::InterlockedIncrement(&m_refCount)); }
    STDMETHODIMP_(ULONG) Release() override {
        const LONG remaining = ::InterlockedDecrement(&m_refCount);
        if (remaining == 0) delete this;
        return static_cast<ULONG>(remaining);
    }

protected:
    HRESULT Answer(void* self, void** ppv) {
        *ppv = self;
        AddRef();
        return S_OK;
    }

    CoreDriver& m_driver;

private:
    volatile LONG m_refCount = 1;
};

class DriverUiObject final : public HelperObject<IPrintOemDriverUI> {
public:
    using HelperObject::HelperObject;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
        if (ppv == nullptr) return E_POINTER;
        *ppv = nullptr;
        if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IPrintOemDriverUI)) return Answer(this, ppv);
        return E_NOINTERFACE;
    }
    STDMETHODIMP DrvGetDriverSetting(PVOID, PCSTR, PVOID, DWORD, PDWORD, PDWORD) override { return E_NOTIMPL; }
    STDMETHODIMP DrvUpgradeRegistrySetting(HANDLE, PCSTR, PCSTR) override { return E_NOTIMPL; }
    STDMETHODIMP DrvUpdateUISetting(PVOID pci, PVOID pOptItem, DWORD dwPreviousSelection, DWORD dwMode) override {
        return m_driver.UpdateUISetting(pci, pOptItem, dwPreviousSelection, dwMode);
    }
};

class CoreHelperObject final : public HelperObject<IPrintCoreHelperUni> {
public:
    using HelperObject::HelperObject;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
        if (ppv == nullptr) return E_POINTER;
        *ppv = nullptr;
        if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IPrintCoreHelper) ||
            IsEqualIID(riid, IID_IPrintCoreHelperUni)) {
            return Answer(static_cast<IPrintCoreHelperUni*>(this), ppv);
        }
        return E_NOINTERFACE;
    }
    STDMETHODIMP GetOption(const DEVMODEW* pDevmode, DWORD cbSize, PCSTR pszFeatureRequested,
                           PCSTR* ppszOption) override {
        return m_driver.GetOption(pDevmode, cbSize, pszFeatureRequested, ppszOption);
    }
    STDMETHODIMP SetOptions(DEVMODEW* pDevmode, DWORD cbSize, BOOL bResolveConflicts,
                            const PRINT_FEATURE_OPTION* pFOPairs, DWORD cPairs, DWORD* pcPairsWritten,
                            DWORD* pdwResult) override {
        return m_driver.SetOptions(pDevmode, cbSize, bResolveConflicts, pFOPairs, cPairs, pcPairsWritten, pdwResult);
    }
    STDMETHODIMP EnumOptions(PCSTR pszFeatureKeyword, PCSTR** pOptionList, DWORD* pdwNumOptions) override {
        return m_driver.EnumOptions(pszFeatureKeyword, pOptionList, pdwNumOptions);
    }
    STDMETHODIMP EnumFeatures(PCSTR** pFeatureList, DWORD* pdwNumFeatures) override {
        return m_driver.EnumFeatures(pFeatureList, pdwNumFeatures);
    }
    STDMETHODIMP EnumConstrainedOptions(const DEVMODEW*, DWORD, PCSTR, PCSTR**, DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP WhyConstrained(const DEVMODEW*, DWORD, PCSTR, PCSTR, const PRINT_FEATURE_OPTION**, DWORD*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP GetFontSubstitution(PCWSTR, PCWSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP SetFontSubstitution(PCWSTR, PCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP CreateInstanceOfMSXMLObject(REFCLSID, IUnknown*, DWORD, REFIID, LPVOID*) override { return E_NOTIMPL; }
    STDMETHODIMP CreateGDLSnapshot(DEVMODEW*, DWORD, DWORD, IStream**) override { return E_NOTIMPL; }
    STDMETHODIMP CreateDefaultGDLSnapshot(DWORD, IStream**) override { return E_NOTIMPL; }
};

}  // namespace

class CoreDriver::Target {
public:
    Target(CoreDriver& driver, DEVMODEW* devMode, DWORD cbSize) : m_driver(driver), m_devMode(devMode) {
        if (devMode != nullptr) m_selections = FindSelections(devMode, cbSize, driver.m_description.features.size());
    }

    bool Valid() const noexcept { return m_devMode == nullptr || m_selections != nullptr; }

    DWORD Get(size_t feature) const {
        return m_selections ? m_selections[feature] : m_driver.CurrentSelection(feature);
    }

    void Set(size_t feature, DWORD option) {
        const FeatureDescription& description = m_driver.m_description.features[feature];
        if (m_selections) {
            m_selections[feature] = option;
            SyncPublicField(*m_devMode, description, option);
        } else if (description.sheet == FeatureSheet::Printer) {
            m_driver.m_printerConfiguration[feature] = option;
        } else if (m_driver.m_currentJob) {
            m_driver.m_currentJob->SetSelection(feature, option);
        } else {
            m_driver.m_defaultSelections[feature] = option;
        }
    }

private:
    CoreDriver& m_driver;
    DEVMODEW* m_devMode;
    DWORD* m_selections = nullptr;
};

CoreDriver::CoreDriver(PrinterDescription description) : m_description(std::move(description)) {
    for (const FeatureDescription& feature : m_description.features) {
        m_featureKeywords.push_back(feature.keyword.c_str());
        std::vector<PCSTR>& options = m_optionKeywords.emplace_back();
        for (const OptionDescription& option : feature.options) options.push_back(option.keyword.c_str());
        m_defaultSelections.push_back(static_cast<DWORD>(feature.defaultOption));
    }
    m_printerConfiguration = m_defaultSelections;
    // Takes over the creator's reference (mingw-w64's ComPtr::Attach would add one).
    *m_driverUi.GetAddressOf() = new DriverUiObject(*this);
    *m_coreHelper.GetAddressOf() = new CoreHelperObject(*this);
}

CoreDriver::~CoreDriver() = default;

void CoreDriver::ShowSheet(const OEMUIOBJ* uiObject, OptionItems* items, FeatureSheet sheet) noexcept {
    m_sheetUiObject = uiObject;
    m_sheetItems = items;
    m_sheet = sheet;
}

void CoreDriver::CloseSheet() noexcept {
    m_sheetUiObject = nullptr;
    m_sheetItems = nullptr;
}

DWORD CoreDriver::CurrentSelection(size_t feature) const {
    if (m_description.features[feature].sheet == FeatureSheet::Printer) return m_printerConfiguration[feature];
    return m_currentJob ? m_currentJob->Selection(feature) : m_defaultSelections[feature];
}

HRESULT CoreDriver::GetOption(const DEVMODEW* devMode, DWORD cbSize, PCSTR feature, PCSTR* option) {
    if (option == nullptr || feature == nullptr) return E_INVALIDARG;
    *option = nullptr;
    const auto index = m_description.FindFeature(feature);
    if (!index) return E_INVALIDARG;
    const Target target(*this, const_cast<DEVMODEW*>(devMode), cbSize);
    if (!target.Valid()) return E_INVALIDARG;
    const DWORD selected = target.Get(*index);
    if (selected >= m_optionKeywords[*index].size()) return E_FAIL;
    *option = m_optionKeywords[*index][selected];
    return S_OK;
}

HRESULT CoreDriver::SetOptions(DEVMODEW* devMode, DWORD cbSize, BOOL resolveConflicts,
                               const PRINT_FEATURE_OPTION* pairs, DWORD count, DWORD* written, DWORD* result) {
    if (written) *written = 0;
    if (pairs == nullptr || count == 0) return E_INVALIDARG;
    Target target(*this, devMode, cbSize);
    if (!target.Valid()) return E_INVALIDARG;

    std::vector<size_t> setFeatures;
    for (DWORD i = 0; i < count; ++i) {
        const auto feature = pairs[i].pszFeature ? m_description.FindFeature(pairs[i].pszFeature) : std::nullopt;
        const auto option = feature && pairs[i].pszOption
                                ? m_description.features[*feature].FindOption(pairs[i].pszOption)
                                : std::nullopt;
        if (!option) return E_INVALIDARG;
        target.Set(*feature, static_cast<DWORD>(*option));
        setFeatures.push_back(*feature);
        if (written) *written = i + 1;
    }

    const bool hadConflict = ResolveConflicts(target, setFeatures, resolveConflicts != FALSE);
    const bool conflictRemains = ResolveConflicts(target, setFeatures, false);
    if (result) {
        *result = conflictRemains ? SETOPTIONS_RESULT_CONFLICT_REMAINED
                  : hadConflict   ? SETOPTIONS_RESULT_CONFLICT_RESOLVED
                                  : SETOPTIONS_RESULT_NO_CONFLICT;
    }
    return S_OK;
}

// Finds the features whose selection is constrained by the others. With `resolve`, each one the
// caller did not set moves to its first option that no constraint forbids. Returns whether any
// conflict was found.
bool CoreDriver::ResolveConflicts(Target& target, const std::vector<size_t>& fixedFeatures, bool resolve) {
    const SelectionSource selectionOf = [&target](size_t feature) { return target.Get(feature); };
    bool found = false;
    for (size_t feature = 0; feature < m_description.features.size(); ++feature) {
        if (!IsConstrained(m_description, feature, selectionOf(feature), selectionOf)) continue;
        found = true;
        const bool fixed = std::find(fixedFeatures.begin(), fixedFeatures.end(), feature) != fixedFeatures.end();
        if (!resolve || fixed) continue;
        for (size_t option = 0; option < m_description.features[feature].options.size(); ++option) {
            if (!IsConstrained(m_description, feature, option, selectionOf)) {
                target.Set(feature, static_cast<DWORD>(option));
                break;
            }
        }
    }
    return found;
}

HRESULT CoreDriver::EnumOptions(PCSTR feature, PCSTR** options, DWORD* count) {
    if (feature == nullptr || options == nullptr || count == nullptr) return E_INVALIDARG;
    *options = nullptr;
    *count = 0;
    const auto index = m_description.FindFeature(feature);
    if (!index) return E_INVALIDARG;
    *options = m_optionKeywords[*index].data();
    *count = static_cast<DWORD>(m_optionKeywords[*index].size());
    return S_OK;
}

HRESULT CoreDriver::EnumFeatures(PCSTR** features, DWORD* count) {
    if (features == nullptr || count == nullptr) return E_INVALIDARG;
    *features = m_featureKeywords.data();
    *count = static_cast<DWORD>(m_featureKeywords.size());
    return S_OK;
}

HRESULT CoreDriver::UpdateUISetting(PVOID uiObject, PVOID item, DWORD, DWORD mode) {
    const FeatureSheet sheet = mode == OEMCUIP_PRNPROP ? FeatureSheet::Printer : FeatureSheet::Document;
    if (uiObject == nullptr || uiObject != m_sheetUiObject || m_sheetItems == nullptr || sheet != m_sheet) {
        return E_INVALIDARG;
    }
    const auto feature = m_sheetItems->FeatureOf(item);
    if (!feature) return E_INVALIDARG;
    const auto* optItem = static_cast<const OPTITEM*>(item);
    const FeatureDescription& description = m_description.features[*feature];
    if (optItem->Sel < 0 || static_cast<size_t>(optItem->Sel) >= description.options.size()) return E_INVALIDARG;

    if (optItem->pOptType->pOptParam[optItem->Sel].Flags & OPTPF_OVERLAY_WARNING_ICON) ++m_conflictPrompts;
    Target current(*this, nullptr, 0);
    current.Set(*feature, static_cast<DWORD>(optItem->Sel));
    m_sheetItems->MarkConflicts([this](size_t f) { return CurrentSelection(f); });
    return S_OK;
}

}  // namespace drvhost
