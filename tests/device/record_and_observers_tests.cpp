// The accessory record, the model markers and the observer pair.
#include "tests/device/accessories.h"
#include "tests/device/fake_spooler.h"
#include "tests/support/fake_core_helper.h"

#include <gtest/gtest.h>

using zxtest::Accessories;
using zxtest::AccessoriesOf;

namespace {

struct RecordingObserver : IObserver {
    void Update(ISubject* subject) override { data.push_back(subject->GetData()); }
    std::vector<IBiDiData*> data;
};

}  // namespace

TEST(AccessoryRecord, GivenValuesReplaceOnlyTheirFields) {
    VIOData record;
    EXPECT_EQ((Accessories{1, 0, 0, 1, 1, 1}), AccessoriesOf(&record));
    const VIOData given(0, 1, 1, 0, 0);
    EXPECT_EQ((Accessories{0, 1, 1, 0, 0, 1}), AccessoriesOf(&given));
    MediaSize min{-1, -1}, max{-1, -1};
    given.GetMinMediaSize(&min);
    given.GetMaxMediaSize(&max);
    EXPECT_EQ(MediaSize(76, 127), min);
    EXPECT_EQ(MediaSize(216, 356), max);
    EXPECT_EQ(216, given.GetMaxMediaWidth());
    EXPECT_EQ(2, given.GetMediaLimitKind());
    EXPECT_EQ(1, given.GetModelFamily());
    EXPECT_EQ(1, given.IsModelFamilyA());
}

TEST(AccessoryRecord, ModelMarkersAreFoundInAnyCaseFirstMarkerFirst) {
    struct Case {
        const wchar_t* identity;
        int32_t familyA, family;
    };
    VIOData record;
    for (const Case& c : {Case{L"qamb-9", 0, 2}, Case{L"TORVELL QAMA", 1, 1}, Case{L"CID:Torvell_1", 0, 0},
                          Case{L"", 0, 0} /* no marker: the family stays */}) {
        MatchModelFamily(record, c.identity);
        EXPECT_EQ(c.familyA, record.IsModelFamilyA()) << c.identity;
        EXPECT_EQ(c.family, record.GetModelFamily()) << c.identity;
    }
}

TEST(Observers, NullIsIgnoredRepeatsAreToldAgainAndOneDefaultRecordIsHandedOut) {
    zxtest::FakeSpooler spooler;
    zxtest::FakeCoreHelper helper;
    {
        VUDMClient client(L"P", nullptr, &helper);
        EXPECT_EQ(2u, helper.RefCount());
        client.Notify();  // nobody to tell
        RecordingObserver first, second;
        for (IObserver* observer : {static_cast<IObserver*>(nullptr), static_cast<IObserver*>(&first),
                                    static_cast<IObserver*>(&second), static_cast<IObserver*>(&first)}) {
            client.Attach(observer);
        }
        client.Notify();
        ASSERT_EQ(2u, first.data.size());
        ASSERT_EQ(1u, second.data.size());
        EXPECT_EQ(first.data[0], second.data[0]);
        EXPECT_EQ(first.data[0], first.data[1]);
        EXPECT_EQ((Accessories{1, 0, 0, 1, 1, 1}), AccessoriesOf(first.data[0]));
        EXPECT_FALSE(client.IsConnected());
        EXPECT_TRUE(spooler.data.empty());  // an unconnected client asks nothing
        client.DetachAll();
        client.Notify();
        EXPECT_EQ(2u, first.data.size());
    }
    EXPECT_EQ(1u, helper.RefCount());
    EXPECT_TRUE(spooler.handles.empty());
}
