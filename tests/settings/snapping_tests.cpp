// Snapping rules: the parser's bounds on short, malformed and over-long rules, and the
// PrintTicket writer's lookup.
#include "settings/snapping.h"
#include "tests/support/fake_core_helper.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <cwchar>
#include <string>
#include <string_view>
#include <tuple>

using namespace zxtest;

namespace {

constexpr INT32 U = 0x5A5A5A5A;       // a field the parser left alone
using Fields = std::array<INT32, 5>;  // input bin, first and second media number, quality, borderless
using Guard = std::array<char, 16>;
constexpr Guard kGuard = {"guard.bytes...."};

// The parser's outputs, pre-filled with sentinels, between guard bytes.
struct GuardedOutput {
    Guard before = kGuard;
    zx::SnappingRecord record = {U, U, U, U, {U, U, U, U, U, U}, U};
    zx::MediaTypeName name = L"untouched";
    Guard after = kGuard;

    bool GuardsIntact() const { return before == kGuard && after == kGuard; }
    Fields Read() const {
        return {record.inputBin, record.mediaFirst, record.mediaSecond, record.quality, record.borderless};
    }
};

// Text at the very end of a readable page: reading one byte further faults.
struct TextAtPageEnd {
    explicit TextAtPageEnd(std::string_view text) {
        DWORD old = 0;
        ::VirtualProtect(pages + 4096, 4096, PAGE_NOACCESS, &old);
        get = static_cast<PCSTR>(std::memcpy(pages + 4096 - text.size(), text.data(), text.size()));
    }
    ~TextAtPageEnd() { ::VirtualFree(pages, 0, MEM_RELEASE); }

    char* const pages = static_cast<char*>(::VirtualAlloc(nullptr, 8192, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    PCSTR get;
};

}  // namespace

TEST(SnappingRuleParser, ReadsEachFieldAndStopsAtTheFirstMissingSeparator) {
    const std::tuple<const char*, Fields, const wchar_t*> cases[] = {
        {"A4:1.2:4", {4, 1, 2, U, U}, L"_1_2"},  // ends after F2
        {"A4:7:x:y", {0, 7, U, 0, U}, L"_7"},    // not numbers: 0
        {"A4:1.2:3:4:NAME", {3, 1, 2, 4, U}, L"_1_2"},
        {"A4:1.2:3:4:NAME:", {3, 1, 2, 4, 0}, L"_1_2"},
        {"A4:-3..9:3:99999999999:N:2", {3, -3, 0, 0, 2}, L"_-3__9"},  // too large for 32 bits: 0
        {"A4:1.2", {U, U, U, U, U}, L"untouched"},                    // F1 never closed: nothing
        {"", {U, U, U, U, U}, L"untouched"},
        {nullptr, {U, U, U, U, U}, L"untouched"},
    };
    for (const auto& [rule, fields, name] : cases) {
        SCOPED_TRACE(rule ? rule : "null");
        GuardedOutput out;
        zx::ParseSnappingRule(rule, out.record, out.name);
        EXPECT_EQ(fields, out.Read());
        EXPECT_STREQ(name, out.name);
        EXPECT_TRUE(out.GuardsIntact());
        EXPECT_EQ(U, out.record.unused[0]);
    }
}

TEST(SnappingRuleParser, ReadsAtMost259CharactersAndNeverWritesPastTheMediaName) {
    // An unterminated rule whose 259th character is F5: read up to there and not a byte further.
    const TextAtPageEnd unterminated(std::string(247, 'K') + ":1.2:3:4:N:7");
    GuardedOutput bounded;
    zx::ParseSnappingRule(unterminated.get, bounded.record, bounded.name);
    EXPECT_EQ((Fields{3, 1, 2, 4, 7}), bounded.Read());

    // The longest media code that fits gives the longest suffix: 258 characters.
    for (char filler : {'9', '.'}) {
        const std::string rule = ":" + std::string(257, filler) + ":";
        GuardedOutput out;
        zx::ParseSnappingRule(rule.c_str(), out.record, out.name);
        EXPECT_EQ(258u, std::wcslen(out.name)) << filler;
        EXPECT_TRUE(out.GuardsIntact()) << filler;
    }
}

// The first rule keyed by the paper wins, by "BORDERLESS_" and the paper for borderless overspray.
// SnappingData, MediaType and InputBin must be readable; BorderlessPrint and a paper need not be.
TEST(SnapForTicket, PicksTheRuleForThePaperOrLeavesTheOutputsAlone) {
    FakeCoreHelper helper;
    for (const char* feature : {"SnappingData", "MediaType", "InputBin"}) helper.SetOption(feature, "1");
    helper.SetOption("PaperSize", "A4");
    helper.SetOptionList("SnappingData",
                         {"LETTER:9.9:9:9:IDS_MTYPE_PLAIN_PAPER:9", "A4:1.2:4:1:IDS_MTYPE_PLAIN_PAPER:0",
                          "BORDERLESS_A4:3.5.7:2:2:IDS_MTYPE_PLAIN_PAPER:1", "A4:8.8:8:8:IDS_MTYPE_PLAIN_PAPER:8"});
    DEVMODEW devMode{};
    GuardedOutput out;
    const auto snap = [&](FakeCoreHelper& with) {
        return zx::SnapForTicket(&with, &devMode, 1234, &out.record, out.name);
    };
    for (const char* borderless : {"BorderlessOverspray", "None", "Borderless"}) {
        SCOPED_TRACE(borderless);
        helper.SetOption("BorderlessPrint", borderless);
        const bool overspray = std::string_view(borderless) == "BorderlessOverspray";
        EXPECT_EQ(0, snap(helper));
        EXPECT_EQ((overspray ? Fields{2, 3, 5, 2, 1} : Fields{4, 1, 2, 1, 0}), out.Read());  // never the later A4 rule
        EXPECT_STREQ(overspray ? L"_3_5_7" : L"_1_2", out.name);
    }
    EXPECT_EQ(std::vector<DWORD>(helper.askedDevModeSizes.size(), 1234), helper.askedDevModeSizes);

    out = GuardedOutput();  // from here on nothing is written
    helper.SetOption("PaperSize", "A5");
    EXPECT_EQ(zx::kNoSnappingRule, snap(helper));
    helper.SetOption("PaperSize", "A4");
    helper.SetOptionList("SnappingData", {"A4", "B5:1:1:1:X:1"});  // a keyword without ":" is not a rule
    EXPECT_EQ(zx::kNoSnappingRule, snap(helper));
    helper.SetOptionList("SnappingData", {});
    EXPECT_EQ(zx::kNoSnappingRule, snap(helper));
    helper.behaviour = FakeCoreHelper::Behaviour::NullOptions;
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_NOT_FOUND), snap(helper));

    FakeCoreHelper partial;
    partial.SetOptionList("SnappingData", {"A4:1.2:4:1:X:0"});
    for (const char* feature : {"SnappingData", "MediaType", "InputBin"}) {
        EXPECT_EQ(E_INVALIDARG, snap(partial)) << feature;
        partial.SetOption(feature, "1");
    }
    EXPECT_EQ(zx::kNoSnappingRule, snap(partial));
    EXPECT_EQ((Fields{U, U, U, U, U}), out.Read());
    EXPECT_STREQ(L"untouched", out.name);
    partial.SetOption("PaperSize", "A4");
    EXPECT_EQ(0, snap(partial));
}
