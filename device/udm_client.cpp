#include "device/udm_client.h"

#include "device/port_discovery.h"
#include "resources/resource_libraries.h"
#include "settings/feature_keywords.h"
#include "settings/option_access.h"
#include "util/text.h"

namespace {

constexpr wchar_t kDefaultDataMap[] = L"mortaluDataMap.xml";

struct AddressSource {
    int32_t kind;
    const char* entryPoint;
    bool needsIpAddress;
    bool needsVersion6;  // the re-discovery monitor exists from Windows Vista on
};
constexpr AddressSource kAddressSources[] = {
    {kPortUsb, kCreateAddressFromPortName, false, false},
    {kPortWsd, kCreateAddressFromIPAddress, true, false},
    {kPortTcpIp, kCreateAddressFromIPAddress, true, false},
    {kPortRediscovery, kCreateAddressFromIPAddress, true, true},
};

const AddressSource* AddressSourceFor(int32_t kind) {
    for (const AddressSource& source : kAddressSources) {
        if (source.kind == kind) return &source;
    }
    return nullptr;
}

bool IsVersion6OrLater() { return zx::GetSystemMajorVersion() >= 6; }

template <typename Function>
Function EntryPoint(HMODULE module, const char* name) {
    if (module == nullptr) return nullptr;
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

}  // namespace

VUDMClient::VUDMClient(const wchar_t* printerName, HANDLE printer, IPrintCoreHelper* coreHelper)
    : m_printer(printerName, printer), m_coreHelper(coreHelper) {}

VUDMClient::~VUDMClient() {
    m_deviceModel.reset();
    m_bidiIo.reset();
    DetachAll();
}

bool VUDMClient::Connect() {
    LoadDeviceModelLibrary();
    LoadBidiIoLibrary();
    m_connected = m_deviceModel && m_bidiIo;
    return m_connected;
}

HMODULE VUDMClient::LoadDeviceModelLibrary() { return LoadHelperLibrary(kDeviceModelLibrary, m_deviceModel); }

HMODULE VUDMClient::LoadBidiIoLibrary() { return LoadHelperLibrary(kBidiIoLibrary, m_bidiIo); }

// Only from the driver directory: a bare file name would let the loader search elsewhere.
HMODULE VUDMClient::LoadHelperLibrary(const wchar_t* fileName, zx::unique_hmodule& module) {
    const std::wstring directory = GetDriverDirectory();
    module.reset(directory.empty() ? nullptr : ::LoadLibraryW((directory + fileName).c_str()));
    return module.get();
}

std::wstring VUDMClient::GetDriverDirectory() { return zx::PrinterDriverDirectory(m_printer.PrinterHandle()); }

bool VUDMClient::CreateDeviceAddress(zx::unique_device_address& address) {
    address.reset();
    zx::ClassifyPort(m_printer);
    const AddressSource* source = AddressSourceFor(m_printer.PortKind());
    if (source == nullptr || (source->needsVersion6 && !IsVersion6OrLater())) return false;
    const auto create = EntryPoint<CreateAddressFn>(m_bidiIo.get(), source->entryPoint);
    if (create == nullptr) return false;
    if (source->needsIpAddress) zx::FindIpAddress(m_printer, source->kind);
    const std::wstring& text = source->needsIpAddress ? m_printer.IpAddress() : m_printer.PortName();
    address.reset(create(text.c_str()));
    return address != nullptr;
}

HRESULT VUDMClient::CreateDataCollection(IDeviceAddress* address, IDeviceDataCollection** collection,
                                         std::wstring& dataMapPath) {
    PCSTR option = nullptr;
    const HRESULT named = zx::GetJobOption(m_coreHelper.Get(), nullptr, Feature::ZXDataCollectionXML, &option);
    const std::wstring fileName = SUCCEEDED(named) ? zx::WideText(option) : kDefaultDataMap;
    const auto create = EntryPoint<CreateDataCollectionFromFileFn>(m_deviceModel.get(), kCreateDataCollectionFromFile);
    if (create == nullptr) return E_FAIL;
    dataMapPath = GetDriverDirectory() + fileName;
    if (address == nullptr || collection == nullptr) return named;
    *collection = nullptr;
    return create(address, dataMapPath.c_str(), collection, nullptr);
}

IBiDiData* VUDMClient::GetData() noexcept {
    if (m_notifying && m_notifiedRecord != nullptr) return m_notifiedRecord;
    IBiDiData* record = nullptr;
    try {
        record = QueryAccessories().get();
    } catch (...) {
        static VIOData defaultRecord;  // never changed: records are changed only through m_record
        record = m_record ? m_record.get() : &defaultRecord;
    }
    if (m_notifying) m_notifiedRecord = record;
    return record;
}

void VUDMClient::Notify() {
    struct NotificationScope {
        explicit NotificationScope(VUDMClient& client) : client(client) { client.m_notifying = true; }
        ~NotificationScope() {
            client.m_notifying = false;
            client.m_notifiedRecord = nullptr;
        }
        VUDMClient& client;
    } scope(*this);
    VUINotifer::Notify();
}

VIOData& VUDMClient::EnsureRecord() {
    if (!m_record) m_record = std::make_shared<VIOData>();
    return *m_record;
}
