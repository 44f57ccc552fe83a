#include "tests/support/DeviceRecords.h"
#include "tests/support/TestProgram.h"
#include "tests/support/WindowTexts.h"
#include "tests/ui/WindowFixture.h"
#include "tests/ui/WindowMembers.h"

#include <QPushButton>
#include <QtTest>

using DeviceRecords::fireWireDrive;
using DeviceRecords::usbDrive;

namespace {

DeviceInfo upToDate(DeviceInfo drive)
{
    drive.firmwareVersion = drive.newFirmwareVersion;
    drive.firmwareStatus = Status::UpToDate;
    drive.configurationStatus = Status::UpToDate;
    return drive;
}

const QString ConfirmationLine =
    "You are about to update your Tarvo <b>Pebble</b> firmware and configuration. "
    "(\"<b>1.2</b>\" => \"<b>1.3</b>\")";
const QString InProgressLine = "<b>DO NOT disconnect the device during the firmware update.</b>";
const QString RestartLine =
    "Please unplug and replug your Tarvo <b>Pebble</b> hard drive to power off and power on the device.";

/// The restart page has the same line, but no button.
bool showsSuccess(const WindowFixture &fixture)
{
    return fixture.texts().contains(SuccessLine) && fixture.buttons().contains("Finish");
}

/// The window with drive "A", whose update has come to the restart.
class RestartFixture : public WindowFixture
{
public:
    RestartFixture()
    {
        // The results are the test's, not the workers'.
        ScriptedPlatform::holdFlashes();
        deliver({usbDrive("A"), other});
        click("Update Firmware and Configuration");
        click("Update Firmware");
        finish(true);
    }

    DeviceInfo other = fireWireDrive("OTHER");
};

} // namespace

class tst_DeviceListReconciliation : public QObject
{
    Q_OBJECT

private slots:
    void sameListTwiceRebuildsNothing();
    void emptyListOnAnEmptyWindowRebuildsNothing();
    void changeOfTheListRebuilds_data();
    void changeOfTheListRebuilds();
    void statusFromZeroToOneRebuildsTheWholeWindow();
    void swappedDrivesAreAChange();
    void lastDriveUnpluggedShowsTheNoDriveMessage();
    void changedListInEachState_data();
    void changedListInEachState();
    void updatedDriveIsFollowedOutAndBackIn();
    void otherDriveChangingDuringTheRestartRebuildsNothing();
    void driveBackAsAChangedRecordIsStillTheDrive();
    void serialNumberWithHighBytesStillMatches();
    void duplicateSerialNumbersEachCount();
    void unpluggedFlagIsClearedByTheNextRestart();
    void unpluggedFlagSurvivesTheReturn();
    void serialNumberInOtherLettersIsAnotherDrive();
    void changeDuringConfirmationKeepsThePageAndItsButtonsWork_data();
    void changeDuringConfirmationKeepsThePageAndItsButtonsWork();
};

void tst_DeviceListReconciliation::sameListTwiceRebuildsNothing()
{
    WindowFixture fixture;
    fixture.deliver({usbDrive("A"), fireWireDrive("B")});
    const QWidget *page = fixture.page();
    fixture.tools.forgetCalls();
    fixture.deliver({usbDrive("A"), fireWireDrive("B")});
    QCOMPARE(fixture.page(), page);
    QVERIFY(fixture.tools.calls().isEmpty());
}

void tst_DeviceListReconciliation::emptyListOnAnEmptyWindowRebuildsNothing()
{
    WindowFixture fixture;
    const QWidget *page = fixture.page();
    fixture.deliver({});
    QCOMPARE(fixture.page(), page);
}

void tst_DeviceListReconciliation::changeOfTheListRebuilds_data()
{
    QTest::addColumn<QVector<DeviceInfo>>("next");
    QTest::newRow("longer") << QVector<DeviceInfo>{usbDrive("A"), usbDrive("B"), usbDrive("C")};
    QTest::newRow("shorter") << QVector<DeviceInfo>{usbDrive("A")};
    QTest::newRow("empty") << QVector<DeviceInfo>{};
    QTest::newRow("another order") << QVector<DeviceInfo>{usbDrive("B"), usbDrive("A")};
    QTest::newRow("another drive") << QVector<DeviceInfo>{usbDrive("A"), usbDrive("C")};
    const auto changed = [](const char *field, auto DeviceInfo::*member, auto value) {
        DeviceInfo drive = usbDrive("B");
        drive.*member = value;
        QTest::newRow(field) << QVector<DeviceInfo>{usbDrive("A"), drive};
    };
    changed("auxiliary text 1 of the last drive", &DeviceInfo::auxiliaryText1, "other");
    changed("product ID", &DeviceInfo::productId, 0x1A21);
    changed("model name", &DeviceInfo::modelName, "pebble");
    changed("serial number", &DeviceInfo::serialNumber, "b");
    changed("vendor ID", &DeviceInfo::vendorId, 0);
    changed("auxiliary text 2", &DeviceInfo::auxiliaryText2, "other");
    changed("firmware version", &DeviceInfo::firmwareVersion, "1.2 ");
    changed("image", &DeviceInfo::firmwareFileName, "other.tfw");
    changed("new firmware version", &DeviceInfo::newFirmwareVersion, "");
    changed("chipset", &DeviceInfo::chipsetType, 2);
    changed("firmware status", &DeviceInfo::firmwareStatus, 2);
    changed("configuration status", &DeviceInfo::configurationStatus, 0);
}

void tst_DeviceListReconciliation::changeOfTheListRebuilds()
{
    QFETCH(QVector<DeviceInfo>, next);
    WindowFixture fixture;
    fixture.deliver({usbDrive("A"), usbDrive("B")});
    const QPointer<QWidget> page = fixture.page();
    fixture.tools.forgetCalls();
    fixture.deliver(next);
    QVERIFY(page.isNull());
    QVERIFY(fixture.page() != nullptr);
    // One refresh, and so one companion check.
    QCOMPARE(fixture.tools.calls(), QStringList{"ls|/Library/LaunchDaemons"});
}

void tst_DeviceListReconciliation::statusFromZeroToOneRebuildsTheWholeWindow()
{
    WindowFixture fixture;
    DeviceInfo settling = usbDrive("A");
    settling.firmwareStatus = 0;
    fixture.deliver({settling, usbDrive("B")});
    const QPointer<QWidget> page = fixture.page();
    QVERIFY(fixture.texts().contains("Firmware: Unknown status!"));
    settling.firmwareStatus = 1;
    fixture.deliver({settling, usbDrive("B")});
    QVERIFY(page.isNull());
    QCOMPARE(fixture.texts().count("Firmware: Update required!"), 2);
}

void tst_DeviceListReconciliation::swappedDrivesAreAChange()
{
    WindowFixture fixture;
    DeviceInfo second = usbDrive("B");
    second.modelName = "Skiff";
    fixture.deliver({usbDrive("A"), second});
    fixture.deliver({second, usbDrive("A")});
    QTest::qWait(0);
    const QStringList texts = fixture.texts();
    QVERIFY(texts.indexOf("Tarvo Skiff") >= 0);
    QVERIFY(texts.indexOf("Tarvo Skiff") < texts.indexOf("Tarvo Pebble"));
}

void tst_DeviceListReconciliation::lastDriveUnpluggedShowsTheNoDriveMessage()
{
    WindowFixture fixture;
    fixture.deliver({usbDrive()});
    QVERIFY(!fixture.texts().first().contains("No compatible Tarvo device were found."));
    fixture.deliver({});
    QVERIFY(fixture.texts().first().contains("No compatible Tarvo device were found."));
    QCOMPARE(fixture.window.size(), QSize(850, 300));
}

void tst_DeviceListReconciliation::changedListInEachState_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("lineOfThePage");
    QTest::newRow("Idle") << 0 << "Tarvo Pebble";
    QTest::newRow("DeviceSelected") << 1 << ConfirmationLine;
    QTest::newRow("InProgress") << 2 << InProgressLine;
    QTest::newRow("Success") << 3 << SuccessLine;
    QTest::newRow("Failure") << 5 << FailureLine;
}

void tst_DeviceListReconciliation::changedListInEachState()
{
    QFETCH(int, state);
    QFETCH(QString, lineOfThePage);
    WindowFixture fixture;
    ScriptedPlatform::holdFlashes();
    fixture.deliver({usbDrive("A")});
    if (state != MainWindow::Idle) {
        QVERIFY(fixture.click("Update Firmware and Configuration"));
    }
    if (state > MainWindow::DeviceSelected) {
        QVERIFY(fixture.click("Update Firmware"));
    }
    if (state == MainWindow::Failure) {
        fixture.finish(false);
    }
    if (state == MainWindow::Success) {
        fixture.finish(true);
        fixture.deliver({});
        fixture.deliver({usbDrive("A")});
    }
    QVERIFY(fixture.texts().contains(lineOfThePage));
    QCOMPARE(showsSuccess(fixture), state == MainWindow::Success);

    // The first change rebuilds the page of the state, for the selected drive only ...
    const QPointer<QWidget> page = fixture.page();
    fixture.deliver({usbDrive("A"), fireWireDrive("B")});
    QVERIFY(page.isNull());
    QVERIFY(fixture.texts().contains(lineOfThePage));
    QCOMPARE(showsSuccess(fixture), state == MainWindow::Success);
    QCOMPARE(fixture.texts().contains("Tarvo Harbour FireWire"), state == MainWindow::Idle);

    // ... and the state is Idle from then on: the next one shows all drives.
    fixture.deliver({usbDrive("A"), fireWireDrive("C")});
    QVERIFY(fixture.texts().contains("Tarvo Pebble"));
    QVERIFY(fixture.texts().contains("Tarvo Harbour FireWire"));
}

void tst_DeviceListReconciliation::updatedDriveIsFollowedOutAndBackIn()
{
    RestartFixture fixture;
    QVERIFY(fixture.texts().contains(RestartLine));

    QWidget *restartPage = fixture.page();
    fixture.deliver({fixture.other});
    QCOMPARE(fixture.page(), restartPage);

    fixture.deliver({upToDate(usbDrive("A")), fixture.other});
    QVERIFY(fixture.page() != restartPage);
    QVERIFY(showsSuccess(fixture));
    QVERIFY(fixture.texts().contains("Firmware: Up to date."));
    QCOMPARE(fixture.buttons(), QStringList{"Finish"});

    // The next change shows the success page once more, the one after that all drives.
    fixture.deliver({upToDate(usbDrive("A"))});
    QVERIFY(showsSuccess(fixture));
    fixture.deliver({upToDate(usbDrive("A")), fixture.other});
    QVERIFY(!showsSuccess(fixture));
    QStringList buttons = fixture.buttons();
    buttons.sort();
    QCOMPARE(buttons, (QStringList{"Close", "Update Firmware and Configuration"}));
}

void tst_DeviceListReconciliation::otherDriveChangingDuringTheRestartRebuildsNothing()
{
    RestartFixture fixture;
    const QPointer<QWidget> restartPage = fixture.page();
    fixture.deliver({usbDrive("A")});
    fixture.deliver({usbDrive("A"), usbDrive("NEW")});
    QVERIFY(!restartPage.isNull());
    // The updated drive never went away, so its presence is no return.
    QVERIFY(fixture.texts().contains(RestartLine));
}

void tst_DeviceListReconciliation::driveBackAsAChangedRecordIsStillTheDrive()
{
    RestartFixture fixture;
    // A change of the drive itself, still attached, is not its return either.
    fixture.deliver({upToDate(usbDrive("A"))});
    QVERIFY(fixture.texts().contains(RestartLine));
    fixture.deliver({});
    fixture.deliver({usbDrive("SOMEONE ELSE")});
    QVERIFY(fixture.texts().contains(RestartLine));
    fixture.deliver({usbDrive("SOMEONE ELSE"), upToDate(usbDrive("A"))});
    QVERIFY(showsSuccess(fixture));
}

void tst_DeviceListReconciliation::serialNumberWithHighBytesStillMatches()
{
    WindowFixture fixture;
    const std::string serialNumber = "S\xC4\xFF\x80N";
    fixture.deliver({usbDrive("OTHER"), usbDrive(serialNumber)});
    QPushButton *button = fixture.window.findChildren<QPushButton *>().last();
    for (QPushButton *candidate : fixture.window.findChildren<QPushButton *>()) {
        if (candidate->isVisible()) {
            button = candidate;
        }
    }
    QVERIFY(WindowProbe::press(*button));
    QVERIFY(fixture.texts().contains(ConfirmationLine));
    QVERIFY(fixture.click("Update Firmware"));
    QTRY_COMPARE(ScriptedPlatform::count("Asm1051(" + QString::fromLatin1(serialNumber.c_str()) + ")"), 1);
    fixture.finish(true);
    fixture.deliver({usbDrive("OTHER")});
    fixture.deliver({usbDrive(serialNumber)});
    QVERIFY(showsSuccess(fixture));
}

void tst_DeviceListReconciliation::duplicateSerialNumbersEachCount()
{
    RestartFixture fixture;
    fixture.deliver({});
    fixture.tools.forgetCalls();
    fixture.deliver({usbDrive("A"), usbDrive("A")});
    // One refresh, and so one companion check, for each of the two records; both are shown.
    QCOMPARE(fixture.tools.calls(), WindowProbe::repeated(2, "ls|/Library/LaunchDaemons"));
    QCOMPARE(fixture.texts().count(SuccessLine), 2);
    QCOMPARE(fixture.buttons(), WindowProbe::repeated(2, "Finish"));
}

void tst_DeviceListReconciliation::unpluggedFlagIsClearedByTheNextRestart()
{
    RestartFixture fixture;
    fixture.deliver({});
    fixture.deliver({usbDrive("A")});
    QVERIFY(showsSuccess(fixture));
    fixture.deliver({});
    fixture.deliver({usbDrive("A")});
    QVERIFY(fixture.click("Update Firmware and Configuration"));
    QVERIFY(fixture.click("Update Firmware"));
    fixture.finish(true);
    QVERIFY(fixture.texts().contains(RestartLine));
    // Still attached: it has to go away once more before its presence means success.
    fixture.deliver({usbDrive("A"), fixture.other});
    QVERIFY(fixture.texts().contains(RestartLine));
    QTRY_COMPARE(ScriptedPlatform::count("updateDevice"), 2);
}

void tst_DeviceListReconciliation::unpluggedFlagSurvivesTheReturn()
{
    RestartFixture fixture;
    bool &unplugged = WindowMembers::updatedDeviceUnplugged(fixture.window);
    QVERIFY(!unplugged);
    fixture.deliver({usbDrive("A")});
    QVERIFY(!unplugged);
    fixture.deliver({});
    QVERIFY(unplugged);
    fixture.deliver({usbDrive("A")});
    QVERIFY(showsSuccess(fixture));
    QVERIFY(unplugged);
}

void tst_DeviceListReconciliation::serialNumberInOtherLettersIsAnotherDrive()
{
    RestartFixture fixture;
    fixture.deliver({});
    for (const char *serialNumber : {"a", "A ", " A", "AA", ""}) {
        fixture.deliver({usbDrive(serialNumber)});
        QVERIFY(fixture.texts().contains(RestartLine));
    }
    fixture.deliver({usbDrive(std::string("A\0hidden", 8))});
    QVERIFY(showsSuccess(fixture));
}

void tst_DeviceListReconciliation::changeDuringConfirmationKeepsThePageAndItsButtonsWork_data()
{
    QTest::addColumn<QString>("button");
    QTest::newRow("start") << "Update Firmware";
    QTest::newRow("cancel") << "Cancel";
}

void tst_DeviceListReconciliation::changeDuringConfirmationKeepsThePageAndItsButtonsWork()
{
    QFETCH(QString, button);
    WindowFixture fixture;
    ScriptedPlatform::holdFlashes();
    fixture.deliver({usbDrive("A")});
    QVERIFY(fixture.click("Update Firmware and Configuration"));
    fixture.deliver({usbDrive("A"), fireWireDrive("B")});
    QVERIFY(fixture.texts().contains(ConfirmationLine));
    QVERIFY(fixture.click(button));
    if (button == "Cancel") {
        QCOMPARE(fixture.buttons(), WindowProbe::repeated(2, "Update Firmware and Configuration"));
    } else {
        QVERIFY(fixture.texts().contains(InProgressLine));
        QTRY_COMPARE(ScriptedPlatform::count("Asm1051(A)"), 1);
    }
}

static const TestClass<tst_DeviceListReconciliation, QApplication> deviceListReconciliationTests;
#include "tst_DeviceListReconciliation.moc"
