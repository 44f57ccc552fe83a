#include "tests/support/StandInTools.h"

#include <QImageReader>
#include <QtTest>

#include <memory>

namespace {

const QString SubmitCall = "sudo|launchctl|submit|-l|com.tarvo.quaydesk.service|-p|/Library/Application "
                           "Support/Tarvo/Quaydesk/tarvo_qd_service";

/// One run of the program, from its start to its end.
class Run
{
public:
    Run(const QString &steps, const QStringList &arguments = {}, const QStringList &environment = {})
    {
        QProcess program;
        QStringList variables = QProcess::systemEnvironment();
        variables += environment;
        variables.append("HAND=" + steps);
        program.setEnvironment(variables);
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        QElapsedTimer timer;
        timer.start();
        program.start(UPDATER_WITH_HAND, arguments);
        ended = program.waitForFinished();
        milliseconds = timer.elapsed();
        crashed = program.exitStatus() == QProcess::CrashExit;
        exitCode = program.exitCode();
        output = QString::fromUtf8(program.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
    }

    bool ended = false;
    bool crashed = false;
    int exitCode = -1;
    qint64 milliseconds = 0;
    QStringList output;
};

} // namespace

class tst_Main : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void companionAtStartIsRefusedWithStatusZeroAndNoServiceCall();
    void closingTheWindowRunsTheExitHookOnceAndEndsWithStatusZero();
    void exitInEveryStateHasStatusZero_data();
    void exitInEveryStateHasStatusZero();
    void exitStatusIsThatOfTheEventLoop();
    void toolkitOptionsAreRemovedBeforeTheWindowSeesThem();
    void noPluginIsLoadedThoughOneLiesBesideTheProgramAndInTheToolkitsFolders();
    void companionInstalledLaterDoesNotEndTheProgram();

private:
    int submissions() const { return int(tools->calls().count(SubmitCall)); }

    std::unique_ptr<StandInTools> tools;
};

void tst_Main::init()
{
    tools = std::make_unique<StandInTools>();
}

void tst_Main::cleanup()
{
    tools.reset();
}

void tst_Main::companionAtStartIsRefusedWithStatusZeroAndNoServiceCall()
{
    tools->installCompanion();
    const Run run("ok");
    QVERIFY(run.ended && !run.crashed);
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.output,
        QStringList{
            "box: Tarvo Quaydesk is installed on this computer. Please Uninstall Tarvo Quaydesk before using "
            "Tarvo Firmware Updater."});
    QCOMPARE(tools->calls(), QStringList{"ls|/Library/LaunchDaemons"});
}

void tst_Main::closingTheWindowRunsTheExitHookOnceAndEndsWithStatusZero()
{
    const Run run("close");
    QVERIFY(run.ended && !run.crashed);
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(submissions(), 1);
    QVERIFY2(run.milliseconds >= 1000, qPrintable(QString::number(run.milliseconds)));
    QVERIFY(tools->calls().filter("open|").isEmpty());
}

void tst_Main::exitInEveryStateHasStatusZero_data()
{
    QTest::addColumn<QString>("steps");
    const QString start = ";click Update Firmware and Configuration;click Update Firmware;";
    QTest::newRow("discovery inside the library") << "query hangs;close";
    QTest::newRow("list") << "attach usb;see Tarvo Pebble;close";
    QTest::newRow("confirmation")
        << "attach usb;click Update Firmware and Configuration;see You are about;close";
    QTest::newRow("in progress") << "attach usb;flash hangs" + start + "see DO NOT disconnect;close";
    QTest::newRow("restart") << "attach usb" + start + "see Please unplug;close";
    QTest::newRow("success, by its button") << "attach firewire" + start + "see successfully;click Finish";
    QTest::newRow("success, by the window") << "attach firewire" + start + "see successfully;close";
    QTest::newRow("failure, by its button")
        << "attach usb;flash fails" + start + "see Error while;click Finish";
    QTest::newRow("failure, by the window") << "attach usb;flash fails" + start + "see Error while;close";
}

void tst_Main::exitInEveryStateHasStatusZero()
{
    QFETCH(QString, steps);
    const Run run(steps);
    QVERIFY(run.ended && !run.crashed);
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(submissions(), 1);
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_Main::exitStatusIsThatOfTheEventLoop()
{
    const Run run("exit 7");
    QVERIFY(run.ended && !run.crashed);
    QCOMPARE(run.exitCode, 7);
    QCOMPARE(submissions(), 1);
}

void tst_Main::toolkitOptionsAreRemovedBeforeTheWindowSeesThem()
{
    const Run run(
        "print arguments;print style;close", {"-style", "windows", "one", "-platform", "offscreen", "two"});
    QVERIFY(run.ended && !run.crashed);
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.output, (QStringList{"arguments: one|two", "style: windows"}));
}

void tst_Main::noPluginIsLoadedThoughOneLiesBesideTheProgramAndInTheToolkitsFolders()
{
    // This process may use plug-ins and finds those for pictures, JPEG's among them.
    QVERIFY(QImageReader::supportedImageFormats().contains("jpeg"));
    QString folder;
    for (const QString &path : QCoreApplication::libraryPaths()) {
        if (QFile::exists(path + "/imageformats")) {
            folder = path;
        }
    }
    QVERIFY(!folder.isEmpty());
    const QString beside = QFileInfo(UPDATER_WITH_HAND).path() + "/imageformats";
    QFile::remove(beside);
    QVERIFY(QFile::link(folder + "/imageformats", beside));

    const Run run("print formats;print plug-ins;close", {}, {"QT_PLUGIN_PATH=" + folder});
    QFile::remove(beside);
    QVERIFY(run.ended && !run.crashed);
    QCOMPARE(run.output.size(), 2);
    QVERIFY(run.output[0].contains("png"));
    QVERIFY2(!run.output[0].contains("jpeg"), qPrintable(run.output[0]));
    QCOMPARE(run.output[1], QString("plug-ins: 0"));
}

void tst_Main::companionInstalledLaterDoesNotEndTheProgram()
{
    // The service's property list appears with the second check.
    tools->replace("ls", "[ -f checked ] && echo com.tarvo.quaydesk.service.plist\n: > checked");
    const Run run("attach usb;ok;attach firewire;see Tarvo Harbour FireWire;close");
    QVERIFY(run.ended && !run.crashed);
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.output.size(), 1);
    QCOMPARE(submissions(), 1);
}

QTEST_MAIN(tst_Main)
#include "tst_Main.moc"
