#include "devices/DeviceDiscoveryThread.h"
#include "tests/support/DeviceRecords.h"
#include "tests/support/TestProgram.h"
#include "tests/support/WindowTexts.h"
#include "tests/ui/UpdateLook.h"
#include "tests/ui/WindowFixture.h"
#include "tests/ui/WindowMembers.h"

#include <QPushButton>
#include <QStackedWidget>
#include <QtTest>

#include <functional>
#include <memory>

using DeviceRecords::fireWireDrive;
using DeviceRecords::usbDrive;

namespace {

const QString FireWireSuccessLine = "Your Tarvo <b>Harbour FireWire</b> has been successfully updated.";

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

/// Hands the window a success; the look that each refresh then puts in place.
QList<Look> looksOfASuccess(WindowFixture &fixture)
{
    QList<Look> looks;
    const RefreshObserver observer(fixture, [&] { looks.append(lookOf(fixture)); });
    fixture.finish(true);
    return looks;
}

} // namespace

Q_DECLARE_METATYPE(Look)

class tst_UpdateFlow : public QObject
{
    Q_OBJECT

private slots:
    void updateThenCancelReturnsToTheListOfAllDrives();
    void cancelForgetsTheSelectedDrive();
    void terminateForgetsTheSelectedDrive();
    void startHandsTheWorkerTheDriveAndTheImageFolder();
    void resultDecidesThePage_data();
    void resultDecidesThePage();
    void bridgeIsTakenFromTheListAtTheTimeOfTheResult();
    void startWithSeveralMatchesRebuildsForEachAndFlashesTheLast();
    void discoveryIsSwitchedBetweenTheRefreshes_data();
    void discoveryIsSwitchedBetweenTheRefreshes();
    void fireWireSuccessRebuildsTwiceBothTimesWithTheSuccessPage();
    void usbSuccessRebuildsTwiceBothTimesWithTheRestartPage();
    void successCountsForEveryRecordOfTheDrive_data();
    void successCountsForEveryRecordOfTheDrive();
    void onlyARestartClearsItsFlags_data();
    void onlyARestartClearsItsFlags();
    void serialNumberInOtherLettersIsAnotherDrive();
    void startOfADriveThatIsGoneStillStartsAWorkerWhichFails();
    void startOfADriveThatIsGoneOnAnEmptyListShowsTheNoDriveMessage();
    void successOfADriveThatIsGoneOnlyResumesDiscovery();
    void successOfADriveThatIsGoneLeavesAConfirmationAsItIs();
    void slotsActFromAnyState();
    void eachUpdateHasAWorkerOfItsOwn();
    void driveWithChipsetFourIsShownLikeASupportedOneButItsUpdateFails();
    void clicksOnPagesThatTheRefreshDeletesAreSound();
};

void tst_UpdateFlow::updateThenCancelReturnsToTheListOfAllDrives()
{
    WindowFixture fixture;
    fixture.deliver({usbDrive("A"), fireWireDrive("B")});
    QVERIFY(fixture.click("Update Firmware and Configuration"));
    QCOMPARE(lookOf(fixture), Look::Confirmation);
    QVERIFY(!fixture.texts().contains("Tarvo Harbour FireWire"));
    QVERIFY(fixture.click("Cancel"));
    QCOMPARE(fixture.buttons(), WindowProbe::repeated(2, "Update Firmware and Configuration"));
}

void tst_UpdateFlow::cancelForgetsTheSelectedDrive()
{
    WindowFixture fixture;
    fixture.deliver({usbDrive("A")});
    QVERIFY(fixture.click("Update Firmware and Configuration"));
    QVERIFY(fixture.click("Cancel"));
    // A result that arrives now has no drive to show: nothing is selected.
    fixture.finish(false);
    QCOMPARE(lookOf(fixture), Look::Nothing);
    // A drive without a serial number is what the empty selection names.
    fixture.deliver({usbDrive("")});
    QCOMPARE(lookOf(fixture), Look::Failure);
}

void tst_UpdateFlow::terminateForgetsTheSelectedDrive()
{
    WindowFixture fixture;
    fixture.deliver({usbDrive("A")});
    QVERIFY(fixture.click("Update Firmware and Configuration"));
    QVERIFY(QMetaObject::invokeMethod(&fixture.window, "terminateUpdate"));
    QCOMPARE(lookOf(fixture), Look::List);
    fixture.finish(false);
    QCOMPARE(lookOf(fixture), Look::Nothing);
}

void tst_UpdateFlow::startHandsTheWorkerTheDriveAndTheImageFolder()
{
    WindowFixture fixture;
    ScriptedPlatform::holdFlashes();
    fixture.deliver({usbDrive("A")});
    QVERIFY(fixture.click("Update Firmware and Configuration"));
    QVERIFY(fixture.click("Update Firmware"));
    QCOMPARE(lookOf(fixture), Look::InProgress);
    ScriptedPlatform::releaseFlashes();
    QTRY_COMPARE(ScriptedPlatform::count("~Asm1051()"), 1);
    QVERIFY(ScriptedPlatform::calls().contains("Asm1051(A)"));
    QVERIFY(ScriptedPlatform::calls().contains("updateDevice(/opt/tarvo/pebble.tfw)"));
}

void tst_UpdateFlow::resultDecidesThePage_data()
{
    QTest::addColumn<int>("chipsetType");
    QTest::addColumn<bool>("result");
    QTest::addColumn<int>("look");
    QTest::newRow("Asm1051, true") << 1 << true << int(Look::Restart);
    QTest::newRow("Asm1051E, true") << 2 << true << int(Look::Restart);
    QTest::newRow("Asm1053, true") << 3 << true << int(Look::Restart);
    QTest::newRow("4, true") << 4 << true << int(Look::Success);
    QTest::newRow("OxSemiFireWire934, true") << 5 << true << int(Look::Success);
    QTest::newRow("OxSemiFireWire944, true") << 6 << true << int(Look::Success);
    QTest::newRow("0, true") << 0 << true << int(Look::Success);
    QTest::newRow("7, true") << 7 << true << int(Look::Success);
    QTest::newRow("-1, true") << -1 << true << int(Look::Success);
    for (const int chipsetType : {1, 2, 3, 4, 5, 6, 7, -1}) {
        QTest::newRow(qPrintable(QString("%1, false").arg(chipsetType)))
            << chipsetType << false << int(Look::Failure);
    }
}

void tst_UpdateFlow::resultDecidesThePage()
{
    QFETCH(int, chipsetType);
    QFETCH(bool, result);
    QFETCH(int, look);
    WindowFixture fixture;
    DeviceInfo drive = usbDrive("A");
    drive.chipsetType = chipsetType;
    fixture.deliver({drive});
    QVERIFY(invoke(fixture, "updateDevice", "A"));
    fixture.finish(result);
    QCOMPARE(int(lookOf(fixture)), look);
}

void tst_UpdateFlow::bridgeIsTakenFromTheListAtTheTimeOfTheResult()
{
    WindowFixture fixture;
    ScriptedPlatform::holdFlashes();
    fixture.deliver({usbDrive("A")});
    QVERIFY(fixture.click("Update Firmware and Configuration"));
    QVERIFY(fixture.click("Update Firmware"));
    // One list was already on its way when discovery was paused; in it the drive has another bridge.
    DeviceInfo changed = usbDrive("A");
    changed.chipsetType = Chipset::OxSemiFireWire944;
    fixture.deliver({changed});
    QCOMPARE(lookOf(fixture), Look::InProgress);
    fixture.finish(true);
    QCOMPARE(lookOf(fixture), Look::Success);
}

void tst_UpdateFlow::startWithSeveralMatchesRebuildsForEachAndFlashesTheLast()
{
    WindowFixture fixture;
    DeviceInfo second = usbDrive("A");
    second.firmwareFileName = "second.tfw";
    fixture.deliver({usbDrive("A"), usbDrive("B"), second});
    fixture.tools.forgetCalls();
    QVERIFY(invoke(fixture, "startUpdate", "A"));
    QCOMPARE(fixture.tools.calls().size(), 2);
    QTRY_COMPARE(ScriptedPlatform::count("updateDevice(/opt/tarvo/second.tfw)"), 1);
    QCOMPARE(ScriptedPlatform::count("updateDevice(/opt/tarvo/pebble.tfw)"), 0);
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

void tst_UpdateFlow::fireWireSuccessRebuildsTwiceBothTimesWithTheSuccessPage()
{
    WindowFixture fixture;
    fixture.deliver({fireWireDrive("A")});
    QVERIFY(invoke(fixture, "updateDevice", "A"));
    QCOMPARE(looksOfASuccess(fixture), (QList<Look>{Look::Success, Look::Success}));
    QCOMPARE(fixture.texts().first(), FireWireSuccessLine);
}

void tst_UpdateFlow::usbSuccessRebuildsTwiceBothTimesWithTheRestartPage()
{
    WindowFixture fixture;
    fixture.deliver({usbDrive("A")});
    QVERIFY(invoke(fixture, "updateDevice", "A"));
    QCOMPARE(looksOfASuccess(fixture), (QList<Look>{Look::Restart, Look::Restart}));
    QCOMPARE(fixture.texts().first(), SuccessLine);
}

void tst_UpdateFlow::successCountsForEveryRecordOfTheDrive_data()
{
    QTest::addColumn<QVector<DeviceInfo>>("list");
    QTest::addColumn<QList<Look>>("looks");
    const QVector<DeviceInfo> usbFirst{usbDrive("A"), usbDrive("B"), fireWireDrive("A")};
    const QVector<DeviceInfo> usbLast{fireWireDrive("A"), usbDrive("B"), usbDrive("A")};
    QTest::newRow("the last is FireWire")
        << usbFirst << QList<Look>{Look::Restart, Look::Success, Look::Success};
    QTest::newRow("the last is USB") << usbLast << QList<Look>{Look::Success, Look::Restart, Look::Restart};
}

void tst_UpdateFlow::successCountsForEveryRecordOfTheDrive()
{
    QFETCH(QVector<DeviceInfo>, list);
    QFETCH(QList<Look>, looks);
    WindowFixture fixture;
    fixture.deliver(list);
    fixture.window.updateDevice("A");
    QCOMPARE(looksOfASuccess(fixture), looks);
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

void tst_UpdateFlow::serialNumberInOtherLettersIsAnotherDrive()
{
    WindowFixture fixture;
    fixture.deliver({usbDrive("SN-a"), usbDrive("SN-A "), fireWireDrive("SN-A")});
    fixture.window.updateDevice("SN-A");
    QCOMPARE(fixture.texts().first(), QString("Tarvo Harbour FireWire"));
    QCOMPARE(fixture.buttons(), (QStringList{"Update Firmware", "Cancel"}));
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
    QCOMPARE(lookOf(fixture), Look::List);
    QTRY_COMPARE(lookOf(fixture), Look::Nothing);
    QVERIFY(fixture.texts() == QStringList{VersionText});
    QCOMPARE(ScriptedPlatform::count("updateDevice"), 0);
}

void tst_UpdateFlow::startOfADriveThatIsGoneOnAnEmptyListShowsTheNoDriveMessage()
{
    WindowFixture fixture;
    const QPointer<QWidget> page = fixture.page();
    QVERIFY(invoke(fixture, "startUpdate", "GONE"));
    QTRY_VERIFY(page.isNull());
    QVERIFY(fixture.texts().first().contains("No compatible Tarvo device were found."));
}

void tst_UpdateFlow::successOfADriveThatIsGoneOnlyResumesDiscovery()
{
    WindowFixture fixture;
    ScriptedPlatform::holdFlashes();
    fixture.deliver({usbDrive("A")});
    QVERIFY(fixture.click("Update Firmware and Configuration"));
    QVERIFY(fixture.click("Update Firmware"));
    fixture.deliver({usbDrive("B")});
    fixture.tools.forgetCalls();
    fixture.finish(true);
    QCOMPARE(fixture.tools.calls().size(), 1);
    // The list that had still arrived made the state Idle, and no record changed it again.
    QCOMPARE(lookOf(fixture), Look::List);
    ScriptedPlatform::attach({usbDrive("B"), fireWireDrive("C")});
    ScriptedPlatform::releaseQueries();
    QTRY_VERIFY(fixture.texts().contains("Tarvo Harbour FireWire"));
}

void tst_UpdateFlow::successOfADriveThatIsGoneLeavesAConfirmationAsItIs()
{
    WindowFixture fixture;
    fixture.deliver({usbDrive("A")});
    QVERIFY(invoke(fixture, "updateDevice", "GONE"));
    fixture.finish(true);
    QCOMPARE(lookOf(fixture), Look::Nothing);
    fixture.deliver({usbDrive("A"), usbDrive("GONE")});
    QCOMPARE(lookOf(fixture), Look::Confirmation);
}

void tst_UpdateFlow::slotsActFromAnyState()
{
    WindowFixture fixture;
    ScriptedPlatform::holdFlashes();
    fixture.deliver({usbDrive("A"), fireWireDrive("B")});
    fixture.finish(true);
    QVERIFY(invoke(fixture, "startUpdate", "A"));
    QCOMPARE(lookOf(fixture), Look::InProgress);
    QVERIFY(invoke(fixture, "updateDevice", "B"));
    QCOMPARE(lookOf(fixture), Look::Confirmation);
    fixture.finish(false);
    QCOMPARE(lookOf(fixture), Look::Failure);
    fixture.finish(true);
    QCOMPARE(lookOf(fixture), Look::Success);
    QVERIFY(QMetaObject::invokeMethod(&fixture.window, "cancelUpdate"));
    QCOMPARE(lookOf(fixture), Look::List);
    QTRY_COMPARE(ScriptedPlatform::count("updateDevice"), 1);
}

void tst_UpdateFlow::eachUpdateHasAWorkerOfItsOwn()
{
    WindowFixture fixture;
    fixture.deliver({fireWireDrive("A"), usbDrive("B")});
    ScriptedPlatform::holdFlashes();
    QVERIFY(invoke(fixture, "startUpdate", "A"));
    QVERIFY(invoke(fixture, "startUpdate", "B"));
    QTRY_COMPARE(ScriptedPlatform::count("updateDevice"), 2);
    ScriptedPlatform::setFlashResult(false);
    ScriptedPlatform::releaseFlashes();
    QTRY_COMPARE(lookOf(fixture), Look::Failure);
    QVERIFY(fixture.texts().contains(FailureLine));
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
    QTRY_COMPARE(lookOf(fixture), Look::Failure);
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
    QCOMPARE(lookOf(fixture), Look::InProgress);
    QTRY_COMPARE(ScriptedPlatform::count("updateDevice"), 1);
}

static const TestClass<tst_UpdateFlow, QApplication> updateFlowTests;
#include "tst_UpdateFlow.moc"
