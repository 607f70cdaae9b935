// Finding, committing and hiding the core driver's items; the settings object's references and
// flags; the callback context.
#include "core/ui_interface.h"
#include "drvhost/ui_session.h"
#include "settings/option_items.h"
#include "settings/ui_properties.h"
#include "tests/settings/settings_support.h"
#include "tests/support/fake_core_helper.h"

#include <gtest/gtest.h>

using namespace zxtest;

namespace {

const auto kSentinelItem = reinterpret_cast<POPTITEM>(static_cast<ULONG_PTR>(0xdeadbeef));
constexpr HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);

// An item of its own with two options, the second one carrying the given flags.
struct LooseItem {
    LooseItem(BYTE secondOptionFlags) {
        options[1].Flags = secondOptionFlags;
        type.Count = 2;
        type.pOptParam = options;
        item.pOptType = &type;
        item.Sel = 1;
    }
    OPTPARAM options[2]{};
    OPTTYPE type{};
    OPTITEM item{};
};

}  // namespace

TEST(FindItem, PrefixMatchStopsAtAnExtendingFeatureThatComesFirst) {
    SheetBed sheet(Describe(R"(
*Feature: MediaTypePrev { *Option: A { } *Option: B { } }
*Feature: MediaType { *Option: A { } *Option: B { } }
*Feature: PaperSize { *Option: A4 { } })"));
    POPTITEM item = kSentinelItem;
    EXPECT_EQ(S_OK, zx::GetFeatureOptItem(&sheet.params, "MediaType", &item));
    EXPECT_EQ(sheet.Item("MediaTypePrev"), item);
    EXPECT_EQ(S_OK, zx::GetFeatureOptItem(&sheet.params, "PaperSize", &item));
    EXPECT_EQ(sheet.Item("PaperSize"), item);

    item = kSentinelItem;
    EXPECT_EQ(kNotFound, zx::GetFeatureOptItem(&sheet.params, "PaperSizeX", &item));
    EXPECT_EQ(nullptr, item);
    EXPECT_TRUE(zx::ItemIsFeature(sheet.Item("MediaType"), "MediaType"));
    EXPECT_FALSE(zx::ItemIsFeature(sheet.Item("MediaTypePrev"), "MediaType"));
}

TEST(FindItem, EmptyMissingAndHostileItemArrays) {
    OEMCUIPPARAM params{};
    POPTITEM item = kSentinelItem;
    EXPECT_EQ(E_PENDING, zx::GetFeatureOptItem(&params, "MediaType", &item));
    EXPECT_EQ(kSentinelItem, item);
    EXPECT_EQ(E_POINTER, zx::GetFeatureOptItem(nullptr, "MediaType", &item));
    EXPECT_EQ(E_POINTER, zx::GetFeatureOptItem(&params, nullptr, &item));
    EXPECT_EQ(E_POINTER, zx::GetFeatureOptItem(&params, "MediaType", nullptr));

    OPTITEM items[2]{};
    params.pDrvOptItems = items;
    for (DWORD count : {0u, 0x80000000u}) {  // empty, and a count that is negative when signed
        params.cDrvOptItems = count;
        item = kSentinelItem;
        EXPECT_EQ(S_OK, zx::GetFeatureOptItem(&params, "MediaType", &item)) << count;
        EXPECT_EQ(nullptr, item);
    }

    // The last item examined decides what a failed search reports.
    params.cDrvOptItems = 2;
    drvhost::FeatureRecord paper{nullptr, nullptr, "PaperSize", 0}, nameless{};
    items[0].UserData = reinterpret_cast<ULONG_PTR>(&paper);
    EXPECT_EQ(E_FAIL, zx::GetFeatureOptItem(&params, "MediaType", &item));  // no user data
    items[1].UserData = reinterpret_cast<ULONG_PTR>(&nameless);
    EXPECT_EQ(E_FAIL, zx::GetFeatureOptItem(&params, "MediaType", &item));  // null keyword
    std::swap(items[0].UserData, items[1].UserData);
    EXPECT_EQ(kNotFound, zx::GetFeatureOptItem(&params, "MediaType", &item));
    EXPECT_EQ(nullptr, item);
}

TEST(CommitOptItem, TheSimulatedCoreDriverTakesAConflictingChoiceWithoutPrompting) {
    SheetBed sheet(SamplePrinter());
    POPTITEM paper = sheet.Item("PaperSize");
    paper->Sel = 14;  // Envelope #10, which rules out two-sided printing
    ASSERT_EQ(S_OK, sheet.properties.CommitOptItem(paper));
    POPTITEM duplex = sheet.Item("Duplex");
    ASSERT_EQ(OPTPF_OVERLAY_WARNING_ICON, duplex->pOptType->pOptParam[1].Flags);

    duplex->Sel = 1;
    EXPECT_EQ(S_OK, sheet.properties.CommitOptItem(duplex));
    EXPECT_EQ(0, sheet.core.ConflictPrompts());
    EXPECT_EQ(1u, sheet.Selection("Duplex"));
    EXPECT_EQ(OPTIF_CALLBACK | OPTIF_CHANGED, duplex->Flags);
    EXPECT_EQ(OPTPF_OVERLAY_WARNING_ICON, duplex->pOptType->pOptParam[1].Flags);

    // Handed over with its mark, the same choice makes the core driver ask the user.
    sheet.core.DriverUi()->DrvUpdateUISetting(&sheet.uiObject, duplex, 0, OEMCUIP_DOCPROP);
    EXPECT_EQ(1, sheet.core.ConflictPrompts());
}

TEST(CommitOptItem, ClearsOnlyTheMarkOnlyForTheCallAndReportsTheCoreDriversAnswer) {
    FakeCoreHelper driver;
    OEMUIOBJ uiObject{};
    OEMCUIPPARAM params{};
    params.poemuiobj = &uiObject;
    VUIProperties properties;
    properties.SetInterfaces(&driver, &driver);
    properties.AttachSheet(&params);

    LooseItem loose(OPTPF_OVERLAY_WARNING_ICON | OPTPF_DISABLED);
    EXPECT_EQ(S_OK, properties.CommitOptItem(&loose.item));
    ASSERT_EQ(1u, driver.updates.size());
    EXPECT_EQ(&uiObject, driver.updates[0].uiObject);
    EXPECT_EQ(&loose.item, driver.updates[0].item);
    EXPECT_EQ(0u, driver.updates[0].previousSelection);
    EXPECT_EQ(DWORD{OEMCUIP_DOCPROP}, driver.updates[0].mode);
    EXPECT_EQ(OPTPF_DISABLED, driver.updates[0].selectedOptionFlags);
    EXPECT_EQ(OPTPF_OVERLAY_WARNING_ICON | OPTPF_DISABLED, loose.options[1].Flags);
    EXPECT_EQ(OPTIF_CHANGED, loose.item.Flags);

    driver.behaviour = FakeCoreHelper::Behaviour::FailEveryCall;
    EXPECT_EQ(E_FAIL, properties.CommitOptItem(&loose.item));
    EXPECT_EQ(OPTPF_OVERLAY_WARNING_ICON | OPTPF_DISABLED, loose.options[1].Flags);

    // A selection outside the option array is handed over without touching any option.
    driver.behaviour = FakeCoreHelper::Behaviour::Answer;
    loose.item.Sel = 2;
    EXPECT_EQ(S_OK, properties.CommitOptItem(&loose.item));
    EXPECT_EQ(3u, driver.updates.size());

    loose.type.pOptParam = nullptr;
    EXPECT_EQ(E_FAIL, properties.CommitOptItem(&loose.item));
    EXPECT_EQ(E_FAIL, properties.CommitOptItem(nullptr));
    EXPECT_EQ(3u, driver.updates.size());
    LooseItem second(0);
    EXPECT_EQ(E_FAIL, VUIProperties().CommitOptItem(&second.item));  // no driver-UI interface
}

TEST(CommitOptItem, CallbackAndPrinterForms) {
    FakeCoreHelper driver;
    driver.behaviour = FakeCoreHelper::Behaviour::FailEveryCall;
    zx::ComPtr<VUIInterfaceImpl> ui;
    *ui.GetAddressOf() = new VUIInterfaceImpl();
    ui->PublishDriverInterface(static_cast<IPrintOemDriverUI*>(&driver));
    OEMUIOBJ uiObject{};
    OEMCUIPPARAM params{};
    params.poemuiobj = &uiObject;

    // Without a UI plug-in object the callbacks' commit only marks the item.
    LooseItem loose(OPTPF_OVERLAY_WARNING_ICON);
    VUICallbackContext orphan(&params, nullptr);
    EXPECT_EQ(S_OK, orphan.CommitCallbackOptItem(&loose.item));
    EXPECT_EQ(0, driver.updateUISettingCalls);
    EXPECT_EQ(OPTIF_CHANGED, loose.item.Flags);

    params.pOEMUserData = ui.Get();
    VUICallbackContext context(&params, nullptr);
    EXPECT_EQ(S_OK, context.CommitCallbackOptItem(&loose.item));  // the core driver's failure is not reported
    ASSERT_EQ(1u, driver.updates.size());
    EXPECT_EQ(0, driver.updates[0].selectedOptionFlags);
    EXPECT_EQ(OPTPF_OVERLAY_WARNING_ICON, loose.options[1].Flags);
    EXPECT_EQ(S_OK, context.CommitCallbackOptItem(nullptr));
    loose.type.pOptParam = nullptr;
    EXPECT_EQ(E_FAIL, context.CommitCallbackOptItem(&loose.item));

    // The printer sheet's form: printer mode, the mark left in place, no changed flag.
    LooseItem printerItem(OPTPF_OVERLAY_WARNING_ICON);
    EXPECT_EQ(E_FAIL, context.CommitPrinterOptItem(&printerItem.item));
    ASSERT_EQ(2u, driver.updates.size());
    EXPECT_EQ(DWORD{OEMCUIP_PRNPROP}, driver.updates[1].mode);
    EXPECT_EQ(OPTPF_OVERLAY_WARNING_ICON, driver.updates[1].selectedOptionFlags);
    EXPECT_EQ(0, printerItem.item.Flags);
    EXPECT_EQ(S_OK, context.CommitPrinterOptItem(nullptr));
}

TEST(HiddenFeatures, SetHiddenFeatureCopiesTheSelectionAndCommitsIt) {
    SheetBed sheet(SamplePrinter());
    POPTITEM media = sheet.Item("MediaType");
    media->Sel = 3;
    EXPECT_EQ(S_OK, sheet.properties.SetHiddenFeature("MediaTypePrev", media));
    EXPECT_EQ(3, sheet.Item("MediaTypePrev")->Sel);
    EXPECT_EQ(OPTIF_CALLBACK | OPTIF_CHANGED, sheet.Item("MediaTypePrev")->Flags);
    EXPECT_EQ(3u, sheet.Selection("MediaTypePrev"));
    EXPECT_EQ(kNotFound, sheet.properties.SetHiddenFeature("NoSuchFeature", media));
    EXPECT_EQ(E_POINTER, sheet.properties.SetHiddenFeature("MediaTypePrev", nullptr));
}

TEST(HiddenFeatures, BookkeepingItemsOfTheSamplePrinter) {
    const std::vector<std::string> bookkeeping = {
        "MediaTypePrev",   "OutputQualityPrev", "Collate",         "TouchByUser",      "PS_Schema",
        "PrintingShortcut", "GeneralEveryday",  "PhotoBorderless", "PhotoWithBorder", "TwoSidedPrinting",
        "FastEconomical",  "FactoryDefaults",   "ShortcutBitmaps", "AllSettingsfor_PS", "MonoConfig"};
    SheetBed sheet(SamplePrinter());
    EXPECT_EQ(S_OK, sheet.properties.HideBookkeepingItems());
    EXPECT_EQ(bookkeeping, sheet.HiddenItems());
    const OPTPARAM* sources = sheet.Item("InputBin")->pOptType->pOptParam;
    EXPECT_EQ(OPTPF_HIDE, sources[0].Flags);
    EXPECT_EQ(0, sources[1].Flags);

    SheetBed suppressed(SamplePrinter());
    suppressed.properties.SetBindingAndMarginsSuppressed(1);
    EXPECT_EQ(S_OK, suppressed.properties.HideBookkeepingItems());
    std::vector<std::string> withBooklet = bookkeeping;
    withBooklet.insert(withBooklet.begin() + 2, {"DocumentBinding", "DocumentMargins"});
    EXPECT_EQ(withBooklet, suppressed.HiddenItems());

    EXPECT_EQ(E_POINTER, VUIProperties().HideBookkeepingItems());
}

TEST(UIProperties, CopiesTakeTheirOwnReferencesAndNeverOwnTheBlocks) {
    FakeCoreHelper helper;
    VPrivateDevMode block{};
    {
        VUIProperties properties(&block);
        EXPECT_EQ(1, properties.ManualDuplexSupported());
        EXPECT_EQ(nullptr, properties.DriverUI());
        properties.SetInterfaces(&helper, &helper);
        properties.SetDuplexUnitInstalled(1);
        EXPECT_EQ(3u, helper.RefCount());
        {
            const VUIProperties copy(properties);
            EXPECT_EQ(5u, helper.RefCount());
            EXPECT_EQ(&block, copy.PrivateDevMode());
            EXPECT_EQ(static_cast<IPrintCoreHelper*>(&helper), copy.CoreHelper());
            EXPECT_EQ(1u, copy.DuplexUnitInstalled());
        }
        EXPECT_EQ(3u, helper.RefCount());
    }
    EXPECT_EQ(1u, helper.RefCount());
}

TEST(UIProperties, ReadOnlyOnlyWhenTheLowByteOfTheSheetFlagsIs0x2C) {
    const std::pair<DWORD, DWORD> cases[] = {{0x2C, 1}, {0x12C, 1}, {0x28, 0}, {0x2D, 0}, {0x0C, 0},
                                             {drvhost::kReadOnlyDocumentSheetMode, 1},
                                             {drvhost::kDocumentSheetMode, 0}};
    for (const auto& [flags, readOnly] : cases) {
        OEMCUIPPARAM params{};
        params.dwFlags = flags;
        VUIProperties properties;
        properties.AttachSheet(&params);
        EXPECT_EQ(readOnly, properties.ReadOnly()) << std::hex << flags;
    }
}

TEST(CallbackContext, TakesTheUiObjectAndPrivateBlockFromTheParameterBlock) {
    FakeCoreHelper helper;
    zx::ComPtr<VUIInterfaceImpl> ui;
    *ui.GetAddressOf() = new VUIInterfaceImpl();
    ASSERT_EQ(S_OK, ui->PublishDriverInterface(static_cast<IPrintOemDriverUI*>(&helper)));
    VPrivateDevMode block{};
    OPTITEM current{};
    CPSUICBPARAM callback{};
    callback.pCurItem = &current;
    OEMCUIPPARAM params{};
    params.pOEMUserData = ui.Get();
    params.pOEMDM = &block;
    params.dwFlags = 0x2C;

    const VUICallbackContext context(&params, &callback);
    EXPECT_EQ(ui.Get(), context.UiObject());
    EXPECT_EQ(&block, context.PrivateDevMode());
    EXPECT_EQ(&params, context.UiParams());
    EXPECT_EQ(static_cast<IPrintOemDriverUI*>(&helper), context.DriverUI());
    EXPECT_EQ(static_cast<IPrintCoreHelper*>(&helper), context.CoreHelper());
    EXPECT_EQ(&current, context.CurrentItem());
    EXPECT_EQ(1u, context.ReadOnly());
    EXPECT_EQ(nullptr, context.BiDiData());
    EXPECT_EQ(0u, context.TwoSidedAvailable());

    const auto record = reinterpret_cast<IBiDiData*>(static_cast<ULONG_PTR>(0x1234));
    FakeCoreHelper other;
    const VUICallbackContext entry(&params, &other, record, &other);
    EXPECT_EQ(record, entry.BiDiData());
    EXPECT_EQ(static_cast<IPrintCoreHelper*>(&other), entry.CoreHelper());
    EXPECT_EQ(nullptr, entry.CurrentItem());
    EXPECT_EQ(3u, other.RefCount());
}
