// Finding, committing and hiding the core driver's items; the settings object's references and flags.
#include "core/ui_interface.h"
#include "drvhost/ui_session.h"
#include "settings/option_items.h"
#include "tests/settings/settings_support.h"
#include "tests/support/fake_core_helper.h"

#include <gtest/gtest.h>

using namespace zxtest;

namespace {

const auto kSentinelItem = reinterpret_cast<POPTITEM>(ULONG_PTR{0xdeadbeef});
constexpr HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);

// An item of its own with two options, the second selected and carrying the given flags.
struct LooseItem {
    explicit LooseItem(BYTE flags) {
        options[1].Flags = flags;
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

// A prefix match stops at an extending feature that comes first; item arrays are hostile input.
TEST(FindItem, PrefixMatchAndEmptyMissingOrHostileItemArrays) {
    SheetBed sheet(R"(*Feature: MediaTypePrev { *Option: A { } }
        *Feature: MediaType { *Option: A { } } *Feature: PaperSize { *Option: A4 { } })");
    POPTITEM item = kSentinelItem;
    EXPECT_EQ(S_OK, zx::GetFeatureOptItem(&sheet.params, "MediaType", &item));
    EXPECT_EQ(sheet.Item("MediaTypePrev"), item);
    EXPECT_EQ(S_OK, zx::GetFeatureOptItem(&sheet.params, "PaperSize", &item));
    EXPECT_EQ(sheet.Item("PaperSize"), item);
    EXPECT_EQ(kNotFound, zx::GetFeatureOptItem(&sheet.params, "PaperSizeX", &item));
    EXPECT_EQ(nullptr, item);
    EXPECT_FALSE(zx::ItemIsFeature(sheet.Item("MediaTypePrev"), "MediaType"));

    OEMCUIPPARAM params{};
    item = kSentinelItem;
    EXPECT_EQ(E_PENDING, zx::GetFeatureOptItem(&params, "MediaType", &item));
    EXPECT_EQ(kSentinelItem, item);
    EXPECT_EQ(E_POINTER, zx::GetFeatureOptItem(nullptr, "MediaType", &item));
    EXPECT_EQ(E_POINTER, zx::GetFeatureOptItem(&params, nullptr, &item));

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
}

TEST(CommitOptItem, TheSimulatedCoreDriverTakesConflictingAndHiddenChoicesWithoutPrompting) {
    SheetBed sheet(SamplePrinter());
    POPTITEM paper = sheet.Item("PaperSize");
    paper->Sel = 14;  // Envelope #10 rules out two-sided printing
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

    POPTITEM media = sheet.Item("MediaType");
    media->Sel = 3;
    EXPECT_EQ(S_OK, sheet.properties.SetHiddenFeature("MediaTypePrev", media));
    EXPECT_EQ(3, sheet.Item("MediaTypePrev")->Sel);
    EXPECT_EQ(3u, sheet.Selection("MediaTypePrev"));
    EXPECT_EQ(kNotFound, sheet.properties.SetHiddenFeature("NoSuchFeature", media));
}

// The document form clears the conflict mark for the call only and reports the core driver's
// answer; the callbacks' form does not report it; the printer form leaves the mark alone.
TEST(CommitOptItem, EachFormOnAFakeCoreDriver) {
    FakeCoreHelper driver;
    zx::ComPtr<VUIInterfaceImpl> ui;
    *ui.GetAddressOf() = new VUIInterfaceImpl();
    ui->PublishDriverInterface(static_cast<IPrintOemDriverUI*>(&driver));
    OEMCUIPPARAM params{};
    LooseItem loose(OPTPF_OVERLAY_WARNING_ICON | OPTPF_DISABLED);
    EXPECT_EQ(S_OK, VUICallbackContext(&params, nullptr).CommitCallbackOptItem(&loose.item));
    EXPECT_EQ(0, driver.updateUISettingCalls);  // no UI plug-in object: only marked changed
    EXPECT_EQ(OPTIF_CHANGED, loose.item.Flags);

    zx::SetUiPluginOf(params, ui->AsUiPlugin());
    const VUICallbackContext context(&params, nullptr);
    EXPECT_EQ(S_OK, context.CommitOptItem(&loose.item));
    driver.behaviour = FakeCoreHelper::Behaviour::FailEveryCall;
    EXPECT_EQ(E_FAIL, context.CommitOptItem(&loose.item));
    EXPECT_EQ(S_OK, context.CommitCallbackOptItem(&loose.item));
    EXPECT_EQ(OPTPF_OVERLAY_WARNING_ICON | OPTPF_DISABLED, loose.options[1].Flags);
    loose.item.Sel = 2;  // outside the options: handed over, no option touched
    EXPECT_EQ(E_FAIL, context.CommitOptItem(&loose.item));
    loose.type.pOptParam = nullptr;  // neither form hands over an item without options
    EXPECT_EQ(E_FAIL, context.CommitOptItem(&loose.item));
    EXPECT_EQ(E_FAIL, context.CommitOptItem(nullptr));
    EXPECT_EQ(E_FAIL, context.CommitCallbackOptItem(&loose.item));
    EXPECT_EQ(S_OK, context.CommitCallbackOptItem(nullptr));
    LooseItem printerItem(OPTPF_OVERLAY_WARNING_ICON);
    EXPECT_EQ(E_FAIL, context.CommitPrinterOptItem(&printerItem.item));
    EXPECT_EQ(S_OK, context.CommitPrinterOptItem(nullptr));
    EXPECT_EQ(0, printerItem.item.Flags);

    // The mode and the selected option's flags as the core driver saw them in each call.
    using Call = std::pair<DWORD, BYTE>;
    const Call cleared{OEMCUIP_DOCPROP, OPTPF_DISABLED}, outside{OEMCUIP_DOCPROP, 0},
        printer{OEMCUIP_PRNPROP, OPTPF_OVERLAY_WARNING_ICON};
    std::vector<Call> seen;
    for (const auto& call : driver.updates) seen.emplace_back(call.mode, call.selectedOptionFlags);
    EXPECT_EQ((std::vector{cleared, cleared, cleared, outside, printer}), seen);
}

TEST(HiddenFeatures, BookkeepingItemsOfTheSamplePrinter) {
    std::vector<std::string> expected = {"MediaTypePrev",   "OutputQualityPrev", "Collate",         "TouchByUser",
                                         "PS_Schema",       "PrintingShortcut",  "GeneralEveryday", "PhotoBorderless",
                                         "PhotoWithBorder", "TwoSidedPrinting",  "FastEconomical",  "FactoryDefaults",
                                         "ShortcutBitmaps", "AllSettingsfor_PS", "MonoConfig"};
    for (DWORD suppressed : {0, 1}) {
        SCOPED_TRACE(suppressed);
        SheetBed sheet(SamplePrinter());
        sheet.properties.SetBindingAndMarginsSuppressed(suppressed);
        EXPECT_EQ(S_OK, sheet.properties.HideBookkeepingItems());
        std::vector<std::string> hidden;
        for (const OPTITEM& item : zx::DriverItems(&sheet.params)) {
            if (item.Flags & OPTIF_HIDE) hidden.emplace_back(zx::FeatureKeywordOf(item));
        }
        if (suppressed) expected.insert(expected.begin() + 2, {"DocumentBinding", "DocumentMargins"});
        EXPECT_EQ(expected, hidden);
        const OPTPARAM* sources = sheet.Item("InputBin")->pOptType->pOptParam;
        EXPECT_EQ((std::pair<BYTE, BYTE>(OPTPF_HIDE, 0)), std::pair(sources[0].Flags, sources[1].Flags));
    }
    EXPECT_EQ(E_POINTER, VUIProperties().HideBookkeepingItems());
}

TEST(UIProperties, CopiesTakeTheirOwnReferencesAndReadOnlyFollowsTheSheetFlags) {
    FakeCoreHelper helper;
    VPrivateDevMode block{};
    {
        VUIProperties properties(&block);
        properties.SetInterfaces(&helper, &helper);
        const VUIProperties copy(properties);
        EXPECT_EQ(5u, helper.RefCount());
        EXPECT_EQ(&block, copy.PrivateDevMode());

        // Only the low byte of the sheet's flags counts, and it must be exactly the read-only mode.
        const std::pair<DWORD, DWORD> cases[] = {
            {0x12C, 1}, {0x2D, 0}, {drvhost::kReadOnlyDocumentSheetMode, 1}, {drvhost::kDocumentSheetMode, 0}};
        OEMCUIPPARAM params{};
        for (const auto& [flags, readOnly] : cases) {
            params.dwFlags = flags;
            properties.AttachSheet(&params);
            EXPECT_EQ(readOnly, properties.ReadOnly()) << std::hex << flags;
        }
    }
    EXPECT_EQ(1u, helper.RefCount());
}
