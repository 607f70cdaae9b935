// The contracts of the two device helper libraries installed beside the driver: the
// bidirectional I/O library creates device addresses, the device-model library creates the
// data collection through which the device answers items by name. Both are bound at run time.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <memory>

inline constexpr wchar_t kDeviceModelLibrary[] = L"zxtaluudm.dll";
inline constexpr wchar_t kBidiIoLibrary[] = L"zxbuio.dll";

inline constexpr char kCreateDataCollectionFromFile[] = "CreateDataCollectionFromFile";
inline constexpr char kCreateAddressFromPortName[] = "CreateAddressFromPortName";
inline constexpr char kCreateAddressFromIPAddress[] = "CreateAddressFromIPAddress";

// A device address of the I/O library. The plug-in only hands it on and releases it; it is
// counted through IUnknown, its virtual base.
class IDeviceAddress : public virtual IUnknown {};

// The device's data, asked item by item.
struct IDeviceDataCollection : public IUnknown {
    // Slots 3 and 4 belong to the library; the plug-in does not call them.
    virtual HRESULT STDMETHODCALLTYPE Refresh() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetItemCount(LONG* count) = 0;
    // 0 when the item's answer was delivered into value.
    virtual HRESULT STDMETHODCALLTYPE GetValue(const wchar_t* item, VARIANT* value) = 0;
};

using CreateDataCollectionFromFileFn = HRESULT(__cdecl*)(IDeviceAddress* address, const wchar_t* dataMapPath,
                                                         IDeviceDataCollection** collection, void* reserved);
using CreateAddressFn = IDeviceAddress*(__cdecl*)(const wchar_t* text);

namespace zx {

struct ReleaseDeviceAddress {
    void operator()(IDeviceAddress* address) const noexcept { static_cast<IUnknown*>(address)->Release(); }
};
using unique_device_address = std::unique_ptr<IDeviceAddress, ReleaseDeviceAddress>;

}  // namespace zx
