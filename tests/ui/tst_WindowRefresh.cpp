// SPDX-License-Identifier: MIT
#include "tests/support/TestProgram.h"
#include "tests/support/WidgetDescription.h"
#include "tests/support/WindowTexts.h"
#include "tests/ui/LabelFont.h"
#include "tests/ui/Looks.h"

#include <QScrollArea>
#include <QScrollBar>
#include <QtTest>

using DeviceRecords::fireWireDrive;
using DeviceRecords::usbDrive;

namespace {

const QString Stretch = "  stretch";

/// A row of the column with the drives of those numbers.
QStringList rowOf(const QList<int> &numbers)
{
    QStringList lines{"  row", "    stretch"};
    for (const int number : numbers) {
        lines += {QString("    QWidget drive SN-%1, centred horizontally").arg(number), "    stretch"};
    }
    return lines + QStringList{Stretch};
}

QLabel *labelReading(const QWidget &widget, const QString &text)
{
    for (QLabel *label : widget.findChildren<QLabel *>()) {
        if (label->text() == text) {
            return label;
        }
    }
    return nullptr;
}

} // namespace

class tst_WindowRefresh : public QObject
{
    Q_OBJECT

private slots:
    void itemsStandInTheirPlaces();
    void drivesStandInRowsOfThree_data();
    void drivesStandInRowsOfThree();
    void widgetsAreSetUpAsNew();
    void versionStandsInSmallItalicsAtTheBottom();
    void emptyListShowsTheMessageInEveryState_data();
    void emptyListShowsTheMessageInEveryState();
    void drivesDecideTheWindowsSize_data();
    void drivesDecideTheWindowsSize();
    void refreshSizesTheWindowAnew();
    void tenDrivesScroll();
    void selectedDriveIsShownAloneInAWindowForAllFive();
    void selectionThatMatchesNoDriveShowsNoPage();
    void refreshesLeaveNoWidgetBehind();
};

void tst_WindowRefresh::itemsStandInTheirPlaces()
{
    const WindowFixture fixture;
    QCOMPARE(
        WidgetDescription::linesOf(*fixture.window.layout()), (QStringList{"column", "  QStackedWidget"}));
    QCOMPARE(WidgetDescription::linesOf(*fixture.page()->layout()),
        (QStringList{"column, margins 0 0 0 0", "  QScrollArea", "  row", "    QLabel " + VersionText}));
}

void tst_WindowRefresh::drivesStandInRowsOfThree_data()
{
    QTest::addColumn<int>("drives");
    QTest::addColumn<int>("selected");
    QTest::addColumn<QStringList>("lines");
    const QStringList first{"column", Stretch};
    const QStringList fromEmptyRow = first + rowOf({});
    QTest::newRow("no drive") << 0 << 0 << first + QStringList{"  QLabel " + NoDriveText, Stretch};
    QTest::newRow("one") << 1 << 0 << fromEmptyRow + rowOf({1});
    QTest::newRow("three") << 3 << 0 << fromEmptyRow + rowOf({1, 2, 3});
    QTest::newRow("four") << 4 << 0 << fromEmptyRow + rowOf({1, 2, 3}) + rowOf({4});
    QTest::newRow("ten") << 10 << 0
                         << fromEmptyRow + rowOf({1, 2, 3}) + rowOf({4, 5, 6}) + rowOf({7, 8, 9})
            + rowOf({10});
    QTest::newRow("the fourth of five") << 5 << 4 << first + rowOf({4});
}

void tst_WindowRefresh::drivesStandInRowsOfThree()
{
    QFETCH(int, drives);
    QFETCH(int, selected);
    QFETCH(QStringList, lines);
    WindowFixture fixture;
    fixture.deliver(numberedDrives(drives));
    if (selected != 0) {
        fixture.window.updateDevice(QString("SN-%1").arg(selected));
    }
    const QScrollArea *area = fixture.window.findChild<QScrollArea *>();
    QCOMPARE(WidgetDescription::linesOf(*area->widget()->layout()), lines);
}

void tst_WindowRefresh::widgetsAreSetUpAsNew()
{
    const WindowFixture fixture;
    QWidget *page = fixture.page();
    QCOMPARE(WidgetDescription::differences(*page, QWidget(page->parentWidget())), QString());

    QScrollArea area(page);
    area.setWidgetResizable(true);
    QCOMPARE(WidgetDescription::differences(*page->findChild<QScrollArea *>(), area), QString());

    const QLabel *version = labelReading(*page, VersionText);
    QLabel italic(version->text(), page);
    QFont font = QApplication::font();
    font.setPixelSize(10);
    font.setStyle(QFont::StyleItalic);
    italic.setFont(font);
    italic.setFixedHeight(12);
    QCOMPARE(WidgetDescription::differences(*version, italic), QString());

    const QLabel *message = labelReading(*page, NoDriveText);
    QLabel centred(NoDriveText, message->parentWidget());
    centred.setAlignment(Qt::AlignCenter);
    centred.setWordWrap(true);
    QCOMPARE(WidgetDescription::differences(*message, centred), QString());
}

void tst_WindowRefresh::versionStandsInSmallItalicsAtTheBottom()
{
    const LabelFont font;
    WindowFixture fixture;
    QVERIFY(LabelFont::isApplications(*labelReading(fixture.window, VersionText)));
    for (const int count : {0, 1, 10}) {
        fixture.deliver(numberedDrives(count));
        QCoreApplication::processEvents();
        verifyVersion(fixture.window);
    }
}

void tst_WindowRefresh::emptyListShowsTheMessageInEveryState_data()
{
    addLookRows();
}

void tst_WindowRefresh::emptyListShowsTheMessageInEveryState()
{
    QFETCH(QString, look);
    WindowFixture fixture;
    bringTo(fixture, look);
    QCOMPARE(fixture.texts().contains(NoDriveText), look == "no drive");
    fixture.deliver({});
    if (look == "restart") {
        // The list alone rebuilds nothing there.
        QVERIFY(!fixture.texts().contains(NoDriveText));
        fixture.window.updateWindow();
    }
    QCOMPARE(fixture.texts(), (QStringList{NoDriveText, VersionText}));
    QCOMPARE(fixture.window.size(), QSize(850, 300));
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

void tst_WindowRefresh::tenDrivesScroll()
{
    WindowFixture fixture;
    fixture.deliver(numberedDrives(10));
    const QScrollBar *bar = fixture.window.findChild<QScrollArea *>()->verticalScrollBar();
    QTRY_VERIFY(bar->maximum() > 0);
    QVERIFY(bar->isVisible());
}

void tst_WindowRefresh::selectedDriveIsShownAloneInAWindowForAllFive()
{
    WindowFixture fixture;
    fixture.deliver(numberedDrives(5));
    fixture.window.updateDevice("SN-4");
    QCOMPARE(fixture.window.size(), QSize(850, 520));
    QCOMPARE(fixture.texts().filter("Tarvo Pebble"), QStringList{"Tarvo Pebble 4"});
    QCOMPARE(fixture.buttons(), (QStringList{"Update Firmware", "Cancel"}));
}

void tst_WindowRefresh::selectionThatMatchesNoDriveShowsNoPage()
{
    WindowFixture fixture;
    fixture.deliver(numberedDrives(2));
    fixture.window.updateDevice("GONE");
    QCOMPARE(fixture.texts(), QStringList{VersionText});
    QVERIFY(fixture.buttons().isEmpty());
    QCOMPARE(fixture.window.size(), QSize(850, 320));
}

void tst_WindowRefresh::refreshesLeaveNoWidgetBehind()
{
    WindowFixture fixture;
    // Without the shell command of the companion check, which is most of a refresh.
    fixture.tools.replace("ls", "exit 0");
    fixture.deliver({usbDrive("A"), fireWireDrive("B")});
    fixture.window.updateDevice("B");
    fixture.finish(true);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const auto widgets = QApplication::allWidgets().size();
    for (int turn = 0; turn < 50; ++turn) {
        fixture.window.updateWindow();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QCOMPARE(QApplication::allWidgets().size(), widgets);
}

static const TestClass<tst_WindowRefresh, QApplication> windowRefreshTests;
#include "tst_WindowRefresh.moc"
