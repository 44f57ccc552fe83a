#include "devices/DeviceDiscoveryThread.h"
#include "devices/DeviceInfo.h"
#include "tests/support/DeviceRecords.h"

#include <QtTest>

#include <functional>
#include <type_traits>

using DeviceRecords::usbDrive;

Q_DECLARE_METATYPE(std::function<void(DeviceInfo &)>)

class tst_DeviceInfo : public QObject
{
    Q_OBJECT

private slots:
    void fieldsHaveTheLibrarysTypes();
    void fieldsLieInTheLibrarysOrder();
    void emptyRecordHasNoTextsAndZeroNumbers();
    void copiesAreEqual();
    void recordsThatDifferInOneFieldAreUnequal_data();
    void recordsThatDifferInOneFieldAreUnequal();
    void textsAreComparedBeyondAZeroByte();
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

void tst_DeviceInfo::fieldsLieInTheLibrarysOrder()
{
    const DeviceInfo record;
    const std::vector<const void *> addresses = {&record.auxiliaryText1, &record.productId, &record.modelName,
        &record.serialNumber, &record.vendorId, &record.auxiliaryText2, &record.firmwareVersion,
        &record.firmwareFileName, &record.newFirmwareVersion, &record.chipsetType, &record.firmwareStatus,
        &record.configurationStatus};
    QVERIFY(std::is_sorted(addresses.begin(), addresses.end(), std::less<>()));
}

void tst_DeviceInfo::emptyRecordHasNoTextsAndZeroNumbers()
{
    const DeviceInfo record;
    QVERIFY(record.modelName.empty() && record.serialNumber.empty() && record.firmwareFileName.empty());
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
    QTest::addColumn<std::function<void(DeviceInfo &)>>("change");
    const auto row = [](const char *field, const std::function<void(DeviceInfo &)> &change) {
        QTest::newRow(field) << change;
    };
    row("auxiliaryText1", [](DeviceInfo &d) { d.auxiliaryText1 += "x"; });
    row("productId", [](DeviceInfo &d) { d.productId = 0x1A21; });
    row("modelName", [](DeviceInfo &d) { d.modelName += "x"; });
    row("serialNumber", [](DeviceInfo &d) { d.serialNumber += "x"; });
    row("vendorId", [](DeviceInfo &d) { d.vendorId = Vendor::FireWire; });
    row("auxiliaryText2", [](DeviceInfo &d) { d.auxiliaryText2 += "x"; });
    row("firmwareVersion", [](DeviceInfo &d) { d.firmwareVersion += "x"; });
    row("firmwareFileName", [](DeviceInfo &d) { d.firmwareFileName += "x"; });
    row("newFirmwareVersion", [](DeviceInfo &d) { d.newFirmwareVersion += "x"; });
    row("chipsetType", [](DeviceInfo &d) { d.chipsetType = Chipset::Asm1053; });
    row("firmwareStatus", [](DeviceInfo &d) { d.firmwareStatus = Status::UpToDate; });
    row("configurationStatus", [](DeviceInfo &d) { d.configurationStatus = Status::UpToDate; });
}

void tst_DeviceInfo::recordsThatDifferInOneFieldAreUnequal()
{
    QFETCH(std::function<void(DeviceInfo &)>, change);
    DeviceInfo changed = usbDrive();
    change(changed);
    QVERIFY(changed != usbDrive());
    QVERIFY(usbDrive() != changed);
    QVERIFY(!(changed == usbDrive()));
}

void tst_DeviceInfo::textsAreComparedBeyondAZeroByte()
{
    DeviceInfo left = usbDrive();
    DeviceInfo right = usbDrive();
    left.auxiliaryText1 = std::string("a\0b", 3);
    right.auxiliaryText1 = std::string("a\0c", 3);
    QVERIFY(left != right);
    right.auxiliaryText1 = "a";
    QVERIFY(left != right);
    right.auxiliaryText1 = std::string("a\0b", 3);
    QVERIFY(left == right);
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

QTEST_APPLESS_MAIN(tst_DeviceInfo)
#include "tst_DeviceInfo.moc"
