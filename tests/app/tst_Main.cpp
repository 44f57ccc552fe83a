// SPDX-License-Identifier: MIT
#include "tests/app/Run.h"
#include "tests/support/StandInTools.h"
#include "tests/support/TestProgram.h"

#include <QtTest>

#include <csignal>

namespace {

const QString Start = "Update Firmware and Configuration;Update Firmware;";

} // namespace

/// The end of the real program while its threads are in the middle of something.
class tst_Main : public QObject
{
    Q_OBJECT

private slots:
    void end_data();
    void end();
};

void tst_Main::end_data()
{
    QTest::addColumn<QString>("steps");
    QTest::addColumn<bool>("normal"); // else the runtime ends the process for an exception
    QTest::newRow("closed, discovery in the library") << "query hangs;close" << true;
    QTest::newRow("closed, flash in the library") << "usb;flash hangs;" + Start + "close" << true;
    QTest::newRow("closed by a button") << "firewire;" + Start + "Finish" << true;
    QTest::newRow("discovery throws") << "query throws" << false;
    QTest::newRow("USB flash throws") << "usb;flash throws;" + Start << false;
    QTest::newRow("FireWire flash throws") << "firewire;flash throws;" + Start << false;
}

void tst_Main::end()
{
    QFETCH(QString, steps);
    QFETCH(bool, normal);
    const StandInTools tools;
    const Run run(UPDATER_WITH_HAND, {}, {"HAND=" + steps});
    QVERIFY(run.ended);
    QCOMPARE(run.crashed, !normal);
    QCOMPARE(run.exitCode, normal ? 0 : SIGABRT);
    QCOMPARE(tools.calls().filter("sudo|launchctl|submit").size(), normal ? 1 : 0);
}

static const TestClass<tst_Main, QApplication> mainTests;
#include "tst_Main.moc"
