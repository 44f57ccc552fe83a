// SPDX-License-Identifier: MIT
#include "devices/DeviceDiscoveryThread.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TestProgram.h"
#include "tests/ui/WindowFixture.h"
#include "tests/ui/WindowMembers.h"

#include <QtTest>

class tst_ExitHook : public QObject
{
    Q_OBJECT

private slots:
    void exitTakesASecondAfterTheServiceAndThenRelaunches_data();
    void exitTakesASecondAfterTheServiceAndThenRelaunches();
    void runsOnceWhenTheEventLoopEnds();
};

namespace {

const QString SubmitCall = "launchctl|submit|-l|com.tarvo.quaydesk.service|-p|/Library/Application "
                           "Support/Tarvo/Quaydesk/tarvo_qd_service";
const QStringList SubmitCalls = {"sudo|" + SubmitCall, SubmitCall};

} // namespace

void tst_ExitHook::exitTakesASecondAfterTheServiceAndThenRelaunches_data()
{
    QTest::addColumn<bool>("application");
    QTest::addColumn<bool>("statusItem");
    QTest::addColumn<QStringList>("calls");
    const QStringList application{"open|/Applications/Tarvo Quaydesk.app"};
    const QStringList statusItem{"open|/Applications/Tarvo Quaydesk.app/Contents/MacOS/QDKStatusItem.app"};
    QTest::newRow("as in every run") << false << false << SubmitCalls;
    QTest::newRow("application") << true << false << SubmitCalls + application;
    QTest::newRow("status item") << false << true << SubmitCalls + statusItem;
    QTest::newRow("both") << true << true << SubmitCalls + application;
}

void tst_ExitHook::exitTakesASecondAfterTheServiceAndThenRelaunches()
{
    QFETCH(bool, application);
    QFETCH(bool, statusItem);
    QFETCH(QStringList, calls);
    WindowFixture fixture;
    QVERIFY(!WindowMembers::relaunchQuaydeskOnExit(fixture.window));
    QVERIFY(!WindowMembers::relaunchStatusItemOnExit(fixture.window));
    WindowMembers::relaunchQuaydeskOnExit(fixture.window) = application;
    WindowMembers::relaunchStatusItemOnExit(fixture.window) = statusItem;
    // Neither the installed companion nor the command's failure changes anything.
    fixture.tools.installCompanion();
    fixture.tools.replace("launchctl", "touch submitted; exit 1");
    fixture.tools.replace("open", "touch relaunched");
    fixture.tools.forgetCalls();
    fixture.window.onExit();
    const QDateTime end = QDateTime::currentDateTime();
    QCOMPARE(fixture.tools.calls(), calls);
    const QFileInfo relaunched("relaunched");
    const qint64 pause =
        QFileInfo("submitted").lastModified().msecsTo(relaunched.exists() ? relaunched.lastModified() : end);
    // File times may be a few milliseconds behind the clock.
    QVERIFY2(pause >= 990 && pause < 1990, qPrintable(QString::number(pause)));
    // Discovery goes on as long as the window is there.
    QVERIFY(WindowMembers::discoveryThread(fixture.window)->discoveryEnabled);
    QVERIFY(!WindowMembers::discoveryThread(fixture.window)->stopRequested);
}

void tst_ExitHook::runsOnceWhenTheEventLoopEnds()
{
    WindowFixture fixture;
    QVERIFY(connect(qApp, SIGNAL(aboutToQuit()), &fixture.window, SLOT(onExit())));
    fixture.tools.forgetCalls();
    QCOMPARE(exitCodeAfter([&fixture] { fixture.window.close(); }), 0);
    QCOMPARE(fixture.tools.calls(), SubmitCalls);
}

static const TestClass<tst_ExitHook, QApplication> exitHookTests;
#include "tst_ExitHook.moc"
