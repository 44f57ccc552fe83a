// SPDX-License-Identifier: MIT
#include "tests/support/TestProgram.h"
#include "tests/ui/KeyboardFixture.h"

#include <QScreen>
#include <QWindow>
#include <QtTest>

class tst_ScreenFit : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void windowStaysOnItsScreen_data();
    void windowStaysOnItsScreen();
    void buttonsOfTheLastRowAreReachedOnASmallScreen();
    void whatAPersonDoesToTheWindowStays();
};

void tst_ScreenFit::cleanup()
{
    setScreenSize({1920, 1080});
}

void tst_ScreenFit::windowStaysOnItsScreen_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<int>("count");
    QTest::addColumn<QPoint>("place");
    QTest::addColumn<QPoint>("moved");
    QTest::addColumn<QSize>("size"); // of the window with its frame
    const QSize frame(4, 4);
    const QPoint middle(100, 200);
    const QSize full = QSize(850, 700) + frame;
    QTest::newRow("fits") << QSize(1920, 1080) << 13 << middle << middle << full;
    QTest::newRow("fits exactly") << full + QSize(100, 200) << 13 << middle << middle << full;
    QTest::newRow("too low") << QSize(1366, 768) << 9 << middle << QPoint(100, 64) << full;
    QTest::newRow("too far to the right")
        << QSize(1000, 1080) << 9 << QPoint(300, 0) << QPoint(146, 0) << full;
    QTest::newRow("too high") << QSize(1024, 600) << 13 << middle << QPoint(100, 0) << QSize(854, 600);
    QTest::newRow("too wide") << QSize(800, 600) << 3 << middle << QPoint(0, 200) << QSize(800, 324);
    QTest::newRow("too high and too wide") << QSize(640, 480) << 13 << middle << QPoint() << QSize(640, 480);
    QTest::newRow("no drive, too wide")
        << QSize(640, 800) << 0 << middle << QPoint(0, 200) << QSize(640, 304);
}

void tst_ScreenFit::windowStaysOnItsScreen()
{
    QFETCH(QSize, screen);
    QFETCH(int, count);
    QFETCH(QPoint, place);
    QFETCH(QPoint, moved);
    QFETCH(QSize, size);
    WindowFixture fixture;
    fixture.window.move(place);
    QTRY_COMPARE(fixture.window.frameGeometry().topLeft(), place);
    setScreenSize(screen);
    if (count > 0) {
        fixture.deliver(drives(count));
    } else {
        fixture.window.hide();
        fixture.window.show();
    }
    QCoreApplication::processEvents();
    QCOMPARE(fixture.window.frameGeometry(), QRect(moved, size));
}

void tst_ScreenFit::buttonsOfTheLastRowAreReachedOnASmallScreen()
{
    setScreenSize({1024, 600});
    KeyboardFixture fixture;
    fixture.deliver(drives(13));
    fixture.tabTo("SN-13" + Both);
    const QWidget *button = fixture.window.focusWidget();
    QVERIFY(isInSight(button, fixture.area()));
    QVERIFY(
        fixture.window.screen()->geometry().contains(QRect(button->mapToGlobal(QPoint()), button->size())));
}

void tst_ScreenFit::whatAPersonDoesToTheWindowStays()
{
    setScreenSize({1024, 600});
    WindowFixture fixture;
    fixture.deliver(drives(13));
    const QRect beyond(900, 500, 500, 650);
    fixture.window.windowHandle()->setGeometry(beyond);
    QTRY_COMPARE(fixture.window.geometry(), beyond);
    QCoreApplication::processEvents();
    QCOMPARE(fixture.window.geometry(), beyond);
}

static const TestClass<tst_ScreenFit, QApplication> screenFitTests;
#include "tst_ScreenFit.moc"
