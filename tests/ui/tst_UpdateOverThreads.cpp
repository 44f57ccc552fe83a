// SPDX-License-Identifier: MIT
#include "tests/support/DeviceRecords.h"
#include "tests/support/TestProgram.h"
#include "tests/support/WindowTexts.h"
#include "tests/ui/UpdateLook.h"
#include "tests/ui/WindowFixture.h"

#include <QtTest>

#include <memory>

using DeviceRecords::fireWireDrive;
using DeviceRecords::usbDrive;

namespace {

/// Has the window list the drive, and update it.
void beginUpdate(WindowFixture &fixture, const DeviceInfo &drive)
{
    ScriptedPlatform::attach({drive});
    ScriptedPlatform::releaseQueries();
    QTRY_COMPARE(lookOf(fixture), QString("list"));
    QVERIFY(fixture.click("Update Firmware and Configuration"));
    QVERIFY(fixture.click("Update Firmware"));
}

} // namespace

/// The update flow with the discovery thread and the worker at work: what takes as long as they pause.
class tst_UpdateOverThreads : public QObject
{
    Q_OBJECT

private slots:
    void discoveryIsPausedDuringTheFlashAndResumedAfterASuccess();
    void afterAFailureAndCancelDrivesAreNotNoticedAnyMore();
    void windowClosedDuringTheFlashDoesNotWaitForIt();
    void wholeUsbUpdateOverTheRealThreads();
};

void tst_UpdateOverThreads::discoveryIsPausedDuringTheFlashAndResumedAfterASuccess()
{
    WindowFixture fixture;
    ScriptedPlatform::holdFlashes();
    beginUpdate(fixture, fireWireDrive("A"));
    QTRY_COMPARE(ScriptedPlatform::count("updateDevice"), 1);
    const int queries = ScriptedPlatform::count("getTarvoDevice");
    // Longer than the pause between two passes: no pass begins while the drive is being flashed.
    QTest::qWait(2500);
    QCOMPARE(ScriptedPlatform::count("getTarvoDevice"), queries);
    ScriptedPlatform::releaseFlashes();
    QTRY_COMPARE(lookOf(fixture), QString("success"));
    QTRY_VERIFY(ScriptedPlatform::count("getTarvoDevice") > queries);
}

void tst_UpdateOverThreads::afterAFailureAndCancelDrivesAreNotNoticedAnyMore()
{
    WindowFixture fixture;
    ScriptedPlatform::setFlashResult(false);
    beginUpdate(fixture, usbDrive("A"));
    QTRY_COMPARE(lookOf(fixture), QString("failure"));
    QVERIFY(fixture.texts().contains(FailureLine));
    QVERIFY(QMetaObject::invokeMethod(&fixture.window, "cancelUpdate"));
    QCOMPARE(lookOf(fixture), QString("list"));
    ScriptedPlatform::attach({usbDrive("A"), fireWireDrive("B")});
    const int queries = ScriptedPlatform::count("getTarvoDevice");
    QTest::qWait(2500);
    QCOMPARE(ScriptedPlatform::count("getTarvoDevice"), queries);
    QVERIFY(!fixture.texts().contains("Tarvo Harbour FireWire"));
}

void tst_UpdateOverThreads::windowClosedDuringTheFlashDoesNotWaitForIt()
{
    const StandInTools tools;
    const HeldPlatform platform;
    Arguments arguments;
    ScriptedPlatform::attach({usbDrive("A")});
    ScriptedPlatform::releaseQueries();
    ScriptedPlatform::holdFlashes();
    auto window = std::make_unique<MainWindow>(arguments.count, arguments.vector);
    QTRY_VERIFY(WindowProbe::button(*window, "Update Firmware and Configuration") != nullptr);
    QVERIFY(WindowProbe::click(*window, "Update Firmware and Configuration"));
    QVERIFY(WindowProbe::click(*window, "Update Firmware"));
    QTRY_COMPARE(ScriptedPlatform::count("updateDevice"), 1);
    // The flash is under way; waiting for it would never end.
    window.reset();
    ScriptedPlatform::releaseFlashes();
    QTRY_COMPARE(ScriptedPlatform::count("~Asm1051()"), 1);
    // Its result has no receiver any more.
    QCoreApplication::processEvents();
}

void tst_UpdateOverThreads::wholeUsbUpdateOverTheRealThreads()
{
    WindowFixture fixture;
    beginUpdate(fixture, usbDrive("A"));
    QTRY_COMPARE(lookOf(fixture), QString("restart"));
    ScriptedPlatform::attach({});
    const int queries = ScriptedPlatform::count("getTarvoDevice");
    QTRY_VERIFY(ScriptedPlatform::count("~DeviceDiscovery") > queries);
    QCOMPARE(lookOf(fixture), QString("restart"));
    ScriptedPlatform::attach({usbDrive("A")});
    QTRY_COMPARE(lookOf(fixture), QString("success"));
    QVERIFY(fixture.texts().contains(SuccessLine));
}

static const TestClass<tst_UpdateOverThreads, QApplication> updateOverThreadsTests;
#include "tst_UpdateOverThreads.moc"
