// SPDX-License-Identifier: MIT
#include "devices/DeviceDiscoveryThread.h"
#include "tests/support/DeviceRecords.h"
#include "tests/support/TestProgram.h"
#include "tests/support/WindowTexts.h"
#include "tests/ui/UpdateLook.h"
#include "tests/ui/WindowFixture.h"
#include "tests/ui/WindowMembers.h"

#include <QPushButton>
#include <QRegularExpression>
#include <QStackedWidget>
#include <QtTest>

#include <functional>
#include <memory>

using DeviceRecords::fireWireDrive;
using DeviceRecords::usbDrive;

namespace {

bool invoke(WindowFixture &fixture, const char *slot, const QString &serialNumber)
{
    return QMetaObject::invokeMethod(
        &fixture.window, slot, Qt::DirectConnection, Q_ARG(QString, serialNumber));
}

/// Calls the function for each page that a refresh puts in place, while that refresh is still under way.
class RefreshObserver : public QObject
{
public:
    RefreshObserver(const WindowFixture &fixture, const std::function<void()> &function)
    {
        connect(fixture.window.findChild<QStackedWidget *>(), &QStackedWidget::widgetRemoved, this, function);
    }
};

} // namespace

class tst_UpdateFlow : public QObject
{
    Q_OBJECT

private slots:
    void startRebuildsForEachMatchAndFlashesTheLast();
    void discoveryIsSwitchedBetweenTheRefreshes_data();
    void discoveryIsSwitchedBetweenTheRefreshes();
    void successRebuildsForEachRecordAndOnceMore_data();
    void successRebuildsForEachRecordAndOnceMore();
    void onlyARestartClearsItsFlags_data();
    void onlyARestartClearsItsFlags();
    void startOfADriveThatIsGoneStillStartsAWorkerWhichFails();
    void driveWithChipsetFourIsShownLikeASupportedOneButItsUpdateFails();
    void clicksOnPagesThatTheRefreshDeletesAreSound();
};

void tst_UpdateFlow::startRebuildsForEachMatchAndFlashesTheLast()
{
    WindowFixture fixture;
    DeviceInfo second = usbDrive("A");
    second.firmwareFileName = "second.tfw";
    fixture.deliver({usbDrive("A"), usbDrive("B"), second});
    fixture.tools.forgetCalls();
    QVERIFY(invoke(fixture, "startUpdate", "A"));
    QCOMPARE(fixture.tools.calls().size(), 2);
    // A worker of its own, whatever the first one does; both get the program's folder.
    QVERIFY(invoke(fixture, "startUpdate", "B"));
    QTRY_COMPARE(ScriptedPlatform::count("~Asm1051()"), 2);
    QStringList calls = ScriptedPlatform::calls().filter(QRegularExpression("^(Asm|updateDevice)"));
    calls.sort();
    QCOMPARE(calls,
        (QStringList{"Asm1051(A)", "Asm1051(B)", "updateDevice(/opt/tarvo/pebble.tfw)",
            "updateDevice(/opt/tarvo/second.tfw)"}));
}

void tst_UpdateFlow::discoveryIsSwitchedBetweenTheRefreshes_data()
{
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QList<bool>>("whileRefreshing");
    QTest::addColumn<bool>("afterwards");
    using Flags = QList<bool>;
    QTest::newRow("update") << true << QByteArray("updateDevice") << Flags{true} << true;
    QTest::newRow("start") << true << QByteArray("startUpdate") << Flags{false} << false;
    QTest::newRow("success") << false << QByteArray("success") << Flags{false, true} << true;
    QTest::newRow("failure") << false << QByteArray("failure") << Flags{false} << false;
    QTest::newRow("cancel") << false << QByteArray("cancelUpdate") << Flags{false} << false;
    QTest::newRow("cancel, enabled") << true << QByteArray("cancelUpdate") << Flags{true} << true;
    QTest::newRow("terminate") << false << QByteArray("terminateUpdate") << Flags{true} << true;
}

void tst_UpdateFlow::discoveryIsSwitchedBetweenTheRefreshes()
{
    QFETCH(bool, enabled);
    QFETCH(QByteArray, slot);
    QFETCH(QList<bool>, whileRefreshing);
    QFETCH(bool, afterwards);
    WindowFixture fixture;
    ScriptedPlatform::holdFlashes();
    fixture.deliver({usbDrive("A")});
    fixture.window.updateDevice("A");
    std::atomic<bool> &flag = WindowMembers::discoveryThread(fixture.window)->discoveryEnabled;
    QVERIFY(flag);
    flag = enabled;
    QList<bool> seen;
    const RefreshObserver observer(fixture, [&] { seen.append(flag); });
    if (slot == "success" || slot == "failure") {
        fixture.finish(slot == "success");
    } else if (slot == "updateDevice" || slot == "startUpdate") {
        QVERIFY(invoke(fixture, slot, "A"));
    } else {
        QVERIFY(QMetaObject::invokeMethod(&fixture.window, slot));
    }
    QCOMPARE(seen, whileRefreshing);
    QCOMPARE(bool(flag), afterwards);
}

void tst_UpdateFlow::successRebuildsForEachRecordAndOnceMore_data()
{
    QTest::addColumn<QVector<DeviceInfo>>("list");
    QTest::addColumn<QStringList>("looks");
    const DeviceInfo usb = usbDrive("A");
    const DeviceInfo fireWire = fireWireDrive("A");
    const DeviceInfo other = usbDrive("B");
    using List = QVector<DeviceInfo>;
    QTest::newRow("FireWire") << List{fireWire} << QStringList{"success", "success"};
    QTest::newRow("USB") << List{usb} << QStringList{"restart", "restart"};
    QTest::newRow("gone") << List{other} << QStringList{"nothing"};
    QTest::newRow("two records, the last is FireWire")
        << List{usb, other, fireWire} << QStringList{"restart of 2", "success of 2", "success of 2"};
    QTest::newRow("two records, the last is USB")
        << List{fireWire, other, usb} << QStringList{"success of 2", "restart of 2", "restart of 2"};
}

void tst_UpdateFlow::successRebuildsForEachRecordAndOnceMore()
{
    QFETCH(QVector<DeviceInfo>, list);
    QFETCH(QStringList, looks);
    WindowFixture fixture;
    fixture.deliver(list);
    fixture.window.updateDevice("A");
    QStringList seen;
    const RefreshObserver observer(fixture, [&] { seen.append(lookOf(fixture)); });
    fixture.finish(true);
    QCOMPARE(seen, looks);
}

void tst_UpdateFlow::onlyARestartClearsItsFlags_data()
{
    QTest::addColumn<DeviceInfo>("drive");
    QTest::addColumn<bool>("result");
    QTest::addColumn<bool>("flags");
    QTest::newRow("USB, success") << usbDrive("A") << true << false;
    QTest::newRow("FireWire, success") << fireWireDrive("A") << true << true;
    QTest::newRow("USB, failure") << usbDrive("A") << false << true;
    QTest::newRow("gone, success") << usbDrive("B") << true << true;
}

void tst_UpdateFlow::onlyARestartClearsItsFlags()
{
    QFETCH(DeviceInfo, drive);
    QFETCH(bool, result);
    QFETCH(bool, flags);
    WindowFixture fixture;
    bool &unplugged = WindowMembers::updatedDeviceUnplugged(fixture.window);
    bool &second = WindowMembers::restartSecondFlag(fixture.window);
    QVERIFY(!unplugged && !second);
    fixture.deliver({drive});
    fixture.window.updateDevice("A");
    unplugged = true;
    second = true;
    fixture.finish(result);
    QCOMPARE(unplugged, flags);
    QCOMPARE(second, flags);
}

void tst_UpdateFlow::startOfADriveThatIsGoneStillStartsAWorkerWhichFails()
{
    WindowFixture fixture;
    fixture.deliver({usbDrive("A")});
    const QWidget *page = fixture.page();
    QVERIFY(invoke(fixture, "startUpdate", "GONE"));
    QCOMPARE(fixture.page(), page);
    // The state is still Idle, in which a refresh shows all drives.
    fixture.window.updateWindow();
    QCOMPARE(lookOf(fixture), QString("list"));
    QTRY_COMPARE(lookOf(fixture), QString("nothing"));
    QVERIFY(fixture.texts() == QStringList{VersionText});
    QCOMPARE(ScriptedPlatform::count("updateDevice"), 0);
}

void tst_UpdateFlow::driveWithChipsetFourIsShownLikeASupportedOneButItsUpdateFails()
{
    WindowFixture fixture;
    DeviceInfo drive = usbDrive("A");
    drive.chipsetType = Chipset::NoUpdater;
    fixture.deliver({drive});
    QVERIFY(fixture.texts().contains("(firmware version: <b>1.2</b> => <b>1.3</b> )"));
    QVERIFY(fixture.texts().contains("Firmware: Update required!"));
    QVERIFY(fixture.click("Update Firmware and Configuration"));
    QVERIFY(fixture.click("Update Firmware"));
    QTRY_COMPARE(lookOf(fixture), QString("failure"));
    QCOMPARE(ScriptedPlatform::count("updateDevice"), 0);
}

void tst_UpdateFlow::clicksOnPagesThatTheRefreshDeletesAreSound()
{
    WindowFixture fixture;
    ScriptedPlatform::holdFlashes();
    fixture.deliver({usbDrive("A")});
    for (int turn = 0; turn < 5; ++turn) {
        const QPointer<QPushButton> update =
            WindowProbe::button(fixture.window, "Update Firmware and Configuration");
        QVERIFY(WindowProbe::press(*update));
        QVERIFY(update.isNull());
        const QPointer<QPushButton> cancel = WindowProbe::button(fixture.window, "Cancel");
        QVERIFY(WindowProbe::press(*cancel));
        QVERIFY(cancel.isNull());
        QCoreApplication::processEvents();
    }
    // The same by keyboard: Space presses the button that has the focus.
    QPushButton *update = WindowProbe::button(fixture.window, "Update Firmware and Configuration");
    update->setFocus();
    QTest::keyClick(update, Qt::Key_Space);
    const QPointer<QPushButton> start = WindowProbe::button(fixture.window, "Update Firmware");
    QVERIFY(!start.isNull());
    QVERIFY(WindowProbe::press(*start));
    QVERIFY(start.isNull());
    QCOMPARE(lookOf(fixture), QString("in progress"));
    QTRY_COMPARE(ScriptedPlatform::count("updateDevice"), 1);
}

static const TestClass<tst_UpdateFlow, QApplication> updateFlowTests;
#include "tst_UpdateFlow.moc"
