// The device simulator: stand-ins for the two device helper libraries, built with their file
// names and entry points, answering from a device profile in the driver directory.
//
// Profile format (UTF-8 text, one entry per line; answers are taken as written, blanks included):
//   ; a comment
//   item=answer        the device's text answer to an item, e.g. dd:DuplexUnit=Installed
//   item=(i4)number    a numeric answer
//   !no-address        the I/O library gives no device address
//   !no-collection     the device-model library cannot create the data collection
// An item without a line has no answer; a profile without "cfg:Protocol" or "Protocol" stands
// for a device that reports no protocol. Without a profile no device is attached.
#pragma once

#include "device/device_library.h"

// The profile's fixed name in the driver directory.
inline constexpr wchar_t kDeviceProfileFile[] = L"zxdevice.profile";

// The item the simulated data collection answers with what its address was made from:
// "port:" or "ip:" followed by the port name or IP address text.
inline constexpr wchar_t kSimAddressItem[] = L"sim:Address";

// The simulator's own address object; its data collection reads the source from it.
class ISimDeviceAddress : public IDeviceAddress {
public:
    virtual const wchar_t* Source() const = 0;
};

// Both libraries export this: the number of their objects still alive (for leak checks).
inline constexpr char kSimLiveObjects[] = "DeviceSimLiveObjects";
using SimLiveObjectsFn = LONG(__cdecl*)();
