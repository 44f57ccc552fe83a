#include "tests/support/DeviceRecords.h"
#include "tests/support/EventLoop.h"
#include "tests/support/PageFixture.h"
#include "tests/support/TestProgram.h"
#include "tests/support/WindowTexts.h"

#include <QSignalSpy>
#include <QThread>
#include <QtTest>

using DeviceRecords::usbDrive;

namespace {

DeviceInfo driveWith(std::int32_t firmwareStatus, std::int32_t configurationStatus)
{
    DeviceInfo drive = usbDrive();
    drive.firmwareStatus = firmwareStatus;
    drive.configurationStatus = configurationStatus;
    return drive;
}

QImage iconOf(const PageFixture &fixture, const QString &buttonText)
{
    return WindowProbe::button(fixture.window, buttonText)->icon().pixmap(16, 16).toImage();
}

QImage iconAt(const QString &path)
{
    return path.isEmpty() ? QImage() : QIcon(path).pixmap(16, 16).toImage();
}

} // namespace

class tst_DevicePageButtons : public QObject
{
    Q_OBJECT

private slots:
    void statusesDecideTheFirstButton_data();
    void statusesDecideTheFirstButton();
    void statusesDecideTheConfirmButton_data();
    void statusesDecideTheConfirmButton();
    void upToDateDriveOffersCloseWithoutIconWhichQuits_data();
    void upToDateDriveOffersCloseWithoutIconWhichQuits();
    void driveThatNeedsBothIsConfirmedWithUpdateFirmware();
    void driveThatNeedsConfigurationReadsUpdateConfigurationOnBothButtons();
    void driveOfUnknownStatusReadsUpdateWithTheWarningIconOnBothButtons_data();
    void driveOfUnknownStatusReadsUpdateWithTheWarningIconOnBothButtons();
    void buttonsRelayTheSerialNumber();
    void slotCalledTwiceReachesTheWindowThreeTimes();
    void serialNumberIsReadAsLatin1UpToAZeroByte();
    void buttonsActWhenTheyAreReleased_data();
    void buttonsActWhenTheyAreReleased();
    void choicesReachTheReceiverAtOnceOrOnItsOwnThread_data();
    void choicesReachTheReceiverAtOnceOrOnItsOwnThread();
    void signalsReachNobodyBeforeAButtonIsPressed();
    void cancelDoesNotEmitItsSignal();
};

void tst_DevicePageButtons::statusesDecideTheFirstButton_data()
{
    QTest::addColumn<int>("firmwareStatus");
    QTest::addColumn<int>("configurationStatus");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("icon");
    QTest::newRow("1, 1") << 1 << 1 << "Update Firmware and Configuration" << UpdatePicture;
    QTest::newRow("1, 2") << 1 << 2 << "Update Firmware" << UpdatePicture;
    QTest::newRow("1, 0") << 1 << 0 << "Update Firmware" << UpdatePicture;
    QTest::newRow("1, 3") << 1 << 3 << "Update Firmware" << UpdatePicture;
    QTest::newRow("2, 1") << 2 << 1 << "Update Configuration" << UpdatePicture;
    QTest::newRow("0, 1") << 0 << 1 << "Update Configuration" << UpdatePicture;
    QTest::newRow("3, 1") << 3 << 1 << "Update Configuration" << UpdatePicture;
    QTest::newRow("2, 2") << 2 << 2 << "Close"
                          << "";
    QTest::newRow("0, 0") << 0 << 0 << "Update" << WarningPicture;
    QTest::newRow("2, 3") << 2 << 3 << "Update" << WarningPicture;
    QTest::newRow("-1, 2") << -1 << 2 << "Update" << WarningPicture;
    QTest::newRow("3, 2") << 3 << 2 << "Update" << WarningPicture;
}

void tst_DevicePageButtons::statusesDecideTheFirstButton()
{
    QFETCH(int, firmwareStatus);
    QFETCH(int, configurationStatus);
    QFETCH(QString, text);
    QFETCH(QString, icon);
    PageFixture fixture(driveWith(firmwareStatus, configurationStatus));
    QCOMPARE(fixture.buttons(), QStringList{text});
    QCOMPARE(iconOf(fixture, text), iconAt(icon));
    QVERIFY(iconOf(fixture, text).isNull() == icon.isEmpty());
}

void tst_DevicePageButtons::statusesDecideTheConfirmButton_data()
{
    QTest::addColumn<int>("firmwareStatus");
    QTest::addColumn<int>("configurationStatus");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("icon");
    QTest::newRow("2, 2") << 2 << 2 << "Update Firmware and Configuration" << UpdatePicture;
    QTest::newRow("1, 1") << 1 << 1 << "Update Firmware" << UpdatePicture;
    QTest::newRow("1, 2") << 1 << 2 << "Update Firmware" << UpdatePicture;
    QTest::newRow("1, 0") << 1 << 0 << "Update Firmware" << UpdatePicture;
    QTest::newRow("2, 1") << 2 << 1 << "Update Configuration" << UpdatePicture;
    QTest::newRow("3, 1") << 3 << 1 << "Update Configuration" << UpdatePicture;
    QTest::newRow("0, 0") << 0 << 0 << "Update" << WarningPicture;
    QTest::newRow("3, 2") << 3 << 2 << "Update" << WarningPicture;
    QTest::newRow("2, 3") << 2 << 3 << "Update" << WarningPicture;
}

void tst_DevicePageButtons::statusesDecideTheConfirmButton()
{
    QFETCH(int, firmwareStatus);
    QFETCH(int, configurationStatus);
    QFETCH(QString, text);
    QFETCH(QString, icon);
    PageFixture fixture(driveWith(firmwareStatus, configurationStatus), &DeviceLayout::deviceSelected);
    QCOMPARE(fixture.buttons(), (QStringList{text, "Cancel"}));
    QCOMPARE(iconOf(fixture, text), iconAt(icon));
    QVERIFY(iconOf(fixture, "Cancel").isNull());
}

void tst_DevicePageButtons::upToDateDriveOffersCloseWithoutIconWhichQuits_data()
{
    QTest::addColumn<int>("chipsetType");
    for (const int chipsetType : {1, 2, 3, 4, 5, 6, 7, -1}) {
        QTest::newRow(qPrintable(QString::number(chipsetType))) << chipsetType;
    }
}

void tst_DevicePageButtons::upToDateDriveOffersCloseWithoutIconWhichQuits()
{
    QFETCH(int, chipsetType);
    DeviceInfo drive = driveWith(2, 2);
    drive.chipsetType = chipsetType;
    PageFixture fixture(drive);
    QCOMPARE(fixture.buttons(), QStringList{"Close"});
    QVERIFY(WindowProbe::button(fixture.window, "Close")->icon().isNull());
    QCOMPARE(exitCodeAfterQuitting([&fixture] { fixture.click("Close"); }), 0);
    QVERIFY(fixture.receiver.received.isEmpty());
}

void tst_DevicePageButtons::driveThatNeedsBothIsConfirmedWithUpdateFirmware()
{
    PageFixture listed(driveWith(1, 1));
    QCOMPARE(listed.buttons(), QStringList{"Update Firmware and Configuration"});
    PageFixture selected(driveWith(1, 1), &DeviceLayout::deviceSelected);
    QCOMPARE(selected.buttons(), (QStringList{"Update Firmware", "Cancel"}));
}

void tst_DevicePageButtons::driveThatNeedsConfigurationReadsUpdateConfigurationOnBothButtons()
{
    PageFixture listed(driveWith(2, 1));
    QCOMPARE(listed.buttons(), QStringList{"Update Configuration"});
    PageFixture selected(driveWith(2, 1), &DeviceLayout::deviceSelected);
    QCOMPARE(selected.buttons(), (QStringList{"Update Configuration", "Cancel"}));
}

void tst_DevicePageButtons::driveOfUnknownStatusReadsUpdateWithTheWarningIconOnBothButtons_data()
{
    QTest::addColumn<int>("firmwareStatus");
    QTest::newRow("0") << 0;
    QTest::newRow("3") << 3;
    QTest::newRow("-1") << -1;
}

void tst_DevicePageButtons::driveOfUnknownStatusReadsUpdateWithTheWarningIconOnBothButtons()
{
    QFETCH(int, firmwareStatus);
    PageFixture listed(driveWith(firmwareStatus, 0));
    QCOMPARE(listed.buttons(), QStringList{"Update"});
    QCOMPARE(iconOf(listed, "Update"), iconAt(WarningPicture));
    PageFixture selected(driveWith(firmwareStatus, 0), &DeviceLayout::deviceSelected);
    QCOMPARE(selected.buttons(), (QStringList{"Update", "Cancel"}));
    QCOMPARE(iconOf(selected, "Update"), iconAt(WarningPicture));
}

void tst_DevicePageButtons::buttonsRelayTheSerialNumber()
{
    PageFixture listed(usbDrive("SN-1"));
    QVERIFY(listed.click("Update Firmware and Configuration"));
    QCOMPARE(listed.receiver.received, QStringList{"updateDevice SN-1"});
    PageFixture selected(usbDrive("SN-2"), &DeviceLayout::deviceSelected);
    QVERIFY(selected.click("Cancel"));
    QVERIFY(selected.click("Update Firmware"));
    QCOMPARE(selected.receiver.received, (QStringList{"cancelUpdate", "startUpdate SN-2"}));
}

void tst_DevicePageButtons::slotCalledTwiceReachesTheWindowThreeTimes()
{
    // Each call connects anew, so the second emission arrives twice.
    PageFixture listed(usbDrive("SN"));
    listed.click("Update Firmware and Configuration");
    listed.click("Update Firmware and Configuration");
    QCOMPARE(listed.receiver.received, WindowProbe::repeated(3, "updateDevice SN"));
    PageFixture selected(usbDrive("SN"), &DeviceLayout::deviceSelected);
    selected.click("Update Firmware");
    selected.click("Update Firmware");
    QCOMPARE(selected.receiver.received, WindowProbe::repeated(3, "startUpdate SN"));
}

void tst_DevicePageButtons::serialNumberIsReadAsLatin1UpToAZeroByte()
{
    const DeviceInfo drive = usbDrive(std::string(" S\xE9\xFF \0hidden", 12));
    const QString serialNumber = " S" + QString(QChar(0xE9)) + QChar(0xFF) + ' ';
    PageFixture listed(drive);
    QVERIFY(listed.click("Update Firmware and Configuration"));
    QCOMPARE(listed.receiver.received, QStringList{"updateDevice " + serialNumber});
    PageFixture selected(drive, &DeviceLayout::deviceSelected);
    QVERIFY(selected.click("Update Firmware"));
    QCOMPARE(selected.receiver.received, QStringList{"startUpdate " + serialNumber});
}

void tst_DevicePageButtons::buttonsActWhenTheyAreReleased_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<StateFunction>("stateFunction");
    QTest::addColumn<QString>("text");
    QTest::newRow("update") << 1 << StateFunction(nullptr) << "Update Firmware and Configuration";
    QTest::newRow("close") << 2 << StateFunction(nullptr) << "Close";
    QTest::newRow("start") << 1 << &DeviceLayout::deviceSelected << "Update Firmware";
    QTest::newRow("cancel") << 1 << &DeviceLayout::deviceSelected << "Cancel";
    QTest::newRow("finish") << 1 << &DeviceLayout::updateFailure << "Finish";
}

void tst_DevicePageButtons::buttonsActWhenTheyAreReleased()
{
    QFETCH(int, status);
    QFETCH(StateFunction, stateFunction);
    QFETCH(QString, text);
    PageFixture fixture(driveWith(status, status), stateFunction);
    QPushButton *const button = WindowProbe::button(fixture.window, text);
    QTimer end;
    end.callOnTimeout([] { QCoreApplication::exit(7); });
    // Whoever presses a button by mistake moves the mouse away before letting it go.
    const int exitCode = exitCodeAfter([button, &end] {
        QTest::mousePress(button, Qt::LeftButton);
        QTest::mouseRelease(button, Qt::LeftButton, Qt::NoModifier, QPoint(-10, -10));
        end.start(0);
    });
    QCOMPARE(exitCode, 7);
    QVERIFY(fixture.receiver.received.isEmpty());
}

void tst_DevicePageButtons::choicesReachTheReceiverAtOnceOrOnItsOwnThread_data()
{
    QTest::addColumn<StateFunction>("stateFunction");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("call");
    QTest::newRow("update") << StateFunction(nullptr) << "Update Firmware and Configuration"
                            << "updateDevice USB-1";
    QTest::newRow("start") << &DeviceLayout::deviceSelected << "Update Firmware"
                           << "startUpdate USB-1";
    QTest::newRow("cancel") << &DeviceLayout::deviceSelected << "Cancel"
                            << "cancelUpdate";
}

void tst_DevicePageButtons::choicesReachTheReceiverAtOnceOrOnItsOwnThread()
{
    QFETCH(StateFunction, stateFunction);
    QFETCH(QString, text);
    QFETCH(QString, call);
    PageFixture direct(usbDrive(), stateFunction);
    WindowProbe::button(direct.window, text)->click();
    QCOMPARE(direct.receiver.received, QStringList{call});

    PageFixture fixture(usbDrive(), stateFunction);
    QThread thread;
    fixture.receiver.moveToThread(&thread);
    WindowProbe::button(fixture.window, text)->click();
    QVERIFY(fixture.receiver.received.isEmpty());
    QMetaObject::invokeMethod(
        &fixture.receiver, [&thread] { thread.quit(); }, Qt::QueuedConnection);
    thread.start();
    QVERIFY(thread.wait(5000));
    QCOMPARE(fixture.receiver.received, QStringList{call});
}

void tst_DevicePageButtons::signalsReachNobodyBeforeAButtonIsPressed()
{
    PageFixture fixture(usbDrive(), &DeviceLayout::deviceSelected);
    emit fixture.page->updateDevice("SN");
    emit fixture.page->startUpdate("SN");
    emit fixture.page->cancelUpdate();
    QVERIFY(fixture.receiver.received.isEmpty());
}

void tst_DevicePageButtons::cancelDoesNotEmitItsSignal()
{
    PageFixture fixture(usbDrive(), &DeviceLayout::deviceSelected);
    const QSignalSpy emitted(fixture.page, SIGNAL(cancelUpdate()));
    QVERIFY(emitted.isValid());
    QVERIFY(fixture.click("Cancel"));
    QCOMPARE(fixture.receiver.received, QStringList{"cancelUpdate"});
    QCOMPARE(emitted.size(), 0);
}

static const TestClass<tst_DevicePageButtons, QApplication> devicePageButtonsTests;
#include "tst_DevicePageButtons.moc"
