// The UI plug-in object called through the DLL as the core driver calls it: GetInfo, DevMode and
// the 300-dpi flag recomputed after a convert or merge, the helper interfaces it takes, and the
// colour profile, also when the core driver's helper misbehaves.
#include "settings/private_devmode.h"
#include "tests/support/fake_core_helper.h"
#include "tests/support/plugin_module.h"

#include <gtest/gtest.h>

#include <cwchar>

using namespace zxtest;

namespace {

constexpr DWORD kSentinel = 0xdeadbeef;

VPrivateDevMode FilledWith(DWORD value) {
    VPrivateDevMode block;
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

class UiObjectTest : public testing::Test {
protected:
    HRESULT Publish(FakeCoreHelper& offered) {
        return ui->PublishDriverInterface(static_cast<IPrintCoreHelperUni*>(&offered));
    }
    HRESULT Run(DWORD mode, const VPrivateDevMode* in, VPrivateDevMode* out, DEVMODEW* publicOut = nullptr) {
        param = {};
        param.cbSize = sizeof(param);
        param.pOEMDMIn = const_cast<VPrivateDevMode*>(in);
        param.pOEMDMOut = out;
        param.pPublicDMOut = publicOut;
        param.cbBufSize = kSentinel;
        return ui->DevMode(mode, &param);
    }
    DWORD FlagAfter(DWORD mode) {
        VPrivateDevMode in = ValidBlock(), out = ValidBlock();
        out.dwForce300Dpi = kSentinel;
        EXPECT_EQ(S_OK, Run(mode, &in, &out, &devMode));
        return out.dwForce300Dpi;
    }
    HRESULT QueryProfile(ULONG mode, wchar_t* buffer, ULONG* size, FLONG* flags) {
        return ui->QueryColorProfile(nullptr, nullptr, &devMode, nullptr, mode, buffer, size, flags);
    }

    FakeCoreHelper helper;  // outlives the object, which holds it
    ComPtr<IPrintOemUI> ui = CreateUiObject();
    DEVMODEW devMode{};
    OEMDMPARAM param{};
};

}  // namespace

TEST_F(UiObjectTest, GetInfoAnswersItsThreeModesAndRefusesTheOthersAndAMissingSizePointer) {
    // Mode, result, value, size needed.
    const std::tuple<DWORD, HRESULT, DWORD, DWORD> cases[] = {
        {OEMGI_GETSIGNATURE, S_OK, 0x5844534D, 4},
        {OEMGI_GETVERSION, S_OK, 1, 4},
        {OEMGI_GETREQUESTEDHELPERINTERFACES, S_OK, 1, 4},
        {0, E_INVALIDARG, kSentinel, kSentinel},
        {OEMGI_GETINTERFACEVERSION, E_INVALIDARG, kSentinel, kSentinel},
        {OEMGI_GETPUBLISHERINFO, E_INVALIDARG, kSentinel, kSentinel},
        {6, E_INVALIDARG, kSentinel, kSentinel}};
    for (const auto& [mode, result, expected, expectedNeeded] : cases) {
        DWORD value = kSentinel, needed = kSentinel;
        SetLastError(0);
        EXPECT_EQ(result, ui->GetInfo(mode, &value, sizeof(value), &needed)) << "mode " << mode;
        EXPECT_EQ(expected, value) << "mode " << mode;
        EXPECT_EQ(expectedNeeded, needed) << "mode " << mode;
        EXPECT_EQ(FAILED(result) ? 87u : 0u, GetLastError()) << "mode " << mode;
    }
    DWORD value = 0;
    SetLastError(0);
    EXPECT_EQ(E_INVALIDARG, ui->GetInfo(OEMGI_GETSIGNATURE, &value, sizeof(value), nullptr));
    EXPECT_EQ(87u, GetLastError());

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

TEST_F(UiObjectTest, DevModeSizeAndDefaultWriteOnlyTheHeaderAndRefuseNullBlocks) {
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

    // Null blocks and parameters.
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
        out = FilledWith(kSentinel);
        EXPECT_EQ(E_POINTER, Run(mode, nullptr, &out));
        EXPECT_EQ(kSentinel, out.dwSize);
    }
}

// An older, shorter block fills only its own length, a longer one is cut to ours, a foreign one
// is replaced by the defaults; the header's flags never survive.
TEST_F(UiObjectTest, ConvertAndMergeCopyOnlyWhatFitsOfOurOwnBlocks) {
    VPrivateDevMode shorter = ValidBlock(), out = ValidBlock();
    shorter.dwSize = 32;
    shorter.dwBorderless = 1;
    shorter.dwReserved28 = 0x1234;
    out.dwReserved32 = 0x5555;
    out.dwNUpIndex = 3;
    EXPECT_EQ(S_OK, Run(OEMDM_CONVERT, &shorter, &out));
    ExpectHeader(out);
    EXPECT_EQ(std::tuple(1u, 0x1234u, 0x5555u, 3u),
              std::tuple(out.dwBorderless, out.dwReserved28, out.dwReserved32, out.dwNUpIndex));

    struct {
        VPrivateDevMode block;
        DWORD guard[4];
    } guarded{}, longer{};
    longer.block = ValidBlock();
    longer.block.dwSize = 0xFFFFFFFF;
    longer.block.dwMarginsByUser = 1;
    longer.block.dwUserChanges = 0x14;
    longer.block.dwForce300Dpi = 1;
    longer.block.dwNUpIndex = 2;
    for (DWORD& word : longer.guard) word = 0x11111111;
    guarded.block = ValidBlock();
    for (DWORD& word : guarded.guard) word = kSentinel;
    for (DWORD mode : {DWORD{OEMDM_CONVERT}, DWORD{OEMDM_MERGE}}) {
        EXPECT_EQ(S_OK, Run(mode, &longer.block, &guarded.block));
        ExpectHeader(guarded.block);
        EXPECT_EQ(2u, guarded.block.dwNUpIndex);
        for (DWORD word : guarded.guard) EXPECT_EQ(kSentinel, word);
    }

    VPrivateDevMode foreign = ValidBlock();
    foreign.dwSignature = 0x41424344;
    foreign.dwNUpIndex = 9;
    out = ValidBlock();
    out.dwNUpIndex = 1;
    out.dwMarginsByUser = 1;
    EXPECT_EQ(S_OK, Run(OEMDM_MERGE, &foreign, &out));
    ExpectHeader(out);
    EXPECT_EQ(1u, out.dwNUpIndex);
}

// A PCL device asks for 300 dpi in draft quality or, without a quality option, on a medium whose
// fourth number is 2; a helper that fails or answers nothing leaves the flag off.
TEST_F(UiObjectTest, The300DpiFlagFollowsTheDeviceLanguageThenTheQualityThenTheMedium) {
    struct Case {
        const char *language, *quality, *medium;
        FakeCoreHelper::Behaviour behaviour;
        DWORD flag;
    };
    constexpr auto kAnswer = FakeCoreHelper::Behaviour::Answer;
    const Case cases[] = {
        {"PCL", "Draft", "1.2.a_2_3x4", kAnswer, 1},
        {"PCL", "Normal", "1.2.a_2_3x4", kAnswer, 0},  // a quality option decides, whatever the medium
        {"PCLmS", "Draft", "1.2.a_2_3x4", kAnswer, 0},
        {"PCL", nullptr, "1.2.a_2_3x4", kAnswer, 1},
        {"PCL", nullptr, "1.2.a_3_3x4", kAnswer, 0},
        {"PCL", nullptr, "garbage", kAnswer, 0},
        {"PCL", nullptr, "1.2.a_2_3x4", FakeCoreHelper::Behaviour::FailEveryCall, 0},
        {"PCL", nullptr, "1.2.a_2_3x4", FakeCoreHelper::Behaviour::NullOptions, 0},
    };
    for (const Case& c : cases) {
        FakeCoreHelper job;
        job.SetOption("DeviceLanguage", c.language);
        if (c.quality) job.SetOption("PageOutputQuality", c.quality);
        job.SetOption("MediaType", c.medium);
        job.behaviour = c.behaviour;
        ui = CreateUiObject();
        EXPECT_EQ(S_OK, Publish(job));
        for (DWORD mode : {DWORD{OEMDM_CONVERT}, DWORD{OEMDM_MERGE}}) {
            EXPECT_EQ(c.flag, FlagAfter(mode))
                << c.language << " " << (c.quality ? c.quality : "-") << " " << c.medium << " mode " << mode;
        }
        ui.Reset();  // before the case's helper goes away
    }

    // The core helper is asked about the job's DEVMODE, public and driver-extra parts together, and
    // only once it is published and there is a public DEVMODE.
    ui = CreateUiObject();
    helper.SetOption("DeviceLanguage", "PCL");
    helper.SetOption("PageOutputQuality", "Draft");
    EXPECT_EQ(0u, FlagAfter(OEMDM_CONVERT));  // cleared by the header, never recomputed
    EXPECT_TRUE(helper.askedFeatures.empty());

    ASSERT_EQ(S_OK, Publish(helper));
    VPrivateDevMode in = ValidBlock(), out = ValidBlock();
    EXPECT_EQ(S_OK, Run(OEMDM_MERGE, &in, &out, nullptr));
    EXPECT_TRUE(helper.askedFeatures.empty());

    devMode.dmSize = sizeof(DEVMODEW);
    devMode.dmDriverExtra = 300;
    EXPECT_EQ(1u, FlagAfter(OEMDM_MERGE));
    EXPECT_EQ(520u, helper.askedDevModeSizes.front());
}

TEST_F(UiObjectTest, PublishDriverInterfaceTakesEachHelperOnceAndNeverReplacesIt) {
    EXPECT_EQ(S_OK, Publish(helper));
    EXPECT_EQ(4u, helper.RefCount());  // the caller's, plus driver UI, core helper, Unidrv helper
    FakeCoreHelper later;
    EXPECT_EQ(E_FAIL, Publish(later));
    EXPECT_EQ(1u, later.RefCount());
    ui.Reset();
    EXPECT_EQ(1u, helper.RefCount());

    // A missing Unidrv helper is reported, the other two are still taken.
    ui = CreateUiObject();
    FakeCoreHelper noUni;
    noUni.offersCoreHelperUni = false;
    EXPECT_EQ(E_NOINTERFACE, Publish(noUni));
    EXPECT_EQ(3u, noUni.RefCount());
    FakeCoreHelper uniOnly;
    uniOnly.offersDriverUI = uniOnly.offersCoreHelper = false;
    EXPECT_EQ(S_OK, Publish(uniOnly));
    EXPECT_EQ(2u, uniOnly.RefCount());
    EXPECT_EQ(E_POINTER, ui->PublishDriverInterface(nullptr));
    ui.Reset();  // before the local helpers go away
    EXPECT_EQ(std::pair(1ul, 1ul), std::pair(noUni.RefCount(), uniOnly.RefCount()));
}

TEST_F(UiObjectTest, ColourProfileFollowsTheColourManagementOptionAndRefusesWhatItCannotServe) {
    wchar_t buffer[13];
    ULONG size = 26;
    FLONG flags = 0;
    EXPECT_EQ(E_NOTIMPL, QueryProfile(QCP_DEVICEPROFILE, buffer, &size, &flags));  // no helper yet
    ASSERT_EQ(S_OK, Publish(helper));
    devMode.dmSize = sizeof(DEVMODEW);
    helper.SetOption("ZXColorManagement", "4");
    EXPECT_EQ(S_OK, QueryProfile(QCP_DEVICEPROFILE, buffer, &size, &flags));
    EXPECT_EQ(26u, size);
    EXPECT_STREQ(L"AdobeRGB.icc", buffer);
    EXPECT_EQ(FLONG{QCP_PROFILEDISK}, flags);

    for (const char* option : {"0", "sRGB"}) {
        wchar_t large[64];
        size = sizeof(large);
        helper.SetOption("ZXColorManagement", option);
        EXPECT_EQ(S_OK, QueryProfile(QCP_DEVICEPROFILE, large, &size, &flags)) << option;
        EXPECT_STREQ(L"sRGB_Color_Space_Profile.icm", large);
        EXPECT_EQ((std::wcslen(large) + 1) * sizeof(wchar_t), size);
    }

    // Small buffers, unknown choices and helpers that do not answer.
    std::wcscpy(buffer, L"untouched");
    helper.SetOption("ZXColorManagement", "4");
    size = 20;
    SetLastError(0);
    EXPECT_EQ(E_FAIL, QueryProfile(QCP_DEVICEPROFILE, buffer, &size, &flags));
    EXPECT_EQ(122u, GetLastError());
    EXPECT_EQ(20u, size);
    EXPECT_STREQ(L"untouched", buffer);

    size = sizeof(buffer);
    EXPECT_EQ(E_NOTIMPL, QueryProfile(QCP_SOURCEPROFILE, buffer, &size, &flags));
    helper.getOptionResult = S_FALSE;
    EXPECT_EQ(E_NOTIMPL, QueryProfile(QCP_DEVICEPROFILE, buffer, &size, &flags));
    helper.getOptionResult = S_OK;
    helper.SetOption("ZXColorManagement", "7");
    EXPECT_EQ(E_NOTIMPL, QueryProfile(QCP_DEVICEPROFILE, buffer, &size, &flags));
    helper.SetOption("ZXColorManagement", "4");
    for (auto behaviour : {FakeCoreHelper::Behaviour::FailEveryCall, FakeCoreHelper::Behaviour::NullOptions}) {
        helper.behaviour = behaviour;
        EXPECT_EQ(E_NOTIMPL, QueryProfile(QCP_DEVICEPROFILE, buffer, &size, &flags));
    }
}
