// The accessory record, the observer pair and the model markers.
#include "device/udm_client.h"
#include "tests/device/fake_spooler.h"
#include "tests/support/fake_core_helper.h"

#include <gtest/gtest.h>

namespace {

struct Fields {
    int32_t duplexUnit, tray2, photoTray, colour, reliable, duplex, familyA, family;
};

Fields FieldsOf(const VIOData& record) {
    return {record.GetDuplexUnit(), record.GetTrayState2(), record.GetPhotoTray(), record.GetColorPrinting(),
            record.IsReliable(),    record.GetDuplex(),     record.IsModelFamilyA(), record.GetModelFamily()};
}

void ExpectFields(const Fields& expected, const VIOData& record) {
    const Fields actual = FieldsOf(record);
    EXPECT_EQ(expected.duplexUnit, actual.duplexUnit);
    EXPECT_EQ(expected.tray2, actual.tray2);
    EXPECT_EQ(expected.photoTray, actual.photoTray);
    EXPECT_EQ(expected.colour, actual.colour);
    EXPECT_EQ(expected.reliable, actual.reliable);
    EXPECT_EQ(expected.duplex, actual.duplex);
    EXPECT_EQ(expected.familyA, actual.familyA);
    EXPECT_EQ(expected.family, actual.family);
}

class RecordingObserver : public IObserver {
public:
    void Update(ISubject* subject) override {
        subjects.push_back(subject);
        data = subject->GetData();
    }
    std::vector<ISubject*> subjects;
    IBiDiData* data = nullptr;
};

}  // namespace

TEST(AccessoryRecord, DefaultAndFiveValueRecordsDifferOnlyInTheGivenFields) {
    ExpectFields({1, 0, 0, 1, 1, 1, 1, 1}, VIOData());
    const VIOData given(0, 1, 1, 0, 0);
    ExpectFields({0, 1, 1, 0, 1, 0, 1, 1}, given);
    MediaSize size{-1, -1};
    given.GetMinMediaSize(&size);
    EXPECT_EQ(MediaSize(76, 127), size);
    given.GetMaxMediaSize(&size);
    EXPECT_EQ(MediaSize(216, 356), size);
    EXPECT_EQ(216, given.GetMaxMediaWidth());
    EXPECT_EQ(2, given.GetMediaLimitKind());
}

TEST(AccessoryRecord, ModelMarkersAreFoundInAnyCaseAndTheFirstFamilyWins) {
    VIOData record;
    MatchModelFamily(record, L"qamb-9");
    EXPECT_EQ(0, record.IsModelFamilyA());
    EXPECT_EQ(2, record.GetModelFamily());
    MatchModelFamily(record, L"TORVELL QAMA");
    EXPECT_EQ(1, record.IsModelFamilyA());
    EXPECT_EQ(1, record.GetModelFamily());
    MatchModelFamily(record, L"CID:Torvell_ZX1200");
    EXPECT_EQ(0, record.IsModelFamilyA());
    EXPECT_EQ(0, record.GetModelFamily());
    MatchModelFamily(record, L"");  // no marker: the family stays, the flag is cleared
    EXPECT_EQ(0, record.IsModelFamilyA());
    EXPECT_EQ(0, record.GetModelFamily());
}

TEST(Observers, AttachIgnoresNullKeepsRepeatsAndNotifiesInOrder) {
    zxtest::FakeSpooler spooler;
    spooler.AddPrinter(L"P");
    VUDMClient client(L"P", nullptr, nullptr);
    client.Notify();  // nobody to tell

    RecordingObserver first, second;
    client.Attach(nullptr);
    client.Attach(&first);
    client.Attach(&second);
    client.Attach(&first);
    client.Notify();
    EXPECT_EQ(2u, first.subjects.size());
    EXPECT_EQ(1u, second.subjects.size());
    EXPECT_EQ(static_cast<ISubject*>(&client), second.subjects[0]);
    EXPECT_EQ(first.data, second.data);

    client.DetachAll();
    client.Notify();
    EXPECT_EQ(2u, first.subjects.size());
}

TEST(Observers, AnUnconnectedClientHandsOutOneDefaultRecordWithoutAskingTheSpooler) {
    zxtest::FakeSpooler spooler;
    spooler.AddPrinter(L"P");
    zxtest::FakeCoreHelper helper;
    {
        VUDMClient client(L"P", nullptr, &helper);
        EXPECT_EQ(2u, helper.RefCount());
        IBiDiData* data = client.GetData();
        ASSERT_NE(nullptr, data);
        EXPECT_EQ(data, client.GetData());
        ExpectFields({1, 0, 0, 1, 1, 1, 1, 1}, static_cast<VIOData&>(*data));
        EXPECT_FALSE(client.IsConnected());
        EXPECT_TRUE(spooler.Printer(L"P").data.empty());
    }
    EXPECT_EQ(1u, helper.RefCount());
    EXPECT_EQ(0u, spooler.OpenHandles());
}
