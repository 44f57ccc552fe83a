// SPDX-License-Identifier: MIT
#include "tests/support/TestProgram.h"
#include "tests/ui/KeyboardFixture.h"

#include <QtTest>

using DeviceRecords::usbDrive;

class tst_Focus : public QObject
{
    Q_OBJECT

private slots:
    void newLookHasTheFocusOnItsFirstButton_data();
    void newLookHasTheFocusOnItsFirstButton();
    void focusStaysOnTheDrivesButton_data();
    void focusStaysOnTheDrivesButton();
    void focusStaysOnTheButtonOfTheConfirmation();
    void focusMovesStraightToTheNewButton();
    void focusComesBackToTheDriveThatWasCancelled();
    void focusStaysOnTheListItself();
    void tabStopsAtTheListOnlyWhereItScrolls_data();
    void tabStopsAtTheListOnlyWhereItScrolls();
    void refreshBehindAnotherWindowKeepsTheFocusForLater();
};

void tst_Focus::newLookHasTheFocusOnItsFirstButton_data()
{
    QTest::addColumn<QString>("look");
    QTest::addColumn<QString>("button");
    QTest::newRow("no drive") << "no drive"
                              << "none";
    QTest::newRow("list") << "list"
                          << "Pebble" + Both;
    QTest::newRow("confirmation") << "confirmation"
                                  << "Pebble: Cancel";
    QTest::newRow("in progress") << "in progress"
                                 << "none";
    QTest::newRow("restart") << "restart"
                             << "none";
    QTest::newRow("success") << "success"
                             << "updated.: Finish";
    QTest::newRow("failure") << "failure"
                             << "Pebble: Finish";
}

void tst_Focus::newLookHasTheFocusOnItsFirstButton()
{
    QFETCH(QString, look);
    QFETCH(QString, button);
    KeyboardFixture fixture;
    bringTo(fixture, look);
    QCOMPARE(focused(fixture), button);
    // Without a button the keys scroll.
    QCOMPARE(QApplication::focusWidget(), button == "none" ? fixture.area() : fixture.window.focusWidget());
}

void tst_Focus::focusStaysOnTheDrivesButton_data()
{
    QTest::addColumn<QVector<DeviceInfo>>("before");
    QTest::addColumn<int>("tabs");
    QTest::addColumn<QVector<DeviceInfo>>("after");
    QTest::addColumn<QString>("button");
    const QVector<DeviceInfo> list = drives({"A", "B", "C"});
    QVector<DeviceInfo> changed = list;
    changed[1].firmwareStatus = Status::UpToDate;
    QVector<DeviceInfo> notSupported = list;
    notSupported[1].chipsetType = Chipset::NotSupported;
    // Two drives that report the same serial number are told apart by their order.
    QVector<DeviceInfo> twins = drives({"A", "B", "B"});
    twins[2].modelName = "Model Twin";
    QVector<DeviceInfo> changedTwins = twins;
    changedTwins[0].modelName = "Model Other";
    QVector<DeviceInfo> unnamed = drives({"A", "", ""});
    unnamed[2].modelName = "Model Twin";
    QVector<DeviceInfo> changedUnnamed = unnamed;
    changedUnnamed.prepend(usbDrive("D"));
    QTest::newRow("its status changes") << list << 1 << changed << "B: Update Configuration";
    QTest::newRow("the order changes") << list << 1 << drives({"C", "B", "A"}) << "B" + Both;
    QTest::newRow("another drive comes") << list << 2 << drives({"D", "A", "B", "C"}) << "C" + Both;
    QTest::newRow("another drive goes") << list << 2 << drives({"B", "C"}) << "C" + Both;
    QTest::newRow("it goes") << list << 2 << drives({"A", "B"}) << "A" + Both;
    QTest::newRow("it loses its button") << list << 1 << notSupported << "A" + Both;
    QTest::newRow("its twin comes before it") << twins << 2 << changedTwins << "Twin" + Both;
    QTest::newRow("its twin goes") << twins << 2 << drives({"A", "B"}) << "A" + Both;
    QTest::newRow("without a serial number") << unnamed << 2 << changedUnnamed << "Twin" + Both;
}

void tst_Focus::focusStaysOnTheDrivesButton()
{
    QFETCH(QVector<DeviceInfo>, before);
    QFETCH(int, tabs);
    QFETCH(QVector<DeviceInfo>, after);
    QFETCH(QString, button);
    KeyboardFixture fixture;
    fixture.deliver(before);
    for (int tab = 0; tab < tabs; ++tab) {
        fixture.press(Qt::Key_Tab);
    }
    fixture.deliver(after);
    QCOMPARE(focused(fixture), button);
    QVERIFY(fixture.window.focusWidget()->hasFocus());
}

void tst_Focus::focusStaysOnTheButtonOfTheConfirmation()
{
    KeyboardFixture fixture;
    fixture.deliver(drives(2));
    fixture.press(Qt::Key_Space);
    QCOMPARE(focused(fixture), QString("SN-1: Cancel"));
    fixture.press(Qt::Key_Backtab);
    QCOMPARE(focused(fixture), QString("SN-1: Update Firmware"));
    fixture.deliver(drives(3));
    QCOMPARE(focused(fixture), QString("SN-1: Update Firmware"));
}

void tst_Focus::focusMovesStraightToTheNewButton()
{
    KeyboardFixture fixture;
    fixture.deliver(drives(2));
    fixture.press(Qt::Key_Tab);
    QStringList steps;
    connect(qApp, &QApplication::focusChanged, &fixture.window, [&steps](QWidget *, QWidget *to) {
        if (to != nullptr) {
            steps.append(to->metaObject()->className());
        }
    });
    fixture.deliver(drives(3));
    // A screen reader speaks each step.
    QCOMPARE(steps, QStringList{"QPushButton"});
    QCOMPARE(focused(fixture), "SN-2" + Both);
}

void tst_Focus::focusComesBackToTheDriveThatWasCancelled()
{
    KeyboardFixture fixture;
    fixture.deliver(drives(40));
    fixture.tabTo("SN-31" + Both);
    fixture.press(Qt::Key_Return);
    QCOMPARE(focused(fixture), QString("SN-31: Cancel"));
    fixture.press(Qt::Key_Escape);
    QCOMPARE(focused(fixture), "SN-31" + Both);
    QVERIFY(isInSight(driveOf(fixture.window.focusWidget()), fixture.area()));
}

void tst_Focus::focusStaysOnTheListItself()
{
    KeyboardFixture fixture;
    fixture.deliver(drives(10));
    fixture.area()->setFocus();
    QVector<DeviceInfo> changed = drives(10);
    changed[0].firmwareStatus = Status::UpToDate;
    fixture.deliver(changed);
    QCOMPARE(QApplication::focusWidget(), fixture.area());
    // Another look begins at its button.
    fixture.click("Update Configuration");
    QCOMPARE(focused(fixture), QString("SN-1: Cancel"));
}

void tst_Focus::tabStopsAtTheListOnlyWhereItScrolls_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("stops");
    QTest::newRow("one drive") << 1 << QSize(850, 320) << false;
    QTest::newRow("ten drives") << 10 << QSize(850, 700) << true;
    QTest::newRow("a low window") << 6 << QSize(850, 300) << true;
    QTest::newRow("a narrow window") << 3 << QSize(350, 700) << true;
}

void tst_Focus::tabStopsAtTheListOnlyWhereItScrolls()
{
    QFETCH(int, count);
    QFETCH(QSize, size);
    QFETCH(bool, stops);
    KeyboardFixture fixture;
    fixture.deliver(drives(count));
    fixture.window.resize(size);
    QCoreApplication::processEvents();
    for (int press = 0; press < count; ++press) {
        fixture.press(Qt::Key_Tab);
    }
    QCOMPARE(QApplication::focusWidget() == fixture.area(), stops);
    fixture.window.resize(850, 700);
    fixture.deliver(drives(1));
    fixture.click(Both.mid(2));
    fixture.press(Qt::Key_Tab);
    fixture.press(Qt::Key_Tab);
    QCOMPARE(focused(fixture), QString("SN-1: Cancel"));
}

void tst_Focus::refreshBehindAnotherWindowKeepsTheFocusForLater()
{
    KeyboardFixture fixture;
    fixture.deliver(drives(3));
    fixture.press(Qt::Key_Tab);
    QWidget other;
    other.show();
    other.activateWindow();
    QTRY_VERIFY(other.isActiveWindow());
    fixture.deliver(drives(4));
    QVERIFY(other.isActiveWindow());
    fixture.window.activateWindow();
    QTRY_VERIFY(fixture.window.isActiveWindow());
    QCOMPARE(focused(fixture), "SN-2" + Both);
    QVERIFY(fixture.window.focusWidget()->hasFocus());
}

static const TestClass<tst_Focus, QApplication> focusTests;
#include "tst_Focus.moc"
