// SPDX-License-Identifier: MIT
#include "tests/app/Run.h"
#include "tests/support/TestProgram.h"

#include <QtTest>

#include <csignal>

namespace {

const QStringList Constructed = {"argc: 1", "argv: ", "library paths: 0", "quits on last window closed: yes"};

Run entryPoint(const QString &task, const QStringList &arguments = {})
{
    return Run(ENTRY_POINT, arguments, {"WINDOW=" + task});
}

} // namespace

class tst_EntryPoint : public QObject
{
    Q_OBJECT

private slots:
    void exitStatusIsThatOfTheEventLoop_data();
    void exitStatusIsThatOfTheEventLoop();
    void refusalAtStartEndsWithStatusZeroWithoutTheExitHook();
    void qtOptionsAreRemovedBeforeTheWindowSeesThem();
    void exceptionEndsTheProcess_data();
    void exceptionEndsTheProcess();
};

void tst_EntryPoint::exitStatusIsThatOfTheEventLoop_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("0") << 0;
    QTest::newRow("7") << 7;
    QTest::newRow("255") << 255;
}

void tst_EntryPoint::exitStatusIsThatOfTheEventLoop()
{
    QFETCH(int, status);
    const Run run = entryPoint("exit " + QString::number(status));
    QCOMPARE(run.fault(status), QString());
    QCOMPARE(run.output, Constructed + QStringList({"exit hook", "destroyed"}));
}

void tst_EntryPoint::refusalAtStartEndsWithStatusZeroWithoutTheExitHook()
{
    const Run run = entryPoint("refuse");
    QCOMPARE(run.fault(), QString());
    QCOMPARE(run.output, Constructed + QStringList({"quit", "destroyed"}));
}

void tst_EntryPoint::qtOptionsAreRemovedBeforeTheWindowSeesThem()
{
    const Run run = entryPoint("exit 0",
        {"one", "-style", "windows", "", "--two", "-platform", "offscreen", "-style=windows", "th ree"});
    QCOMPARE(run.fault(), QString());
    QCOMPARE(run.output.mid(0, 2), (QStringList{"argc: 5", "argv: one||--two|th ree"}));
}

void tst_EntryPoint::exceptionEndsTheProcess_data()
{
    QTest::addColumn<QString>("task");
    QTest::newRow("from the window's constructor") << "throw at once";
    QTest::newRow("from the event loop") << "throw";
}

void tst_EntryPoint::exceptionEndsTheProcess()
{
    QFETCH(QString, task);
    const Run run = entryPoint(task);
    QVERIFY(run.ended && run.crashed);
    QCOMPARE(run.exitCode, SIGABRT);
    QCOMPARE(run.output, Constructed);
}

static const TestClass<tst_EntryPoint> entryPointTests;
#include "tst_EntryPoint.moc"
