#include "tests/support/DeviceRecords.h"
#include "tests/support/TestProgram.h"
#include "tests/support/WindowTexts.h"
#include "tests/ui/WindowFixture.h"

#include <QLabel>
#include <QLayout>
#include <QScrollArea>
#include <QScrollBar>
#include <QtTest>

using DeviceRecords::fireWireDrive;
using DeviceRecords::usbDrive;

namespace {

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
    void refreshesLeaveNoWidgetBehind();
    void unchangedListOfAThousandDrivesRebuildsNothing();
};

void tst_WindowRefresh::noDriveShowsTheMessageCentredInBold()
{
    WindowFixture fixture;
    QCOMPARE(fixture.texts(), (QStringList{NoDriveText, VersionText}));
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
    QCOMPARE(fixture.texts(), (QStringList{NoDriveText, VersionText}));
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
    fixture.deliver(numberedDrives(count));
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
    // Also when only the width is the person's.
    fixture.deliver({usbDrive()});
    fixture.window.resize(400, 320);
    fixture.window.updateWindow();
    QCOMPARE(fixture.window.size(), QSize(850, 320));
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
    fixture.deliver(numberedDrives(count));
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
    fixture.deliver(numberedDrives(4));
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
    fixture.deliver(numberedDrives(10));
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
    fixture.deliver(numberedDrives(5));
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
    fixture.deliver(numberedDrives(2));
    QMetaObject::invokeMethod(&fixture.window, "updateDevice", Q_ARG(QString, "GONE"));
    QCOMPARE(fixture.texts(), QStringList{VersionText});
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
    fixture.deliver(numberedDrives(count));
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
    const QVector<DeviceInfo> list = numberedDrives(1000);
    fixture.deliver(list);
    const QWidget *page = fixture.page();
    fixture.tools.forgetCalls();
    fixture.deliver(numberedDrives(1000));
    QCOMPARE(fixture.page(), page);
    QVERIFY(fixture.tools.calls().isEmpty());
}

static const TestClass<tst_WindowRefresh, QApplication> windowRefreshTests;
#include "tst_WindowRefresh.moc"
