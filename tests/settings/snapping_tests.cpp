// Snapping rules: the parser's bounds on short, malformed and over-long rules, and the
// PrintTicket writer's lookup.
#include "drvhost/job_devmode.h"
#include "settings/snapping.h"
#include "tests/settings/settings_support.h"
#include "tests/support/fake_core_helper.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <cwchar>
#include <string>
#include <string_view>

using namespace zxtest;

namespace {

constexpr INT32 kUntouched = 0x5A5A5A5A;
constexpr unsigned char kGuard = 0xA5;

// The parser's outputs between guard bytes, pre-filled with sentinels.
struct GuardedOutput {
    GuardedOutput() {
        std::memset(before, kGuard, sizeof(before));
        std::memset(after, kGuard, sizeof(after));
        record = {kUntouched, kUntouched, kUntouched, kUntouched, {kUntouched, kUntouched, kUntouched, kUntouched,
                  kUntouched, kUntouched}, kUntouched};
        std::wcscpy(name, L"untouched");
    }
    bool GuardsIntact() const {
        for (unsigned char byte : before) if (byte != kGuard) return false;
        for (unsigned char byte : after) if (byte != kGuard) return false;
        return true;
    }
    std::array<INT32, 5> Fields() const {
        return {record.inputBin, record.mediaFirst, record.mediaSecond, record.quality, record.borderless};
    }

    unsigned char before[16];
    zx::SnappingRecord record;
    zx::MediaTypeName name;
    unsigned char after[16];
};

using Fields = std::array<INT32, 5>;  // input bin, first and second media number, quality, borderless
constexpr INT32 U = kUntouched;

// Text placed at the very end of a readable page: reading one byte further faults.
class TextAtPageEnd {
public:
    explicit TextAtPageEnd(std::string_view text) {
        m_pages = static_cast<char*>(::VirtualAlloc(nullptr, 2 * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        DWORD old = 0;
        ::VirtualProtect(m_pages + kPage, kPage, PAGE_NOACCESS, &old);
        m_text = m_pages + kPage - text.size();
        std::memcpy(m_text, text.data(), text.size());
    }
    ~TextAtPageEnd() { ::VirtualFree(m_pages, 0, MEM_RELEASE); }
    PCSTR Get() const { return m_text; }

private:
    static constexpr size_t kPage = 4096;
    char* m_pages = nullptr;
    char* m_text = nullptr;
};

}  // namespace

TEST(SnappingRuleParser, ReadsEachFieldAndStopsAtTheFirstMissingSeparator) {
    const struct {
        const char* rule;
        Fields fields;
        const wchar_t* name;
    } cases[] = {
        {"A4:1.2:4:1:IDS_MTYPE_PLAIN_PAPER:0", {4, 1, 2, 1, 0}, L"_1_2"},
        {"BORDERLESS_A4:3.5.7:2:2:IDS_MTYPE_PLAIN_PAPER:1", {2, 3, 5, 2, 1}, L"_3_5_7"},
        {"A4:1.2:4", {4, 1, 2, U, U}, L"_1_2"},  // ends after F2
        {"A4:1.2:", {0, 1, 2, U, U}, L"_1_2"},
        {"A4:7:x:y", {0, 7, U, 0, U}, L"_7"},     // not numbers: 0
        {"A4:1.2:3:4:NAME", {3, 1, 2, 4, U}, L"_1_2"},
        {"A4:1.2:3:4:NAME:", {3, 1, 2, 4, 0}, L"_1_2"},
        {"A4:-3..9:3:99999999999:N:2", {3, -3, 0, 0, 2}, L"_-3__9"},  // too large for 32 bits: 0
        {"A4:1.2", {U, U, U, U, U}, L"untouched"},  // F1 never closed: nothing
        {"A4", {U, U, U, U, U}, L"untouched"},
        {"", {U, U, U, U, U}, L"untouched"},
        {nullptr, {U, U, U, U, U}, L"untouched"},
    };
    for (const auto& c : cases) {
        GuardedOutput out;
        zx::ParseSnappingRule(c.rule, out.record, out.name);
        EXPECT_EQ(c.fields, out.Fields()) << (c.rule ? c.rule : "null");
        EXPECT_STREQ(c.name, out.name) << (c.rule ? c.rule : "null");
        EXPECT_TRUE(out.GuardsIntact());
        EXPECT_EQ(kUntouched, out.record.unused[0]);
        EXPECT_EQ(kUntouched, out.record.unused[5]);
    }
}

TEST(SnappingRuleParser, ReadsAtMost259CharactersAndNeverWritesPastTheMediaName) {
    // The 259th character is the ":" before F4, so F5 lies beyond what is read.
    const std::string longKey = std::string(250, 'K') + ":1.2:3:4:X:1";
    GuardedOutput cut;
    zx::ParseSnappingRule(longKey.c_str(), cut.record, cut.name);
    EXPECT_EQ((Fields{3, 1, 2, 4, U}), cut.Fields());

    // The longest media code that fits gives the longest suffix: 258 characters.
    for (char filler : {'9', '.'}) {
        const std::string rule = ":" + std::string(257, filler) + ":";
        GuardedOutput out;
        zx::ParseSnappingRule(rule.c_str(), out.record, out.name);
        EXPECT_EQ(258u, std::wcslen(out.name)) << filler;
        EXPECT_TRUE(out.GuardsIntact()) << filler;
    }

    // A media code that runs past the limit is never closed and fills nothing.
    GuardedOutput open;
    zx::ParseSnappingRule((":" + std::string(300, '1') + ":2").c_str(), open.record, open.name);
    EXPECT_EQ((Fields{U, U, U, U, U}), open.Fields());

    // A rule without a terminator is read no further than 259 characters.
    const TextAtPageEnd unterminated("A4:1.2:3:4:NAME:1" + std::string(259 - 17, 'z'));
    GuardedOutput bounded;
    zx::ParseSnappingRule(unterminated.Get(), bounded.record, bounded.name);
    EXPECT_EQ((Fields{3, 1, 2, 4, 1}), bounded.Fields());
}

class SnapForTicketTest : public testing::Test {
protected:
    SnapForTicketTest() {
        helper.SetOption("SnappingData", "rules");
        helper.SetOption("MediaType", "1.0.0_1_600x600");
        helper.SetOption("BorderlessPrint", "None");
        helper.SetOption("InputBin", "7");
        helper.SetOption("PaperSize", "A4");
        helper.SetOptionList("SnappingData", {"LETTER:9.9:9:9:IDS_MTYPE_PLAIN_PAPER:9",
                                              "A4:1.2:4:1:IDS_MTYPE_PLAIN_PAPER:0",
                                              "BORDERLESS_A4:3.5.7:2:2:IDS_MTYPE_PLAIN_PAPER:1",
                                              "A4:8.8:8:8:IDS_MTYPE_PLAIN_PAPER:8"});
    }
    LONG Snap() { return zx::SnapForTicket(&helper, &devMode, 1234, &out.record, out.name); }

    FakeCoreHelper helper;
    DEVMODEW devMode{};
    GuardedOutput out;
};

TEST_F(SnapForTicketTest, BorderlessOversprayPicksTheBorderlessRuleAndTheFirstMatchWins) {
    helper.SetOption("BorderlessPrint", "BorderlessOverspray");
    EXPECT_EQ(0, Snap());
    EXPECT_EQ((Fields{2, 3, 5, 2, 1}), out.Fields());
    EXPECT_STREQ(L"_3_5_7", out.name);
    const std::vector<std::string> asked = {"SnappingData", "MediaType", "BorderlessPrint", "InputBin", "PaperSize"};
    EXPECT_EQ(asked, helper.askedFeatures);
    EXPECT_EQ(std::vector<DWORD>(5, 1234), helper.askedDevModeSizes);

    for (const char* otherBorderless : {"None", "Borderless"}) {
        helper.SetOption("BorderlessPrint", otherBorderless);
        GuardedOutput plain;
        EXPECT_EQ(0, zx::SnapForTicket(&helper, &devMode, 1234, &plain.record, plain.name));
        EXPECT_EQ((Fields{4, 1, 2, 1, 0}), plain.Fields()) << otherBorderless;  // not the later A4 rule
        EXPECT_STREQ(L"_1_2", plain.name);
    }
}

TEST_F(SnapForTicketTest, NoRuleOrUnreadableSettingsLeaveTheOutputsAlone) {
    helper.SetOption("PaperSize", "A5");
    EXPECT_EQ(zx::kNoSnappingRule, Snap());
    helper.SetOption("PaperSize", "A4");
    helper.SetOptionList("SnappingData", {"A4", "B5:1:1:1:X:1"});
    EXPECT_EQ(zx::kNoSnappingRule, Snap());  // a keyword without ":" is not a rule
    helper.SetOptionList("SnappingData", {});
    EXPECT_EQ(zx::kNoSnappingRule, Snap());

    // A missing media type or input bin is the helper's failure; a missing borderless option is not.
    FakeCoreHelper partial;
    partial.SetOption("PaperSize", "A4");
    partial.SetOptionList("SnappingData", {"A4:1.2:4:1:X:0"});
    EXPECT_EQ(E_INVALIDARG, zx::SnapForTicket(&partial, &devMode, 1234, &out.record, out.name));  // no SnappingData
    partial.SetOption("SnappingData", "rules");
    EXPECT_EQ(E_INVALIDARG, zx::SnapForTicket(&partial, &devMode, 1234, &out.record, out.name));  // no MediaType
    partial.SetOption("MediaType", "1.0");
    EXPECT_EQ(E_INVALIDARG, zx::SnapForTicket(&partial, &devMode, 1234, &out.record, out.name));  // no InputBin
    partial.behaviour = FakeCoreHelper::Behaviour::NullOptions;
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_NOT_FOUND), zx::SnapForTicket(&partial, &devMode, 1234, &out.record, out.name));
    EXPECT_EQ((Fields{U, U, U, U, U}), out.Fields());
    EXPECT_STREQ(L"untouched", out.name);

    partial.behaviour = FakeCoreHelper::Behaviour::Answer;
    partial.SetOption("InputBin", "7");
    EXPECT_EQ(0, zx::SnapForTicket(&partial, &devMode, 1234, &out.record, out.name));
    EXPECT_EQ(E_POINTER, zx::SnapForTicket(&partial, &devMode, 1234, nullptr, out.name));
}

TEST(SnapForTicket, TheSamplePrintersRulesSnapAJob) {
    drvhost::CoreDriver core(SamplePrinter());
    const drvhost::PrinterDescription& printer = core.Description();
    drvhost::JobDevMode job(printer, 64, L"ZX Inkjet Simulator");
    const size_t paper = *printer.FindFeature("PaperSize"), borderless = *printer.FindFeature("BorderlessPrint");
    job.SetSelection(paper, static_cast<DWORD>(*printer.features[paper].FindOption("ZX_4X6_IN")));
    job.SetSelection(borderless, 1);

    GuardedOutput out;
    EXPECT_EQ(S_OK, zx::SnapForTicket(core.CoreHelper(), job.Public(), job.TotalSize(), &out.record, out.name));
    EXPECT_EQ((Fields{3, 2, 0, 2, 1}), out.Fields());
    EXPECT_STREQ(L"_2_0", out.name);

    job.SetSelection(paper, static_cast<DWORD>(*printer.features[paper].FindOption("EXECUTIVE")));
    EXPECT_EQ(zx::kNoSnappingRule, zx::SnapForTicket(core.CoreHelper(), job.Public(), job.TotalSize(), &out.record,
                                                     out.name));
}
