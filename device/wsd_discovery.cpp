// The IP address of a WSD printer, from the Plug and Play function instances that Function
// Discovery lists: the instance whose printer port is this printer's port gives its PnP-X
// service address, an HTTP address whose host part is the device's IP address.
#include "device/discovery_platform.h"
#include "device/port_discovery.h"
#include "util/com_scope.h"

#include <cwctype>
#include <optional>

namespace zx {
namespace {

// PnP-X service address: a vector of texts, the first being the device's HTTP address.
constexpr PROPERTYKEY kServiceAddressKey = {
    {0x656a3bb3, 0xecc0, 0x43fd, {0x84, 0x77, 0x4a, 0xe0, 0x40, 0x4a, 0x96, 0xcd}}, 16384};
// The name of the printer port that the function instance serves.
constexpr PROPERTYKEY kPrinterPortKey = {{0xf01fac5d, 0xe5f6, 0x485f, {0xa8, 0xc6, 0x27, 0x44, 0x64, 0x25, 0x99, 0x8c}},
                                         2};

// Identity markers of instances that stand for network devices.
constexpr const wchar_t* kDeviceIdentityMarkers[] = {L"UMB", L"UUID:"};

// The address must fit the 260-character buffer it is handed on in.
constexpr size_t kMaxServiceAddress = MAX_PATH - 1;

class unique_propvariant {
public:
    unique_propvariant() noexcept { ::PropVariantInit(&m_value); }
    ~unique_propvariant() { ::PropVariantClear(&m_value); }
    unique_propvariant(const unique_propvariant&) = delete;
    unique_propvariant& operator=(const unique_propvariant&) = delete;
    PROPVARIANT* put() noexcept {
        ::PropVariantClear(&m_value);
        return &m_value;
    }
    const PROPVARIANT& operator*() const noexcept { return m_value; }

private:
    PROPVARIANT m_value;
};

bool SameKey(const PROPERTYKEY& a, const PROPERTYKEY& b) { return a.pid == b.pid && IsEqualGUID(a.fmtid, b.fmtid); }

bool EqualIgnoringCase(const wchar_t* a, const std::wstring& b) {
    return ::CompareStringOrdinal(a, -1, b.c_str(), static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

bool IsDeviceInstance(const wchar_t* identity) {
    std::wstring upper = identity;
    for (wchar_t& c : upper) c = static_cast<wchar_t>(std::towupper(c));
    for (const wchar_t* marker : kDeviceIdentityMarkers) {
        if (upper.find(marker) != std::wstring::npos) return true;
    }
    return false;
}

std::wstring FirstServiceAddress(const PROPVARIANT& value) {
    if (value.vt != (VT_VECTOR | VT_LPWSTR) || value.calpwstr.cElems == 0 || value.calpwstr.pElems[0] == nullptr) {
        return {};
    }
    return value.calpwstr.pElems[0];
}

// The service address of an instance that serves the port; properties are scanned from the
// last to the first, and a port property naming another port ends the scan.
std::optional<std::wstring> ServiceAddressOf(IFunctionInstance* instance, const std::wstring& portName) {
    ComPtr<IPropertyStore> store;
    if (FAILED(instance->OpenPropertyStore(STGM_READ, store.GetAddressOf())) || !store) return std::nullopt;
    unique_cotaskmem identity;
    if (FAILED(instance->GetID(reinterpret_cast<WCHAR**>(identity.put()))) || !identity) return std::nullopt;
    if (!IsDeviceInstance(static_cast<const wchar_t*>(identity.get()))) return std::nullopt;

    DWORD count = 0;
    if (FAILED(store->GetCount(&count))) return std::nullopt;
    std::wstring address;
    bool servesPort = false;
    for (DWORD i = count; i-- > 0;) {
        PROPERTYKEY key{};
        unique_propvariant value;
        if (FAILED(store->GetAt(i, &key)) || FAILED(store->GetValue(key, value.put()))) continue;
        if (SameKey(key, kServiceAddressKey)) {
            const std::wstring found = FirstServiceAddress(*value);
            if (!found.empty()) address = found;
        } else if (SameKey(key, kPrinterPortKey) && (*value).vt == VT_LPWSTR) {
            if (!EqualIgnoringCase((*value).pwszVal ? (*value).pwszVal : L"", portName)) return std::nullopt;
            servesPort = true;
        }
        if (servesPort && !address.empty()) return address;
    }
    return std::nullopt;
}

// Instances are walked from the last to the first; the first that serves the port wins.
std::optional<std::wstring> FindServiceAddress(const std::wstring& portName) {
    ComPtr<IFunctionDiscovery> discovery;
    if (FAILED(CurrentDiscoveryPlatform().createFunctionDiscovery(discovery.GetAddressOf())) || !discovery)
        return std::nullopt;
    ComPtr<IFunctionInstanceCollectionQuery> query;
    if (FAILED(discovery->CreateInstanceCollectionQuery(kCategoryPnp, nullptr, TRUE, nullptr, nullptr,
                                                        query.GetAddressOf())) ||
        !query) {
        return std::nullopt;
    }
    ComPtr<IFunctionInstanceCollection> instances;
    const HRESULT executed = query->Execute(instances.GetAddressOf());
    if ((executed != S_OK && executed != E_PENDING) || !instances) return std::nullopt;
    DWORD count = 0;
    if (FAILED(instances->GetCount(&count))) return std::nullopt;
    for (DWORD i = count; i-- > 0;) {
        ComPtr<IFunctionInstance> instance;
        if (FAILED(instances->Item(i, instance.GetAddressOf())) || !instance) continue;
        std::optional<std::wstring> address = ServiceAddressOf(instance.Get(), portName);
        if (address) return address;
    }
    return std::nullopt;
}

}  // namespace

bool FindWsdAddress(VPrinterAccess& printer) {
    std::optional<std::wstring> address;
    {
        const ComScope com;
        if (!com.Usable()) return false;
        address = FindServiceAddress(printer.PortName());
    }
    if (!address) return false;
    if (address->size() > kMaxServiceAddress) {
        ::SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return false;
    }
    printer.SetIpAddress(IpFromServiceAddress(*address));
    return true;
}

}  // namespace zx
