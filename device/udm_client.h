// The device-model client of one printer: binds the device helper libraries installed beside
// the driver, asks the device which accessories it has (see accessory_detection.cpp), keeps the
// answers in the printer's driver data and hands the accessory record to its observers.
#pragma once

#include "ddk/prcomoem.h"
#include "device/bidi_data.h"
#include "device/device_library.h"
#include "device/notifier.h"
#include "device/printer_access.h"
#include "util/scoped.h"

#include <memory>
#include <string>
#include <vector>

// The accessories assumed when the device cannot be asked, before the driver's "BidiDefaults"
// table is applied.
struct AccessoryDefaults {
    int32_t duplexUnit = 1;
    int32_t tray2 = 0;
    int32_t photoTray = 1;
    int32_t colorPrinting = 1;
    int32_t duplex = 0;
};

// Its operations throw only when memory runs out (std::bad_alloc, ATL::CAtlException); the COM
// methods that use the client turn that into E_OUTOFMEMORY.
class VUDMClient final : public VUINotifer {
public:
    // printer may be 0: the client then opens the printer by name. The core helper may be null.
    VUDMClient(const wchar_t* printerName, HANDLE printer, IPrintCoreHelper* coreHelper);
    ~VUDMClient();
    VUDMClient(const VUDMClient&) = delete;
    VUDMClient& operator=(const VUDMClient&) = delete;

    // Loads both helper libraries; the client is connected, and asks the device, when both are there.
    bool Connect();
    HMODULE LoadDeviceModelLibrary();
    HMODULE LoadBidiIoLibrary();
    // The directory of the printer's driver, with its trailing backslash; empty when unreadable.
    std::wstring GetDriverDirectory();

    // A device address for the printer's port, after classifying the port; false when the port
    // is of no known kind, the entry point is missing or the library gives no address.
    bool CreateDeviceAddress(zx::unique_device_address& address);
    // The data-map path, and, when address and collection are given, the device's data
    // collection through the device-model library (its HRESULT). E_FAIL without the entry point.
    HRESULT CreateDataCollection(IDeviceAddress* address, IDeviceDataCollection** collection,
                                 std::wstring& dataMapPath);

    // The accessory record after an accessory query; valid as long as the client lives. Within a
    // notification the query runs once and every observer told gets its record; outside one,
    // every call queries. A query that fails by an exception gives the record the client has,
    // or the default record.
    IBiDiData* GetData() noexcept override;
    // Tells every observer, with one accessory query for all of them.
    void Notify() override;

    // Accessory detection.
    std::shared_ptr<VIOData> QueryAccessories();
    HRESULT RunDeviceQuery();
    void StoreDeviceAnswers(const std::vector<std::wstring>& items, IDeviceDataCollection* collection);
    // Applies the driver's "BidiDefaults" table to values; false when it cannot be read.
    bool ReadBidiDefaults(AccessoryDefaults& values);

    // The record of the last accessory query, without asking again; null before the first.
    IBiDiData* LastRecord() const noexcept { return m_record.get(); }

    bool IsConnected() const noexcept { return m_connected; }
    VPrinterAccess& PrinterAccess() noexcept { return m_printer; }

private:
    HMODULE LoadHelperLibrary(const wchar_t* fileName, zx::unique_hmodule& module);
    VIOData& EnsureRecord();
    std::shared_ptr<VIOData> DefaultsRecord();
    void ApplyStoredAnswers(const VStoredValues& stored, VIOData& record);
    std::wstring StoredIdentity(const VStoredValues& stored);

    std::shared_ptr<VIOData> m_record;
    VPrinterAccess m_printer;
    zx::ComPtr<IPrintCoreHelper> m_coreHelper;
    zx::unique_hmodule m_deviceModel;
    zx::unique_hmodule m_bidiIo;
    bool m_connected = false;
    bool m_notifying = false;
    IBiDiData* m_notifiedRecord = nullptr;  // the record of the notification under way
};

// Sets the model markers of the record from the device identity text.
void MatchModelFamily(VIOData& record, const std::wstring& identity);

// Whoever keeps the shared device-model client of a printer (the UI plug-in object).
class IDeviceClientHolder {
public:
    // Takes client in place of the one kept before.
    virtual void ReplaceDeviceClient(std::shared_ptr<VUDMClient> client) = 0;

protected:
    ~IDeviceClientHolder() = default;
};

// Makes the device be asked again: clears "BidiQuery", gives the holder a new client for the
// printer and, when that client connects, runs its accessory query.
void RequeryDevice(const wchar_t* printerName, IPrintCoreHelper* coreHelper, IDeviceClientHolder& holder);
