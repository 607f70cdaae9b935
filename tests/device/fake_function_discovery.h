// Function Discovery with canned function instances, put in place of the real one through the
// device platform table for the length of a test. Counts its live objects so that a test can
// check that every one was released.
#pragma once

#include "device/device_platform.h"

#include <string>
#include <vector>

namespace zxtest {

struct FakeProperty {
    PROPERTYKEY key;
    VARTYPE type;                     // VT_LPWSTR, VT_VECTOR | VT_LPWSTR or VT_UI4
    std::vector<std::wstring> texts;  // one for VT_LPWSTR; the vector's elements
};

struct FakeInstance {
    std::wstring id;
    std::vector<FakeProperty> properties;
};

// The properties that identify a WSD printer's device.
FakeProperty ServiceAddressProperty(std::vector<std::wstring> addresses);
FakeProperty PrinterPortProperty(const std::wstring& port);

class FakeFunctionDiscovery {
public:
    FakeFunctionDiscovery();
    ~FakeFunctionDiscovery();
    FakeFunctionDiscovery(const FakeFunctionDiscovery&) = delete;
    FakeFunctionDiscovery& operator=(const FakeFunctionDiscovery&) = delete;

    std::vector<FakeInstance> instances;
    HRESULT createResult = S_OK;
    HRESULT executeResult = S_OK;

    // What the lookup asked for.
    std::wstring queriedCategory;
    std::vector<DWORD> itemsAsked;

    static FakeFunctionDiscovery& Current();
    static long LiveObjects();

private:
    zx::DevicePlatform m_previous;
};

}  // namespace zxtest
