#include "tests/support/EventLoop.h"
#include "tests/ui/WindowFixture.h"

#include <QtTest>

class tst_ExitHook : public QObject
{
    Q_OBJECT

private slots:
    void serviceIsResubmittedWhetherOrNotTheCompanionIsInstalled_data();
    void serviceIsResubmittedWhetherOrNotTheCompanionIsInstalled();
    void exitTakesAtLeastASecondAndRelaunchesNothing();
    void failureOfTheShellCommandIsNotNoticed();
    void runsOnceWhenTheEventLoopEnds();
};

namespace {

const QString SubmitCall = "launchctl|submit|-l|com.tarvo.quaydesk.service|-p|/Library/Application "
                           "Support/Tarvo/Quaydesk/tarvo_qd_service";
const QStringList SubmitCalls = {"sudo|" + SubmitCall, SubmitCall};

} // namespace

void tst_ExitHook::serviceIsResubmittedWhetherOrNotTheCompanionIsInstalled_data()
{
    QTest::addColumn<bool>("installed");
    QTest::newRow("not installed") << false;
    QTest::newRow("installed") << true;
}

void tst_ExitHook::serviceIsResubmittedWhetherOrNotTheCompanionIsInstalled()
{
    QFETCH(bool, installed);
    WindowFixture fixture;
    if (installed) {
        fixture.tools.installCompanion();
    }
    fixture.tools.forgetCalls();
    fixture.window.onExit();
    QCOMPARE(fixture.tools.calls(), SubmitCalls);
}

void tst_ExitHook::exitTakesAtLeastASecondAndRelaunchesNothing()
{
    WindowFixture fixture;
    fixture.tools.forgetCalls();
    QElapsedTimer timer;
    timer.start();
    fixture.window.onExit();
    QVERIFY2(timer.elapsed() >= 1000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(fixture.tools.calls().filter("open|").isEmpty());
}

void tst_ExitHook::failureOfTheShellCommandIsNotNoticed()
{
    WindowFixture fixture;
    fixture.tools.replace("launchctl", "exit 1");
    fixture.tools.forgetCalls();
    fixture.window.onExit();
    QCOMPARE(fixture.tools.calls(), SubmitCalls);
}

void tst_ExitHook::runsOnceWhenTheEventLoopEnds()
{
    WindowFixture fixture;
    QVERIFY(connect(qApp, SIGNAL(aboutToQuit()), &fixture.window, SLOT(onExit())));
    fixture.tools.forgetCalls();
    QCOMPARE(exitCodeAfter([&fixture] { fixture.window.close(); }), 0);
    QCOMPARE(fixture.tools.calls(), SubmitCalls);
}

QTEST_MAIN(tst_ExitHook)
#include "tst_ExitHook.moc"
