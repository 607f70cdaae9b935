// Function Discovery with canned function instances, put in place of the real one for the
// length of a test. Counts its live objects, so that a test can check that all were released.
#pragma once

#include "device/discovery_platform.h"

#include <string>
#include <vector>

namespace zxtest {

struct FakeProperty {
    PROPERTYKEY key;
    VARTYPE type;                     // VT_LPWSTR or VT_VECTOR | VT_LPWSTR
    std::vector<std::wstring> texts;  // the one text, or the vector's elements
};
FakeProperty ServiceAddress(std::vector<std::wstring> addresses);
FakeProperty PrinterPort(const std::wstring& port);

struct FakeInstance {
    std::wstring id;
    std::vector<FakeProperty> properties;
};

class FakeFunctionDiscovery {
public:
    FakeFunctionDiscovery();
    ~FakeFunctionDiscovery();

    std::vector<FakeInstance> instances;
    HRESULT createResult = S_OK;
    HRESULT executeResult = S_OK;
    std::wstring queriedCategory;
    static long liveObjects;

private:
    zx::DiscoveryPlatform m_previous;
};

}  // namespace zxtest
