#include "tests/app/Run.h"
#include "tests/support/StandInTools.h"
#include "tests/support/TestProgram.h"

#include <QImageReader>
#include <QtTest>

#include <csignal>
#include <memory>

namespace {

const QString SubmitCall = "sudo|launchctl|submit|-l|com.tarvo.quaydesk.service|-p|/Library/Application "
                           "Support/Tarvo/Quaydesk/tarvo_qd_service";

/// One run of the program in which the hand carries out the steps.
class HandledRun : public Run
{
public:
    explicit HandledRun(const QString &steps, const QStringList &environment = {})
        : Run(UPDATER_WITH_HAND, {}, environment + QStringList{"HAND=" + steps}),
          asked(steps.split(';', Qt::SkipEmptyParts))
    {
        for (const QString &line : output) {
            if (line.startsWith("done: ")) {
                done.append(line.mid(6));
            } else {
                printed.append(line);
            }
        }
    }

    /// What is wrong with a run that should have ended with status 0 after every step.
    QString fault() const
    {
        if (done != asked) {
            return "the hand only did " + done.join(';');
        }
        return Run::fault();
    }

    QStringList asked;
    QStringList done;
    QStringList printed;
};

} // namespace

class tst_Main : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void companionAtStartIsRefusedWithStatusZeroAndNoServiceCall();
    void exitInEveryStateHasStatusZeroAndRunsTheExitHookOnce_data();
    void exitInEveryStateHasStatusZeroAndRunsTheExitHookOnce();
    void exceptionFromALibraryEndsTheProcess_data();
    void exceptionFromALibraryEndsTheProcess();
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
    const HandledRun run("ok");
    QCOMPARE(run.fault(), QString());
    QCOMPARE(run.printed,
        QStringList{
            "box: Tarvo Quaydesk is installed on this computer. Please Uninstall Tarvo Quaydesk before using "
            "Tarvo Firmware Updater."});
    QCOMPARE(tools->calls(), QStringList{"ls|/Library/LaunchDaemons"});
}

void tst_Main::exitInEveryStateHasStatusZeroAndRunsTheExitHookOnce_data()
{
    QTest::addColumn<QString>("steps");
    const QString start = ";click Update Firmware and Configuration;click Update Firmware;";
    QTest::newRow("discovery inside the library") << "query hangs;close";
    QTest::newRow("no drive") << "attach none;see No compatible;close";
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

void tst_Main::exitInEveryStateHasStatusZeroAndRunsTheExitHookOnce()
{
    QFETCH(QString, steps);
    const HandledRun run(steps);
    QCOMPARE(run.fault(), QString());
    QCOMPARE(submissions(), 1);
    QVERIFY(tools->calls().filter("open|").isEmpty());
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_Main::exceptionFromALibraryEndsTheProcess_data()
{
    QTest::addColumn<QString>("steps");
    QTest::newRow("discovery") << "query throws";
    const QString start = ";click Update Firmware and Configuration;click Update Firmware";
    QTest::newRow("USB flash") << "attach usb;flash throws" + start;
    QTest::newRow("FireWire flash") << "attach firewire;flash throws" + start;
}

void tst_Main::exceptionFromALibraryEndsTheProcess()
{
    QFETCH(QString, steps);
    // The window does not outlive its threads: the last steps are not reached.
    const HandledRun run(steps + ";see Error while;close");
    QVERIFY(run.ended && run.crashed);
    QCOMPARE(run.exitCode, SIGABRT);
    QCOMPARE(submissions(), 0);
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

    const HandledRun run("print formats;print plug-ins;close", {"QT_PLUGIN_PATH=" + folder});
    QFile::remove(beside);
    QCOMPARE(run.fault(), QString());
    QCOMPARE(int(run.printed.size()), 2);
    QVERIFY(run.printed[0].contains("png"));
    QVERIFY2(!run.printed[0].contains("jpeg"), qPrintable(run.printed[0]));
    QCOMPARE(run.printed[1], QString("plug-ins: 0"));
}

void tst_Main::companionInstalledLaterDoesNotEndTheProgram()
{
    // The service's property list appears with the second check.
    tools->replace("ls", "[ -f checked ] && echo com.tarvo.quaydesk.service.plist\n: > checked");
    const HandledRun run("attach usb;ok;attach firewire;see Tarvo Harbour FireWire;close");
    QCOMPARE(run.fault(), QString());
    QCOMPARE(int(run.printed.size()), 1);
    QCOMPARE(submissions(), 1);
}

static const TestClass<tst_Main, QApplication> mainTests;
#include "tst_Main.moc"
