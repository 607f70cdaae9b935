#include "tests/device/fake_function_discovery.h"

#include <stdexcept>

namespace zxtest {
namespace {

FakeFunctionDiscovery* g_current = nullptr;
long g_liveObjects = 0;

constexpr PROPERTYKEY kServiceAddressKey = {
    {0x656a3bb3, 0xecc0, 0x43fd, {0x84, 0x77, 0x4a, 0xe0, 0x40, 0x4a, 0x96, 0xcd}}, 16384};
constexpr PROPERTYKEY kPrinterPortKey = {
    {0xf01fac5d, 0xe5f6, 0x485f, {0xa8, 0xc6, 0x27, 0x44, 0x64, 0x25, 0x99, 0x8c}}, 2};

LPWSTR CoTaskCopy(const std::wstring& text) {
    auto* copy = static_cast<LPWSTR>(::CoTaskMemAlloc((text.size() + 1) * sizeof(wchar_t)));
    text.copy(copy, text.size());
    copy[text.size()] = L'\0';
    return copy;
}

// Counted like a COM object; one object may answer for several interfaces.
template <typename... Interfaces>
class FakeObject : public Interfaces... {
public:
    FakeObject() { ++g_liveObjects; }
    virtual ~FakeObject() { --g_liveObjects; }
    STDMETHODIMP QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_references; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --m_references;
        if (left == 0) delete this;
        return left;
    }

private:
    ULONG m_references = 1;
};

class Instance final : public FakeObject<zx::IFunctionInstance, IPropertyStore> {
public:
    explicit Instance(const FakeInstance& data) : m_data(data) {}

    STDMETHODIMP QueryService(REFGUID, REFIID, void**) override { return E_NOTIMPL; }
    STDMETHODIMP GetID(WCHAR** identity) override {
        *identity = CoTaskCopy(m_data.id);
        return S_OK;
    }
    STDMETHODIMP GetProviderInstanceID(WCHAR**) override { return E_NOTIMPL; }
    STDMETHODIMP OpenPropertyStore(DWORD, IPropertyStore** store) override {
        AddRef();
        *store = this;
        return S_OK;
    }
    STDMETHODIMP GetCategory(WCHAR**, WCHAR**) override { return E_NOTIMPL; }

    STDMETHODIMP GetCount(DWORD* count) override {
        *count = static_cast<DWORD>(m_data.properties.size());
        return S_OK;
    }
    STDMETHODIMP GetAt(DWORD index, PROPERTYKEY* key) override {
        if (index >= m_data.properties.size()) return E_INVALIDARG;
        *key = m_data.properties[index].key;
        return S_OK;
    }
    STDMETHODIMP GetValue(REFPROPERTYKEY key, PROPVARIANT* value) override {
        PropVariantInit(value);
        for (const FakeProperty& property : m_data.properties) {
            if (property.key.pid == key.pid && IsEqualGUID(property.key.fmtid, key.fmtid)) return Fill(property, value);
        }
        return S_OK;  // an unknown key reads as empty
    }
    STDMETHODIMP SetValue(REFPROPERTYKEY, REFPROPVARIANT) override { return E_NOTIMPL; }
    STDMETHODIMP Commit() override { return E_NOTIMPL; }

private:
    static HRESULT Fill(const FakeProperty& property, PROPVARIANT* value) {
        value->vt = property.type;
        if (property.type == VT_LPWSTR) {
            value->pwszVal = property.texts.empty() ? nullptr : CoTaskCopy(property.texts.front());
        } else if (property.type == (VT_VECTOR | VT_LPWSTR)) {
            const size_t count = property.texts.size();
            value->calpwstr.cElems = static_cast<ULONG>(count);
            value->calpwstr.pElems = static_cast<LPWSTR*>(::CoTaskMemAlloc((count ? count : 1) * sizeof(LPWSTR)));
            for (size_t i = 0; i < count; ++i) value->calpwstr.pElems[i] = CoTaskCopy(property.texts[i]);
        } else {
            value->vt = VT_UI4;
            value->ulVal = 7;
        }
        return S_OK;
    }

    FakeInstance m_data;
};

class Discovery final
    : public FakeObject<zx::IFunctionDiscovery, zx::IFunctionInstanceCollectionQuery, zx::IFunctionInstanceCollection> {
public:
    // IFunctionDiscovery
    STDMETHODIMP GetInstanceCollection(const WCHAR*, const WCHAR*, BOOL, zx::IFunctionInstanceCollection**) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP GetInstance(const WCHAR*, zx::IFunctionInstance**) override { return E_NOTIMPL; }
    STDMETHODIMP CreateInstanceCollectionQuery(const WCHAR* category, const WCHAR*, BOOL,
                                               zx::IFunctionDiscoveryNotification*, zx::FDQUERYCONTEXT*,
                                               zx::IFunctionInstanceCollectionQuery** query) override {
        FakeFunctionDiscovery::Current().queriedCategory = category ? category : L"";
        AddRef();
        *query = this;
        return S_OK;
    }
    STDMETHODIMP CreateInstanceQuery(const WCHAR*, zx::IFunctionDiscoveryNotification*, zx::FDQUERYCONTEXT*,
                                     IUnknown**) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP AddInstance(int, const WCHAR*, const WCHAR*, const WCHAR*, zx::IFunctionInstance**) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP RemoveInstance(int, const WCHAR*, const WCHAR*, const WCHAR*) override { return E_NOTIMPL; }

    // IFunctionInstanceCollectionQuery
    STDMETHODIMP AddQueryConstraint(const WCHAR*, const WCHAR*) override { return E_NOTIMPL; }
    STDMETHODIMP AddPropertyConstraint(REFPROPERTYKEY, const PROPVARIANT*, int) override { return E_NOTIMPL; }
    STDMETHODIMP Execute(zx::IFunctionInstanceCollection** collection) override {
        AddRef();
        *collection = this;
        return FakeFunctionDiscovery::Current().executeResult;
    }

    // IFunctionInstanceCollection
    STDMETHODIMP GetCount(DWORD* count) override {
        *count = static_cast<DWORD>(FakeFunctionDiscovery::Current().instances.size());
        return S_OK;
    }
    STDMETHODIMP Get(const WCHAR*, DWORD*, zx::IFunctionInstance**) override { return E_NOTIMPL; }
    STDMETHODIMP Item(DWORD index, zx::IFunctionInstance** instance) override {
        FakeFunctionDiscovery& fake = FakeFunctionDiscovery::Current();
        fake.itemsAsked.push_back(index);
        if (index >= fake.instances.size()) return E_INVALIDARG;
        *instance = new Instance(fake.instances[index]);
        return S_OK;
    }
    STDMETHODIMP Add(zx::IFunctionInstance*) override { return E_NOTIMPL; }
    STDMETHODIMP Remove(DWORD, zx::IFunctionInstance**) override { return E_NOTIMPL; }
    STDMETHODIMP Delete(DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP DeleteAll() override { return E_NOTIMPL; }
};

HRESULT CreateFakeDiscovery(zx::IFunctionDiscovery** discovery) {
    *discovery = nullptr;
    const HRESULT result = FakeFunctionDiscovery::Current().createResult;
    if (SUCCEEDED(result)) *discovery = new Discovery();
    return result;
}

}  // namespace

FakeProperty ServiceAddressProperty(std::vector<std::wstring> addresses) {
    return {kServiceAddressKey, VT_VECTOR | VT_LPWSTR, std::move(addresses)};
}

FakeProperty PrinterPortProperty(const std::wstring& port) { return {kPrinterPortKey, VT_LPWSTR, {port}}; }

FakeFunctionDiscovery::FakeFunctionDiscovery() {
    if (g_current != nullptr) throw std::logic_error("one fake Function Discovery at a time");
    g_current = this;
    zx::DevicePlatform table = zx::Platform();
    table.createFunctionDiscovery = CreateFakeDiscovery;
    m_previous = zx::ReplacePlatform(table);
}

FakeFunctionDiscovery::~FakeFunctionDiscovery() {
    zx::ReplacePlatform(m_previous);
    g_current = nullptr;
}

FakeFunctionDiscovery& FakeFunctionDiscovery::Current() { return *g_current; }

long FakeFunctionDiscovery::LiveObjects() { return g_liveObjects; }

}  // namespace zxtest
