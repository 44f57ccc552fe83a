// SPDX-License-Identifier: MIT
#include "tests/support/TestProgram.h"
#include "tests/ui/KeyboardFixture.h"

#include <QScopeGuard>
#include <QScrollBar>
#include <QtTest>

namespace {

/// Each as wide as half a window.
QVector<DeviceInfo> wideDrives(int count)
{
    QVector<DeviceInfo> list = drives(count);
    for (DeviceInfo &drive : list) {
        drive.modelName = std::string(60, 'M') + " " + drive.serialNumber;
    }
    return list;
}

} // namespace

class tst_Scrolling : public QObject
{
    Q_OBJECT

private slots:
    void scrollPositionSurvivesARefresh_data();
    void scrollPositionSurvivesARefresh();
    void everyDriveComesIntoSightWithTheFocus_data();
    void everyDriveComesIntoSightWithTheFocus();
    void driveThatGetsTheFocusIsScrolledTo_data();
    void driveThatGetsTheFocusIsScrolledTo();
    void buttonOfADriveLargerThanTheWindowIsScrolledTo();
    void mouseScrollsNothing();
    void comingBackToTheWindowScrollsNothing();
};

void tst_Scrolling::scrollPositionSurvivesARefresh_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("position");
    QTest::newRow("top") << QSize(850, 700) << 0;
    QTest::newRow("in between") << QSize(850, 700) << 57;
    QTest::newRow("bottom") << QSize(850, 700) << 1000;
    QTest::newRow("in a window that was made smaller") << QSize(700, 400) << 57;
}

void tst_Scrolling::scrollPositionSurvivesARefresh()
{
    QFETCH(QSize, size);
    QFETCH(int, position);
    KeyboardFixture fixture;
    fixture.deliver(wideDrives(10));
    fixture.window.resize(size);
    const auto bars = [&fixture] {
        return QList<QScrollBar *>{
            fixture.area()->horizontalScrollBar(), fixture.area()->verticalScrollBar()};
    };
    QTRY_VERIFY(bars()[0]->maximum() > 60 && bars()[1]->maximum() > 60);
    QList<int> places;
    for (QScrollBar *bar : bars()) {
        bar->setValue(position);
        places.append(bar->value());
    }
    QVector<DeviceInfo> changed = wideDrives(10);
    changed[3].firmwareVersion = "1.9";
    fixture.deliver(changed);
    QCoreApplication::processEvents();
    QCOMPARE((QList<int>{bars()[0]->value(), bars()[1]->value()}), places);
    QCOMPARE(focused(fixture), "SN-1" + Both);
}

void tst_Scrolling::everyDriveComesIntoSightWithTheFocus_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("count");
    QTest::addColumn<QSize>("size");
    QTest::newRow("Tab") << Qt::Key_Tab << 10 << QSize(850, 700);
    QTest::newRow("Shift+Tab") << Qt::Key_Backtab << 10 << QSize(850, 700);
    QTest::newRow("in a small window") << Qt::Key_Tab << 60 << QSize(350, 300);
}

void tst_Scrolling::everyDriveComesIntoSightWithTheFocus()
{
    QFETCH(Qt::Key, key);
    QFETCH(int, count);
    QFETCH(QSize, size);
    KeyboardFixture fixture;
    fixture.deliver(drives(count));
    fixture.window.resize(size);
    QTRY_VERIFY(fixture.area()->verticalScrollBar()->maximum() > 0);
    QSet<QString> reached;
    for (int press = 0; press < 2 * count + 2; ++press) {
        fixture.press(key);
        if (auto *button = qobject_cast<QPushButton *>(QApplication::focusWidget())) {
            reached.insert(focused(fixture));
            QVERIFY2(isInSight(driveOf(button), fixture.area()), qPrintable(focused(fixture)));
        }
    }
    QCOMPARE(reached.size(), count);
}

void tst_Scrolling::driveThatGetsTheFocusIsScrolledTo_data()
{
    QTest::addColumn<bool>("focusOnTheList");
    QTest::addColumn<int>("countAfter");
    QTest::newRow("the focused drive goes") << false << 19;
    QTest::newRow("the list has the focus, and a drive comes") << true << 21;
}

void tst_Scrolling::driveThatGetsTheFocusIsScrolledTo()
{
    QFETCH(bool, focusOnTheList);
    QFETCH(int, countAfter);
    KeyboardFixture fixture;
    fixture.deliver(wideDrives(20));
    fixture.tabTo("SN-20" + Both);
    if (focusOnTheList) {
        fixture.area()->setFocus();
    }
    for (QScrollBar *bar : {fixture.area()->horizontalScrollBar(), fixture.area()->verticalScrollBar()}) {
        bar->setValue(bar->maximum());
    }
    fixture.deliver(wideDrives(countAfter));
    QCOMPARE(focused(fixture), "SN-1" + Both);
    QWidget *drive = driveOf(fixture.window.focusWidget());
    QVERIFY(isInSight(drive, fixture.area()));
    // And no further.
    QCOMPARE(drive->mapTo(fixture.area()->viewport(), QPoint()), QPoint());
}

void tst_Scrolling::buttonOfADriveLargerThanTheWindowIsScrolledTo()
{
    const auto restore = qScopeGuard([font = QApplication::font()] { QApplication::setFont(font); });
    QFont large = QApplication::font();
    large.setPixelSize(200);
    QApplication::setFont(large);
    KeyboardFixture fixture;
    fixture.deliver(drives(1));
    fixture.press(Qt::Key_Space);
    QCOMPARE(focused(fixture), QString("SN-1: Cancel"));
    QWidget *button = fixture.window.focusWidget();
    const QRect sight = fixture.area()->viewport()->rect();
    QVERIFY(driveOf(button)->width() > sight.width() && driveOf(button)->height() > sight.height());
    QVERIFY(isInSight(button, fixture.area()));
    // And no further.
    QCOMPARE(button->mapTo(fixture.area()->viewport(), button->rect().bottomRight()), sight.bottomRight());
}

void tst_Scrolling::mouseScrollsNothing()
{
    KeyboardFixture fixture;
    fixture.deliver(drives(10));
    QTRY_VERIFY(fixture.area()->verticalScrollBar()->maximum() > 0);
    fixture.tabTo("SN-9" + Both);
    QPushButton *button = WindowProbe::button(fixture.window, Both.mid(2));
    // The button is in sight, but not the picture above it.
    fixture.area()->horizontalScrollBar()->setValue(0);
    fixture.area()->verticalScrollBar()->setValue(button->mapTo(fixture.area()->widget(), QPoint()).y() - 5);
    const int before = fixture.area()->verticalScrollBar()->value();
    QVERIFY(isInSight(button, fixture.area()));
    QVERIFY(!isInSight(driveOf(button), fixture.area()));
    QWindow *window = fixture.window.windowHandle();
    const QPoint place = button->mapTo(&fixture.window, button->rect().center());
    QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, place);
    QVERIFY(button->hasFocus());
    QCOMPARE(fixture.area()->verticalScrollBar()->value(), before);
    QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, place);
    QCOMPARE(focused(fixture), QString("SN-1: Cancel"));
}

void tst_Scrolling::comingBackToTheWindowScrollsNothing()
{
    KeyboardFixture fixture;
    fixture.deliver(drives(10));
    QTRY_VERIFY(fixture.area()->verticalScrollBar()->maximum() > 60);
    fixture.area()->verticalScrollBar()->setValue(57);
    QWidget other;
    other.show();
    other.activateWindow();
    QTRY_VERIFY(other.isActiveWindow());
    fixture.window.activateWindow();
    QTRY_VERIFY(fixture.window.isActiveWindow());
    QTRY_VERIFY(fixture.window.focusWidget()->hasFocus());
    QCOMPARE(fixture.area()->verticalScrollBar()->value(), 57);
}

static const TestClass<tst_Scrolling, QApplication> scrollingTests;
#include "tst_Scrolling.moc"
