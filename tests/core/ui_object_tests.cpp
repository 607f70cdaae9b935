// The UI plug-in object's helper interfaces and colour profile, and its answers when the core
// driver's helper misbehaves.
#include "tests/support/fake_core_helper.h"
#include "tests/support/plugin_module.h"

#include <gtest/gtest.h>

#include <cwchar>

using namespace zxtest;

namespace {

class UiObjectTest : public testing::Test {
protected:
    void TearDown() override { ui.Reset(); }  // before the helpers it holds go away

    HRESULT Publish(FakeCoreHelper& offered) {
        return ui->PublishDriverInterface(static_cast<IPrintCoreHelperUni*>(&offered));
    }

    HRESULT QueryProfile(ULONG mode, wchar_t* buffer, ULONG* size, FLONG* flags) {
        return ui->QueryColorProfile(nullptr, nullptr, &devMode, nullptr, mode, buffer, size, flags);
    }

    ComPtr<IPrintOemUI> ui = CreateUiObject();
    FakeCoreHelper helper;
    DEVMODEW devMode{};
};

}  // namespace

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

TEST_F(UiObjectTest, ColourProfileFollowsTheColourManagementOption) {
    ASSERT_EQ(S_OK, Publish(helper));
    devMode.dmSize = sizeof(DEVMODEW);
    helper.SetOption("ZXColorManagement", "4");
    wchar_t buffer[13];
    ULONG size = 26;
    FLONG flags = 0;
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
}

TEST_F(UiObjectTest, ColourProfileRefusesSmallBuffersAndUnknownChoices) {
    ASSERT_EQ(S_OK, Publish(helper));
    helper.SetOption("ZXColorManagement", "4");
    wchar_t buffer[10] = L"untouched";
    ULONG size = 20;
    FLONG flags = 0;
    SetLastError(0);
    EXPECT_EQ(E_FAIL, QueryProfile(QCP_DEVICEPROFILE, buffer, &size, &flags));
    EXPECT_EQ(122u, GetLastError());
    EXPECT_EQ(20u, size);
    EXPECT_STREQ(L"untouched", buffer);

    size = sizeof(buffer);
    EXPECT_EQ(E_NOTIMPL, QueryProfile(QCP_SOURCEPROFILE, buffer, &size, &flags));
    helper.SetOption("ZXColorManagement", "7");
    EXPECT_EQ(E_NOTIMPL, QueryProfile(QCP_DEVICEPROFILE, buffer, &size, &flags));
    helper.getOptionResult = S_FALSE;
    helper.SetOption("ZXColorManagement", "4");
    EXPECT_EQ(E_NOTIMPL, QueryProfile(QCP_DEVICEPROFILE, buffer, &size, &flags));
}

TEST_F(UiObjectTest, ColourProfileIsNotOfferedWithoutAnAnsweringHelper) {
    wchar_t buffer[64];
    ULONG size = sizeof(buffer);
    FLONG flags = 0;
    EXPECT_EQ(E_NOTIMPL, QueryProfile(QCP_DEVICEPROFILE, buffer, &size, &flags));  // no helper yet
    ASSERT_EQ(S_OK, Publish(helper));
    for (auto behaviour : {FakeCoreHelper::Behaviour::FailEveryCall, FakeCoreHelper::Behaviour::NullOptions}) {
        helper.behaviour = behaviour;
        EXPECT_EQ(E_NOTIMPL, QueryProfile(QCP_DEVICEPROFILE, buffer, &size, &flags));
    }
}
