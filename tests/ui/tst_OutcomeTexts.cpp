#include "tests/support/DeviceRecords.h"
#include "tests/support/PageFixture.h"
#include "tests/support/TestProgram.h"

#include <QtTest>

using DeviceRecords::usbDrive;

namespace {

const QString Unplug =
    "Please unplug and replug your Tarvo <b>Pebble</b> hard drive to power off and power on the device.";
const QString PowerButton = "Please use the power button on your Tarvo <b>Pebble</b> hard drive to power off "
                            "and power on the device.";
const QString Ready = "Your drive is now ready for use.";

/// A text of a page for that drive.
using Text = QString (*)(const DeviceInfo &);

QString modelLine(const DeviceInfo &device)
{
    return textOf(device, &DeviceLayout::messageModelName);
}

QString versionLine(const DeviceInfo &device)
{
    return textOf(device, &DeviceLayout::messageFirmwareVersion);
}

QString confirmationLine(const DeviceInfo &device)
{
    return textOf(device, &DeviceLayout::messageWarning);
}

QString restartLine(const DeviceInfo &device)
{
    return textOf(device, &DeviceLayout::messageSuccess);
}

QString failureLine(const DeviceInfo &device)
{
    return textOf(device, &DeviceLayout::messageFailure);
}

QString successLine(const DeviceInfo &device)
{
    return PageFixture(device, &DeviceLayout::updateSuccess).texts().first();
}

} // namespace

Q_DECLARE_METATYPE(Text)

class tst_OutcomeTexts : public QObject
{
    Q_OBJECT

private slots:
    void confirmation_data();
    void confirmation();
    void restartInstruction_data();
    void restartInstruction();
    void restartTableHoldsElevenAndFiveProductsInOneBlock();
    void bothRequiredNamesBothVersionsOldOneFirst();
    void onlyConfigurationRequiredNamesNoVersion();
    void emptyNamesAndVersionsStillYieldThePhrases();
    void failureIsTheSameForEveryStatus_data();
    void failureIsTheSameForEveryStatus();
    void undefinedTextsAreEmptyLabelsOfTheUsualLook();
    void valuesStandInTheTextAsTheyAre_data();
    void valuesStandInTheTextAsTheyAre();
    void placeholdersInValuesAreFilledByTheNextSubstitutions_data();
    void placeholdersInValuesAreFilledByTheNextSubstitutions();
};

void tst_OutcomeTexts::confirmation_data()
{
    QTest::addColumn<int>("firmwareStatus");
    QTest::addColumn<int>("configurationStatus");
    QTest::addColumn<QString>("text");
    const QString versions = "\"<b>1.2</b>\" => \"<b>1.3</b>\")";
    const QString opening = "You are about to update your Tarvo <b>Pebble</b>";
    QTest::newRow("1, 1") << 1 << 1 << opening + " firmware and configuration. (" + versions;
    for (const int other : {0, 2, 3, -1}) {
        QTest::newRow(qPrintable(QString("1, %1").arg(other)))
            << 1 << other << opening + " firmware. (" + versions;
        QTest::newRow(qPrintable(QString("%1, 1").arg(other))) << other << 1 << opening + " configuration.";
        QTest::newRow(qPrintable(QString("%1, 2").arg(other))) << other << 2 << "";
        QTest::newRow(qPrintable(QString("%1, 0").arg(other))) << other << 0 << "";
    }
}

void tst_OutcomeTexts::confirmation()
{
    QFETCH(int, firmwareStatus);
    QFETCH(int, configurationStatus);
    QFETCH(QString, text);
    DeviceInfo drive = usbDrive();
    drive.firmwareStatus = firmwareStatus;
    drive.configurationStatus = configurationStatus;
    QCOMPARE(textOf(drive, &DeviceLayout::messageWarning), text);
}

void tst_OutcomeTexts::restartInstruction_data()
{
    QTest::addColumn<int>("chipsetType");
    QTest::addColumn<int>("productId");
    QTest::addColumn<QString>("text");
    const auto row = [](int chipsetType, int productId, const QString &text) {
        QTest::newRow(qPrintable(QString("chipset %1, product %2").arg(chipsetType).arg(productId, 4, 16)))
            << chipsetType << productId << text;
    };
    for (const int chipsetType : {1, 2, 3}) {
        for (const int productId :
            {0x1A20, 0x1A21, 0x1A24, 0x1A27, 0x1A28, 0x1A2B, 0x1A2E, 0x1A2F, 0x1A33, 0x1A35, 0x1A38}) {
            row(chipsetType, productId, Unplug);
        }
        for (const int productId : {0x1A3C, 0x1A3D, 0x1A41, 0x1A46, 0x1A4D}) {
            row(chipsetType, productId, PowerButton);
        }
        for (const int productId : {0, 0x1A1F, 0x1A22, 0x1A3B, 0x1A4C, 0x1A4E, 0xFFFF}) {
            row(chipsetType, productId, "");
        }
    }
    for (const int productId : {0, 0x1A20, 0x1A3C}) {
        row(4, productId, Ready);
        row(6, productId, Ready);
        row(0, productId, "");
        row(5, productId, "");
        row(7, productId, "");
        row(-1, productId, "");
    }
}

void tst_OutcomeTexts::restartInstruction()
{
    QFETCH(int, chipsetType);
    QFETCH(int, productId);
    QFETCH(QString, text);
    DeviceInfo drive = usbDrive();
    drive.chipsetType = chipsetType;
    drive.productId = std::uint16_t(productId);
    QCOMPARE(textOf(drive, &DeviceLayout::messageSuccess), text);
}

void tst_OutcomeTexts::restartTableHoldsElevenAndFiveProductsInOneBlock()
{
    QList<int> unplug;
    QList<int> powerButton;
    PageReceiver receiver;
    for (int productId = 0x1900; productId < 0x1B00; ++productId) {
        DeviceInfo drive = usbDrive();
        drive.productId = std::uint16_t(productId);
        DeviceLayout page(&receiver, drive);
        const QString text = takeText(page.messageSuccess());
        if (text == Unplug) {
            unplug.append(productId);
        } else if (text == PowerButton) {
            powerButton.append(productId);
        } else {
            QCOMPARE(text, QString());
        }
    }
    QCOMPARE(unplug.size(), 11);
    QCOMPARE(powerButton.size(), 5);
    const QList<int> all = unplug + powerButton;
    QCOMPARE(*std::max_element(all.begin(), all.end()) - *std::min_element(all.begin(), all.end()) + 1, 46);
}

void tst_OutcomeTexts::bothRequiredNamesBothVersionsOldOneFirst()
{
    QCOMPARE(textOf(usbDrive(), &DeviceLayout::messageWarning),
        QString(
            "You are about to update your Tarvo <b>Pebble</b> firmware and configuration. (\"<b>1.2</b>\" => "
            "\"<b>1.3</b>\")"));
}

void tst_OutcomeTexts::onlyConfigurationRequiredNamesNoVersion()
{
    DeviceInfo drive = usbDrive();
    drive.firmwareStatus = Status::UpToDate;
    const QString text = textOf(drive, &DeviceLayout::messageWarning);
    QCOMPARE(text, QString("You are about to update your Tarvo <b>Pebble</b> configuration."));
    QVERIFY(!text.contains("1.2"));
    QVERIFY(!text.contains("1.3"));
}

void tst_OutcomeTexts::emptyNamesAndVersionsStillYieldThePhrases()
{
    DeviceInfo drive = usbDrive();
    drive.modelName.clear();
    drive.firmwareVersion.clear();
    drive.newFirmwareVersion.clear();
    QCOMPARE(textOf(drive, &DeviceLayout::messageWarning),
        QString("You are about to update your Tarvo <b></b> firmware and configuration. (\"<b></b>\" => "
                "\"<b></b>\")"));
    QCOMPARE(textOf(drive, &DeviceLayout::messageFailure),
        QString("Error while updating your Tarvo <b></b> device. Please retry."));
    QCOMPARE(textOf(drive, &DeviceLayout::messageSuccess),
        QString(
            "Please unplug and replug your Tarvo <b></b> hard drive to power off and power on the device."));
}

void tst_OutcomeTexts::failureIsTheSameForEveryStatus_data()
{
    QTest::addColumn<int>("firmwareStatus");
    QTest::addColumn<int>("configurationStatus");
    for (const int firmwareStatus : {0, 1, 2, 3}) {
        for (const int configurationStatus : {0, 1, 2, 3}) {
            QTest::newRow(qPrintable(QString("%1, %2").arg(firmwareStatus).arg(configurationStatus)))
                << firmwareStatus << configurationStatus;
        }
    }
}

void tst_OutcomeTexts::failureIsTheSameForEveryStatus()
{
    QFETCH(int, firmwareStatus);
    QFETCH(int, configurationStatus);
    DeviceInfo drive = usbDrive();
    drive.firmwareStatus = firmwareStatus;
    drive.configurationStatus = configurationStatus;
    QCOMPARE(textOf(drive, &DeviceLayout::messageFailure),
        QString("Error while updating your Tarvo <b>Pebble</b> device. Please retry."));
}

void tst_OutcomeTexts::undefinedTextsAreEmptyLabelsOfTheUsualLook()
{
    DeviceInfo drive = usbDrive();
    drive.chipsetType = Chipset::OxSemiFireWire934;
    drive.firmwareStatus = Status::UpToDate;
    drive.configurationStatus = Status::UpToDate;
    const PageFixture fixture(drive);
    for (const Builder builder : {&DeviceLayout::messageWarning, &DeviceLayout::messageSuccess}) {
        const std::unique_ptr<QLabel> label((fixture.page->*builder)());
        QVERIFY(label->text().isEmpty());
        QCOMPARE(label->font().pixelSize(), 10);
        QCOMPARE(label->maximumHeight(), 12);
        QVERIFY(label->parent() == nullptr);
    }
}

void tst_OutcomeTexts::valuesStandInTheTextAsTheyAre_data()
{
    QTest::addColumn<Text>("text");
    QTest::addColumn<int>("firmwareStatus");
    QTest::addColumn<int>("productId");
    QTest::newRow("model line") << Text(modelLine) << 1 << 0x1A20;
    QTest::newRow("two versions") << Text(versionLine) << 1 << 0x1A20;
    QTest::newRow("one version") << Text(versionLine) << 2 << 0x1A20;
    QTest::newRow("confirmation of firmware") << Text(confirmationLine) << 1 << 0x1A20;
    QTest::newRow("confirmation of configuration") << Text(confirmationLine) << 2 << 0x1A20;
    QTest::newRow("unplugging") << Text(restartLine) << 1 << 0x1A20;
    QTest::newRow("power button") << Text(restartLine) << 1 << 0x1A3C;
    QTest::newRow("failure") << Text(failureLine) << 1 << 0x1A20;
    QTest::newRow("success") << Text(successLine) << 1 << 0x1A20;
}

void tst_OutcomeTexts::valuesStandInTheTextAsTheyAre()
{
    QFETCH(Text, text);
    QFETCH(int, firmwareStatus);
    QFETCH(int, productId);
    DeviceInfo drive = usbDrive();
    drive.firmwareStatus = firmwareStatus;
    drive.productId = std::uint16_t(productId);
    QString expected = text(drive);
    // Latin-1 up to a zero byte, with every blank and every character of markup.
    drive.modelName = std::string("  P\xE9  & <i> \0hidden", 19);
    drive.firmwareVersion = std::string(" 1\xB7 2&amp; \0hidden", 18);
    drive.newFirmwareVersion = std::string(" <1>\xFC  3 \0hidden", 16);
    expected.replace("Pebble", "  P" + QString(QChar(0xE9)) + "  & <i> ");
    expected.replace("1.2", " 1" + QString(QChar(0xB7)) + " 2&amp; ");
    expected.replace("1.3", " <1>" + QString(QChar(0xFC)) + "  3 ");
    QCOMPARE(text(drive), expected);
}

void tst_OutcomeTexts::placeholdersInValuesAreFilledByTheNextSubstitutions_data()
{
    QTest::addColumn<Text>("text");
    QTest::addColumn<int>("firmwareStatus");
    QTest::addColumn<QByteArray>("modelName");
    QTest::addColumn<QByteArray>("version");
    QTest::addColumn<QByteArray>("newVersion");
    QTest::addColumn<QString>("expected");
    const QByteArray model = "Pebble";
    const QByteArray version = "1.2";
    const QByteArray newVersion = "1.3";
    QTest::newRow("model line") << Text(modelLine) << 1 << QByteArray("%1 %2") << version << newVersion
                                << "Tarvo %1 %2";
    QTest::newRow("two versions, old one") << Text(versionLine) << 1 << model << QByteArray("%3")
                                           << newVersion << "(firmware version: <b>1.3</b> => <b>1.3</b> )";
    QTest::newRow("two versions, old one names the last")
        << Text(versionLine) << 1 << model << QByteArray("%4") << newVersion
        << "(firmware version: <b>)</b> => <b>1.3</b> )";
    QTest::newRow("two versions, new one") << Text(versionLine) << 1 << model << version << QByteArray("%4")
                                           << "(firmware version: <b>1.2</b> => <b>)</b> )";
    QTest::newRow("one version") << Text(versionLine) << 2 << model << QByteArray("%3") << newVersion
                                 << "(firmware version: <b>)</b> )";
    QTest::newRow("one version, lower number") << Text(versionLine) << 2 << model << QByteArray("%2")
                                               << newVersion << "(firmware version: <b>)</b> %3";
    QTest::newRow("confirmation, model")
        << Text(confirmationLine) << 1 << QByteArray("%2") << version << newVersion
        << "You are about to update your Tarvo <b> firmware and configuration. (\"</b>1.2<b>\" => \"</b>1.3"
           "<b>\")</b>%7";
    QTest::newRow("confirmation, old version")
        << Text(confirmationLine) << 1 << model << QByteArray("%7") << newVersion
        << "You are about to update your Tarvo <b>Pebble</b> firmware and configuration. (\"<b>\")</b>\" => "
           "\"<b>1.3</b>\")";
    QTest::newRow("confirmation, new version")
        << Text(confirmationLine) << 1 << model << version << QByteArray("%1")
        << "You are about to update your Tarvo <b>Pebble</b> firmware and configuration. (\"<b>1.2</b>\" => "
           "\"<b>\")</b>%7";
    QTest::newRow("confirmation of configuration")
        << Text(confirmationLine) << 2 << QByteArray("%2") << version << newVersion
        << "You are about to update your Tarvo <b> configuration.</b>%3";
    QTest::newRow("restart")
        << Text(restartLine) << 1 << QByteArray("%2") << version << newVersion
        << "Please unplug and replug your Tarvo <b> hard drive to power off and power on "
           "the device.</b>%3";
    QTest::newRow("failure") << Text(failureLine) << 1 << QByteArray("%2") << version << newVersion
                             << "Error while updating your Tarvo <b> device. Please retry.</b>%3";
    QTest::newRow("success") << Text(successLine) << 1 << QByteArray("%2") << version << newVersion
                             << "Your Tarvo <b> has been successfully updated.</b>%3";
}

void tst_OutcomeTexts::placeholdersInValuesAreFilledByTheNextSubstitutions()
{
    QFETCH(Text, text);
    QFETCH(int, firmwareStatus);
    QFETCH(QByteArray, modelName);
    QFETCH(QByteArray, version);
    QFETCH(QByteArray, newVersion);
    QFETCH(QString, expected);
    DeviceInfo drive = usbDrive();
    drive.firmwareStatus = firmwareStatus;
    drive.modelName = modelName.toStdString();
    drive.firmwareVersion = version.toStdString();
    drive.newFirmwareVersion = newVersion.toStdString();
    QCOMPARE(text(drive), expected);
}

static const TestClass<tst_OutcomeTexts, QApplication> outcomeTextsTests;
#include "tst_OutcomeTexts.moc"
