// Port kinds, port descriptions and the IP address lookups of the three network kinds.
#include "device/port_discovery.h"
#include "tests/device/fake_function_discovery.h"
#include "tests/device/fake_spooler.h"

#include <gtest/gtest.h>

using zxtest::FakeFunctionDiscovery;
using zxtest::FakeInstance;
using zxtest::PrinterPortProperty;
using zxtest::ServiceAddressProperty;
using zxtest::XcvAnswer;

namespace {

class PortDiscoveryTest : public testing::Test {
protected:
    PortDiscoveryTest() {
        spooler.ports = {{L"LPT1:", L"Local Port"},
                         {L"IP_10.0.0.5", L"Standard TCP/IP Port"},
                         {L"NRD_1", L"Network re-discovery port monitor"},
                         {L"IP_blank", L"Standard TCP/IP Port "}};
    }

    int32_t Classify(const std::wstring& port) {
        printer.portName = port;
        VPrinterAccess access(L"P", nullptr);
        const bool known = zx::ClassifyPort(access);
        EXPECT_EQ(known, access.PortKind() != kPortUnknown) << "port " << std::string(port.begin(), port.end());
        return access.PortKind();
    }

    static XcvAnswer Configuration(const wchar_t* host, const wchar_t* ip, DWORD status = ERROR_SUCCESS) {
        XcvAnswer answer;
        answer.status = status;
        wcsncpy(answer.config.hostAddress, host, 48);
        wcsncpy(answer.config.ipAddress, ip, 15);
        return answer;
    }

    zxtest::FakeSpooler spooler;
    zxtest::FakePrinter& printer = spooler.AddPrinter(L"P");
};

}  // namespace

TEST_F(PortDiscoveryTest, KindsComeFromNameMarkersFirstThenFromExactDescriptions) {
    EXPECT_EQ(kPortUsb, Classify(L"USB001"));
    EXPECT_EQ(0, spooler.enumPortsCalls);
    EXPECT_EQ(kPortUsb, Classify(L"WSD-USB-1"));
    EXPECT_EQ(kPortWsd, Classify(L"WSD-1234"));
    EXPECT_EQ(kPortUnknown, Classify(L"usb001"));  // the markers are case-sensitive
    EXPECT_EQ(kPortTcpIp, Classify(L"IP_10.0.0.5"));
    EXPECT_EQ(kPortRediscovery, Classify(L"NRD_1"));
    EXPECT_EQ(kPortUnknown, Classify(L"IP_blank"));
    EXPECT_EQ(kPortUnknown, Classify(L"LPT1:"));
    EXPECT_EQ(kPortUnknown, Classify(L"NOT_LISTED"));
    EXPECT_TRUE(spooler.xcvCalls.empty());
    EXPECT_EQ(L",XcvPort NOT_LISTED", spooler.openedNames.back());
}

TEST_F(PortDiscoveryTest, ClassificationNeedsTheDriverAndAPortAndKeepsOneTransceiverHandle) {
    VPrinterAccess access(L"P", nullptr);
    EXPECT_TRUE(zx::ClassifyPort(access));
    EXPECT_TRUE(zx::ClassifyPort(access));
    EXPECT_EQ(L"USB001", access.PortName());
    EXPECT_EQ(2u, spooler.OpenHandles());  // the printer and one transceiver

    printer.portName.clear();
    EXPECT_FALSE(zx::ClassifyPort(access));
    EXPECT_EQ(kPortUnknown, access.PortKind());
    printer.portName = L"USB001";
    printer.driverName.clear();
    EXPECT_FALSE(zx::ClassifyPort(access));
    VPrinterAccess nameless(nullptr, nullptr);
    EXPECT_FALSE(zx::ClassifyPort(nameless));
}

TEST_F(PortDiscoveryTest, DescriptionsAreSearchedFromTheLastPort) {
    spooler.ports.push_back({L"LPT1:", L"Second LPT1"});
    EXPECT_EQ(L"Second LPT1", zx::GetPortDescription(L"LPT1:"));
    EXPECT_EQ(L"", zx::GetPortDescription(L"lpt1:"));
    spooler.ports.clear();
    EXPECT_EQ(L"", zx::GetPortDescription(L"LPT1:"));
}

TEST_F(PortDiscoveryTest, TcpIpPortsGiveTheHostAddressOnlyWithStatusZero) {
    printer.portName = L"IP_10.0.0.5";
    VPrinterAccess access(L"P", nullptr);
    ASSERT_TRUE(zx::ClassifyPort(access));
    spooler.xcvAnswers = {Configuration(L"192.168.0.7", L"10.9.9.9"), Configuration(L"192.168.0.8", L"", 5),
                          XcvAnswer{FALSE}};
    EXPECT_TRUE(zx::FindIpAddress(access, kPortTcpIp));
    EXPECT_EQ(L"192.168.0.7", access.IpAddress());
    EXPECT_EQ(L"GetConfigInfo", spooler.xcvCalls[0].command);
    EXPECT_EQ(964u, spooler.xcvCalls[0].outputSize);
    EXPECT_FALSE(zx::FindIpAddress(access, kPortTcpIp));
    EXPECT_EQ(L"0.0.0.0", access.IpAddress());
    EXPECT_FALSE(zx::FindIpAddress(access, kPortTcpIp));
    EXPECT_EQ(L"0.0.0.0", access.IpAddress());
    EXPECT_FALSE(zx::FindIpAddress(access, kPortUsb));
    EXPECT_EQ(L"0.0.0.0", access.IpAddress());
    EXPECT_EQ(3u, spooler.xcvCalls.size());
}

TEST_F(PortDiscoveryTest, AHostAddressFillingItsWholeFieldIsCutAtTheField) {
    printer.portName = L"IP_10.0.0.5";
    VPrinterAccess access(L"P", nullptr);
    ASSERT_TRUE(zx::ClassifyPort(access));
    XcvAnswer answer;
    std::fill(std::begin(answer.config.hostAddress), std::end(answer.config.hostAddress), L'h');
    std::fill(std::begin(answer.config.snmpCommunity), std::end(answer.config.snmpCommunity), L's');
    spooler.xcvAnswers = {answer};
    EXPECT_TRUE(zx::GetTcpIpConfig(access));
    EXPECT_EQ(std::wstring(49, L'h'), access.IpAddress());
}

TEST_F(PortDiscoveryTest, RediscoveryPortsNameThemselvesAndFallBackToALargerRecord) {
    printer.portName = L"NRD_" + std::wstring(80, L'x');
    spooler.ports.push_back({printer.portName, L"Network re-discovery port monitor"});
    VPrinterAccess access(L"P", nullptr);
    ASSERT_TRUE(zx::ClassifyPort(access));

    spooler.xcvAnswers = {Configuration(L"host", L"10.0.0.9")};
    EXPECT_TRUE(zx::FindIpAddress(access, kPortRediscovery));
    EXPECT_EQ(L"10.0.0.9", access.IpAddress());
    EXPECT_EQ(printer.portName.substr(0, 63), spooler.xcvCalls[0].prefilledPortName);

    spooler.xcvAnswers = {Configuration(L"host", L"")};
    EXPECT_FALSE(zx::FindIpAddress(access, kPortRediscovery));
    EXPECT_EQ(L"0.0.0.0", access.IpAddress());

    XcvAnswer tooSmall;
    tooSmall.status = ERROR_INSUFFICIENT_BUFFER;
    tooSmall.needed = 2000;
    spooler.xcvAnswers = {tooSmall, Configuration(L"10.1.1.1", L"")};
    spooler.xcvCalls.clear();
    EXPECT_FALSE(zx::FindIpAddress(access, kPortRediscovery));
    EXPECT_EQ(L"10.1.1.1", access.IpAddress());
    ASSERT_EQ(2u, spooler.xcvCalls.size());
    EXPECT_EQ(2000u, spooler.xcvCalls[1].outputSize);

    tooSmall.needed = 0x7FFFFFFF;  // a size no monitor needs
    spooler.xcvAnswers = {tooSmall};
    spooler.xcvCalls.clear();
    EXPECT_FALSE(zx::FindIpAddress(access, kPortRediscovery));
    EXPECT_EQ(L"0.0.0.0", access.IpAddress());
    EXPECT_EQ(1u, spooler.xcvCalls.size());
}

TEST(ServiceAddress, TheHostPartFollowsTheSchemeAndEndsAtThePortNumber) {
    EXPECT_EQ(L"192.168.0.20", zx::IpFromServiceAddress(L"http://192.168.0.20:5357/abc"));
    EXPECT_EQ(L"printer.local", zx::IpFromServiceAddress(L"http://printer.local"));
    EXPECT_EQ(L"", zx::IpFromServiceAddress(L"http:/"));
    EXPECT_EQ(L"", zx::IpFromServiceAddress(L"http://"));
}

namespace {

class WsdTest : public PortDiscoveryTest {
protected:
    WsdTest() { printer.portName = L"WSD-1"; }

    bool Find() {
        VPrinterAccess access(L"P", nullptr);
        access.SetPort(kPortWsd, L"WSD-1");
        const bool found = zx::FindIpAddress(access, kPortWsd);
        address = access.IpAddress();
        EXPECT_EQ(0, FakeFunctionDiscovery::LiveObjects());
        return found;
    }

    FakeFunctionDiscovery discovery;
    std::wstring address;
};

}  // namespace

TEST_F(WsdTest, TheDeviceServingThePortGivesItsServiceAddress) {
    discovery.instances = {
        {L"uuid:other", {PrinterPortProperty(L"WSD-2"), ServiceAddressProperty({L"http://10.0.0.2:5357/x"})}},
        {L"UUID:MINE", {ServiceAddressProperty({L"http://192.168.0.20:5357/abc", L"http://[fe80::1]/"}),
                        PrinterPortProperty(L"wsd-1")}},
        {L"not a device", {PrinterPortProperty(L"WSD-1"), ServiceAddressProperty({L"http://10.0.0.3/"})}},
    };
    EXPECT_TRUE(Find());
    EXPECT_EQ(L"192.168.0.20", address);
    EXPECT_EQ(L"Provider\\Microsoft.Base.PnP", discovery.queriedCategory);
    EXPECT_EQ((std::vector<DWORD>{2, 1}), discovery.itemsAsked);  // from the last instance
}

TEST_F(WsdTest, AnotherPortEndsTheInstanceAndUnusableAddressesAreSkipped) {
    discovery.instances = {
        // Scanned from the last property: the address is met first, then the other port.
        {L"umb:1", {PrinterPortProperty(L"WSD-9"), ServiceAddressProperty({L"http://10.0.0.1:80/"})}},
        {L"umb:2", {ServiceAddressProperty({}), PrinterPortProperty(L"WSD-1")}},
        {L"umb:3", {{ServiceAddressProperty({}).key, VT_LPWSTR, {L"http://10.0.0.3:80/"}}, PrinterPortProperty(L"WSD-1")}},
        {L"umb:4", {PrinterPortProperty(L"WSD-1")}},
    };
    EXPECT_FALSE(Find());
    EXPECT_EQ(L"0.0.0.0", address);
    EXPECT_EQ((std::vector<DWORD>{3, 2, 1, 0}), discovery.itemsAsked);
}

TEST_F(WsdTest, ShortAndOverlongAddresses) {
    discovery.instances = {{L"uuid:1", {ServiceAddressProperty({L"http:/"}), PrinterPortProperty(L"WSD-1")}}};
    EXPECT_TRUE(Find());
    EXPECT_EQ(L"", address);

    discovery.instances = {{L"uuid:1", {ServiceAddressProperty({L"http://" + std::wstring(260, L'9')}),
                                        PrinterPortProperty(L"WSD-1")}}};
    ::SetLastError(0);
    EXPECT_FALSE(Find());
    EXPECT_EQ(static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER), ::GetLastError());
    EXPECT_EQ(L"0.0.0.0", address);
}

TEST_F(WsdTest, APendingQueryIsReadAndAFailedOneFindsNothing) {
    discovery.instances = {
        {L"uuid:1", {ServiceAddressProperty({L"http://10.1.2.3:5357/"}), PrinterPortProperty(L"WSD-1")}}};
    discovery.executeResult = E_PENDING;
    EXPECT_TRUE(Find());
    EXPECT_EQ(L"10.1.2.3", address);
    discovery.executeResult = E_FAIL;
    EXPECT_FALSE(Find());
    discovery.executeResult = S_OK;
    discovery.createResult = REGDB_E_CLASSNOTREG;
    EXPECT_FALSE(Find());
    EXPECT_EQ(L"0.0.0.0", address);
}
