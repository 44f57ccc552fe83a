#include "companion/QDKUtilities.h"
#include "tests/support/StandInTools.h"

#include <QtTest>

#include <memory>

namespace {

void write(const char *path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

void append(const char *path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::Append));
    QCOMPARE(file.write(content), content.size());
}

const char *const SubmitCall = "launchctl|submit|-l|com.tarvo.quaydesk.service|-p|/Library/Application "
                               "Support/Tarvo/Quaydesk/tarvo_qd_service";

using Query = bool (*)();

} // namespace

Q_DECLARE_METATYPE(Query)

class tst_QDKUtilities : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void startServiceSubmitsTheService();
    void startServiceIsOneWhateverTheShellSays();
    void launchingOpensTheApplicationAndReturnsTheStatus();
    void queryRunsItsListingAndFindsItsNeedle_data();
    void queryRunsItsListingAndFindsItsNeedle();
    void queryWithoutANeedleInTheListingIsFalse_data();
    void queryWithoutANeedleInTheListingIsFalse();
    void queryIsCaseSensitive();
    void queryIgnoresTheStatusOfItsListing();
    void installedAsSoonAsALineHoldsTheNameEvenAsPartOfALongerName();
    void leftoverScratchFileWithTheNeedleMakesTheNextCheckPositive();
    void leftoversAreReadBeforeTheNewListing();
    void scratchFileIsRemovedOnBothOutcomes();
    void scratchFileThatCannotBeOpenedIsANegativeAnswerAndStays();
    void needleInALongLineIsFoundOnlyWithinOneRead();
    void wordsBeyondTheBufferAreReadInPieces();
    void stopServiceRemovesAListedService();
    void stopServiceRemovesNothingElse();
    void killStopsTheProcessThatIsListed_data();
    void killStopsTheProcessThatIsListed();
    void killWithNoMatchingProcessReturnsZeroAndKillsNothing();
    void versionOfALoadedExtension();
    void versionIsCutAsItsColumnRequires_data();
    void versionIsCutAsItsColumnRequires();
    void versionLoadsAnInstalledExtensionFirst();
    void versionWithExtensionNeitherLoadedNorInstalledIsEmpty();

private:
    std::unique_ptr<StandInTools> tools;
};

void tst_QDKUtilities::init()
{
    tools = std::make_unique<StandInTools>();
}

void tst_QDKUtilities::cleanup()
{
    tools.reset();
}

void tst_QDKUtilities::startServiceSubmitsTheService()
{
    QCOMPARE(QDKUtilities::startService(), 1);
    QCOMPARE(tools->calls(), (QStringList{QString("sudo|") + SubmitCall, SubmitCall}));
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_QDKUtilities::startServiceIsOneWhateverTheShellSays()
{
    tools->answer(QString(SubmitCall).replace('|', ' '), "", 3);
    QCOMPARE(QDKUtilities::startService(), 1);
}

void tst_QDKUtilities::launchingOpensTheApplicationAndReturnsTheStatus()
{
    QCOMPARE(QDKUtilities::launchQDK(), 0);
    QCOMPARE(QDKUtilities::launchQDKStatusItem(), 0);
    QCOMPARE(tools->calls(),
        (QStringList{"open|/Applications/Tarvo Quaydesk.app",
            "open|/Applications/Tarvo Quaydesk.app/Contents/MacOS/QDKStatusItem.app"}));
    tools->answer("open /Applications/Tarvo Quaydesk.app", "", 1);
    QCOMPARE(QDKUtilities::launchQDK(), 256);
    tools->answer("open /Applications/Tarvo Quaydesk.app/Contents/MacOS/QDKStatusItem.app", "", 2);
    QCOMPARE(QDKUtilities::launchQDKStatusItem(), 512);
}

void tst_QDKUtilities::queryRunsItsListingAndFindsItsNeedle_data()
{
    QTest::addColumn<Query>("query");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QByteArray>("listing");
    QTest::addColumn<QStringList>("calls");
    QTest::newRow("isQDKInstalledAndRunning")
        << Query(QDKUtilities::isQDKInstalledAndRunning) << "launchctl list"
        << QByteArray("PID\tStatus\tLabel\n-\t0\tcom.example.other\n312\t0\tcom.tarvo.quaydesk.service\n")
        << QStringList{"sudo|launchctl|list", "launchctl|list"};
    QTest::newRow("isQDKRunning") << Query(QDKUtilities::isQDKRunning) << "ps -ax"
                                  << QByteArray("  PID TTY TIME CMD\n  312 ?? 0:01.07 /Applications/Tarvo "
                                                "Quaydesk.app/Contents/MacOS/Quaydesk\n")
                                  << QStringList{"ps|-ax"};
    QTest::newRow("isQDKInstalled") << Query(QDKUtilities::isQDKInstalled) << "ls /Library/LaunchDaemons"
                                    << QByteArray("com.example.plist\ncom.tarvo.quaydesk.service.plist\n")
                                    << QStringList{"ls|/Library/LaunchDaemons"};
    QTest::newRow("isTarvoKorrinLoaded")
        << Query(QDKUtilities::isTarvoKorrinLoaded) << "kextstat"
        << QByteArray("  87    0 0xffffff7f80d2b000 0x4000     0x4000     com.Tarvo.Korrin (1.2.3) <5 4 3>\n")
        << QStringList{"kextstat"};
    QTest::newRow("isTarvoKorrinInstalled")
        << Query(QDKUtilities::isTarvoKorrinInstalled) << "ls /System/Library/Extensions"
        << QByteArray("AppleACPIPlatform.kext\nTarvoKorrin.kext\n")
        << QStringList{"ls|/System/Library/Extensions"};
}

void tst_QDKUtilities::queryRunsItsListingAndFindsItsNeedle()
{
    QFETCH(Query, query);
    QFETCH(QString, command);
    QFETCH(QByteArray, listing);
    QFETCH(QStringList, calls);
    tools->answer(command, listing);
    QVERIFY(query());
    QCOMPARE(tools->calls(), calls);
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_QDKUtilities::queryWithoutANeedleInTheListingIsFalse_data()
{
    queryRunsItsListingAndFindsItsNeedle_data();
}

void tst_QDKUtilities::queryWithoutANeedleInTheListingIsFalse()
{
    QFETCH(Query, query);
    QFETCH(QString, command);
    QVERIFY(!query());
    tools->answer(command, "com.example.Tarvo.plist\nQuaydesk\nKorrin\n");
    QVERIFY(!query());
    // The installation is told by the property list, not by the service's name alone.
    tools->answer("ls /Library/LaunchDaemons", "com.tarvo.quaydesk.service\n");
    QVERIFY(!QDKUtilities::isQDKInstalled());
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_QDKUtilities::queryIsCaseSensitive()
{
    tools->answer("ls /Library/LaunchDaemons", "com.Tarvo.Quaydesk.Service.plist\n");
    QVERIFY(!QDKUtilities::isQDKInstalled());
}

void tst_QDKUtilities::queryIgnoresTheStatusOfItsListing()
{
    tools->answer("ls /Library/LaunchDaemons", "com.tarvo.quaydesk.service.plist\n", 2);
    QVERIFY(QDKUtilities::isQDKInstalled());
}

void tst_QDKUtilities::installedAsSoonAsALineHoldsTheNameEvenAsPartOfALongerName()
{
    tools->answer("ls /Library/LaunchDaemons", "old-com.tarvo.quaydesk.service.plist.disabled\n");
    QVERIFY(QDKUtilities::isQDKInstalled());
}

void tst_QDKUtilities::leftoverScratchFileWithTheNeedleMakesTheNextCheckPositive()
{
    write("temp.txt", "com.tarvo.quaydesk.service.plist\n");
    QVERIFY(QDKUtilities::isQDKInstalled());
    QVERIFY(!QFile::exists("temp.txt"));
    QVERIFY(!QDKUtilities::isQDKInstalled());
}

void tst_QDKUtilities::leftoversAreReadBeforeTheNewListing()
{
    write("temp.txt", "left over: com.Tarvo.Korrin (9.9)\n");
    tools->answer("kextstat", "87 0 0xf 0x4 0x4 com.Tarvo.Korrin (1.2.3) <5 4 3>\n");
    QCOMPARE(QDKUtilities::getTarvoKorrinVersion(), std::string("9.9"));
}

void tst_QDKUtilities::scratchFileIsRemovedOnBothOutcomes()
{
    append("temp.txt", "nothing of interest\n");
    QVERIFY(!QDKUtilities::isQDKRunning());
    QVERIFY(!QFile::exists("temp.txt"));
    append("temp.txt", "com.tarvo.quaydesk.service\n");
    QVERIFY(QDKUtilities::isQDKInstalledAndRunning());
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_QDKUtilities::scratchFileThatCannotBeOpenedIsANegativeAnswerAndStays()
{
    // A dangling symbolic link into a folder that does not exist can be neither written nor read.
    QVERIFY(QFile::link("missing/folder/temp.txt", "temp.txt"));
    tools->answer("ls /System/Library/Extensions/TarvoKorrin.kext", "", 1);
    tools->installCompanion();
    QVERIFY(!QDKUtilities::isQDKInstalled());
    QVERIFY(!QDKUtilities::isQDKInstalledAndRunning());
    QCOMPARE(QDKUtilities::stopService(), 1);
    QCOMPARE(QDKUtilities::killQDK(), 0);
    QCOMPARE(QDKUtilities::getTarvoKorrinVersion(), std::string());
    QVERIFY(QFileInfo("temp.txt").isSymLink());
}

void tst_QDKUtilities::needleInALongLineIsFoundOnlyWithinOneRead()
{
    const QByteArray needle = "com.tarvo.quaydesk.service.plist";
    tools->answer("ls /Library/LaunchDaemons", QByteArray(1023 - needle.size(), 'x') + needle + "\n");
    QVERIFY(QDKUtilities::isQDKInstalled());
    tools->answer("ls /Library/LaunchDaemons", QByteArray(1023 - 5, 'x') + needle + "\n");
    QVERIFY(!QDKUtilities::isQDKInstalled());
    tools->answer("ls /Library/LaunchDaemons", QByteArray(1023, 'x') + needle + "\n");
    QVERIFY(QDKUtilities::isQDKInstalled());
}

void tst_QDKUtilities::wordsBeyondTheBufferAreReadInPieces()
{
    const QByteArray needle = "com.tarvo.quaydesk.service";
    tools->answer("launchctl list", QByteArray(127 - needle.size(), 'x') + needle);
    QVERIFY(QDKUtilities::isQDKInstalledAndRunning());
    tools->answer("launchctl list", QByteArray(127 - 5, 'x') + needle);
    QVERIFY(!QDKUtilities::isQDKInstalledAndRunning());
    tools->answer("launchctl list", QByteArray(100000, 'x') + " " + needle);
    QVERIFY(QDKUtilities::isQDKInstalledAndRunning());
}

void tst_QDKUtilities::stopServiceRemovesAListedService()
{
    tools->answer("launchctl list", "312\t0\tcom.tarvo.quaydesk.service\n");
    QCOMPARE(QDKUtilities::stopService(), 1);
    QCOMPARE(tools->calls(),
        (QStringList{"sudo|launchctl|list", "launchctl|list",
            "sudo|launchctl|remove|com.tarvo.quaydesk.service",
            "launchctl|remove|com.tarvo.quaydesk.service"}));
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_QDKUtilities::stopServiceRemovesNothingElse()
{
    tools->answer("launchctl list", "312\t0\tcom.example.service\n");
    QCOMPARE(QDKUtilities::stopService(), 1);
    QCOMPARE(tools->calls(), (QStringList{"sudo|launchctl|list", "launchctl|list"}));
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_QDKUtilities::killStopsTheProcessThatIsListed_data()
{
    QTest::addColumn<bool>("statusItem");
    QTest::newRow("killQDK") << false;
    QTest::newRow("killQDKStatusItem") << true;
}

void tst_QDKUtilities::killStopsTheProcessThatIsListed()
{
    QFETCH(bool, statusItem);
    QProcess victim;
    QProcess bystander;
    victim.start("sleep", {"60"});
    bystander.start("sleep", {"60"});
    QVERIFY(victim.waitForStarted() && bystander.waitForStarted());
    const QByteArray name = statusItem ? "QDKStatusItem" : "Tarvo Quaydesk";
    tools->answer("ps -axcopid,command",
        "  PID COMMAND\n    1 launchd\n  " + QByteArray::number(victim.processId()) + " " + name + "\n  "
            + QByteArray::number(bystander.processId()) + " " + name + "\n");
    QCOMPARE(statusItem ? QDKUtilities::killQDKStatusItem() : QDKUtilities::killQDK(), 1);
    QVERIFY(victim.waitForFinished());
    QCOMPARE(victim.exitStatus(), QProcess::CrashExit);
    QVERIFY(!bystander.waitForFinished(100));
    QCOMPARE(tools->calls(), QStringList{"ps|-axcopid,command"});
    QVERIFY(!QFile::exists("temp.txt"));
    bystander.kill();
    bystander.waitForFinished();
}

void tst_QDKUtilities::killWithNoMatchingProcessReturnsZeroAndKillsNothing()
{
    QProcess bystander;
    bystander.start("sleep", {"60"});
    QVERIFY(bystander.waitForStarted());
    tools->answer(
        "ps -axcopid,command", "  PID COMMAND\n" + QByteArray::number(bystander.processId()) + " sleep\n");
    QCOMPARE(QDKUtilities::killQDK(), 0);
    QCOMPARE(QDKUtilities::killQDKStatusItem(), 0);
    QVERIFY(!bystander.waitForFinished(100));
    QVERIFY(!QFile::exists("temp.txt"));
    bystander.kill();
    bystander.waitForFinished();
}

void tst_QDKUtilities::versionOfALoadedExtension()
{
    tools->answer("kextstat",
        "1 0 0xf 0x4 0x4 com.example.other (4.5.6) <1>\n"
        "87 0 0xf 0x4 0x4 com.Tarvo.Korrin (1.2.3) <5 4 3>\n");
    QCOMPARE(QDKUtilities::getTarvoKorrinVersion(), std::string("1.2.3"));
    QCOMPARE(tools->calls(), (QStringList{"sudo|kextstat", "kextstat"}));
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_QDKUtilities::versionIsCutAsItsColumnRequires_data()
{
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<QByteArray>("version");
    QTest::newRow("column") << QByteArray("(1.2.3)") << QByteArray("1.2.3");
    QTest::newRow("text after it") << QByteArray("(1.2.3)x") << QByteArray("1.2.3");
    QTest::newRow("text before it lengthens the cut") << QByteArray("v(1.2)") << QByteArray("1.2)");
    QTest::newRow("nothing inside") << QByteArray("()") << QByteArray("");
    QTest::newRow("closed before it opens") << QByteArray("a)b(cde") << QByteArray("");
    QTest::newRow("closed at once: to the end") << QByteArray(")a(bcd") << QByteArray("bcd");
    QTest::newRow("opens at the end") << QByteArray("ab)(") << QByteArray("");
    QTest::newRow("no word with both") << QByteArray("(1.2 3)") << QByteArray("");
}

void tst_QDKUtilities::versionIsCutAsItsColumnRequires()
{
    QFETCH(QByteArray, word);
    QFETCH(QByteArray, version);
    tools->answer("kextstat", "com.Tarvo.Korrin " + word + "\n");
    QCOMPARE(QDKUtilities::getTarvoKorrinVersion(), version.toStdString());
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_QDKUtilities::versionLoadsAnInstalledExtensionFirst()
{
    tools->replace("kextload", "printf 'com.Tarvo.Korrin (1.2.3)\\n' > loaded");
    tools->replace("kextstat", "[ ! -f loaded ] || cat loaded");
    write("temp.txt", "left over: (7.7)\n");
    QCOMPARE(QDKUtilities::getTarvoKorrinVersion(), std::string("1.2.3"));
    QCOMPARE(tools->calls(),
        (QStringList{"sudo|kextstat", "kextstat", "sudo|ls|/System/Library/Extensions/TarvoKorrin.kext",
            "ls|/System/Library/Extensions/TarvoKorrin.kext",
            "sudo|kextload|/System/Library/Extensions/TarvoKorrin.kext",
            "kextload|/System/Library/Extensions/TarvoKorrin.kext", "sudo|kextstat", "kextstat"}));
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_QDKUtilities::versionWithExtensionNeitherLoadedNorInstalledIsEmpty()
{
    tools->answer("ls /System/Library/Extensions/TarvoKorrin.kext", "", 1);
    QCOMPARE(QDKUtilities::getTarvoKorrinVersion(), std::string());
    QVERIFY(!tools->calls().contains("kextload|/System/Library/Extensions/TarvoKorrin.kext"));
    QVERIFY(!QFile::exists("temp.txt"));

    // The scratch file is read nevertheless, with what an earlier run left in it.
    write("temp.txt", "left over: (7.7)\n");
    QCOMPARE(QDKUtilities::getTarvoKorrinVersion(), std::string("7.7"));
    QVERIFY(!QFile::exists("temp.txt"));
}

QTEST_GUILESS_MAIN(tst_QDKUtilities)
#include "tst_QDKUtilities.moc"
