#include "tests/support/DeviceRecords.h"
#include "tests/ui/BoxAnswerer.h"
#include "tests/ui/WindowFixture.h"
#include "ui/DeviceLayout.h"

#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QScrollArea>
#include <QtTest>

using DeviceRecords::fireWireDrive;
using DeviceRecords::usbDrive;

namespace {

const QString NoDriveText =
    "<b>No compatible Tarvo device were found.</b><br/><br/><b>Please plug a compatible Tarvo device.</b>";

} // namespace

class tst_CompanionWarning : public QObject
{
    Q_OBJECT

private slots:
    void companionIsCheckedOnEveryRefresh();
    void companionAtStartIsWarnedOfOnceDuringConstruction();
    void companionBoxSaysWhatToDo();
    void companionBoxClosedOtherwiseStillMeansOk();
    void companionAfterStartIsWarnedOfAtTheNextRefreshOnceAndOkDoesNotEndTheProgram();
    void listsAndResultsArriveWhileTheBoxIsOpen();
    void clickThatOpensTheBoxSurvivesARefreshInsideIt();
};

void tst_CompanionWarning::companionIsCheckedOnEveryRefresh()
{
    WindowFixture fixture;
    QCOMPARE(fixture.tools.calls(), QStringList{"ls|/Library/LaunchDaemons"});
    fixture.window.updateWindow();
    fixture.deliver({usbDrive()});
    QCOMPARE(fixture.tools.calls(), WindowProbe::repeated(3, "ls|/Library/LaunchDaemons"));
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_CompanionWarning::companionAtStartIsWarnedOfOnceDuringConstruction()
{
    StandInTools tools;
    tools.installCompanion();
    HeldPlatform platform;
    Arguments arguments;
    BoxAnswerer answerer(pressOk);
    MainWindow window(arguments.count, arguments.vector);
    QCOMPARE(answerer.boxesSeen, 1);
    QVERIFY(window.quitAtStartup);
    QVERIFY(window.isVisible());
    // No content but the version; the column has its leading stretch and nothing else.
    QCOMPARE(WindowProbe::texts(window), QStringList{"Orvi: 1.1.6"});
    verifyVersion(window);
    QCOMPARE(window.findChild<QScrollArea *>()->widget()->layout()->count(), 1);
    // Later refreshes check again but show the drives.
    tools.forgetCalls();
    window.updateWindow();
    QCOMPARE(tools.calls(), QStringList{"ls|/Library/LaunchDaemons"});
    QCOMPARE(answerer.boxesSeen, 1);
    QCOMPARE(WindowProbe::texts(window), (QStringList{NoDriveText, "Orvi: 1.1.6"}));
    QTRY_COMPARE(ScriptedPlatform::count("getTarvoDevice"), 1);
}

void tst_CompanionWarning::companionBoxSaysWhatToDo()
{
    StandInTools tools;
    tools.installCompanion();
    HeldPlatform platform;
    Arguments arguments;
    BoxAnswerer answerer([](QMessageBox &box) {
        QCOMPARE(box.windowTitle(), QString("Tarvo Quaydesk installed and running"));
        QCOMPARE(box.text(),
            QString("Tarvo Quaydesk is installed on this computer. Please Uninstall Tarvo Quaydesk before "
                    "using Tarvo "
                    "Firmware Updater."));
        QCOMPARE(box.icon(), QMessageBox::Warning);
        QCOMPARE(box.standardButtons(), QMessageBox::StandardButtons(QMessageBox::Ok));
        QCOMPARE(box.button(QMessageBox::Ok)->text(), QString("Ok"));
        QCOMPARE(box.defaultButton(), qobject_cast<QPushButton *>(box.button(QMessageBox::Ok)));
        QCOMPARE(
            box.windowIcon().pixmap(32, 32).toImage(), QPixmap(":/firmwareUpdater/TarvoLogo.png").toImage());
        QVERIFY(box.windowFlags().testFlag(Qt::Dialog));
        QVERIFY(box.isModal());
        QVERIFY(box.parent() == nullptr);
        QVERIFY(box.windowFlags().testFlag(Qt::MSWindowsFixedSizeDialogHint));
        pressOk(box);
    });
    const MainWindow window(arguments.count, arguments.vector);
    QCOMPARE(answerer.boxesSeen, 1);
    QTRY_COMPARE(ScriptedPlatform::count("getTarvoDevice"), 1);
}

void tst_CompanionWarning::companionBoxClosedOtherwiseStillMeansOk()
{
    StandInTools tools;
    tools.installCompanion();
    HeldPlatform platform;
    Arguments arguments;
    BoxAnswerer answerer([](QMessageBox &box) { box.close(); });
    const MainWindow window(arguments.count, arguments.vector);
    QCOMPARE(answerer.boxesSeen, 1);
    QTRY_COMPARE(ScriptedPlatform::count("getTarvoDevice"), 1);
    QVERIFY(window.quitAtStartup);
}

void tst_CompanionWarning::companionAfterStartIsWarnedOfAtTheNextRefreshOnceAndOkDoesNotEndTheProgram()
{
    WindowFixture fixture;
    fixture.tools.installCompanion();
    BoxAnswerer answerer(pressOk);
    fixture.deliver({usbDrive()});
    QCOMPARE(answerer.boxesSeen, 1);
    QCOMPARE(fixture.texts(), QStringList{"Orvi: 1.1.6"});
    fixture.deliver({usbDrive(), usbDrive("B")});
    QCOMPARE(answerer.boxesSeen, 1);
    QVERIFY(fixture.texts().contains("Tarvo Pebble"));
    QVERIFY(fixture.window.isVisible());
}

void tst_CompanionWarning::listsAndResultsArriveWhileTheBoxIsOpen()
{
    WindowFixture fixture;
    fixture.deliver({usbDrive("A"), usbDrive("A")});
    fixture.tools.installCompanion();
    ScriptedPlatform::holdFlashes();
    BoxAnswerer answerer([&fixture](QMessageBox &box) {
        // The list that the refresh was walking is replaced under it.
        fixture.deliver({});
        QVERIFY(fixture.texts().contains(NoDriveText));
        fixture.deliver(drives(4));
        fixture.finish(false);
        QVERIFY(fixture.page() != nullptr);
        pressOk(box);
    });
    QMetaObject::invokeMethod(&fixture.window, "startUpdate", Q_ARG(QString, "A"));
    QCOMPARE(answerer.boxesSeen, 1);
    QVERIFY(fixture.page() != nullptr);
    QTRY_COMPARE(ScriptedPlatform::count("Asm1051(A)"), 1);
}

void tst_CompanionWarning::clickThatOpensTheBoxSurvivesARefreshInsideIt()
{
    WindowFixture fixture;
    fixture.deliver({usbDrive("A")});
    fixture.tools.installCompanion();
    const QPointer<QPushButton> button =
        WindowProbe::button(fixture.window, "Update Firmware and Configuration");
    QPointer<DeviceLayout> page;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *candidate = qobject_cast<DeviceLayout *>(widget)) {
            page = candidate;
        }
    }
    QVERIFY(!page.isNull());
    BoxAnswerer answerer([&](QMessageBox &box) {
        fixture.deliver({usbDrive("A"), fireWireDrive("B")});
        // The page of the pressed button goes while the press is still being handled.
        QVERIFY(button.isNull());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(page.isNull());
        pressOk(box);
    });
    QVERIFY(WindowProbe::press(*button));
    QCOMPARE(answerer.boxesSeen, 1);
    QVERIFY(fixture.page() != nullptr);
    fixture.deliver({usbDrive("A")});
    QVERIFY(fixture.texts().contains("Tarvo Pebble"));
}

QTEST_MAIN(tst_CompanionWarning)
#include "tst_CompanionWarning.moc"
