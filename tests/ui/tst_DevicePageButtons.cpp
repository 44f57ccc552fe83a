// SPDX-License-Identifier: MIT
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
    void statusesDecideTheButtons_data();
    void statusesDecideTheButtons();
    void closeOfAnUpToDateDriveQuits_data();
    void closeOfAnUpToDateDriveQuits();
    void buttonsRelayTheSerialNumberReadAsLatin1();
    void slotCalledTwiceReachesTheWindowThreeTimes();
    void buttonsActWhenTheyAreReleased_data();
    void buttonsActWhenTheyAreReleased();
    void choicesReachTheReceiverAtOnceOrOnItsOwnThread_data();
    void choicesReachTheReceiverAtOnceOrOnItsOwnThread();
    void signalsReachNobodyBeforeAButtonIsPressed();
};

void tst_DevicePageButtons::statusesDecideTheButtons_data()
{
    QTest::addColumn<int>("firmwareStatus");
    QTest::addColumn<int>("configurationStatus");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("firstIcon");
    QTest::addColumn<QString>("confirm");
    QTest::addColumn<QString>("confirmIcon");
    const auto row = [](int firmware, int configuration, const QString &first, const QString &firstIcon,
                         const QString &confirm, const QString &confirmIcon) {
        QTest::addRow("%d, %d: %s", firmware, configuration, qPrintable(first))
            << firmware << configuration << first << firstIcon << confirm << confirmIcon;
    };
    const QString both = "Update Firmware and Configuration";
    row(1, 1, both, UpdatePicture, "Update Firmware", UpdatePicture);
    row(2, 2, "Close", "", both, UpdatePicture);
    for (const int other : {-1, 0, 2, 3}) {
        row(1, other, "Update Firmware", UpdatePicture, "Update Firmware", UpdatePicture);
        row(other, 1, "Update Configuration", UpdatePicture, "Update Configuration", UpdatePicture);
        row(other, 0, "Update", WarningPicture, "Update", WarningPicture);
        row(other, 3, "Update", WarningPicture, "Update", WarningPicture);
    }
    for (const int unknown : {-1, 0, 3}) {
        row(unknown, 2, "Update", WarningPicture, "Update", WarningPicture);
    }
}

void tst_DevicePageButtons::statusesDecideTheButtons()
{
    QFETCH(int, firmwareStatus);
    QFETCH(int, configurationStatus);
    QFETCH(QString, first);
    QFETCH(QString, firstIcon);
    QFETCH(QString, confirm);
    QFETCH(QString, confirmIcon);
    const PageFixture listed(driveWith(firmwareStatus, configurationStatus));
    QCOMPARE(listed.buttons(), QStringList{first});
    QCOMPARE(iconOf(listed, first), iconAt(firstIcon));
    const PageFixture selected(driveWith(firmwareStatus, configurationStatus), &DeviceLayout::deviceSelected);
    QCOMPARE(selected.buttons(), (QStringList{confirm, "Cancel"}));
    QCOMPARE(iconOf(selected, confirm), iconAt(confirmIcon));
    QVERIFY(iconOf(selected, "Cancel").isNull());
}

void tst_DevicePageButtons::closeOfAnUpToDateDriveQuits_data()
{
    QTest::addColumn<int>("chipsetType");
    for (const int chipsetType : {1, 2, 3, 4, 5, 6, 7, -1}) {
        QTest::addRow("%d", chipsetType) << chipsetType;
    }
}

void tst_DevicePageButtons::closeOfAnUpToDateDriveQuits()
{
    QFETCH(int, chipsetType);
    DeviceInfo drive = driveWith(2, 2);
    drive.chipsetType = chipsetType;
    PageFixture fixture(drive);
    QCOMPARE(exitCodeAfterQuitting([&fixture] { fixture.click("Close"); }), 0);
    QVERIFY(fixture.receiver.received.isEmpty());
}

void tst_DevicePageButtons::buttonsRelayTheSerialNumberReadAsLatin1()
{
    const DeviceInfo drive = usbDrive(std::string(" S\xE9\xFF \0hidden", 12));
    const QString serialNumber = " S" + QString(QChar(0xE9)) + QChar(0xFF) + ' ';
    PageFixture listed(drive);
    QVERIFY(listed.click("Update Firmware and Configuration"));
    QCOMPARE(listed.receiver.received, QStringList{"updateDevice " + serialNumber});
    PageFixture selected(drive, &DeviceLayout::deviceSelected);
    const QSignalSpy cancelSignal(selected.page, SIGNAL(cancelUpdate()));
    QVERIFY(selected.click("Cancel"));
    QVERIFY(selected.click("Update Firmware"));
    QCOMPARE(selected.receiver.received, (QStringList{"cancelUpdate", "startUpdate " + serialNumber}));
    // It is declared, and never emitted.
    QCOMPARE(cancelSignal.size(), 0);
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
    const auto row = [](StateFunction stateFunction, const QString &text, const QString &call) {
        QTest::newRow(qPrintable(call)) << stateFunction << text << call;
    };
    row(nullptr, "Update Firmware and Configuration", "updateDevice USB-1");
    row(&DeviceLayout::deviceSelected, "Update Firmware", "startUpdate USB-1");
    row(&DeviceLayout::deviceSelected, "Cancel", "cancelUpdate");
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

static const TestClass<tst_DevicePageButtons, QApplication> devicePageButtonsTests;
#include "tst_DevicePageButtons.moc"
