#include "tests/support/TestProgram.h"
#include "tests/ui/KeyboardFixture.h"

#include <QScrollBar>
#include <QtTest>

class tst_Scrolling : public QObject
{
    Q_OBJECT

private slots:
    void scrollPositionSurvivesARefresh_data();
    void scrollPositionSurvivesARefresh();
    void focusedDriveIsInSight_data();
    void focusedDriveIsInSight();
    void mouseScrollsNothing();
    void comingBackToTheWindowScrollsNothing();
    void smallWindowReachesEveryButton_data();
    void smallWindowReachesEveryButton();
};

void tst_Scrolling::scrollPositionSurvivesARefresh_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("position");
    QTest::newRow("top") << QSize(850, 700) << 0;
    QTest::newRow("in between") << QSize(850, 700) << 57;
    QTest::newRow("bottom") << QSize(850, 700) << -1;
    QTest::newRow("in a window that was made smaller") << QSize(700, 400) << 57;
}

void tst_Scrolling::scrollPositionSurvivesARefresh()
{
    QFETCH(QSize, size);
    QFETCH(int, position);
    KeyboardFixture fixture;
    fixture.deliver(drives(10));
    fixture.window.resize(size);
    QTRY_VERIFY(fixture.area()->verticalScrollBar()->maximum() > 60);
    const int place = position < 0 ? fixture.area()->verticalScrollBar()->maximum() : position;
    fixture.area()->verticalScrollBar()->setValue(place);
    QVector<DeviceInfo> changed = drives(10);
    changed[3].firmwareVersion = "1.9";
    fixture.deliver(changed);
    QCOMPARE(fixture.area()->verticalScrollBar()->value(), place);
    QCoreApplication::processEvents();
    QCOMPARE(fixture.area()->verticalScrollBar()->value(), place);
    QCOMPARE(focused(fixture), "SN-1" + Both);
}

void tst_Scrolling::focusedDriveIsInSight_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Tab") << Qt::Key_Tab;
    QTest::newRow("Shift+Tab") << Qt::Key_Backtab;
}

void tst_Scrolling::focusedDriveIsInSight()
{
    QFETCH(Qt::Key, key);
    KeyboardFixture fixture;
    fixture.deliver(drives(10));
    QTRY_VERIFY(fixture.area()->verticalScrollBar()->maximum() > 0);
    QSet<QString> reached;
    for (int press = 0; press < 22; ++press) {
        fixture.press(key);
        if (auto *button = qobject_cast<QPushButton *>(QApplication::focusWidget())) {
            reached.insert(focused(fixture));
            QVERIFY2(isInSight(driveOf(button), fixture.area()), qPrintable(focused(fixture)));
        }
    }
    QCOMPARE(reached.size(), 10);
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

void tst_Scrolling::smallWindowReachesEveryButton_data()
{
    QTest::addColumn<int>("count");
    for (const int count : {1, 3, 10, 60}) {
        QTest::addRow("%d drives", count) << count;
    }
}

void tst_Scrolling::smallWindowReachesEveryButton()
{
    QFETCH(int, count);
    KeyboardFixture fixture;
    fixture.deliver(drives(count));
    fixture.window.resize(350, 300);
    QCoreApplication::processEvents();
    QSet<QString> reached;
    for (int press = 0; press < 2 * count + 2; ++press) {
        fixture.press(Qt::Key_Tab);
        if (auto *button = qobject_cast<QPushButton *>(QApplication::focusWidget())) {
            reached.insert(focused(fixture));
            QVERIFY2(isInSight(button, fixture.area()), qPrintable(focused(fixture)));
        }
    }
    QCOMPARE(reached.size(), count);
}

static const TestClass<tst_Scrolling, QApplication> scrollingTests;
#include "tst_Scrolling.moc"
