// The Function Discovery interfaces that the WSD address lookup uses, declared here with the
// layouts of the Windows SDK: mingw-w64's declarations leave out the IServiceProvider base of
// IFunctionInstance, which shifts every method of it by one slot.
#pragma once

#include <windows.h>
#include <objbase.h>
#include <propsys.h>
#include <servprov.h>

namespace zx {

// Function Discovery object {C72BE2EC-8E90-452C-B29A-AB8FF1C071FC}.
inline constexpr CLSID kClsidFunctionDiscovery = {
    0xc72be2ec, 0x8e90, 0x452c, {0xb2, 0x9a, 0xab, 0x8f, 0xf1, 0xc0, 0x71, 0xfc}};
// IFunctionDiscovery {4DF99B70-E148-4432-B004-4C9EEB535A5E}.
inline constexpr IID kIidFunctionDiscovery = {
    0x4df99b70, 0xe148, 0x4432, {0xb0, 0x04, 0x4c, 0x9e, 0xeb, 0x53, 0x5a, 0x5e}};

// The category of the Plug and Play provider, under which WSD printers appear.
inline constexpr wchar_t kCategoryPnp[] = L"Provider\\Microsoft.Base.PnP";

using FDQUERYCONTEXT = DWORDLONG;

struct IFunctionInstance : public IServiceProvider {
    virtual HRESULT STDMETHODCALLTYPE GetID(WCHAR** identity) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetProviderInstanceID(WCHAR** providerInstanceId) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenPropertyStore(DWORD access, IPropertyStore** store) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetCategory(WCHAR** category, WCHAR** subCategory) = 0;
};

struct IFunctionInstanceCollection : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetCount(DWORD* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE Get(const WCHAR* identity, DWORD* index, IFunctionInstance** instance) = 0;
    virtual HRESULT STDMETHODCALLTYPE Item(DWORD index, IFunctionInstance** instance) = 0;
    virtual HRESULT STDMETHODCALLTYPE Add(IFunctionInstance* instance) = 0;
    virtual HRESULT STDMETHODCALLTYPE Remove(DWORD index, IFunctionInstance** instance) = 0;
    virtual HRESULT STDMETHODCALLTYPE Delete(DWORD index) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteAll() = 0;
};

struct IFunctionInstanceCollectionQuery : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE AddQueryConstraint(const WCHAR* name, const WCHAR* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddPropertyConstraint(REFPROPERTYKEY key, const PROPVARIANT* value,
                                                            int constraint) = 0;
    virtual HRESULT STDMETHODCALLTYPE Execute(IFunctionInstanceCollection** collection) = 0;
};

// Notifications are not used: the lookup runs synchronously.
struct IFunctionDiscoveryNotification;

struct IFunctionDiscovery : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetInstanceCollection(const WCHAR* category, const WCHAR* subCategory,
                                                            BOOL includeAllSubCategories,
                                                            IFunctionInstanceCollection** collection) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetInstance(const WCHAR* identity, IFunctionInstance** instance) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateInstanceCollectionQuery(const WCHAR* category, const WCHAR* subCategory,
                                                                    BOOL includeAllSubCategories,
                                                                    IFunctionDiscoveryNotification* notification,
                                                                    FDQUERYCONTEXT* context,
                                                                    IFunctionInstanceCollectionQuery** query) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateInstanceQuery(const WCHAR* identity,
                                                          IFunctionDiscoveryNotification* notification,
                                                          FDQUERYCONTEXT* context, IUnknown** query) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddInstance(int visibility, const WCHAR* category, const WCHAR* subCategory,
                                                  const WCHAR* categoryIdentity, IFunctionInstance** instance) = 0;
    virtual HRESULT STDMETHODCALLTYPE RemoveInstance(int visibility, const WCHAR* category, const WCHAR* subCategory,
                                                     const WCHAR* categoryIdentity) = 0;
};

}  // namespace zx
