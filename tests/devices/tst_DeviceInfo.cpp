#include "devices/DeviceDiscoveryThread.h"
#include "devices/DeviceInfo.h"
#include "tests/support/DeviceRecords.h"
#include "tests/support/TestProgram.h"

#include <QtTest>

#include <functional>
#include <type_traits>

using DeviceRecords::usbDrive;

namespace {

/// What the discovery library's interface prescribes, and nothing beside it.
struct Layout
{
    std::string auxiliaryText1;
    std::uint16_t productId;
    std::string modelName;
    std::string serialNumber;
    std::uint16_t vendorId;
    std::string auxiliaryText2;
    std::string firmwareVersion;
    std::string firmwareFileName;
    std::string newFirmwareVersion;
    std::int32_t chipsetType;
    std::int32_t firmwareStatus;
    std::int32_t configurationStatus;
};

/// Where each of the twelve fields lies; a field more does not compile.
template <typename Record>
QVector<qptrdiff> offsets(const Record &record)
{
    const auto &[a, b, c, d, e, f, g, h, i, j, k, l] = record;
    QVector<qptrdiff> offsets;
    for (const void *field :
        std::initializer_list<const void *>{&a, &b, &c, &d, &e, &f, &g, &h, &i, &j, &k, &l}) {
        offsets.append(static_cast<const char *>(field) - reinterpret_cast<const char *>(&record));
    }
    return offsets;
}

using Change = std::function<void(DeviceInfo &)>;

struct TextField
{
    const char *name;
    std::string DeviceInfo::*text;
};
const TextField textFields[] = {
    {"auxiliaryText1", &DeviceInfo::auxiliaryText1},
    {"modelName", &DeviceInfo::modelName},
    {"serialNumber", &DeviceInfo::serialNumber},
    {"auxiliaryText2", &DeviceInfo::auxiliaryText2},
    {"firmwareVersion", &DeviceInfo::firmwareVersion},
    {"firmwareFileName", &DeviceInfo::firmwareFileName},
    {"newFirmwareVersion", &DeviceInfo::newFirmwareVersion},
};

struct WideField
{
    const char *name;
    std::int32_t DeviceInfo::*number;
};
const WideField wideFields[] = {
    {"chipsetType", &DeviceInfo::chipsetType},
    {"firmwareStatus", &DeviceInfo::firmwareStatus},
    {"configurationStatus", &DeviceInfo::configurationStatus},
};

struct NarrowField
{
    const char *name;
    std::uint16_t DeviceInfo::*number;
};
const NarrowField narrowFields[] = {
    {"productId", &DeviceInfo::productId},
    {"vendorId", &DeviceInfo::vendorId},
};

} // namespace

Q_DECLARE_METATYPE(Change)

class tst_DeviceInfo : public QObject
{
    Q_OBJECT

private slots:
    void fieldsHaveTheLibrarysTypes();
    void fieldsLieAsTheLibraryLaysThem();
    void codesAreTheLibrarys();
    void emptyRecordHasNoTextsAndZeroNumbers();
    void copiesAreEqual();
    void recordsThatDifferInOneFieldAreUnequal_data();
    void recordsThatDifferInOneFieldAreUnequal();
    void sixteenBitFieldsHoldSixteenBits();
    void listTypeIsRegisteredUnderItsName();
    void copyOfAListSharesItsRecords();
};

void tst_DeviceInfo::fieldsHaveTheLibrarysTypes()
{
    QVERIFY((std::is_same_v<decltype(DeviceInfo::auxiliaryText1), std::string>));
    QVERIFY((std::is_same_v<decltype(DeviceInfo::productId), std::uint16_t>));
    QVERIFY((std::is_same_v<decltype(DeviceInfo::modelName), std::string>));
    QVERIFY((std::is_same_v<decltype(DeviceInfo::serialNumber), std::string>));
    QVERIFY((std::is_same_v<decltype(DeviceInfo::vendorId), std::uint16_t>));
    QVERIFY((std::is_same_v<decltype(DeviceInfo::auxiliaryText2), std::string>));
    QVERIFY((std::is_same_v<decltype(DeviceInfo::firmwareVersion), std::string>));
    QVERIFY((std::is_same_v<decltype(DeviceInfo::firmwareFileName), std::string>));
    QVERIFY((std::is_same_v<decltype(DeviceInfo::newFirmwareVersion), std::string>));
    QVERIFY((std::is_same_v<decltype(DeviceInfo::chipsetType), std::int32_t>));
    QVERIFY((std::is_same_v<decltype(DeviceInfo::firmwareStatus), std::int32_t>));
    QVERIFY((std::is_same_v<decltype(DeviceInfo::configurationStatus), std::int32_t>));
}

void tst_DeviceInfo::fieldsLieAsTheLibraryLaysThem()
{
    QCOMPARE(sizeof(DeviceInfo), sizeof(Layout));
    QVERIFY(std::is_standard_layout_v<DeviceInfo>);
    const DeviceInfo record;
    const QVector<qptrdiff> found = offsets(record);
    QCOMPARE(found, offsets(Layout()));
    const std::vector<const void *> fields = {&record.auxiliaryText1, &record.productId, &record.modelName,
        &record.serialNumber, &record.vendorId, &record.auxiliaryText2, &record.firmwareVersion,
        &record.firmwareFileName, &record.newFirmwareVersion, &record.chipsetType, &record.firmwareStatus,
        &record.configurationStatus};
    for (int index = 0; index < found.size(); ++index) {
        QCOMPARE(fields[std::size_t(index)],
            static_cast<const void *>(reinterpret_cast<const char *>(&record) + found[index]));
    }
}

void tst_DeviceInfo::codesAreTheLibrarys()
{
    const std::vector<int> chipsets = {Chipset::NotSupported, Chipset::Asm1051, Chipset::Asm1051E,
        Chipset::Asm1053, Chipset::NoUpdater, Chipset::OxSemiFireWire934, Chipset::OxSemiFireWire944};
    QCOMPARE(chipsets, (std::vector<int>{0, 1, 2, 3, 4, 5, 6}));
    const std::vector<int> statuses = {Status::NotYetDetermined, Status::UpdateRequired, Status::UpToDate};
    QCOMPARE(statuses, (std::vector<int>{0, 1, 2}));
    QCOMPARE(int(Vendor::Usb), 3706);
    QCOMPARE(int(Vendor::FireWire), 50658);

    std::vector<int> usbBridges;
    for (int chipset = -300; chipset <= 300; ++chipset) {
        if (Chipset::isUsbBridge(chipset)) {
            usbBridges.push_back(chipset);
        }
    }
    QCOMPARE(usbBridges, (std::vector<int>{1, 2, 3}));
}

void tst_DeviceInfo::emptyRecordHasNoTextsAndZeroNumbers()
{
    const DeviceInfo record;
    for (const TextField &field : textFields) {
        QVERIFY2((record.*field.text).empty(), field.name);
    }
    QCOMPARE(record.productId, std::uint16_t(0));
    QCOMPARE(record.vendorId, std::uint16_t(0));
    QCOMPARE(record.chipsetType, 0);
    QCOMPARE(record.firmwareStatus, 0);
    QCOMPARE(record.configurationStatus, 0);
}

void tst_DeviceInfo::copiesAreEqual()
{
    const DeviceInfo record = usbDrive();
    DeviceInfo assigned;
    assigned = record;
    QVERIFY(DeviceInfo(record) == record);
    QVERIFY(assigned == record);
    QVERIFY(!(assigned != record));
}

void tst_DeviceInfo::recordsThatDifferInOneFieldAreUnequal_data()
{
    QTest::addColumn<Change>("change");
    const auto row = [](const char *field, const char *way, const Change &change) {
        QTest::addRow("%s: %s", field, way) << change;
    };
    for (const auto &[name, text] : textFields) {
        const auto textRow = [row, name = name, text = text](
                                 const char *way, const std::function<void(std::string &)> &change) {
            row(name, way, [text, change](DeviceInfo &d) { change(d.*text); });
        };
        textRow("first character", [](std::string &t) { t.front() = '#'; });
        textRow("last character", [](std::string &t) { t.back() = '#'; });
        textRow("letter case", [](std::string &t) { t[5] = 'A'; });
        textRow("longer", [](std::string &t) { t += "x"; });
        textRow("blank at the end", [](std::string &t) { t += " "; });
        textRow("shorter", [](std::string &t) { t.pop_back(); });
        textRow("empty", [](std::string &t) { t.clear(); });
        textRow("zero byte at the end", [](std::string &t) { t += '\0'; });
        textRow("byte beyond ASCII", [](std::string &t) { t.back() = '\xE9'; });
        textRow("behind a zero byte", [](std::string &t) { t[t.find('\0') + 1] = '#'; });
    }
    for (const auto &[name, number] : narrowFields) {
        for (const int bit : {0, 7, 8, 15}) {
            const QByteArray way = "bit " + QByteArray::number(bit);
            row(name, way, [number = number, bit](DeviceInfo &d) {
                d.*number = std::uint16_t(d.*number ^ (1u << bit));
            });
        }
    }
    for (const auto &[name, number] : wideFields) {
        for (const int bit : {0, 1, 7, 8, 15, 16, 30, 31}) {
            const QByteArray way = "bit " + QByteArray::number(bit);
            row(name, way, [number = number, bit](DeviceInfo &d) {
                d.*number = std::int32_t(std::uint32_t(d.*number) ^ (1u << bit));
            });
        }
        row(name, "sign", [number = number](DeviceInfo &d) { d.*number = -(d.*number); });
        row(name, "unknown code", [number = number](DeviceInfo &d) { d.*number = 99; });
    }
}

void tst_DeviceInfo::recordsThatDifferInOneFieldAreUnequal()
{
    QFETCH(Change, change);
    // No two fields of a kind are equal.
    DeviceInfo record = usbDrive();
    record.chipsetType = Chipset::Asm1053;
    record.configurationStatus = Status::UpToDate;
    for (const TextField &field : textFields) {
        record.*field.text = std::string("text a\0b", 8) + field.name;
    }
    DeviceInfo changed = record;
    QVERIFY(changed == record && !(changed != record));
    change(changed);
    QVERIFY(changed != record && record != changed);
    QVERIFY(!(changed == record) && !(record == changed));
}

void tst_DeviceInfo::sixteenBitFieldsHoldSixteenBits()
{
    DeviceInfo record;
    record.productId = 0xFFFF;
    record.vendorId = 0xFFFF;
    QCOMPARE(int(record.productId), 65535);
    QCOMPARE(int(record.vendorId), 65535);
}

void tst_DeviceInfo::listTypeIsRegisteredUnderItsName()
{
    const int type = qRegisterMetaType<QVector<DeviceInfo>>("QVector<DeviceInfo>");
    const int method = DeviceDiscoveryThread::staticMetaObject.indexOfSignal(
        QMetaObject::normalizedSignature("updateDeviceList(QVector<DeviceInfo>)"));
    QCOMPARE(DeviceDiscoveryThread::staticMetaObject.method(method).parameterType(0), type);
}

void tst_DeviceInfo::copyOfAListSharesItsRecords()
{
    const QVector<DeviceInfo> list = {usbDrive("A"), usbDrive("B")};
    const QMetaType type(qRegisterMetaType<QVector<DeviceInfo>>("QVector<DeviceInfo>"));
    auto *const copy = static_cast<QVector<DeviceInfo> *>(type.create(&list));
    QVERIFY(*copy == list);
    QCOMPARE(copy->constData(), list.constData());
    type.destroy(copy);
    auto *const empty = static_cast<QVector<DeviceInfo> *>(type.create());
    QVERIFY(empty->isEmpty());
    type.destroy(empty);
}

static const TestClass<tst_DeviceInfo> deviceInfoTests;
#include "tst_DeviceInfo.moc"
