// SPDX-License-Identifier: MIT
#include "companion/QDKUtilities.h"
#include "tests/companion/CLibrary.h"
#include "tests/companion/Searches.h"
#include "tests/support/StandInTools.h"

#include <QtTest>

#include <memory>

namespace {

void writeScratchFile(const QByteArray &content)
{
    QFile file("temp.txt");
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

} // namespace

class tst_QDKUtilities : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void commandIsRunWhateverItsStatus_data();
    void commandIsRunWhateverItsStatus();
    void pathsReachTheToolsAsOneWord();

    void searchFindsItsNeedle_data();
    void searchFindsItsNeedle();
    void searchWithoutAScratchFileIsNegativeAndRemovesNothing_data();
    void searchWithoutAScratchFileIsNegativeAndRemovesNothing();
    void statusOfTheCommandsIsIgnored_data();
    void statusOfTheCommandsIsIgnored();
    void queryReadsWhatItsListingPrints_data();
    void queryReadsWhatItsListingPrints();
    void leftoverWithTheNeedleMakesTheNextCheckPositive();
    void killStopsTheProcessThatIsListed();

    void versionLoadsTheExtensionWhereItIsInstalledOnly_data();
    void versionLoadsTheExtensionWhereItIsInstalledOnly();
    void versionIsCutAsItsColumnRequires_data();
    void versionIsCutAsItsColumnRequires();
    void versionWithoutAScratchFileIsEmpty();
    void versionIsThatOfTheListing();
    void versionOfAnExtensionThatWasLoadedForIt();

private:
    std::unique_ptr<StandInTools> tools;
};

void tst_QDKUtilities::init()
{
    tools = std::make_unique<StandInTools>();
    CLibrary::reset();
}

void tst_QDKUtilities::cleanup()
{
    tools.reset();
}

void tst_QDKUtilities::commandIsRunWhateverItsStatus_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("status");
    for (const int index : {0, 1, 2}) {
        for (const int status : {0, 256, 512, 9, -1}) {
            QTest::addRow("%d, status %d", index, status) << index << status;
        }
    }
}

void tst_QDKUtilities::commandIsRunWhateverItsStatus()
{
    QFETCH(int, index);
    QFETCH(int, status);
    struct Command
    {
        int (*call)();
        QByteArray text;
        int result;
    };
    const Command command = QList<Command>{
        {QDKUtilities::startService,
            "sudo launchctl submit -l com.tarvo.quaydesk.service -p "
            "/Library/Application\\ Support/Tarvo/Quaydesk/tarvo_qd_service",
            1},
        {QDKUtilities::launchQDK, "open \"/Applications/Tarvo Quaydesk.app\"", status},
        {QDKUtilities::launchQDKStatusItem,
            "open \"/Applications/Tarvo Quaydesk.app/Contents/MacOS/QDKStatusItem.app\"", status},
    }[index];
    CLibrary::withoutShell({{command.text, status}});
    QCOMPARE(command.call(), command.result);
    QCOMPARE(CLibrary::calls(), QStringList{"system(" + command.text + ")"});
}

void tst_QDKUtilities::pathsReachTheToolsAsOneWord()
{
    QDKUtilities::startService();
    const QString submit = "launchctl|submit|-l|com.tarvo.quaydesk.service|-p|/Library/Application "
                           "Support/Tarvo/Quaydesk/tarvo_qd_service";
    QCOMPARE(tools->calls(), (QStringList{"sudo|" + submit, submit}));
    tools->forgetCalls();
    tools->answer("open /Applications/Tarvo Quaydesk.app", "", 1);
    QCOMPARE(QDKUtilities::launchQDK(), 256);
    QCOMPARE(QDKUtilities::launchQDKStatusItem(), 0);
    QCOMPARE(tools->calls(),
        (QStringList{"open|/Applications/Tarvo Quaydesk.app",
            "open|/Applications/Tarvo Quaydesk.app/Contents/MacOS/QDKStatusItem.app"}));
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_QDKUtilities::searchFindsItsNeedle_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("holdsNeedle");
    QTest::addColumn<QString>("beforeNeedle");
    for (int index = 0; index < int(Searches.size()); ++index) {
        const Search &search = Searches[index];
        for (const Listing &listing : listingsFor(search)) {
            QTest::addRow("%s: %s", search.name, listing.name)
                << index << listing.content << listing.holdsNeedle << listing.beforeNeedle;
        }
    }
}

void tst_QDKUtilities::searchFindsItsNeedle()
{
    QFETCH(int, index);
    QFETCH(QByteArray, content);
    QFETCH(bool, holdsNeedle);
    QFETCH(QString, beforeNeedle);
    const Search &search = Searches[index];
    writeScratchFile(content);
    CLibrary::withoutShell();
    QCOMPARE(search.call(), holdsNeedle ? search.found : search.notFound);

    QStringList calls = {"system(" + search.listing + ")", "fopen(temp.txt, r)"};
    if (holdsNeedle && !search.action.isEmpty()) {
        calls.append("system(" + QString(search.action).replace("%1", beforeNeedle) + ")");
    }
    QCOMPARE(CLibrary::calls(), calls + QStringList({"fclose()", "remove(temp.txt)"}));
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_QDKUtilities::searchWithoutAScratchFileIsNegativeAndRemovesNothing_data()
{
    QTest::addColumn<int>("index");
    for (int index = 0; index < int(Searches.size()); ++index) {
        QTest::newRow(Searches[index].name) << index;
    }
}

void tst_QDKUtilities::searchWithoutAScratchFileIsNegativeAndRemovesNothing()
{
    QFETCH(int, index);
    const Search &search = Searches[index];
    // A dangling symbolic link into a directory that does not exist can be neither written nor read.
    QVERIFY(QFile::link("missing/directory/temp.txt", "temp.txt"));
    QCOMPARE(search.call(), search.notFound);
    QCOMPARE(CLibrary::calls(), (QStringList{"system(" + search.listing + ")", "fopen(temp.txt, r)"}));
    QVERIFY(QFileInfo("temp.txt").isSymLink());
}

void tst_QDKUtilities::statusOfTheCommandsIsIgnored_data()
{
    searchWithoutAScratchFileIsNegativeAndRemovesNothing_data();
}

void tst_QDKUtilities::statusOfTheCommandsIsIgnored()
{
    QFETCH(int, index);
    const Search &search = Searches[index];
    const QByteArray action = QString(search.action).replace("%1", "  312").toLatin1();
    for (const int status : {256, 9, -1}) {
        writeScratchFile("  312 " + search.needle + "\n");
        CLibrary::withoutShell({{search.listing.toLatin1(), status}, {action, status}});
        QCOMPARE(search.call(), search.found);
        writeScratchFile("  312 other\n");
        QCOMPARE(search.call(), search.notFound);
    }
}

void tst_QDKUtilities::queryReadsWhatItsListingPrints_data()
{
    searchWithoutAScratchFileIsNegativeAndRemovesNothing_data();
}

void tst_QDKUtilities::queryReadsWhatItsListingPrints()
{
    QFETCH(int, index);
    const Search &search = Searches[index];
    const bool bySudo = search.listing.startsWith("sudo ");
    const QString command = search.listing.section(" >> ", 0, 0).section(" | ", 0, 0).mid(bySudo ? 5 : 0);
    const QString call = QString(command).replace(' ', '|');
    // "Tarvo" for the filter; no process has this number.
    tools->answer(command, "99999999 Tarvo\n");
    QCOMPARE(search.call(), search.notFound);
    QCOMPARE(tools->calls(), bySudo ? QStringList({"sudo|" + call, call}) : QStringList{call});
    tools->answer(command, "99999999 " + search.needle + " of Tarvo\n");
    QCOMPARE(search.call(), search.found);
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_QDKUtilities::leftoverWithTheNeedleMakesTheNextCheckPositive()
{
    tools->answer("ls /Library/LaunchDaemons", "com.example.other.plist\n");
    writeScratchFile("com.tarvo.quaydesk.service.plist\n");
    QVERIFY(QDKUtilities::isQDKInstalled());
    QVERIFY(!QDKUtilities::isQDKInstalled());
}

void tst_QDKUtilities::killStopsTheProcessThatIsListed()
{
    QProcess victim;
    QProcess bystander;
    victim.start("sleep", {"60"});
    bystander.start("sleep", {"60"});
    QVERIFY(victim.waitForStarted() && bystander.waitForStarted());
    tools->answer("ps -axcopid,command",
        "  PID COMMAND\n    1 launchd\n  " + QByteArray::number(victim.processId()) + " Tarvo Quaydesk\n  "
            + QByteArray::number(bystander.processId()) + " Tarvo Quaydesk\n");
    QCOMPARE(QDKUtilities::killQDK(), 1);
    QVERIFY(victim.waitForFinished());
    QCOMPARE(victim.exitStatus(), QProcess::CrashExit);
    QVERIFY(!bystander.waitForFinished(100));
    bystander.kill();
    bystander.waitForFinished();
}

void tst_QDKUtilities::versionLoadsTheExtensionWhereItIsInstalledOnly_data()
{
    QTest::addColumn<int>("listed");
    QTest::addColumn<int>("installed");
    QTest::addColumn<int>("loaded");
    QTest::addColumn<bool>("loads");
    QTest::newRow("loaded") << 0 << 0 << 0 << false;
    QTest::newRow("not loaded, installed") << 256 << 0 << 0 << true;
    QTest::newRow("listing ended by a signal, installed") << 2 << 0 << 0 << true;
    QTest::newRow("no shell for the listing, installed") << -1 << 0 << 0 << true;
    QTest::newRow("cannot be loaded") << 256 << 0 << 256 << true;
    QTest::newRow("neither loaded nor installed") << 256 << 256 << 0 << false;
    QTest::newRow("no shell") << -1 << -1 << 0 << false;
}

void tst_QDKUtilities::versionLoadsTheExtensionWhereItIsInstalledOnly()
{
    QFETCH(int, listed);
    QFETCH(int, installed);
    QFETCH(int, loaded);
    QFETCH(bool, loads);
    const QByteArray listing = "sudo kextstat | grep com.Tarvo.Korrin >> temp.txt";
    const QByteArray looking = "sudo ls /System/Library/Extensions/TarvoKorrin.kext";
    const QByteArray loading = "sudo kextload /System/Library/Extensions/TarvoKorrin.kext";
    writeScratchFile("left over: (7.7)\n");
    CLibrary::withoutShell({{listing, listed}, {looking, installed}, {loading, loaded}});
    // What is left over is read unless the extension is loaded first.
    QCOMPARE(QDKUtilities::getTarvoKorrinVersion(), std::string(loads ? "" : "7.7"));

    QStringList calls = {"system(" + listing + ")"};
    if (listed != 0) {
        calls.append("system(" + looking + ")");
    }
    if (loads) {
        calls += {"system(" + loading + ")", "remove(temp.txt)", "system(" + listing + ")"};
    }
    calls.append("fopen(temp.txt, r)");
    if (!loads) {
        calls += {"fclose()", "remove(temp.txt)"};
    }
    QCOMPARE(CLibrary::calls(), calls);
}

void tst_QDKUtilities::versionIsCutAsItsColumnRequires_data()
{
    QTest::addColumn<QByteArray>("listing");
    QTest::addColumn<QByteArray>("version");
    const auto row = [](const char *name, const QByteArray &listing, const QByteArray &version) {
        QTest::newRow(name) << listing << version;
    };
    row("column", "87 0 0xf 0x4 0x4 com.Tarvo.Korrin (1.2.3) <5 4 3>\n", "1.2.3");
    row("first of two", "(1.2.3) (4.5.6)\n", "1.2.3");
    row("text after it", "(1.2.3)x", "1.2.3");
    row("text before it lengthens the cut", "v(1.2)", "1.2)");
    row("nothing inside", "()", "");
    row("nothing inside the first", "() (1.2)", "");
    row("first opening parenthesis", "(1(2)", "1(2");
    row("first closing parenthesis", "(1)2)", "1");
    row("closed before it opens", "a)b(cde", "");
    row("closed at once: to the end", ")a(bcd", "bcd");
    row("opens at the end", "ab)(", "");
    row("opened only", "(1.2 1.2", "");
    row("closed only", "1.2) 1.2", "");
    row("no word with both", "(1.2 3)", "");
    row("behind a word with one", "(a b) (1.2)", "1.2");
    row("nothing", "", "");
    row("up to the end of a read", "(" + QByteArray(125, '1') + ")", QByteArray(125, '1'));
    row("cut by the end of a read", "(" + QByteArray(126, '1') + ")", "");
    row("in the second read of a word", QByteArray(127, '1') + "(1.2)", "1.2");
    row("behind a zero byte", QByteArray("1\0(1.2)", 7), "");
}

void tst_QDKUtilities::versionIsCutAsItsColumnRequires()
{
    QFETCH(QByteArray, listing);
    QFETCH(QByteArray, version);
    writeScratchFile(listing);
    CLibrary::withoutShell();
    QCOMPARE(QDKUtilities::getTarvoKorrinVersion(), version.toStdString());
    QCOMPARE(CLibrary::calls().mid(1), (QStringList{"fopen(temp.txt, r)", "fclose()", "remove(temp.txt)"}));
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_QDKUtilities::versionWithoutAScratchFileIsEmpty()
{
    QVERIFY(QFile::link("missing/directory/temp.txt", "temp.txt"));
    tools->answer("ls /System/Library/Extensions/TarvoKorrin.kext", "", 1);
    QCOMPARE(QDKUtilities::getTarvoKorrinVersion(), std::string());
    QCOMPARE(CLibrary::calls().last(), QString("fopen(temp.txt, r)"));
    QVERIFY(QFileInfo("temp.txt").isSymLink());
}

void tst_QDKUtilities::versionIsThatOfTheListing()
{
    tools->answer("kextstat",
        "1 0 0xf 0x4 0x4 com.example.other (4.5.6) <1>\n"
        "87 0 0xf 0x4 0x4 com.Tarvo.Korrin (1.2.3) <5 4 3>\n");
    QCOMPARE(QDKUtilities::getTarvoKorrinVersion(), std::string("1.2.3"));
    QCOMPARE(tools->calls(), (QStringList{"sudo|kextstat", "kextstat"}));
    writeScratchFile("left over: com.Tarvo.Korrin (9.9)\n");
    QCOMPARE(QDKUtilities::getTarvoKorrinVersion(), std::string("9.9"));
}

void tst_QDKUtilities::versionOfAnExtensionThatWasLoadedForIt()
{
    tools->replace("kextload", "printf 'com.Tarvo.Korrin (1.2.3)\\n' > loaded");
    tools->replace("kextstat", "[ ! -f loaded ] || cat loaded");
    writeScratchFile("left over: (7.7)\n");
    QCOMPARE(QDKUtilities::getTarvoKorrinVersion(), std::string("1.2.3"));
    QCOMPARE(tools->calls(),
        (QStringList{"sudo|kextstat", "kextstat", "sudo|ls|/System/Library/Extensions/TarvoKorrin.kext",
            "ls|/System/Library/Extensions/TarvoKorrin.kext",
            "sudo|kextload|/System/Library/Extensions/TarvoKorrin.kext",
            "kextload|/System/Library/Extensions/TarvoKorrin.kext", "sudo|kextstat", "kextstat"}));
    QVERIFY(!QFile::exists("temp.txt"));
}

QTEST_GUILESS_MAIN(tst_QDKUtilities)
#include "tst_QDKUtilities.moc"
