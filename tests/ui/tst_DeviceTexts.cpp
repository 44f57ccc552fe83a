// SPDX-License-Identifier: MIT
#include "devices/DeviceTexts.h"
#include "tests/support/DeviceRecords.h"
#include "tests/support/TestProgram.h"

#include <QtTest>

using DeviceRecords::usbDrive;

namespace {

using Text = QString (*)(const DeviceInfo &);

const QList<int> EveryStatus{-1, 0, 1, 2, 3};
const QList<int> OtherStatuses{-1, 0, 3};
const QList<int> NotSupported{0};
const QList<int> Supported{1, 2, 3, 4, 5, 6, 7, -1};

DeviceInfo drive(int chipsetType, int firmwareStatus, int configurationStatus)
{
    DeviceInfo drive = usbDrive();
    drive.chipsetType = chipsetType;
    drive.firmwareStatus = firmwareStatus;
    drive.configurationStatus = configurationStatus;
    return drive;
}

DeviceInfo named(const std::string &modelName, const std::string &version, const std::string &newVersion)
{
    DeviceInfo drive = usbDrive();
    drive.modelName = modelName;
    drive.firmwareVersion = version;
    drive.newFirmwareVersion = newVersion;
    return drive;
}

/// A row for each combination of the codes, all with that text.
void addRows(const char *name, Text text, const QList<int> &chipsets, const QList<int> &firmware,
    const QList<int> &configuration, const QString &expected)
{
    for (const int chipset : chipsets) {
        for (const int first : firmware) {
            for (const int second : configuration) {
                QTest::addRow("%s, chipset %d, statuses %d and %d", name, chipset, first, second)
                    << text << drive(chipset, first, second) << expected;
            }
        }
    }
}

} // namespace

Q_DECLARE_METATYPE(Text)

class tst_DeviceTexts : public QObject
{
    Q_OBJECT

private slots:
    void codesDecideTheText_data();
    void codesDecideTheText();
    void restartIsThatOfTheProduct_data();
    void restartIsThatOfTheProduct();
    void edgeCase_data();
    void edgeCase();
    void valuesStandInTheTextAsTheyAre_data();
    void valuesStandInTheTextAsTheyAre();
};

void tst_DeviceTexts::codesDecideTheText_data()
{
    QTest::addColumn<Text>("text");
    QTest::addColumn<DeviceInfo>("device");
    QTest::addColumn<QString>("expected");

    const Text version = DeviceTexts::firmwareVersion;
    addRows("version", version, NotSupported, EveryStatus, {2}, "");
    addRows("version", version, Supported, {1}, {2}, "(firmware version: <b>1.2</b> => <b>1.3</b> )");
    addRows("version", version, Supported, {2}, {2}, "(firmware version: <b>1.2</b> )");
    addRows("version", version, Supported, OtherStatuses, {2}, "<b>Unknown firmware version !</b>");

    const Text firmware = DeviceTexts::firmwareStatus;
    addRows("firmware", firmware, NotSupported, EveryStatus, {1}, "<b>Device not supported !</b>");
    addRows("firmware", firmware, Supported, {1}, {2}, "Firmware: Update required!");
    addRows("firmware", firmware, Supported, {2}, {1}, "Firmware: Up to date.");
    addRows("firmware", firmware, Supported, OtherStatuses, {1}, "Firmware: Unknown status!");

    const Text configuration = DeviceTexts::configurationStatus;
    addRows("configuration", configuration, NotSupported, {1}, EveryStatus, "");
    addRows("configuration", configuration, Supported, {2}, {1}, "Configuration: Update required!");
    addRows("configuration", configuration, Supported, {1}, {2}, "Configuration: Up to date.");
    addRows("configuration", configuration, Supported, {1}, OtherStatuses, "Configuration: Unknown status!");

    const Text warning = DeviceTexts::warning;
    const QString opening = "You are about to update your Tarvo <b>Pebble</b>";
    const QString versions = "\"<b>1.2</b>\" => \"<b>1.3</b>\")";
    addRows("warning", warning, {1}, {1}, {1}, opening + " firmware and configuration. (" + versions);
    addRows("warning", warning, {1}, {1}, {-1, 0, 2, 3}, opening + " firmware. (" + versions);
    addRows("warning", warning, {1}, {-1, 0, 2, 3}, {1}, opening + " configuration.");
    addRows("warning", warning, {1}, {-1, 0, 2, 3}, {-1, 0, 2, 3}, "");

    const Text success = DeviceTexts::success;
    addRows("success", success, {4, 6}, {1}, {1}, "Your drive is now ready for use.");
    addRows("success", success, {0, 5, 7, -1}, {1}, {1}, "");

    addRows("updated", DeviceTexts::updated, {1}, {1}, {1},
        "Your Tarvo <b>Pebble</b> has been successfully updated.");
    addRows("failure", DeviceTexts::failure, {1}, EveryStatus, EveryStatus,
        "Error while updating your Tarvo <b>Pebble</b> device. Please retry.");
}

void tst_DeviceTexts::codesDecideTheText()
{
    QFETCH(Text, text);
    QFETCH(DeviceInfo, device);
    QFETCH(QString, expected);
    QCOMPARE(text(device), expected);
}

void tst_DeviceTexts::restartIsThatOfTheProduct_data()
{
    QTest::addColumn<int>("chipsetType");
    QTest::newRow("Asm1051") << 1;
    QTest::newRow("Asm1051E") << 2;
    QTest::newRow("Asm1053") << 3;
}

void tst_DeviceTexts::restartIsThatOfTheProduct()
{
    QFETCH(int, chipsetType);
    const QSet<int> unplugged{
        0x1A20, 0x1A21, 0x1A24, 0x1A27, 0x1A28, 0x1A2B, 0x1A2E, 0x1A2F, 0x1A33, 0x1A35, 0x1A38};
    const QSet<int> switchedOff{0x1A3C, 0x1A3D, 0x1A41, 0x1A46, 0x1A4D};
    const QString ending = "Tarvo <b>Pebble</b> hard drive to power off and power on the device.";
    DeviceInfo device = drive(chipsetType, 1, 1);
    for (int productId = 0; productId <= 0xFFFF; ++productId) {
        device.productId = std::uint16_t(productId);
        const QString expected = unplugged.contains(productId) ? "Please unplug and replug your " + ending
            : switchedOff.contains(productId) ? "Please use the power button on your " + ending
                                              : QString();
        QCOMPARE(DeviceTexts::success(device), expected);
    }
}

void tst_DeviceTexts::edgeCase_data()
{
    QTest::addColumn<Text>("text");
    QTest::addColumn<DeviceInfo>("device");
    QTest::addColumn<QString>("expected");
    const Text model = DeviceTexts::modelName;
    const Text version = DeviceTexts::firmwareVersion;
    const Text warning = DeviceTexts::warning;
    const Text instructions = [](const DeviceInfo &) { return DeviceTexts::instructions(); };
    QTest::newRow("the button is called Update whatever it reads")
        << instructions << drive(1, 2, 1)
        << "To update your device, press <b>\"Update\"</b> button. To update later, press <b>\"Cancel\"</b> "
           "button.";
    QTest::newRow("equal versions still show the arrow")
        << version << named("", "1.2", "1.2") << "(firmware version: <b>1.2</b> => <b>1.2</b> )";
    QTest::newRow("an empty model name keeps the trailing blank") << model << named("", "", "") << "Tarvo ";
    QTest::newRow("an empty name and versions leave empty bold runs")
        << warning << named("", "", "")
        << "You are about to update your Tarvo <b></b> firmware and configuration. (\"<b></b>\" => "
           "\"<b></b>\")";
    QTest::newRow("a placeholder in a name has nothing to be filled with")
        << model << named("%1 %2", "", "") << "Tarvo %1 %2";
    QTest::newRow("a placeholder in the old version is filled with the new one")
        << version << named("", "%3", "1.3") << "(firmware version: <b>1.3</b> => <b>1.3</b> )";
    QTest::newRow("a placeholder in the new version is filled with the next phrase")
        << version << named("", "1.2", "%4") << "(firmware version: <b>1.2</b> => <b>)</b> )";
    QTest::newRow("a placeholder in the model name is filled with the next phrase")
        << warning << named("%2", "1.2", "1.3")
        << "You are about to update your Tarvo <b> firmware and configuration. (\"</b>1.2<b>\" => "
           "\"</b>1.3<b>\")</b>%7";
    QTest::newRow("a placeholder in the name of a failure")
        << Text(DeviceTexts::failure) << named("%2", "", "")
        << "Error while updating your Tarvo <b> device. Please retry.</b>%3";
    QTest::newRow("a placeholder in the name of a success") << Text(
        DeviceTexts::updated) << named("%2", "", "") << "Your Tarvo <b> has been successfully updated.</b>%3";
    QTest::newRow("a placeholder in the name of a restart")
        << Text(DeviceTexts::success) << named("%2", "", "")
        << "Please unplug and replug your Tarvo <b> hard drive to power off and power on the device.</b>%3";
}

void tst_DeviceTexts::edgeCase()
{
    codesDecideTheText();
}

void tst_DeviceTexts::valuesStandInTheTextAsTheyAre_data()
{
    QTest::addColumn<Text>("text");
    QTest::addColumn<int>("firmwareStatus");
    QTest::newRow("model line") << Text(DeviceTexts::modelName) << 1;
    QTest::newRow("two versions") << Text(DeviceTexts::firmwareVersion) << 1;
    QTest::newRow("one version") << Text(DeviceTexts::firmwareVersion) << 2;
    QTest::newRow("confirmation of firmware") << Text(DeviceTexts::warning) << 1;
    QTest::newRow("confirmation of configuration") << Text(DeviceTexts::warning) << 2;
    QTest::newRow("restart") << Text(DeviceTexts::success) << 1;
    QTest::newRow("failure") << Text(DeviceTexts::failure) << 1;
    QTest::newRow("success") << Text(DeviceTexts::updated) << 1;
}

void tst_DeviceTexts::valuesStandInTheTextAsTheyAre()
{
    QFETCH(Text, text);
    QFETCH(int, firmwareStatus);
    QString expected = text(drive(1, firmwareStatus, 1));
    // Latin-1 up to a zero byte, with every blank and every character of markup.
    DeviceInfo device = named(std::string("  P\xE9  & <i> \0hidden", 19),
        std::string(" 1\xB7 2&amp; \0hidden", 18), std::string(" <1>\xFC  3 \0hidden", 16));
    device.firmwareStatus = firmwareStatus;
    expected.replace("Pebble", QString("  P%1  & <i> ").arg(QChar(0xE9)));
    expected.replace("1.2", QString(" 1%1 2&amp; ").arg(QChar(0xB7)));
    expected.replace("1.3", QString(" <1>%1  3 ").arg(QChar(0xFC)));
    QCOMPARE(text(device), expected);
}

static const TestClass<tst_DeviceTexts> deviceTextsTests;
#include "tst_DeviceTexts.moc"
