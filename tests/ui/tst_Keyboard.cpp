// SPDX-License-Identifier: MIT
#include "tests/support/TestProgram.h"
#include "tests/ui/KeyboardFixture.h"

#include <QTimer>
#include <QtTest>

class tst_Keyboard : public QObject
{
    Q_OBJECT

private slots:
    void twoPressesOfTheSpaceBarStartNoUpdate();
    void enterPressesTheFocusedButton_data();
    void enterPressesTheFocusedButton();
    void heldEnterPressesOnce();
    void escapeIsCancelAndNothingElse_data();
    void escapeIsCancelAndNothingElse();
    void escapeCancelsForTwoDrivesOfOneSerialNumber();
};

void tst_Keyboard::twoPressesOfTheSpaceBarStartNoUpdate()
{
    KeyboardFixture fixture;
    fixture.deliver(drives(2));
    fixture.press(Qt::Key_Space);
    QCOMPARE(fixture.buttons(), (QStringList{"Update Firmware", "Cancel"}));
    fixture.press(Qt::Key_Space);
    QCOMPARE(fixture.buttons(), WindowProbe::repeated(2, Both.mid(2)));
    QCOMPARE(ScriptedPlatform::count("Asm1051(SN-1)"), 0);
}

void tst_Keyboard::enterPressesTheFocusedButton_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Return") << Qt::Key_Return;
    QTest::newRow("Enter of the number pad") << Qt::Key_Enter;
}

void tst_Keyboard::enterPressesTheFocusedButton()
{
    QFETCH(Qt::Key, key);
    KeyboardFixture fixture;
    // Without a button nothing happens.
    const QWidget *page = fixture.page();
    fixture.press(key);
    QCOMPARE(fixture.page(), page);
    fixture.deliver(drives(2));
    fixture.tabTo("SN-2" + Both);
    fixture.press(key);
    QCOMPARE(focused(fixture), QString("SN-2: Cancel"));
    fixture.press(Qt::Key_Backtab);
    ScriptedPlatform::holdFlashes();
    fixture.press(key);
    QTRY_COMPARE(ScriptedPlatform::count("Asm1051(SN-2)"), 1);
    fixture.finish(false);
    QCOMPARE(focused(fixture), QString("SN-2: Finish"));
    QTimer presser;
    presser.setSingleShot(true);
    connect(&presser, &QTimer::timeout, &presser, [&] { fixture.press(key); });
    presser.start();
    QCOMPARE(QApplication::exec(), 0);
}

void tst_Keyboard::heldEnterPressesOnce()
{
    KeyboardFixture fixture;
    fixture.deliver(drives(1));
    fixture.press(Qt::Key_Return);
    QCOMPARE(focused(fixture), QString("SN-1: Cancel"));
    const QPointer<QWidget> page = fixture.page();
    for (int repetition = 0; repetition < 3; ++repetition) {
        qt_handleKeyEvent(
            fixture.window.windowHandle(), QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, "\r", true);
        QCoreApplication::processEvents();
    }
    QCOMPARE(fixture.page(), page.data());
}

void tst_Keyboard::escapeIsCancelAndNothingElse_data()
{
    addLookRows();
}

void tst_Keyboard::escapeIsCancelAndNothingElse()
{
    QFETCH(QString, look);
    KeyboardFixture fixture;
    bringTo(fixture, look);
    const QPointer<QWidget> page = fixture.page();
    fixture.press(Qt::Key_Escape);
    QCoreApplication::processEvents();
    QVERIFY(fixture.window.isVisible());
    if (look == "confirmation") {
        QCOMPARE(focused(fixture), "Pebble" + Both);
    } else {
        QCOMPARE(fixture.page(), page.data());
    }
}

void tst_Keyboard::escapeCancelsForTwoDrivesOfOneSerialNumber()
{
    KeyboardFixture fixture;
    fixture.deliver(drives({"A", "A"}));
    fixture.press(Qt::Key_Space);
    QCOMPARE(fixture.buttons(), (QStringList{"Update Firmware", "Cancel", "Update Firmware", "Cancel"}));
    fixture.press(Qt::Key_Escape);
    QCOMPARE(fixture.buttons(), WindowProbe::repeated(2, Both.mid(2)));
}

static const TestClass<tst_Keyboard, QApplication> keyboardTests;
#include "tst_Keyboard.moc"
