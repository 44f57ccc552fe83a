// SPDX-License-Identifier: MIT
#include "devices/DeviceDiscoveryThread.h"
#include "devices/DeviceInfo.h"
#include "tests/support/DeviceRecords.h"
#include "tests/support/TestProgram.h"

#include <QtTest>

#include <functional>
#include <tuple>
#include <type_traits>

using DeviceRecords::usbDrive;

namespace {

using Change = std::function<void(DeviceInfo &)>;

/// The twelve fields in their order; a field more does not compile.
[[maybe_unused]] auto fieldsOf(const DeviceInfo &record)
{
    const auto &[a, b, c, d, e, f, g, h, i, j, k, l] = record;
    return std::make_tuple(a, b, c, d, e, f, g, h, i, j, k, l);
}

const DeviceInfo Record{"1", 2, "3", "4", 5, "6", "7", "8", "9", 10, 11, 12};

} // namespace

Q_DECLARE_METATYPE(Change)

class tst_DeviceInfo : public QObject
{
    Q_OBJECT

private slots:
    void fieldsAreTheLibrarys();
    void codesAreTheLibrarys();
    void emptyRecordHasNoTextsAndZeroNumbers();
    void recordsThatDifferInOneFieldAreUnequal_data();
    void recordsThatDifferInOneFieldAreUnequal();
    void listTypeIsRegisteredUnderItsName();
    void copyOfAListSharesItsRecords();
};

void tst_DeviceInfo::fieldsAreTheLibrarys()
{
    using Text = std::string;
    using Narrow = std::uint16_t;
    using Wide = std::int32_t;
    QVERIFY((std::is_same_v<decltype(fieldsOf(Record)),
        std::tuple<Text, Narrow, Text, Text, Narrow, Text, Text, Text, Text, Wide, Wide, Wide>>));
    QVERIFY(std::is_standard_layout_v<DeviceInfo>);
    const std::vector<Text> texts{Record.auxiliaryText1, Record.modelName, Record.serialNumber,
        Record.auxiliaryText2, Record.firmwareVersion, Record.firmwareFileName, Record.newFirmwareVersion};
    QCOMPARE(texts, (std::vector<Text>{"1", "3", "4", "6", "7", "8", "9"}));
    const std::vector<int> numbers{Record.productId, Record.vendorId, Record.chipsetType,
        Record.firmwareStatus, Record.configurationStatus};
    QCOMPARE(numbers, (std::vector<int>{2, 5, 10, 11, 12}));
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
    QVERIFY(DeviceInfo() == (DeviceInfo{"", 0, "", "", 0, "", "", "", "", 0, 0, 0}));
}

void tst_DeviceInfo::recordsThatDifferInOneFieldAreUnequal_data()
{
    QTest::addColumn<Change>("change");
    const auto texts = [](const char *name, std::string DeviceInfo::*field) {
        QTest::addRow("%s: letter case", name) << Change([field](DeviceInfo &d) { (d.*field)[5] = 'A'; });
        QTest::addRow("%s: longer", name) << Change([field](DeviceInfo &d) { d.*field += ' '; });
        QTest::addRow("%s: zero byte", name) << Change([field](DeviceInfo &d) { d.*field += '\0'; });
        QTest::addRow("%s: behind a zero byte", name)
            << Change([field](DeviceInfo &d) { (d.*field).back() = '#'; });
        QTest::addRow("%s: empty", name) << Change([field](DeviceInfo &d) { (d.*field).clear(); });
    };
    texts("auxiliaryText1", &DeviceInfo::auxiliaryText1);
    texts("modelName", &DeviceInfo::modelName);
    texts("serialNumber", &DeviceInfo::serialNumber);
    texts("auxiliaryText2", &DeviceInfo::auxiliaryText2);
    texts("firmwareVersion", &DeviceInfo::firmwareVersion);
    texts("firmwareFileName", &DeviceInfo::firmwareFileName);
    texts("newFirmwareVersion", &DeviceInfo::newFirmwareVersion);
    const auto numbers = [](const char *name, auto field, const QList<int> &bits) {
        for (const int bit : bits) {
            QTest::addRow("%s: bit %d", name, bit) << Change([field, bit](DeviceInfo &d) {
                d.*field =
                    static_cast<std::decay_t<decltype(d.*field)>>(std::uint32_t(d.*field) ^ (1u << bit));
            });
        }
    };
    numbers("productId", &DeviceInfo::productId, {0, 15});
    numbers("vendorId", &DeviceInfo::vendorId, {0, 15});
    numbers("chipsetType", &DeviceInfo::chipsetType, {0, 15, 31});
    numbers("firmwareStatus", &DeviceInfo::firmwareStatus, {0, 15, 31});
    numbers("configurationStatus", &DeviceInfo::configurationStatus, {0, 15, 31});
}

void tst_DeviceInfo::recordsThatDifferInOneFieldAreUnequal()
{
    QFETCH(Change, change);
    DeviceInfo record = Record;
    for (std::string *text :
        {&record.auxiliaryText1, &record.modelName, &record.serialNumber, &record.auxiliaryText2,
            &record.firmwareVersion, &record.firmwareFileName, &record.newFirmwareVersion}) {
        *text = std::string("text a\0b", 8) + *text;
    }
    DeviceInfo changed = record;
    QVERIFY(changed == record && !(changed != record));
    change(changed);
    QVERIFY(changed != record && record != changed);
    QVERIFY(!(changed == record) && !(record == changed));
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
