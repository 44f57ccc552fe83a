// SPDX-License-Identifier: MIT
#include "tests/support/DeviceRecords.h"
#include "tests/support/TestProgram.h"
#include "tests/support/WidgetDescription.h"
#include "tests/support/WindowTexts.h"
#include "tests/ui/BoxAnswerer.h"
#include "tests/ui/WindowFixture.h"
#include "ui/DeviceLayout.h"

#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QtTest>

using DeviceRecords::fireWireDrive;
using DeviceRecords::usbDrive;

namespace {

void verifyBox(QMessageBox &box)
{
    QMessageBox expected(QMessageBox::Warning, "Tarvo Quaydesk installed and running",
        "Tarvo Quaydesk is installed on this computer. Please Uninstall Tarvo Quaydesk before using Tarvo "
        "Firmware Updater.",
        QMessageBox::Ok);
    expected.setDefaultButton(QMessageBox::Ok);
    expected.button(QMessageBox::Ok)->setText("Ok");
    expected.setModal(true);
    // A box settles its size when it is shown.
    expected.show();
    QCOMPARE(WidgetDescription::differences(box, expected), QString());
    QCOMPARE(WidgetDescription::differences(*box.button(QMessageBox::Ok), *expected.button(QMessageBox::Ok)),
        QString());
    QCOMPARE(box.icon(), QMessageBox::Warning);
    QCOMPARE(box.buttons().size(), 1);
    QCOMPARE(box.defaultButton(), qobject_cast<QPushButton *>(box.button(QMessageBox::Ok)));
    QCOMPARE(box.windowIcon().pixmap(32, 32).toImage(), QPixmap(":/firmwareUpdater/TarvoLogo.png").toImage());
    QVERIFY(box.parent() == nullptr);
    QCOMPARE(box.windowFlags(), expected.windowFlags());
    QVERIFY(box.windowFlags().testFlag(Qt::MSWindowsFixedSizeDialogHint));
}

} // namespace

class tst_CompanionWarning : public QObject
{
    Q_OBJECT

private slots:
    void companionIsCheckedOnEveryRefresh();
    void companionAtStartIsWarnedOfOnceDuringConstruction();
    void companionBoxSaysWhatToDo();
    void companionBoxEndsTheProgramOnlyWithOk();
    void companionAfterStartIsWarnedOfAtTheNextRefreshOnceAndOkDoesNotEndTheProgram();
    void listsAndResultsArriveWhileTheBoxIsOpen();
    void listsArriveWhileTheBoxIsOpenOverASuccess();
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
    WarnedWindow warned(pressOk);
    MainWindow &window = *warned.window;
    QCOMPARE(warned.answerer.boxesSeen, 1);
    QVERIFY(window.quitAtStartup);
    QVERIFY(window.isVisible());
    // No content but the version; the column has its leading stretch and nothing else.
    QCOMPARE(WindowProbe::texts(window), QStringList{VersionText});
    verifyVersion(window);
    QCOMPARE(window.findChild<QScrollArea *>()->widget()->layout()->count(), 1);
    // Later refreshes check again but show the drives.
    warned.tools.forgetCalls();
    window.updateWindow();
    QCOMPARE(warned.tools.calls(), QStringList{"ls|/Library/LaunchDaemons"});
    QCOMPARE(warned.answerer.boxesSeen, 1);
    QCOMPARE(WindowProbe::texts(window), (QStringList{NoDriveText, VersionText}));
}

void tst_CompanionWarning::companionBoxSaysWhatToDo()
{
    bool compared = false;
    const WarnedWindow warned([&compared](QMessageBox &box) {
        verifyBox(box);
        compared = true;
    });
    QVERIFY(compared);
}

void tst_CompanionWarning::companionBoxEndsTheProgramOnlyWithOk()
{
    QVERIFY(WarnedWindow([](QMessageBox &box) { box.close(); }).window->quitAtStartup);
    QVERIFY(!WarnedWindow([](QMessageBox &box) { box.done(QMessageBox::Cancel); }).window->quitAtStartup);
}

void tst_CompanionWarning::companionAfterStartIsWarnedOfAtTheNextRefreshOnceAndOkDoesNotEndTheProgram()
{
    WindowFixture fixture;
    fixture.tools.installCompanion();
    BoxAnswerer answerer(pressOk);
    fixture.deliver({usbDrive()});
    QCOMPARE(answerer.boxesSeen, 1);
    QCOMPARE(fixture.texts(), QStringList{VersionText});
    fixture.deliver({usbDrive(), usbDrive("B")});
    QCOMPARE(answerer.boxesSeen, 1);
    QVERIFY(fixture.texts().contains("Tarvo Pebble"));
    QVERIFY(fixture.window.isVisible());
    // Set as at the start, but nobody reads it any more.
    QVERIFY(fixture.window.quitAtStartup);
}

void tst_CompanionWarning::listsAndResultsArriveWhileTheBoxIsOpen()
{
    WindowFixture fixture;
    fixture.deliver({usbDrive("A"), usbDrive("A")});
    fixture.tools.installCompanion();
    ScriptedPlatform::holdFlashes();
    int refreshes = 0;
    connect(fixture.window.findChild<QStackedWidget *>(), &QStackedWidget::widgetRemoved, this,
        [&refreshes] { ++refreshes; });
    bool answered = false;
    BoxAnswerer answerer([&](QMessageBox &box) {
        // The list that the refresh was walking is replaced under it.
        fixture.deliver({});
        QCOMPARE(fixture.texts(), (QStringList{NoDriveText, VersionText}));
        fixture.deliver(numberedDrives(4));
        QCOMPARE(fixture.buttons().size(), 4);
        // Nothing that is attached is selected.
        fixture.finish(false);
        QCOMPARE(fixture.texts(), QStringList{VersionText});
        QCOMPARE(refreshes, 3);
        answered = true;
        pressOk(box);
    });
    fixture.window.startUpdate("A");
    QVERIFY(answered);
    QCOMPARE(answerer.boxesSeen, 1);
    // One more for each record that the list held when the update was started.
    QCOMPARE(refreshes, 5);
    QCOMPARE(fixture.texts(), QStringList{VersionText});
    QCOMPARE(fixture.window.size(), QSize(850, 520));
    QTRY_COMPARE(ScriptedPlatform::count("Asm1051(A)"), 1);
    // The drive is being flashed, and its page is there as soon as it is.
    fixture.deliver({usbDrive("A")});
    QVERIFY(WindowProbe::showsBusyBar(fixture.window));
}

void tst_CompanionWarning::listsArriveWhileTheBoxIsOpenOverASuccess()
{
    WindowFixture fixture;
    fixture.deliver({usbDrive("A"), usbDrive("A")});
    fixture.window.updateDevice("A");
    fixture.tools.installCompanion();
    int refreshes = 0;
    connect(fixture.window.findChild<QStackedWidget *>(), &QStackedWidget::widgetRemoved, this,
        [&refreshes] { ++refreshes; });
    BoxAnswerer answerer([&](QMessageBox &box) {
        // The list that the result is being looked up in is replaced under it, by one of its length.
        fixture.deliver({usbDrive("B"), usbDrive("C")});
        pressOk(box);
    });
    fixture.finish(true);
    QCOMPARE(answerer.boxesSeen, 1);
    // One for each record that the list held when the result came, and the last one of a success.
    QCOMPARE(refreshes, 3);
    QCOMPARE(fixture.texts(), QStringList{VersionText});
    // The drive was missing in the list, but its second record has begun the restart once more.
    fixture.deliver({usbDrive("A")});
    QCOMPARE(fixture.texts(), QStringList{VersionText});
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

static const TestClass<tst_CompanionWarning, QApplication> companionWarningTests;
#include "tst_CompanionWarning.moc"
