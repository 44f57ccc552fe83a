#include "tests/support/DeviceRecords.h"
#include "tests/support/PageFixture.h"
#include "tests/support/TestProgram.h"
#include "tests/support/WindowTexts.h"

#include <QtTest>

#include <memory>

using DeviceRecords::usbDrive;

namespace {

DeviceInfo driveWith(std::int32_t chipsetType, std::int32_t firmwareStatus, std::int32_t configurationStatus)
{
    DeviceInfo drive = usbDrive();
    drive.chipsetType = chipsetType;
    drive.firmwareStatus = firmwareStatus;
    drive.configurationStatus = configurationStatus;
    return drive;
}

} // namespace

class tst_DeviceStatusTexts : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void everyBuiltLabelIsNewSmallAndParentless_data();
    void everyBuiltLabelIsNewSmallAndParentless();
    void modelName_data();
    void modelName();
    void firmwareVersion_data();
    void firmwareVersion();
    void firmwareStatusRow_data();
    void firmwareStatusRow();
    void configurationStatusRow_data();
    void configurationStatusRow();
    void instructions();
    void unsupportedBridgeIsSaidOnceWhateverTheStatuses();
    void chipsetFourIsTreatedAsSupported();
    void equalVersionsStillShowTheArrow();
    void firmwareStatusThreeIsUnknownOnBothLines();
    void emptyModelNameKeepsTheTrailingBlank();
    void markupInNamesAndVersionsIsInsertedAsItStands();
    void placeholdersInNamesAreFilledByTheLaterSubstitutions();
    void textsAreReadAsLatin1UpToAZeroByte();
};

/// The pictures that a builder made beside its text belong to nobody in these tests.
void tst_DeviceStatusTexts::cleanup()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (qobject_cast<QLabel *>(widget) != nullptr) {
            delete widget;
        }
    }
}

void tst_DeviceStatusTexts::everyBuiltLabelIsNewSmallAndParentless_data()
{
    QTest::addColumn<Builder>("builder");
    QTest::newRow("messageModelName") << Builder(&DeviceLayout::messageModelName);
    QTest::newRow("messageFirmwareVersion") << Builder(&DeviceLayout::messageFirmwareVersion);
    QTest::newRow("messageFirmwareStatus") << Builder(&DeviceLayout::messageFirmwareStatus);
    QTest::newRow("messageConfigurationStatus") << Builder(&DeviceLayout::messageConfigurationStatus);
    QTest::newRow("messageInstructions") << Builder(&DeviceLayout::messageInstructions);
    QTest::newRow("messageWarning") << Builder(&DeviceLayout::messageWarning);
    QTest::newRow("messageSuccess") << Builder(&DeviceLayout::messageSuccess);
    QTest::newRow("messageFailure") << Builder(&DeviceLayout::messageFailure);
}

void tst_DeviceStatusTexts::everyBuiltLabelIsNewSmallAndParentless()
{
    QFETCH(Builder, builder);
    const PageFixture fixture(usbDrive());
    const std::unique_ptr<QLabel> label((fixture.page->*builder)());
    const std::unique_ptr<QLabel> another((fixture.page->*builder)());
    QVERIFY(label != another);
    QVERIFY(label->parent() == nullptr);
    QCOMPARE(label->minimumHeight(), 12);
    QCOMPARE(label->maximumHeight(), 12);
    QCOMPARE(label->font().pixelSize(), 10);
    QCOMPARE(label->font().family(), QApplication::font().family());
    QVERIFY(!label->wordWrap());
}

void tst_DeviceStatusTexts::modelName_data()
{
    QTest::addColumn<QByteArray>("modelName");
    QTest::addColumn<QString>("text");
    QTest::newRow("plain") << QByteArray("Example") << "Tarvo Example";
    QTest::newRow("with blanks") << QByteArray("Harbour (FireWire 800)") << "Tarvo Harbour (FireWire 800)";
}

void tst_DeviceStatusTexts::modelName()
{
    QFETCH(QByteArray, modelName);
    QFETCH(QString, text);
    DeviceInfo drive = usbDrive();
    drive.modelName = modelName.toStdString();
    QCOMPARE(textOf(drive, &DeviceLayout::messageModelName), text);
}

void tst_DeviceStatusTexts::firmwareVersion_data()
{
    QTest::addColumn<int>("chipsetType");
    QTest::addColumn<int>("firmwareStatus");
    QTest::addColumn<QString>("text");
    const QString both = "(firmware version: <b>1.2</b> => <b>1.3</b> )";
    const QString one = "(firmware version: <b>1.2</b> )";
    const QString unknown = "<b>Unknown firmware version !</b>";
    for (const int status : {0, 1, 2, 3}) {
        QTest::newRow(qPrintable(QString("not supported, %1").arg(status))) << 0 << status << "";
    }
    for (const int chipset : {1, 2, 3, 4, 5, 6, 7, -1}) {
        QTest::newRow(qPrintable(QString("%1, update required").arg(chipset))) << chipset << 1 << both;
        QTest::newRow(qPrintable(QString("%1, up to date").arg(chipset))) << chipset << 2 << one;
        QTest::newRow(qPrintable(QString("%1, not determined").arg(chipset))) << chipset << 0 << unknown;
        QTest::newRow(qPrintable(QString("%1, unknown").arg(chipset))) << chipset << 3 << unknown;
        QTest::newRow(qPrintable(QString("%1, negative").arg(chipset))) << chipset << -1 << unknown;
    }
}

void tst_DeviceStatusTexts::firmwareVersion()
{
    QFETCH(int, chipsetType);
    QFETCH(int, firmwareStatus);
    QFETCH(QString, text);
    QCOMPARE(textOf(driveWith(chipsetType, firmwareStatus, 2), &DeviceLayout::messageFirmwareVersion), text);
}

void tst_DeviceStatusTexts::firmwareStatusRow_data()
{
    QTest::addColumn<int>("chipsetType");
    QTest::addColumn<int>("firmwareStatus");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("picture");
    QTest::newRow("not supported") << 0 << 2 << "<b>Device not supported !</b>" << WarningPicture;
    QTest::newRow("update required") << 1 << 1 << "Firmware: Update required!" << UpdatePicture;
    QTest::newRow("up to date") << 1 << 2 << "Firmware: Up to date." << OkPicture;
    QTest::newRow("not determined") << 1 << 0 << "Firmware: Unknown status!" << WarningPicture;
    QTest::newRow("unknown") << 1 << 3 << "Firmware: Unknown status!" << WarningPicture;
    QTest::newRow("negative") << 1 << -1 << "Firmware: Unknown status!" << WarningPicture;
    QTest::newRow("negative chipset") << -1 << 2 << "Firmware: Up to date." << OkPicture;
}

void tst_DeviceStatusTexts::firmwareStatusRow()
{
    QFETCH(int, chipsetType);
    QFETCH(int, firmwareStatus);
    QFETCH(QString, text);
    QFETCH(QString, picture);
    const PageFixture fixture(driveWith(chipsetType, firmwareStatus, 2));
    QVERIFY(fixture.texts().contains(text));
    QCOMPARE(fixture.pictures().at(1), scaledPicture(picture, 20));
}

void tst_DeviceStatusTexts::configurationStatusRow_data()
{
    QTest::addColumn<int>("chipsetType");
    QTest::addColumn<int>("configurationStatus");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("picture");
    QTest::newRow("not supported") << 0 << 1 << ""
                                   << "";
    QTest::newRow("update required") << 1 << 1 << "Configuration: Update required!" << UpdatePicture;
    QTest::newRow("up to date") << 1 << 2 << "Configuration: Up to date." << OkPicture;
    QTest::newRow("not determined") << 1 << 0 << "Configuration: Unknown status!" << WarningPicture;
    QTest::newRow("unknown") << 1 << 3 << "Configuration: Unknown status!" << WarningPicture;
    QTest::newRow("negative") << 1 << -1 << "Configuration: Unknown status!" << WarningPicture;
    QTest::newRow("negative chipset") << -1 << 1 << "Configuration: Update required!" << UpdatePicture;
}

void tst_DeviceStatusTexts::configurationStatusRow()
{
    QFETCH(int, chipsetType);
    QFETCH(int, configurationStatus);
    QFETCH(QString, text);
    QFETCH(QString, picture);
    const PageFixture fixture(driveWith(chipsetType, 2, configurationStatus));
    if (picture.isEmpty()) {
        QVERIFY(fixture.texts().filter("Configuration").isEmpty());
        QCOMPARE(fixture.pictures().size(), 2);
    } else {
        QVERIFY(fixture.texts().contains(text));
        QCOMPARE(fixture.pictures().at(2), scaledPicture(picture, 20));
    }
}

void tst_DeviceStatusTexts::instructions()
{
    QCOMPARE(textOf(usbDrive(), &DeviceLayout::messageInstructions),
        QString(
            "To update your device, press <b>\"Update\"</b> button. To update later, press <b>\"Cancel\"</b> "
            "button."));
}

void tst_DeviceStatusTexts::unsupportedBridgeIsSaidOnceWhateverTheStatuses()
{
    const PageFixture fixture(driveWith(0, 1, 1));
    QCOMPARE(fixture.texts(), (QStringList{"Tarvo Pebble", "<b>Device not supported !</b>"}));
    QCOMPARE(fixture.pictures().size(), 2);
    QCOMPARE(fixture.pictures().at(1), scaledPicture(WarningPicture, 20));
}

void tst_DeviceStatusTexts::chipsetFourIsTreatedAsSupported()
{
    const PageFixture fixture(driveWith(4, 1, 2));
    QCOMPARE(fixture.texts(),
        (QStringList{"Tarvo Pebble", "(firmware version: <b>1.2</b> => <b>1.3</b> )",
            "Firmware: Update required!", "Configuration: Up to date."}));
}

void tst_DeviceStatusTexts::equalVersionsStillShowTheArrow()
{
    DeviceInfo drive = usbDrive();
    drive.newFirmwareVersion = drive.firmwareVersion;
    QCOMPARE(textOf(drive, &DeviceLayout::messageFirmwareVersion),
        QString("(firmware version: <b>1.2</b> => <b>1.2</b> )"));
}

void tst_DeviceStatusTexts::firmwareStatusThreeIsUnknownOnBothLines()
{
    const PageFixture fixture(driveWith(1, 3, 2));
    QVERIFY(fixture.texts().contains("<b>Unknown firmware version !</b>"));
    QVERIFY(fixture.texts().contains("Firmware: Unknown status!"));
    QCOMPARE(fixture.pictures().at(1), scaledPicture(WarningPicture, 20));
}

void tst_DeviceStatusTexts::emptyModelNameKeepsTheTrailingBlank()
{
    DeviceInfo drive = usbDrive();
    drive.modelName.clear();
    QCOMPARE(textOf(drive, &DeviceLayout::messageModelName), QString("Tarvo "));
}

void tst_DeviceStatusTexts::markupInNamesAndVersionsIsInsertedAsItStands()
{
    DeviceInfo drive = usbDrive();
    drive.modelName = "<i>Pebble</i> & Co";
    drive.firmwareVersion = "<1>";
    drive.newFirmwareVersion = "2 & 3";
    QCOMPARE(textOf(drive, &DeviceLayout::messageModelName), QString("Tarvo <i>Pebble</i> & Co"));
    QCOMPARE(textOf(drive, &DeviceLayout::messageFirmwareVersion),
        QString("(firmware version: <b><1></b> => <b>2 & 3</b> )"));
}

void tst_DeviceStatusTexts::placeholdersInNamesAreFilledByTheLaterSubstitutions()
{
    DeviceInfo drive = usbDrive();
    drive.firmwareVersion = "%3";
    QCOMPARE(textOf(drive, &DeviceLayout::messageFirmwareVersion),
        QString("(firmware version: <b>1.3</b> => <b>1.3</b> )"));
    drive.firmwareVersion = "1.2";
    drive.newFirmwareVersion = "%4";
    QCOMPARE(textOf(drive, &DeviceLayout::messageFirmwareVersion),
        QString("(firmware version: <b>1.2</b> => <b>)</b> )"));
    drive.modelName = "%1 %2";
    QCOMPARE(textOf(drive, &DeviceLayout::messageModelName), QString("Tarvo %1 %2"));
}

void tst_DeviceStatusTexts::textsAreReadAsLatin1UpToAZeroByte()
{
    DeviceInfo drive = usbDrive();
    drive.modelName = std::string("P\xE9"
                                  "bble\0hidden",
        12);
    QCOMPARE(textOf(drive, &DeviceLayout::messageModelName), "Tarvo P" + QString(QChar(0xE9)) + "bble");
}

static const TestClass<tst_DeviceStatusTexts, QApplication> deviceStatusTextsTests;
#include "tst_DeviceStatusTexts.moc"
