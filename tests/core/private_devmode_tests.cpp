// GetInfo and DevMode of the UI plug-in object, called through the DLL as the core driver calls
// them, and the 300-dpi flag recomputed after a convert or merge.
#include "settings/private_devmode.h"
#include "tests/support/fake_core_helper.h"
#include "tests/support/plugin_module.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace zxtest;

namespace {

constexpr DWORD kSentinel = 0xdeadbeef;

VPrivateDevMode FilledWith(DWORD value) {
    VPrivateDevMode block;
    std::memset(&block, 0, sizeof(block));
    DWORD* fields = reinterpret_cast<DWORD*>(&block);
    for (size_t i = 0; i < sizeof(block) / sizeof(DWORD); ++i) fields[i] = value;
    return block;
}

VPrivateDevMode ValidBlock() {
    VPrivateDevMode block = FilledWith(7);
    block.dwSize = 64;
    block.dwSignature = kPluginSignature;
    block.dwVersion = 1;
    return block;
}

void ExpectHeader(const VPrivateDevMode& block) {
    EXPECT_EQ(64u, block.dwSize);
    EXPECT_EQ(0x5844534Du, block.dwSignature);
    EXPECT_EQ(1u, block.dwVersion);
    EXPECT_EQ(0u, block.dwUserChanges);
    EXPECT_EQ(0u, block.dwMarginsByUser);
    EXPECT_EQ(0u, block.dwForce300Dpi);
}

class DevModeTest : public testing::Test {
protected:
    HRESULT Run(DWORD mode, const VPrivateDevMode* in, VPrivateDevMode* out, DEVMODEW* publicOut = nullptr) {
        param = {};
        param.cbSize = sizeof(param);
        param.pOEMDMIn = const_cast<VPrivateDevMode*>(in);
        param.pOEMDMOut = out;
        param.pPublicDMOut = publicOut;
        param.cbBufSize = kSentinel;
        return ui->DevMode(mode, &param);
    }

    ComPtr<IPrintOemUI> ui = CreateUiObject();
    OEMDMPARAM param{};
};

}  // namespace

TEST(GetInfo, AnswersSignatureVersionAndRequestedHelpers) {
    ComPtr<IPrintOemUI> ui = CreateUiObject();
    const std::pair<DWORD, DWORD> answers[] = {
        {OEMGI_GETSIGNATURE, 0x5844534D}, {OEMGI_GETVERSION, 1}, {OEMGI_GETREQUESTEDHELPERINTERFACES, 1}};
    for (const auto& [mode, expected] : answers) {
        DWORD value = kSentinel, needed = kSentinel;
        EXPECT_EQ(S_OK, ui->GetInfo(mode, &value, sizeof(value), &needed)) << "mode " << mode;
        EXPECT_EQ(expected, value) << "mode " << mode;
        EXPECT_EQ(4u, needed);
    }
    // A small or missing buffer learns the size it needs and is left alone.
    BYTE buffer[4] = {0xAA, 0xAA, 0xAA, 0xAA};
    DWORD needed = kSentinel;
    SetLastError(0);
    EXPECT_EQ(HRESULT(0x8007007A), ui->GetInfo(OEMGI_GETSIGNATURE, buffer, 3, &needed));
    EXPECT_EQ(std::tuple(122ul, 4ul, BYTE{0xAA}), std::tuple(GetLastError(), needed, buffer[0]));
    needed = kSentinel;
    EXPECT_EQ(HRESULT(0x8007007A), ui->GetInfo(OEMGI_GETVERSION, nullptr, 4, &needed));
    EXPECT_EQ(4u, needed);
}

TEST(GetInfo, RefusesOtherModesAndAMissingSizePointer) {
    ComPtr<IPrintOemUI> ui = CreateUiObject();
    DWORD value = 0, needed = kSentinel;
    for (DWORD mode : {DWORD{0}, DWORD{OEMGI_GETINTERFACEVERSION}, DWORD{OEMGI_GETPUBLISHERINFO}, DWORD{6}}) {
        SetLastError(0);
        EXPECT_EQ(E_INVALIDARG, ui->GetInfo(mode, &value, sizeof(value), &needed)) << "mode " << mode;
        EXPECT_EQ(87u, GetLastError());
        EXPECT_EQ(kSentinel, needed);
    }
    SetLastError(0);
    EXPECT_EQ(E_INVALIDARG, ui->GetInfo(OEMGI_GETSIGNATURE, &value, sizeof(value), nullptr));
    EXPECT_EQ(87u, GetLastError());
}

TEST_F(DevModeTest, SizeAndDefaultReport64Bytes) {
    EXPECT_EQ(S_OK, Run(OEMDM_SIZE, nullptr, nullptr));
    EXPECT_EQ(64u, param.cbBufSize);

    VPrivateDevMode out = FilledWith(kSentinel);
    EXPECT_EQ(S_OK, Run(OEMDM_DEFAULT, nullptr, &out));
    EXPECT_EQ(64u, param.cbBufSize);
    ExpectHeader(out);
    // Defaulting leaves every other field as the core driver's buffer held it.
    EXPECT_EQ(kSentinel, out.dwBorderless);
    EXPECT_EQ(kSentinel, out.dwNUpIndex);
    EXPECT_EQ(kSentinel, out.dwInputBinIndex);
    EXPECT_EQ(kSentinel, out.dwReserved60);
}

TEST_F(DevModeTest, NullBlocksAndParametersAreRefused) {
    for (DWORD mode : {DWORD{OEMDM_SIZE}, DWORD{OEMDM_DEFAULT}, DWORD{OEMDM_CONVERT}, DWORD{OEMDM_MERGE}}) {
        EXPECT_EQ(S_OK, ui->DevMode(mode, nullptr)) << "mode " << mode;
    }
    SetLastError(0);
    EXPECT_EQ(E_INVALIDARG, ui->DevMode(5, nullptr));
    EXPECT_EQ(87u, GetLastError());
    EXPECT_EQ(S_OK, Run(5, nullptr, nullptr));  // unknown mode with a block: nothing done

    VPrivateDevMode block = ValidBlock();
    EXPECT_EQ(E_POINTER, Run(OEMDM_DEFAULT, &block, nullptr));
    for (DWORD mode : {DWORD{OEMDM_CONVERT}, DWORD{OEMDM_MERGE}}) {
        EXPECT_EQ(E_POINTER, Run(mode, &block, nullptr));
        VPrivateDevMode out = FilledWith(kSentinel);
        EXPECT_EQ(E_POINTER, Run(mode, nullptr, &out));
        EXPECT_EQ(kSentinel, out.dwSize);
    }
}

TEST_F(DevModeTest, ConvertingAnOlderShorterBlockCopiesOnlyItsLength) {
    VPrivateDevMode in = ValidBlock();
    in.dwSize = 32;
    in.dwBorderless = 1;
    in.dwReserved28 = 0x1234;
    VPrivateDevMode out = ValidBlock();
    out.dwReserved32 = 0x5555;
    out.dwNUpIndex = 3;

    EXPECT_EQ(S_OK, Run(OEMDM_CONVERT, &in, &out));
    ExpectHeader(out);
    EXPECT_EQ(1u, out.dwBorderless);
    EXPECT_EQ(0x1234u, out.dwReserved28);
    EXPECT_EQ(0x5555u, out.dwReserved32);
    EXPECT_EQ(3u, out.dwNUpIndex);
}

TEST_F(DevModeTest, ALongerBlockIsCutToOurSizeAndTheFlagsNeverSurvive) {
    struct {
        VPrivateDevMode block;
        DWORD guard[4];
    } out{}, in{};
    in.block = ValidBlock();
    in.block.dwSize = 0xFFFFFFFF;
    in.block.dwMarginsByUser = 1;
    in.block.dwUserChanges = 0x14;
    in.block.dwForce300Dpi = 1;
    in.block.dwNUpIndex = 2;
    for (DWORD& word : in.guard) word = 0x11111111;
    out.block = ValidBlock();
    for (DWORD& word : out.guard) word = kSentinel;

    for (DWORD mode : {DWORD{OEMDM_CONVERT}, DWORD{OEMDM_MERGE}}) {
        EXPECT_EQ(S_OK, Run(mode, &in.block, &out.block));
        ExpectHeader(out.block);
        EXPECT_EQ(2u, out.block.dwNUpIndex);
        for (DWORD word : out.guard) EXPECT_EQ(kSentinel, word);
    }
}

TEST_F(DevModeTest, AForeignBlockIsReplacedByDefaultsNotCopied) {
    VPrivateDevMode in = ValidBlock();
    in.dwSignature = 0x41424344;
    in.dwNUpIndex = 9;
    VPrivateDevMode out = ValidBlock();
    out.dwNUpIndex = 1;
    out.dwMarginsByUser = 1;

    EXPECT_EQ(S_OK, Run(OEMDM_MERGE, &in, &out));
    ExpectHeader(out);
    EXPECT_EQ(1u, out.dwNUpIndex);
}

class Force300DpiTest : public DevModeTest {
protected:
    DWORD FlagAfter(DWORD mode) {
        VPrivateDevMode in = ValidBlock(), out = ValidBlock();
        out.dwForce300Dpi = kSentinel;
        const HRESULT hr = Run(mode, &in, &out, &publicOut);
        EXPECT_EQ(S_OK, hr);
        return out.dwForce300Dpi;
    }

    void Publish() { ASSERT_EQ(S_OK, ui->PublishDriverInterface(static_cast<IPrintCoreHelperUni*>(&helper))); }
    void TearDown() override { ui.Reset(); }  // before the helper it holds goes away

    DEVMODEW publicOut{};
    FakeCoreHelper helper;
};

TEST_F(Force300DpiTest, DraftOnAPclDeviceAsksFor300Dpi) {
    Publish();
    publicOut.dmSize = sizeof(DEVMODEW);
    publicOut.dmDriverExtra = 300;
    helper.SetOption("DeviceLanguage", "PCL");
    helper.SetOption("PageOutputQuality", "Draft");
    helper.SetOption("MediaType", "1.2.a_2_3x4");
    EXPECT_EQ(1u, FlagAfter(OEMDM_CONVERT));
    EXPECT_EQ(1u, FlagAfter(OEMDM_MERGE));
    // The core helper is asked about the job's DEVMODE, public and driver-extra parts together.
    EXPECT_EQ(520u, helper.askedDevModeSizes.front());

    helper.SetOption("PageOutputQuality", "Normal");
    EXPECT_EQ(0u, FlagAfter(OEMDM_CONVERT));  // a quality option decides, whatever the medium

    helper.SetOption("PageOutputQuality", "Draft");
    helper.SetOption("DeviceLanguage", "PCLmS");
    EXPECT_EQ(0u, FlagAfter(OEMDM_CONVERT));
}

TEST_F(Force300DpiTest, WithoutAQualityOptionTheMediumDecidesAndAFailingHelperLeavesItOff) {
    Publish();
    helper.SetOption("DeviceLanguage", "PCL");
    const std::pair<const char*, DWORD> media[] = {{"1.2.a_2_3x4", 1}, {"1.2.a_3_3x4", 0}, {"garbage", 0}};
    for (const auto& [medium, flag] : media) {
        helper.SetOption("MediaType", medium);
        EXPECT_EQ(flag, FlagAfter(OEMDM_MERGE)) << medium;
    }
    helper.SetOption("MediaType", "1.2.a_2_3x4");
    helper.behaviour = FakeCoreHelper::Behaviour::FailEveryCall;
    EXPECT_EQ(0u, FlagAfter(OEMDM_CONVERT));
    helper.behaviour = FakeCoreHelper::Behaviour::NullOptions;
    EXPECT_EQ(0u, FlagAfter(OEMDM_MERGE));
}

TEST_F(Force300DpiTest, IsSkippedBeforeTheHelperIsPublishedOrWithoutAPublicDevMode) {
    helper.SetOption("DeviceLanguage", "PCL");
    helper.SetOption("PageOutputQuality", "Draft");
    EXPECT_EQ(0u, FlagAfter(OEMDM_CONVERT));  // cleared by the header, never recomputed
    EXPECT_TRUE(helper.askedFeatures.empty());

    Publish();
    VPrivateDevMode in = ValidBlock(), out = ValidBlock();
    EXPECT_EQ(S_OK, Run(OEMDM_MERGE, &in, &out, nullptr));
    EXPECT_TRUE(helper.askedFeatures.empty());
}
