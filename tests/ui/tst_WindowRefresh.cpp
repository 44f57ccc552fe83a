#include "tests/support/DeviceRecords.h"
#include "tests/ui/WindowFixture.h"
#include "ui/DeviceLayout.h"

#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QtTest>

using DeviceRecords::fireWireDrive;
using DeviceRecords::usbDrive;

namespace {

const QString NoDriveText =
    "<b>No compatible Tarvo device were found.</b><br/><br/><b>Please plug a compatible Tarvo device.</b>";

QVector<DeviceInfo> drives(int count)
{
    QVector<DeviceInfo> list;
    for (int number = 1; number <= count; ++number) {
        DeviceInfo drive = usbDrive("SN-" + std::to_string(number));
        drive.modelName = "Pebble " + std::to_string(number);
        list.append(drive);
    }
    return list;
}

/// The text that names a drive's page, and where that page stands.
QList<QPoint> placesOf(const WindowFixture &fixture, int count)
{
    QList<QPoint> places;
    for (int number = 1; number <= count; ++number) {
        for (const QLabel *label : fixture.window.findChildren<QLabel *>()) {
            if (label->text() == QString("Tarvo Pebble %1").arg(number)) {
                places.append(label->mapTo(&fixture.window, label->rect().center()));
            }
        }
    }
    return places;
}

/// The program's version stands once in the window, at its bottom, in small italics.
void verifyVersion(MainWindow &window)
{
    QCOMPARE(WindowProbe::texts(window).count("Orvi: 1.1.6"), 1);
    for (const QLabel *label : window.findChildren<QLabel *>()) {
        if (label->text() == "Orvi: 1.1.6") {
            QVERIFY(label->font().italic());
            QCOMPARE(label->font().pixelSize(), 10);
            QCOMPARE(label->height(), 12);
            QVERIFY(label->mapTo(&window, QPoint()).y() > window.height() - 40);
        }
    }
}

void pressOk(QMessageBox &box)
{
    WindowProbe::press(*box.button(QMessageBox::Ok));
}

/// Answers the companion's box as soon as it is open, and keeps what it showed.
class BoxAnswerer : public QObject
{
public:
    explicit BoxAnswerer(std::function<void(QMessageBox &)> answer) : answer(std::move(answer))
    {
        startTimer(1);
    }

    int boxesSeen = 0;

protected:
    void timerEvent(QTimerEvent *) override
    {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (box != nullptr && box->isVisible() && box != lastBox) {
            lastBox = box;
            ++boxesSeen;
            answer(*box);
            // Also after a check in the answer has failed: an open box would hold up the test for ever.
            if (box->isVisible()) {
                pressOk(*box);
            }
        }
    }

private:
    std::function<void(QMessageBox &)> answer;
    QPointer<QMessageBox> lastBox;
};

} // namespace

class tst_WindowRefresh : public QObject
{
    Q_OBJECT

private slots:
    void noDriveShowsTheMessageCentredInBold();
    void emptyListShowsTheMessageInEveryState_data();
    void emptyListShowsTheMessageInEveryState();
    void drivesDecideTheWindowsSize_data();
    void drivesDecideTheWindowsSize();
    void refreshSizesTheWindowAnew();
    void drivesStandInRowsOfThree_data();
    void drivesStandInRowsOfThree();
    void fourDrivesStandInTwoRowsBelowAnEmptyOne();
    void tenDrivesFillFourRowsAndScroll();
    void selectedDriveIsShownAloneInAWindowForAllFive();
    void selectionThatMatchesNoDriveShowsNoPage();
    void versionStandsInSmallItalicsAtTheBottom_data();
    void versionStandsInSmallItalicsAtTheBottom();
    void layoutsHaveTheirMargins();
    void companionIsCheckedOnEveryRefresh();
    void companionAtStartIsWarnedOfOnceDuringConstruction();
    void companionBoxSaysWhatToDo();
    void companionBoxClosedOtherwiseStillMeansOk();
    void companionAfterStartIsWarnedOfAtTheNextRefreshOnceAndOkDoesNotEndTheProgram();
    void listsAndResultsArriveWhileTheBoxIsOpen();
    void clickThatOpensTheBoxSurvivesARefreshInsideIt();
    void refreshesLeaveNoWidgetBehind();
    void unchangedListOfAThousandDrivesRebuildsNothing();
};

void tst_WindowRefresh::noDriveShowsTheMessageCentredInBold()
{
    WindowFixture fixture;
    QCOMPARE(fixture.texts(), (QStringList{NoDriveText, "Orvi: 1.1.6"}));
    QCOMPARE(fixture.window.size(), QSize(850, 300));
    for (const QLabel *label : fixture.window.findChildren<QLabel *>()) {
        if (label->text() == NoDriveText) {
            QCOMPARE(label->alignment(), Qt::Alignment(Qt::AlignCenter));
            QVERIFY(label->wordWrap());
            const QPoint centre = label->mapTo(&fixture.window, label->rect().center());
            QVERIFY(qAbs(centre.x() - fixture.window.width() / 2) <= 2);
        }
    }
}

void tst_WindowRefresh::emptyListShowsTheMessageInEveryState_data()
{
    QTest::addColumn<int>("clicks");
    QTest::addColumn<QVariant>("result");
    QTest::newRow("Idle") << 0 << QVariant();
    QTest::newRow("DeviceSelected") << 1 << QVariant();
    QTest::newRow("InProgress") << 2 << QVariant();
    QTest::newRow("Success") << 2 << QVariant(true);
    QTest::newRow("Failure") << 2 << QVariant(false);
    QTest::newRow("RestartDevice") << 2 << QVariant(true);
}

void tst_WindowRefresh::emptyListShowsTheMessageInEveryState()
{
    QFETCH(int, clicks);
    QFETCH(QVariant, result);
    WindowFixture fixture;
    ScriptedPlatform::holdFlashes();
    const bool restart = QByteArray(QTest::currentDataTag()) == "RestartDevice";
    fixture.deliver({restart ? usbDrive() : fireWireDrive()});
    if (clicks > 0) {
        QVERIFY(fixture.click("Update Firmware and Configuration"));
    }
    if (clicks > 1) {
        QVERIFY(fixture.click("Update Firmware"));
    }
    if (result.isValid()) {
        fixture.finish(result.toBool());
    }
    QVERIFY(!fixture.texts().contains(NoDriveText));
    fixture.deliver({});
    if (restart) {
        // The list alone rebuilds nothing there.
        QVERIFY(!fixture.texts().contains(NoDriveText));
        fixture.window.updateWindow();
    }
    QCOMPARE(fixture.texts(), (QStringList{NoDriveText, "Orvi: 1.1.6"}));
}

void tst_WindowRefresh::drivesDecideTheWindowsSize_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QSize>("size");
    QTest::newRow("0") << 0 << QSize(850, 300);
    QTest::newRow("1") << 1 << QSize(850, 320);
    QTest::newRow("3") << 3 << QSize(850, 320);
    QTest::newRow("4") << 4 << QSize(850, 520);
    QTest::newRow("6") << 6 << QSize(850, 520);
    QTest::newRow("7") << 7 << QSize(850, 700);
    QTest::newRow("9") << 9 << QSize(850, 700);
    QTest::newRow("100") << 100 << QSize(850, 700);
}

void tst_WindowRefresh::drivesDecideTheWindowsSize()
{
    QFETCH(int, count);
    QFETCH(QSize, size);
    WindowFixture fixture;
    fixture.window.resizeWindow(count);
    QCOMPARE(fixture.window.size(), size);
    fixture.deliver({usbDrive("OTHER")});
    fixture.deliver(drives(count));
    QCOMPARE(fixture.window.size(), size);
}

void tst_WindowRefresh::refreshSizesTheWindowAnew()
{
    WindowFixture fixture;
    fixture.window.resize(400, 600);
    QCOMPARE(fixture.window.size(), QSize(400, 600));
    fixture.window.resize(10, 5000);
    QCOMPARE(fixture.window.size(), QSize(350, 700));
    fixture.window.updateWindow();
    QCOMPARE(fixture.window.size(), QSize(850, 300));
}

void tst_WindowRefresh::drivesStandInRowsOfThree_data()
{
    QTest::addColumn<int>("count");
    for (const int count : {1, 2, 3, 4, 5, 6, 7, 10}) {
        QTest::newRow(qPrintable(QString::number(count))) << count;
    }
}

void tst_WindowRefresh::drivesStandInRowsOfThree()
{
    QFETCH(int, count);
    WindowFixture fixture;
    fixture.deliver(drives(count));
    QTRY_COMPARE(placesOf(fixture, count).size(), count);
    QCoreApplication::processEvents();
    const QList<QPoint> places = placesOf(fixture, count);
    for (int index = 1; index < count; ++index) {
        const QPoint place = places[index];
        const QPoint previous = places[index - 1];
        if (index % 3 == 0) {
            QVERIFY(place.y() > previous.y());
        } else {
            QCOMPARE(place.y(), previous.y());
            QVERIFY(place.x() > previous.x());
        }
    }
}

void tst_WindowRefresh::fourDrivesStandInTwoRowsBelowAnEmptyOne()
{
    WindowFixture fixture;
    fixture.deliver(drives(4));
    QCOMPARE(fixture.window.size(), QSize(850, 520));
    const QScrollArea *area = fixture.window.findChild<QScrollArea *>();
    const QLayout *column = area->widget()->layout();
    // Stretch, empty row, stretch, row of three, stretch, row of one, stretch.
    QCOMPARE(column->count(), 7);
    QList<int> widgetsInRow;
    for (int index = 0; index < column->count(); ++index) {
        QCOMPARE(column->itemAt(index)->layout() != nullptr, index % 2 == 1);
        if (const QLayout *row = column->itemAt(index)->layout()) {
            int widgets = 0;
            for (int item = 0; item < row->count(); ++item) {
                widgets += row->itemAt(item)->widget() != nullptr ? 1 : 0;
                QCOMPARE(row->itemAt(item)->widget() != nullptr, item % 2 == 1);
            }
            QCOMPARE(row->count(), 2 * widgets + 1);
            widgetsInRow.append(widgets);
        }
    }
    QCOMPARE(widgetsInRow, (QList<int>{0, 3, 1}));
}

void tst_WindowRefresh::tenDrivesFillFourRowsAndScroll()
{
    WindowFixture fixture;
    fixture.deliver(drives(10));
    QCOMPARE(fixture.window.size(), QSize(850, 700));
    const QScrollArea *area = fixture.window.findChild<QScrollArea *>();
    QTRY_VERIFY(area->verticalScrollBar()->maximum() > 0);
    QVERIFY(area->verticalScrollBar()->isVisible());
    // The last drive can be scrolled to.
    area->verticalScrollBar()->setValue(area->verticalScrollBar()->maximum());
    QCoreApplication::processEvents();
    QVERIFY(area->viewport()->rect().contains(
        placesOf(fixture, 10).last() - area->viewport()->mapTo(&fixture.window, QPoint())));
}

void tst_WindowRefresh::selectedDriveIsShownAloneInAWindowForAllFive()
{
    WindowFixture fixture;
    fixture.deliver(drives(5));
    QMetaObject::invokeMethod(&fixture.window, "updateDevice", Q_ARG(QString, "SN-4"));
    QCOMPARE(fixture.window.size(), QSize(850, 520));
    QTRY_VERIFY(fixture.texts().contains("Tarvo Pebble 4"));
    for (const int other : {1, 2, 3, 5}) {
        QVERIFY(!fixture.texts().contains(QString("Tarvo Pebble %1").arg(other)));
    }
    const QScrollArea *area = fixture.window.findChild<QScrollArea *>();
    for (const QLabel *label : fixture.window.findChildren<QLabel *>()) {
        if (label->text() == "Tarvo Pebble 4") {
            QTRY_VERIFY(qAbs(label->mapTo(area->viewport(), label->rect().center()).x()
                            - area->viewport()->width() / 2)
                <= 2);
        }
    }
}

void tst_WindowRefresh::selectionThatMatchesNoDriveShowsNoPage()
{
    WindowFixture fixture;
    fixture.deliver(drives(2));
    QMetaObject::invokeMethod(&fixture.window, "updateDevice", Q_ARG(QString, "GONE"));
    QCOMPARE(fixture.texts(), QStringList{"Orvi: 1.1.6"});
    QVERIFY(fixture.buttons().isEmpty());
    QCOMPARE(fixture.window.size(), QSize(850, 320));
}

void tst_WindowRefresh::versionStandsInSmallItalicsAtTheBottom_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("no drive") << 0;
    QTest::newRow("one drive") << 1;
    QTest::newRow("ten drives") << 10;
}

void tst_WindowRefresh::versionStandsInSmallItalicsAtTheBottom()
{
    QFETCH(int, count);
    WindowFixture fixture;
    fixture.deliver(drives(count));
    QCoreApplication::processEvents();
    verifyVersion(fixture.window);
}

void tst_WindowRefresh::layoutsHaveTheirMargins()
{
    WindowFixture fixture;
    const QWidget *page = fixture.page();
    QCOMPARE(page->layout()->contentsMargins(), QMargins());
    QCOMPARE(page->layout()->count(), 2);
    QVERIFY(qobject_cast<QScrollArea *>(page->layout()->itemAt(0)->widget())->widgetResizable());
    QCOMPARE(page->layout()->itemAt(1)->layout()->contentsMargins(), QMargins());
    QCOMPARE(page->layout()->itemAt(1)->layout()->count(), 1);
}

void tst_WindowRefresh::companionIsCheckedOnEveryRefresh()
{
    WindowFixture fixture;
    QCOMPARE(fixture.tools.calls(), QStringList{"ls|/Library/LaunchDaemons"});
    fixture.window.updateWindow();
    fixture.deliver({usbDrive()});
    QCOMPARE(fixture.tools.calls(), WindowProbe::repeated(3, "ls|/Library/LaunchDaemons"));
    QVERIFY(!QFile::exists("temp.txt"));
}

void tst_WindowRefresh::companionAtStartIsWarnedOfOnceDuringConstruction()
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

void tst_WindowRefresh::companionBoxSaysWhatToDo()
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

void tst_WindowRefresh::companionBoxClosedOtherwiseStillMeansOk()
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

void tst_WindowRefresh::companionAfterStartIsWarnedOfAtTheNextRefreshOnceAndOkDoesNotEndTheProgram()
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

void tst_WindowRefresh::listsAndResultsArriveWhileTheBoxIsOpen()
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

void tst_WindowRefresh::clickThatOpensTheBoxSurvivesARefreshInsideIt()
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

void tst_WindowRefresh::refreshesLeaveNoWidgetBehind()
{
    WindowFixture fixture;
    // Without the shell command of the companion check, which is most of a refresh.
    fixture.tools.replace("ls", "exit 0");
    fixture.deliver({usbDrive("A"), fireWireDrive("B")});
    QMetaObject::invokeMethod(&fixture.window, "updateDevice", Q_ARG(QString, "B"));
    fixture.finish(true);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const auto widgets = QApplication::allWidgets().size();
    for (int turn = 0; turn < 50; ++turn) {
        fixture.window.updateWindow();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QCOMPARE(QApplication::allWidgets().size(), widgets);
}

void tst_WindowRefresh::unchangedListOfAThousandDrivesRebuildsNothing()
{
    WindowFixture fixture;
    const QVector<DeviceInfo> list = drives(1000);
    fixture.deliver(list);
    const QWidget *page = fixture.page();
    fixture.tools.forgetCalls();
    fixture.deliver(drives(1000));
    QCOMPARE(fixture.page(), page);
    QVERIFY(fixture.tools.calls().isEmpty());
}

QTEST_MAIN(tst_WindowRefresh)
#include "tst_WindowRefresh.moc"
