// Stored shortcuts are hostile input: any program that can write the printer's data or the
// user's registry can put anything there. Random values go into both storage places of Wine's
// spooler and registry (as a restricted user, so both are read) and the sample printer's
// collection is built over them: it must always come back, hold only valid records, and take
// exactly the well-formed shortcuts. ZX_FUZZ_ITERATIONS sets the number of cases (a fixed seed
// makes runs repeatable; each case's number is reported with a failure).
#include "shortcuts/shortcut_store.h"
#include "shortcuts/shortcut_text.h"
#include "tests/shortcuts/shortcut_bed.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <random>
#include <set>

using namespace zxtest;

namespace {

constexpr uint32_t kSeed = 0x5C0FFEE;

const std::vector<std::string> kFeatures = {"MediaType", "PageOutputQuality", "DocumentNUp", "BorderlessPrint",
                                            "Duplex"};
const std::vector<std::wstring> kBuiltInNames = {L"General Everyday Printing", L"Photo Printing - Borderless",
                                                 L"Factory Defaults"};

struct FuzzValue {
    bool inPrinterData;
    std::wstring name;
    DWORD type;
    std::wstring data;  // the bytes, as many characters; a DWORD is two
    bool oddSize = false;  // one byte fewer than the characters hold
    bool wellFormed = false;  // must come back as a shortcut of its own name
};

class ValueMaker {
public:
    explicit ValueMaker(uint32_t seed) : m_random(seed) {}

    std::vector<FuzzValue> Case() {
        std::vector<FuzzValue> values;
        for (size_t i = 0, count = Chance(400) ? 1500 + Pick(1500) : Pick(12); i < count; ++i) {
            FuzzValue value{Chance(2), Name(i, values), std::array<DWORD, 4>{REG_DWORD, REG_BINARY, REG_SZ, REG_SZ}[Pick(4)],
                            Text()};
            if (value.type == REG_DWORD) value.data.resize(2);
            value.oddSize = !value.data.empty() && Chance(16);
            value.wellFormed = value.type == REG_SZ && !value.oddSize && !value.name.empty() && value.name.size() < 256 &&
                               value.data.size() < 259 && value.data.find(L'\0') == std::wstring::npos &&
                               value.name != zx::kCurrentShortcutValue && value.name != zx::kCustomBitmapIdValue &&
                               std::count(kBuiltInNames.begin(), kBuiltInNames.end(), value.name) == 0;
            values.push_back(value);
        }
        return values;
    }

private:
    // Unique by their number, apart from the names of built-in and bookkeeping values and the
    // names of earlier values (to be shared in both places).
    std::wstring Name(size_t index, const std::vector<FuzzValue>& earlier) {
        const std::wstring unique = L"v" + std::to_wstring(index) + L"_";
        switch (Pick(16)) {
            case 0: return kBuiltInNames[Pick(kBuiltInNames.size())];
            case 1: return Chance(2) ? zx::kCurrentShortcutValue : zx::kCustomBitmapIdValue;
            case 2: return unique + std::wstring(std::array<size_t, 4>{255, 259, 260, 400}[Pick(4)] - unique.size(), L'n');
            case 3: return earlier.empty() ? unique : earlier[Pick(earlier.size())].name;
            case 4: return L"";
            default: return unique + std::to_wstring(Pick(1000));
        }
    }

    std::wstring Text() {
        static constexpr std::wstring_view kAlphabet = L"0123456789,,,,--  +xZ\t\x00e9\x4e2d";
        std::wstring text;
        switch (Pick(4)) {
            case 0:
                for (size_t length = Chance(2) ? Pick(2001) : 255 + Pick(10); length > 0; --length) {
                    text += kAlphabet[Pick(kAlphabet.size())];
                }
                break;
            case 1:  // numbers, some huge, some negative, fields missing or extra
                for (size_t fields = Pick(12); fields > 0; --fields) text += Number() + (Chance(12) ? L"" : L",");
                break;
            default:  // well-formed: base index, flag, picture, settings; sometimes just too long
                text = Number() + L"," + std::to_wstring(Pick(2)) + L"," + std::to_wstring(147 + Pick(15)) + L",";
                for (size_t settings = Pick(7); settings > 0; --settings) text += std::to_wstring(Pick(5)) + L",";
                if (Chance(4)) text.resize(text.size() + 250 + Pick(15), L'1');
        }
        if (!text.empty() && Chance(8)) text[Pick(text.size())] = L'\0';
        return text;
    }

    std::wstring Number() {
        const std::array<std::wstring, 4> odd = {L"-" + std::to_wstring(Pick(100000)), L"99999999999999999999",
                                                 L"-2147483649", L""};
        return Chance(2) ? odd[Pick(odd.size())] : std::to_wstring(Pick(12));
    }

    size_t Pick(size_t bound) { return std::uniform_int_distribution<size_t>(0, bound - 1)(m_random); }
    bool Chance(size_t oneIn) { return Pick(oneIn) == 0; }

    std::mt19937 m_random;
};

// The values as the storage places hold them: a later value of a place replaces an earlier one
// of the same name.
std::vector<FuzzValue> FinalValues(const std::vector<FuzzValue>& values) {
    std::vector<FuzzValue> finals;
    std::set<std::pair<bool, std::wstring>> seen;
    for (auto value = values.rbegin(); value != values.rend(); ++value) {
        if (seen.emplace(value->inPrinterData, value->name).second) finals.push_back(*value);
    }
    return finals;
}

void ExpectValidCollection(const VUIPSItem& shortcuts, const std::vector<FuzzValue>& values) {
    // Names of values that may load: texts of fewer than 260 characters, of at most 520 bytes
    // and with a name of at most 259 characters when they are the user's.
    std::set<std::wstring> loadable, names;
    for (const FuzzValue& value : values) {
        const std::wstring text = value.data.substr(0, value.data.size() - value.oddSize);
        if (value.type != REG_SZ || text.substr(0, text.find(L'\0')).size() >= 260) continue;
        if (value.inPrinterData || (value.data.size() <= 260 && value.name.size() < 260)) {
            loadable.insert(value.name.substr(0, 255));
        }
    }
    const int32_t count = shortcuts.Count();
    for (const PrintShortcutRecord& record : shortcuts.Records()) {
        const std::wstring name(record.Name());
        ASSERT_LT(name.size(), 256u);
        EXPECT_FALSE(name.empty());
        EXPECT_TRUE(names.insert(name).second) << "listed twice";
        EXPECT_EQ(kFeatures, record.features);
        EXPECT_EQ(5u, record.optionNames.size());
        EXPECT_EQ(5u, record.settings.size());
        for (const std::string& feature : kFeatures) EXPECT_TRUE(record.settings.count(feature)) << feature;
        EXPECT_TRUE(record.baseIndex >= 0 && record.baseIndex < count) << record.baseIndex;
        EXPECT_TRUE(zx::IsShortcutBitmap(record.bitmapId)) << record.bitmapId;
        if (record.isBuiltIn) continue;
        EXPECT_TRUE(loadable.count(name)) << "not a stored shortcut";
        EXPECT_TRUE(name != zx::kCurrentShortcutValue && name != zx::kCustomBitmapIdValue) << "a bookkeeping value";
    }
    for (const FuzzValue& value : values) {
        EXPECT_TRUE(!value.wellFormed || names.count(value.name)) << "lost a shortcut";
    }
}

}  // namespace

TEST(ShortcutStoreFuzz, HostileStoredValuesNeverBreakTheCollection) {
    InstallShortcutPrinter();
    ClearShortcutStorage();
    SpoolerSeam seam;
    seam.restricted = true;
    const std::wstring userKey = VPrintShortcutStore(kShortcutPrinter, false).PerUserKeyPath();
    ASSERT_FALSE(userKey.empty());

    const char* configured = std::getenv("ZX_FUZZ_ITERATIONS");
    const int iterations = configured ? std::atoi(configured) : 2000;
    for (int iteration = 0; iteration < iterations; ++iteration) {
        SCOPED_TRACE("case " + std::to_string(iteration));
        ClearStoredShortcuts(userKey);
        const std::vector<FuzzValue> values = ValueMaker(kSeed + static_cast<uint32_t>(iteration)).Case();
        for (const FuzzValue& value : values) {
            const auto size = static_cast<DWORD>(value.data.size() * sizeof(wchar_t) - value.oddSize);
            ASSERT_NO_FATAL_FAILURE(value.inPrinterData
                                        ? WritePrinterValue(value.name, value.type, value.data.data(), size)
                                        : WriteUserValue(userKey, value.name, value.type, value.data.data(), size));
        }

        const ShortcutSheet bed(SamplePrinter(), nullptr, kShortcutPrinter);
        ASSERT_TRUE(bed.built);
        ASSERT_GE(bed.shortcuts.Count(), 6);
        ASSERT_NO_FATAL_FAILURE(ExpectValidCollection(bed.shortcuts, FinalValues(values)));
        if (HasFailure()) break;
    }
    ClearShortcutStorage();
}
