#include "tests/support/fake_core_helper.h"

#include <algorithm>

namespace zxtest {

void FakeCoreHelper::SetOptionList(const std::string& feature, std::vector<std::string> options) {
    OptionList& list = m_lists[feature];
    list.keywords = std::move(options);
    list.pointers.clear();
    for (const std::string& keyword : list.keywords) list.pointers.push_back(keyword.c_str());
}

STDMETHODIMP FakeCoreHelper::QueryInterface(REFIID riid, void** ppv) {
    if (ppv == nullptr) return E_POINTER;
    *ppv = nullptr;
    if (IsEqualIID(riid, IID_IUnknown)) {
        *ppv = static_cast<IPrintOemDriverUI*>(this);
    } else if (IsEqualIID(riid, IID_IPrintOemDriverUI) && offersDriverUI) {
        *ppv = static_cast<IPrintOemDriverUI*>(this);
    } else if (IsEqualIID(riid, IID_IPrintCoreHelper) && offersCoreHelper) {
        *ppv = static_cast<IPrintCoreHelper*>(this);
    } else if (IsEqualIID(riid, IID_IPrintCoreHelperUni) && offersCoreHelperUni) {
        *ppv = static_cast<IPrintCoreHelperUni*>(this);
    } else {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) FakeCoreHelper::AddRef() { return static_cast<ULONG>(InterlockedIncrement(&m_refCount)); }

// Lives on the test's stack: the count only records what the plug-in holds.
STDMETHODIMP_(ULONG) FakeCoreHelper::Release() { return static_cast<ULONG>(InterlockedDecrement(&m_refCount)); }

STDMETHODIMP FakeCoreHelper::DrvUpdateUISetting(PVOID pci, PVOID pOptItem, DWORD dwPreviousSelection, DWORD dwMode) {
    ++updateUISettingCalls;
    const auto* item = static_cast<const OPTITEM*>(pOptItem);
    const bool hasSelectedOption = item && item->pOptType && item->pOptType->pOptParam && item->Sel >= 0 &&
                                   item->Sel < item->pOptType->Count;
    const BYTE flags = hasSelectedOption ? item->pOptType->pOptParam[item->Sel].Flags : 0;
    updates.push_back({pci, pOptItem, dwPreviousSelection, dwMode, flags});
    return behaviour == Behaviour::FailEveryCall ? E_FAIL : S_OK;
}

STDMETHODIMP FakeCoreHelper::GetOption(const DEVMODEW* pDevmode, DWORD cbSize, PCSTR pszFeatureRequested,
                                       PCSTR* ppszOption) {
    askedFeatures.emplace_back(pszFeatureRequested ? pszFeatureRequested : "");
    askedDevModeSizes.push_back(cbSize);
    largestDevModeSize = std::max(largestDevModeSize, cbSize);
    if (behaviour == Behaviour::Forward) return forwardTo->GetOption(pDevmode, cbSize, pszFeatureRequested, ppszOption);
    if (ppszOption == nullptr || pszFeatureRequested == nullptr) return E_INVALIDARG;
    *ppszOption = nullptr;
    switch (behaviour) {
    case Behaviour::FailEveryCall: return E_FAIL;
    case Behaviour::NullOptions: return S_OK;
    case Behaviour::Forward:
    case Behaviour::Answer: break;
    }
    const auto found = m_current.find(pszFeatureRequested);
    if (found == m_current.end()) return E_INVALIDARG;
    *ppszOption = found->second.c_str();
    return getOptionResult;
}

STDMETHODIMP FakeCoreHelper::SetOptions(DEVMODEW* pDevmode, DWORD cbSize, BOOL bResolveConflicts,
                                        const PRINT_FEATURE_OPTION* pFOPairs, DWORD cPairs, DWORD* pcPairsWritten,
                                        DWORD* pdwResult) {
    largestDevModeSize = std::max(largestDevModeSize, cbSize);
    if (behaviour == Behaviour::Forward) {
        return forwardTo->SetOptions(pDevmode, cbSize, bResolveConflicts, pFOPairs, cPairs, pcPairsWritten, pdwResult);
    }
    if (behaviour != Behaviour::Answer) return E_FAIL;
    for (DWORD i = 0; i < cPairs; ++i) m_current[pFOPairs[i].pszFeature] = pFOPairs[i].pszOption;
    if (pcPairsWritten) *pcPairsWritten = cPairs;
    return S_OK;
}

STDMETHODIMP FakeCoreHelper::EnumOptions(PCSTR pszFeatureKeyword, PCSTR** pOptionList, DWORD* pdwNumOptions) {
    if (pszFeatureKeyword == nullptr || pOptionList == nullptr || pdwNumOptions == nullptr) return E_INVALIDARG;
    *pOptionList = nullptr;
    *pdwNumOptions = 0;
    switch (behaviour) {
    case Behaviour::FailEveryCall: return E_FAIL;
    case Behaviour::NullOptions: return S_OK;
    case Behaviour::Forward: return forwardTo->EnumOptions(pszFeatureKeyword, pOptionList, pdwNumOptions);
    case Behaviour::Answer: break;
    }
    const auto found = m_lists.find(pszFeatureKeyword);
    if (found == m_lists.end()) return E_INVALIDARG;
    *pOptionList = found->second.pointers.data();
    *pdwNumOptions = static_cast<DWORD>(found->second.pointers.size());
    return S_OK;
}

}  // namespace zxtest
