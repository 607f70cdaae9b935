// A stand-in for the core driver's helper objects, for fault injection: it answers
// IPrintOemDriverUI and IPrintCoreHelperUni from a table of options, or fails every call, or
// answers with null options, or passes the option calls on to another helper, and records what
// the plug-in asked.
#pragma once

#include "ddk/prcomoem.h"

#include <map>
#include <string>
#include <vector>

namespace zxtest {

class FakeCoreHelper : public IPrintOemDriverUI, public IPrintCoreHelperUni {
public:
    enum class Behaviour { Answer, FailEveryCall, NullOptions, Forward };

    FakeCoreHelper() = default;
    virtual ~FakeCoreHelper() = default;

    // Test set-up.
    Behaviour behaviour = Behaviour::Answer;
    bool offersDriverUI = true;
    bool offersCoreHelper = true;
    bool offersCoreHelperUni = true;
    HRESULT getOptionResult = S_OK;            // returned with a found option
    IPrintCoreHelperUni* forwardTo = nullptr;  // with Behaviour::Forward
    void SetOption(const std::string& feature, const std::string& option) { m_current[feature] = option; }
    void SetOptionList(const std::string& feature, std::vector<std::string> options);

    // What the plug-in did.
    std::vector<std::string> askedFeatures;
    std::vector<DWORD> askedDevModeSizes;
    DWORD largestDevModeSize = 0;  // told to GetOption or SetOptions
    int updateUISettingCalls = 0;
    // Each DrvUpdateUISetting call, with the flags of the item's selected option at that moment.
    struct UpdateCall {
        PVOID uiObject;
        PVOID item;
        DWORD previousSelection;
        DWORD mode;
        BYTE selectedOptionFlags;
    };
    std::vector<UpdateCall> updates;
    ULONG RefCount() const { return static_cast<ULONG>(m_refCount); }

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    // IPrintOemDriverUI
    STDMETHODIMP DrvGetDriverSetting(PVOID, PCSTR, PVOID, DWORD, PDWORD, PDWORD) override { return E_NOTIMPL; }
    STDMETHODIMP DrvUpgradeRegistrySetting(HANDLE, PCSTR, PCSTR) override { return E_NOTIMPL; }
    STDMETHODIMP DrvUpdateUISetting(PVOID pci, PVOID pOptItem, DWORD dwPreviousSelection, DWORD dwMode) override;

    // IPrintCoreHelper
    STDMETHODIMP GetOption(const DEVMODEW* pDevmode, DWORD cbSize, PCSTR pszFeatureRequested,
                           PCSTR* ppszOption) override;
    STDMETHODIMP SetOptions(DEVMODEW*, DWORD, BOOL, const PRINT_FEATURE_OPTION*, DWORD, DWORD*, DWORD*) override;
    STDMETHODIMP EnumConstrainedOptions(const DEVMODEW*, DWORD, PCSTR, PCSTR**, DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP WhyConstrained(const DEVMODEW*, DWORD, PCSTR, PCSTR, const PRINT_FEATURE_OPTION**, DWORD*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP EnumFeatures(PCSTR**, DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP EnumOptions(PCSTR pszFeatureKeyword, PCSTR** pOptionList, DWORD* pdwNumOptions) override;
    STDMETHODIMP GetFontSubstitution(PCWSTR, PCWSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP SetFontSubstitution(PCWSTR, PCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP CreateInstanceOfMSXMLObject(REFCLSID, IUnknown*, DWORD, REFIID, LPVOID*) override { return E_NOTIMPL; }

    // IPrintCoreHelperUni
    STDMETHODIMP CreateGDLSnapshot(DEVMODEW*, DWORD, DWORD, IStream**) override { return E_NOTIMPL; }
    STDMETHODIMP CreateDefaultGDLSnapshot(DWORD, IStream**) override { return E_NOTIMPL; }

private:
    struct OptionList {
        std::vector<std::string> keywords;
        std::vector<PCSTR> pointers;
    };
    volatile LONG m_refCount = 1;
    std::map<std::string, std::string> m_current;
    std::map<std::string, OptionList> m_lists;
};

}  // namespace zxtest
