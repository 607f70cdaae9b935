#include "tests/device/fake_function_discovery.h"

namespace zxtest {
namespace {

FakeFunctionDiscovery* g_discovery = nullptr;

LPWSTR CoTaskCopy(const std::wstring& text) {
    auto* copy = static_cast<LPWSTR>(::CoTaskMemAlloc((text.size() + 1) * sizeof(wchar_t)));
    text.copy(copy, text.size());
    copy[text.size()] = L'\0';
    return copy;
}

// Counted like a COM object; one object answers for all its interfaces, and for nothing else.
template <typename... Interfaces>
class FakeObject : public Interfaces... {
public:
    FakeObject() { ++FakeFunctionDiscovery::liveObjects; }
    virtual ~FakeObject() { --FakeFunctionDiscovery::liveObjects; }
    STDMETHODIMP QueryInterface(REFIID, void** object) override { return *object = nullptr, E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_references; }
    STDMETHODIMP_(ULONG) Release() override {
        if (--m_references == 0) return delete this, 0;
        return m_references;
    }

private:
    ULONG m_references = 1;
};

class Instance final : public FakeObject<zx::IFunctionInstance, IPropertyStore> {
public:
    explicit Instance(const FakeInstance& data) : m_data(data) {}
    STDMETHODIMP GetID(WCHAR** identity) override { return *identity = CoTaskCopy(m_data.id), S_OK; }
    STDMETHODIMP OpenPropertyStore(DWORD, IPropertyStore** store) override { return AddRef(), *store = this, S_OK; }
    STDMETHODIMP GetCount(DWORD* count) override { return *count = static_cast<DWORD>(m_data.properties.size()), S_OK; }
    STDMETHODIMP GetAt(DWORD index, PROPERTYKEY* key) override { return *key = m_data.properties.at(index).key, S_OK; }
    STDMETHODIMP GetValue(REFPROPERTYKEY key, PROPVARIANT* value) override {
        PropVariantInit(value);
        for (const FakeProperty& property : m_data.properties) {
            if (property.key.pid != key.pid || !IsEqualGUID(property.key.fmtid, key.fmtid)) continue;
            value->vt = property.type;
            if (property.type == VT_LPWSTR) {
                value->pwszVal = CoTaskCopy(property.texts.at(0));
            } else {
                value->calpwstr.cElems = static_cast<ULONG>(property.texts.size());
                value->calpwstr.pElems =
                    static_cast<LPWSTR*>(::CoTaskMemAlloc(sizeof(LPWSTR) * (property.texts.size() + 1)));
                for (size_t i = 0; i < property.texts.size(); ++i)
                    value->calpwstr.pElems[i] = CoTaskCopy(property.texts[i]);
            }
        }
        return S_OK;
    }
    STDMETHODIMP QueryService(REFGUID, REFIID, void**) override { return E_NOTIMPL; }
    STDMETHODIMP GetProviderInstanceID(WCHAR**) override { return E_NOTIMPL; }
    STDMETHODIMP GetCategory(WCHAR**, WCHAR**) override { return E_NOTIMPL; }
    STDMETHODIMP SetValue(REFPROPERTYKEY, REFPROPVARIANT) override { return E_NOTIMPL; }
    STDMETHODIMP Commit() override { return E_NOTIMPL; }

private:
    FakeInstance m_data;
};

// The discovery object, its query and the query's collection in one.
class Discovery final
    : public FakeObject<zx::IFunctionDiscovery, zx::IFunctionInstanceCollectionQuery, zx::IFunctionInstanceCollection> {
public:
    STDMETHODIMP CreateInstanceCollectionQuery(const WCHAR* category, const WCHAR*, BOOL,
                                               zx::IFunctionDiscoveryNotification*, zx::FDQUERYCONTEXT*,
                                               zx::IFunctionInstanceCollectionQuery** query) override {
        g_discovery->queriedCategory = category;
        return AddRef(), *query = this, S_OK;
    }
    STDMETHODIMP Execute(zx::IFunctionInstanceCollection** collection) override {
        return AddRef(), *collection = this, g_discovery->executeResult;
    }
    STDMETHODIMP GetCount(DWORD* count) override {
        return *count = static_cast<DWORD>(g_discovery->instances.size()), S_OK;
    }
    STDMETHODIMP Item(DWORD index, zx::IFunctionInstance** instance) override {
        return *instance = new Instance(g_discovery->instances.at(index)), S_OK;
    }
    STDMETHODIMP GetInstanceCollection(const WCHAR*, const WCHAR*, BOOL, zx::IFunctionInstanceCollection**) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP GetInstance(const WCHAR*, zx::IFunctionInstance**) override { return E_NOTIMPL; }
    STDMETHODIMP CreateInstanceQuery(const WCHAR*, zx::IFunctionDiscoveryNotification*, zx::FDQUERYCONTEXT*,
                                     IUnknown**) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP AddInstance(int, const WCHAR*, const WCHAR*, const WCHAR*, zx::IFunctionInstance**) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP RemoveInstance(int, const WCHAR*, const WCHAR*, const WCHAR*) override { return E_NOTIMPL; }
    STDMETHODIMP AddQueryConstraint(const WCHAR*, const WCHAR*) override { return E_NOTIMPL; }
    STDMETHODIMP AddPropertyConstraint(REFPROPERTYKEY, const PROPVARIANT*, int) override { return E_NOTIMPL; }
    STDMETHODIMP Get(const WCHAR*, DWORD*, zx::IFunctionInstance**) override { return E_NOTIMPL; }
    STDMETHODIMP Add(zx::IFunctionInstance*) override { return E_NOTIMPL; }
    STDMETHODIMP Remove(DWORD, zx::IFunctionInstance**) override { return E_NOTIMPL; }
    STDMETHODIMP Delete(DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP DeleteAll() override { return E_NOTIMPL; }
};

HRESULT CreateDiscovery(zx::IFunctionDiscovery** discovery) {
    *discovery = SUCCEEDED(g_discovery->createResult) ? new Discovery() : nullptr;
    return g_discovery->createResult;
}

}  // namespace

long FakeFunctionDiscovery::liveObjects = 0;

FakeProperty ServiceAddress(std::vector<std::wstring> addresses) {
    constexpr PROPERTYKEY key = {{0x656a3bb3, 0xecc0, 0x43fd, {0x84, 0x77, 0x4a, 0xe0, 0x40, 0x4a, 0x96, 0xcd}}, 16384};
    return {key, VT_VECTOR | VT_LPWSTR, std::move(addresses)};
}

FakeProperty PrinterPort(const std::wstring& port) {
    constexpr PROPERTYKEY key = {{0xf01fac5d, 0xe5f6, 0x485f, {0xa8, 0xc6, 0x27, 0x44, 0x64, 0x25, 0x99, 0x8c}}, 2};
    return {key, VT_LPWSTR, {port}};
}

FakeFunctionDiscovery::FakeFunctionDiscovery() {
    g_discovery = this;
    zx::DiscoveryPlatform table = zx::CurrentDiscoveryPlatform();
    table.createFunctionDiscovery = CreateDiscovery;
    m_previous = zx::ReplaceDiscoveryPlatform(table);
}

FakeFunctionDiscovery::~FakeFunctionDiscovery() {
    zx::ReplaceDiscoveryPlatform(m_previous);
    g_discovery = nullptr;
}

}  // namespace zxtest
