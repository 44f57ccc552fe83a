#include "bench/core/Fault.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"

#include <set>

using namespace bench;

Q_DECLARE_METATYPE(bench::UsedUpBy)

class tst_Fault : public QObject
{
    Q_OBJECT

private slots:
    void theTableIsComplete();
    void describesFaults_data();
    void describesFaults();
    void theFieldsAreThoseOfARecord();
    void findsByExactName();
    void isUsedUpByItsEventAlone_data();
    void isUsedUpByItsEventAlone();
    void isUsedUpByItsKind();
    void isFoundAndRemoved();
    void namesFaults();
};

namespace {

/// A value that the kind takes, as a person gives it.
std::optional<std::string> anyValue(const FaultDescription &kind)
{
    if (kind.value == FaultValue::None) {
        return std::nullopt;
    }
    return kind.value == FaultValue::Field ? "modelName=x"s : "1"s;
}

} // namespace

void tst_Fault::theTableIsComplete()
{
    std::set<std::string> names;
    for (std::size_t i = 0; i < faultDescriptions().size(); ++i) {
        const auto kind = static_cast<FaultKind>(i);
        const FaultDescription &row = describe(kind);
        QCOMPARE(row.kind, kind);
        QCOMPARE(findFault(row.name), &row);
        QVERIFY2(names.insert(row.name).second, row.name);
        QVERIFY2(!std::string(row.description).empty(), row.name);
        QVERIFY2(std::string(row.valueName).empty() == (row.value == FaultValue::None), row.name);
        QVERIFY2(row.takesNumber() == (row.maximum > row.minimum), row.name);
    }
    QCOMPARE(static_cast<std::size_t>(FaultKind::Text) + 1, faultDescriptions().size());
}

void tst_Fault::describesFaults_data()
{
    QTest::addColumn<std::string>("value");
    QTest::addColumn<std::string>("description");
    const auto row = [](const char *name, const char *value, const char *description) {
        QTest::newRow(name) << value + ""s << description + ""s;
    };
    row("slow-probe", "MILLISECONDS", "each query takes so much longer");
    row("settle-queries", "QUERIES", "statuses stay undetermined for so many queries after power-up");
    row("settle-time", "MILLISECONDS", "statuses stay undetermined for so long after power-up");
    row("never-settles", "", "statuses stay undetermined for ever");
    row("flash-error", "BYTES", "writing fails after so many bytes; the flash stays incomplete");
    row("verify-error", "", "what is read back is not what was written; the flash stays incomplete");
    row("pulled-out", "BYTES", "the drive is unplugged after so many bytes; the flash stays incomplete");
    row("wrong-image", "", "discovery names an image for another bridge, which is refused");
    row("truncated-image", "BYTES", "the updater sees only so many bytes of the image (1000) and refuses it");
    row("unmount-returns", "VALUE", "volumes stay mounted and the unmount returns this value");
    row("no-return", "", "the drive does not answer after it was plugged in");
    row("new-serial", "SERIAL", "the drive comes back with this serial number");
    row("duplicate-serial", "SERIAL",
        "the drive reports this serial number of another; without one it is listed twice");
    row("firmware-status", "CODE", "discovery reports this firmware status");
    row("configuration-status", "CODE", "discovery reports this configuration status");
    row("chipset", "CODE", "discovery reports this bridge");
    row("vendor-id", "ID", "discovery reports this vendor ID");
    row("product-id", "ID", "discovery reports this product ID");
    row("text", "FIELD=TEXT", "discovery reports this text; \\xNN stands for any byte");
}

void tst_Fault::describesFaults()
{
    const FaultDescription *const kind = findFault(QTest::currentDataTag());
    QVERIFY(kind != nullptr);
    QTEST(kind->valueName + ""s, "value");
    QTEST(kind->description + ""s, "description");
}

void tst_Fault::theFieldsAreThoseOfARecord()
{
    DeviceInfo record;
    for (const RecordField &field : recordFields()) {
        QCOMPARE(findRecordField(field.name), &field);
        QVERIFY2((record.*field.member).empty(), field.name); // none has another's member
        record.*field.member = field.name;
    }
    QCOMPARE(record.auxiliaryText1, "auxiliaryText1"s);
    QCOMPARE(record.modelName, "modelName"s);
    QCOMPARE(record.serialNumber, "serialNumber"s);
    QCOMPARE(record.auxiliaryText2, "auxiliaryText2"s);
    QCOMPARE(record.firmwareVersion, "firmwareVersion"s);
    QCOMPARE(record.firmwareFileName, "firmwareFileName"s);
    QCOMPARE(record.newFirmwareVersion, "newFirmwareVersion"s);
    QCOMPARE(recordFieldNames(),
        "auxiliaryText1, modelName, serialNumber, auxiliaryText2, firmwareVersion, firmwareFileName, "
        "newFirmwareVersion"s);
}

void tst_Fault::findsByExactName()
{
    for (const char *name : {"", "smoke", "chip", "chipsets", "Chipset"}) {
        QVERIFY2(findFault(name) == nullptr, name);
        QVERIFY2(findRecordField(name) == nullptr, name);
    }
}

void tst_Fault::isUsedUpByItsEventAlone_data()
{
    QTest::addColumn<UsedUpBy>("event");
    QTest::addColumn<std::string>("usedUp");
    QTest::newRow("query") << UsedUpBy::Query
                           << "slow-probe, duplicate-serial, firmware-status, configuration-status, chipset, "
                              "vendor-id, product-id, text"s;
    QTest::newRow("settling") << UsedUpBy::Settling << "settle-queries, settle-time"s;
    QTest::newRow("unplugging") << UsedUpBy::Unplugging << "never-settles"s;
    QTest::newRow("power-up") << UsedUpBy::PowerUp << "no-return, new-serial"s;
    QTest::newRow("image check") << UsedUpBy::ImageCheck << "wrong-image, truncated-image"s;
    QTest::newRow("striking") << UsedUpBy::Striking << "flash-error, verify-error, pulled-out"s;
    QTest::newRow("unmounting") << UsedUpBy::Unmounting << "unmount-returns"s;
}

void tst_Fault::isUsedUpByItsEventAlone()
{
    QFETCH(UsedUpBy, event);
    QFETCH(std::string, usedUp);
    std::vector<Fault> all;
    for (const FaultDescription &kind : faultDescriptions()) {
        all.push_back(parseFault(kind, anyValue(kind)));
    }
    std::vector<Fault> faults = all;
    useUp(&faults, event);
    QCOMPARE(faultNames(faults), faultNames(all)); // none is set for once

    for (Fault &fault : faults) {
        fault.once = true;
    }
    useUp(&faults, event);
    std::vector<Fault> gone;
    std::copy_if(all.begin(), all.end(), std::back_inserter(gone),
        [&faults](const Fault &fault) { return findFault(faults, fault.kind) == nullptr; });
    QCOMPARE(faultNames(gone), usedUp);
}

void tst_Fault::isUsedUpByItsKind()
{
    std::vector<Fault> faults = {numberFault(FaultKind::FlashError, 1, true),
        numberFault(FaultKind::VerifyError), numberFault(FaultKind::PulledOut, 2, true)};
    useUp(&faults, FaultKind::VerifyError);
    useUp(&faults, FaultKind::NoReturn);
    QCOMPARE(faultNames(faults), "flash-error, verify-error, pulled-out"s);
    useUp(&faults, FaultKind::FlashError);
    QCOMPARE(faultNames(faults), "verify-error, pulled-out"s);
}

void tst_Fault::isFoundAndRemoved()
{
    std::vector<Fault> faults = {numberFault(FaultKind::Chipset, 4), numberFault(FaultKind::Chipset, 5),
        textFault(FaultKind::Text, "x", "modelName")};
    QCOMPARE(numberOf(faults, FaultKind::Chipset), std::int64_t(4));
    QCOMPARE(numberOf(faults, FaultKind::SlowProbe), std::int64_t(0));
    QVERIFY(findFault(faults, FaultKind::Text) == &faults.back());
    QVERIFY(findFault(faults, FaultKind::SlowProbe) == nullptr);
    QVERIFY(!removeFault(&faults, FaultKind::SlowProbe));
    QVERIFY(removeFault(&faults, FaultKind::Chipset));
    QCOMPARE(faultNames(faults), "text"s);
}

void tst_Fault::namesFaults()
{
    QCOMPARE(faultNames({}), ""s);
    QCOMPARE(faultNames({numberFault(FaultKind::NoReturn), numberFault(FaultKind::Chipset, 1)}),
        "no-return, chipset"s);
}

static const TestClass<tst_Fault> faultTests;

#include "tst_Fault.moc"
