// Port kinds, port descriptions and the IP address lookups of the three network kinds.
#include "device/port_discovery.h"
#include "tests/device/fake_function_discovery.h"
#include "tests/device/fake_spooler.h"

#include <gtest/gtest.h>

using zxtest::FakeFunctionDiscovery;
using zxtest::PrinterPort;
using zxtest::ServiceAddress;
using zxtest::XcvAnswer;

namespace {

class PortTest : public testing::Test {
protected:
    PortTest() {
        spooler.ports = {{L"LPT1:", L"Local Port"},
                         {L"IP_1", L"Standard TCP/IP Port"},
                         {L"NRD_1", L"Network re-discovery port monitor"},
                         {L"IP_blank", L"Standard TCP/IP Port "}};
    }
    bool Classify(const std::wstring& port) {
        spooler.portName = port;
        return zx::ClassifyPort(access);
    }
    // The address found, or "none" and the address left behind.
    std::wstring Found(int32_t kind) {
        const bool found = zx::FindIpAddress(access, kind);
        return (found ? L"" : L"none ") + access.IpAddress();
    }
    static XcvAnswer Answer(const wchar_t* host, const wchar_t* ip, DWORD status = ERROR_SUCCESS) {
        XcvAnswer answer;
        answer.status = status;
        wcsncpy(answer.config.hostAddress, host, 48);
        wcsncpy(answer.config.ipAddress, ip, 15);
        return answer;
    }

    zxtest::FakeSpooler spooler;
    VPrinterAccess access{L"P", nullptr};
};

}  // namespace

TEST_F(PortTest, KindsComeFromNameMarkersThenFromTheDescriptionOfTheLastPortOfTheName) {
    const std::pair<const wchar_t*, int32_t> cases[] = {
        {L"USB001", kPortUsb}, {L"WSD-USB-1", kPortUsb},     {L"WSD-1234", kPortWsd},     {L"usb001", kPortUnknown},
        {L"IP_1", kPortTcpIp}, {L"NRD_1", kPortRediscovery}, {L"IP_blank", kPortUnknown}, {L"LPT1:", kPortUnknown},
        {L"", kPortUnknown},   {L"NOT_LISTED", kPortUnknown}};
    for (const auto& [port, kind] : cases) {
        EXPECT_EQ(kind != kPortUnknown, Classify(port));
        EXPECT_EQ(kind, access.PortKind()) << port;
        EXPECT_EQ(port, access.PortName());
    }
    EXPECT_EQ(L",XcvPort NOT_LISTED", spooler.openedNames.back());
    EXPECT_TRUE(spooler.xcvOutputSizes.empty());
    VPrinterAccess nameless(nullptr, nullptr);
    EXPECT_FALSE(zx::ClassifyPort(nameless));
    // A port's description is asked for, and its transceiver opened, once per printer object.
    const int listings = spooler.portListings;
    const size_t opened = spooler.openedNames.size();
    EXPECT_TRUE(Classify(L"IP_1"));
    EXPECT_TRUE(Classify(L"IP_1"));
    EXPECT_EQ(listings + 1, spooler.portListings);
    EXPECT_EQ(opened + 1, spooler.openedNames.size());
    // The port name is read only from within the spooler's block.
    spooler.portNameOutsideBlock = L"USB001";
    EXPECT_FALSE(zx::ClassifyPort(access));
    EXPECT_EQ(L"", access.PortName());
    spooler.portNameOutsideBlock = nullptr;

    // A port's description is that of the last port of its name.
    spooler.ports.push_back({L"LPT1:", L"Second LPT1"});
    EXPECT_EQ(L"Second LPT1", zx::GetPortDescription(L"LPT1:"));
    EXPECT_EQ(L"", zx::GetPortDescription(L"lpt1:"));
    EXPECT_EQ(L"Network re-discovery port monitor", zx::GetPortDescription(L"NRD_1"));
}

TEST_F(PortTest, TcpIpPortsGiveTheHostAddressOnlyWithStatusZero) {
    Classify(L"IP_1");
    XcvAnswer full = Answer(L"", L"");
    std::fill(std::begin(full.config.hostAddress), std::end(full.config.hostAddress), L'h');
    std::fill(std::begin(full.config.snmpCommunity), std::end(full.config.snmpCommunity), L's');
    spooler.xcvAnswers = {Answer(L"192.168.0.7", L"10.9.9.9"), Answer(L"192.168.0.8", L"", 5), full};
    EXPECT_EQ(L"192.168.0.7", Found(kPortTcpIp));
    EXPECT_EQ(964u, spooler.xcvOutputSizes[0]);
    EXPECT_EQ(L"none 0.0.0.0", Found(kPortTcpIp));
    EXPECT_EQ(std::wstring(49, L'h'), Found(kPortTcpIp));  // an unterminated field ends with the field
    EXPECT_EQ(L"none 0.0.0.0", Found(kPortTcpIp));         // the monitor fails
    EXPECT_FALSE(zx::FindIpAddress(access, kPortUsb));
    EXPECT_EQ(4u, spooler.xcvOutputSizes.size());
}

TEST_F(PortTest, RediscoveryPortsNameThemselvesAndFallBackToALargerRecord) {
    const std::wstring port = L"NRD_" + std::wstring(80, L'x');
    spooler.ports.push_back({port, L"Network re-discovery port monitor"});
    Classify(port);
    XcvAnswer larger;
    larger.status = ERROR_INSUFFICIENT_BUFFER;
    larger.needed = 2000;
    XcvAnswer absurd = larger;
    absurd.needed = 0x7FFFFFFF;
    spooler.xcvAnswers = {Answer(L"host", L"10.0.0.9"), Answer(L"host", L""), larger, Answer(L"10.1.1.1", L""), absurd};

    EXPECT_EQ(L"10.0.0.9", Found(kPortRediscovery));
    EXPECT_EQ(port.substr(0, 63), spooler.xcvPortNames[0]);
    EXPECT_EQ(L"none 0.0.0.0", Found(kPortRediscovery));
    EXPECT_EQ(L"none 10.1.1.1", Found(kPortRediscovery));
    EXPECT_EQ(2000u, spooler.xcvOutputSizes[3]);
    EXPECT_EQ(L"none 0.0.0.0", Found(kPortRediscovery));  // no second call for an absurd size
    EXPECT_EQ(5u, spooler.xcvOutputSizes.size());
}

namespace {

class WsdTest : public PortTest {
protected:
    WsdTest() { Classify(L"WSD-1"); }
    std::wstring Find() {
        const std::wstring found = Found(kPortWsd);
        EXPECT_EQ(0, FakeFunctionDiscovery::liveObjects);
        return found;
    }
    FakeFunctionDiscovery discovery;
};

}  // namespace

// Instances are walked from the last, and the first that serves the port wins.
TEST_F(WsdTest, OnlyADeviceServingThePortGivesTheHostOfItsServiceAddress) {
    discovery.instances = {
        {L"uuid:earlier", {PrinterPort(L"WSD-1"), ServiceAddress({L"http://10.0.0.4:5357/x"})}},
        {L"uuid:other", {PrinterPort(L"WSD-2"), ServiceAddress({L"http://10.0.0.2:5357/x"})}},
        {L"UUID:MINE", {ServiceAddress({L"http://192.168.0.20:5357/abc", L"http://10.0.0.1/"}), PrinterPort(L"wsd-1")}},
        {L"not a device", {PrinterPort(L"WSD-1"), ServiceAddress({L"http://10.0.0.3:80/"})}},
    };
    EXPECT_EQ(L"192.168.0.20", Find());
    EXPECT_EQ(L"Provider\\Microsoft.Base.PnP", discovery.queriedCategory);

    // Another port, or no usable service address.
    const PROPERTYKEY serviceKey = ServiceAddress({}).key;
    const std::vector<zxtest::FakeProperty> devices[] = {
        {PrinterPort(L"WSD-9"), ServiceAddress({L"http://10.0.0.1:80/"})},
        {ServiceAddress({}), PrinterPort(L"WSD-1")},
        {{serviceKey, VT_LPWSTR, {L"http://10.0.0.3:80/"}}, PrinterPort(L"WSD-1")},
        {PrinterPort(L"WSD-1")},
    };
    for (size_t i = 0; i < std::size(devices); ++i) {
        SCOPED_TRACE(i);
        discovery.instances = {{L"umb:1", devices[i]}};
        EXPECT_EQ(L"none 0.0.0.0", Find());
    }
}

TEST_F(WsdTest, ShortOverlongPendingAndFailedLookups) {
    const auto device = [](const std::wstring& address) {
        return std::vector<zxtest::FakeInstance>{{L"uuid:1", {ServiceAddress({address}), PrinterPort(L"WSD-1")}}};
    };
    discovery.instances = device(L"http:/");
    EXPECT_EQ(L"", Find());

    discovery.instances = device(L"http://" + std::wstring(260, L'9'));
    ::SetLastError(0);
    EXPECT_FALSE(zx::FindIpAddress(access, kPortWsd));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER), ::GetLastError());
    EXPECT_EQ(L"0.0.0.0", access.IpAddress());
    EXPECT_EQ(0, FakeFunctionDiscovery::liveObjects);

    discovery.instances = device(L"http://10.1.2.3:5357/");
    discovery.executeResult = E_PENDING;
    EXPECT_EQ(L"10.1.2.3", Find());
    discovery.executeResult = E_FAIL;
    EXPECT_EQ(L"none 0.0.0.0", Find());
    discovery.executeResult = S_OK;
    discovery.createResult = REGDB_E_CLASSNOTREG;
    EXPECT_EQ(L"none 0.0.0.0", Find());
}
