// SPDX-License-Identifier: MIT
#include "tests/support/TestProgram.h"
#include "tests/ui/Looks.h"

#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QtTest>

#include <cmath>

namespace {

constexpr double TextContrast = 7;

const QList<QPalette::ColorGroup> Groups{QPalette::Active, QPalette::Inactive, QPalette::Disabled};

/// What a dark desktop gives to all programs.
QPalette darkPalette()
{
    return QPalette(QColor(240, 240, 240), QColor(50, 50, 50), QColor(75, 75, 75), QColor(33, 33, 33),
        QColor(38, 38, 38), QColor(240, 240, 240), Qt::white, QColor(36, 36, 36), QColor(50, 50, 50));
}

/// A palette of shades of one color, each role and group with its own.
QPalette paletteOf(int value, const QColor &text)
{
    QPalette palette;
    for (int role = 0; role < QPalette::NColorRoles; ++role) {
        for (const QPalette::ColorGroup group : Groups) {
            palette.setColor(group, QPalette::ColorRole(role), QColor(value, value + group, value + role));
        }
    }
    palette.setColor(QPalette::All, QPalette::WindowText, text);
    return palette;
}

double luminance(const QColor &color)
{
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor &one, const QColor &other)
{
    const double a = luminance(one);
    const double b = luminance(other);
    return (qMax(a, b) + 0.05) / (qMin(a, b) + 0.05);
}

} // namespace

class tst_Colors : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void everyTextStandsOutOnADarkDesktop_data();
    void everyTextStandsOutOnADarkDesktop();
    void lightDesktopKeepsItsColorsButForTheWindow();
    void nothingIsLeftOfADarkDesktop();
    void focusIsSeenOnAButton();
};

void tst_Colors::cleanup()
{
    QApplication::setPalette(QApplication::style()->standardPalette());
}

void tst_Colors::everyTextStandsOutOnADarkDesktop_data()
{
    QTest::addColumn<QString>("look");
    QTest::addColumn<bool>("before"); // else while the program runs
    QTest::addColumn<QList<QByteArray>>(
        "classes"); // of widgets that get the dark palette; all when there is none
    const QList<QByteArray> some{"QLabel", "QAbstractButton", "QPushButton", "QScrollArea", "QProgressBar"};
    for (const QString &look : Looks) {
        for (const bool before : {true, false}) {
            const char *when = before ? "before" : "while it runs";
            QTest::addRow("%s, dark %s", qPrintable(look), when) << look << before << QList<QByteArray>();
            QTest::addRow("%s, dark by class %s", qPrintable(look), when) << look << before << some;
        }
    }
}

void tst_Colors::everyTextStandsOutOnADarkDesktop()
{
    QFETCH(QString, look);
    QFETCH(bool, before);
    QFETCH(QList<QByteArray>, classes);
    const auto darken = [&classes] {
        for (const QByteArray &name : classes.isEmpty() ? QList<QByteArray>{QByteArray()} : classes) {
            QApplication::setPalette(darkPalette(), name.isEmpty() ? nullptr : name.constData());
        }
    };
    if (before) {
        darken();
    }
    WindowFixture fixture;
    bringTo(fixture, look);
    if (!before) {
        darken();
        QCoreApplication::processEvents();
    }
    for (const QWidget *widget : fixture.window.findChildren<QWidget *>()) {
        const QPalette palette = widget->palette();
        for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
            const QColor page = fixture.window.palette().color(group, QPalette::Window);
            if (qobject_cast<const QLabel *>(widget) != nullptr) {
                QVERIFY(contrast(palette.color(group, widget->foregroundRole()), page) >= TextContrast);
                QVERIFY(contrast(palette.color(group, QPalette::Link), page) >= TextContrast);
            } else if (qobject_cast<const QPushButton *>(widget) != nullptr) {
                const QColor button = palette.color(group, QPalette::Button);
                QVERIFY(contrast(palette.color(group, QPalette::ButtonText), button) >= TextContrast);
            }
        }
    }
}

void tst_Colors::lightDesktopKeepsItsColorsButForTheWindow()
{
    QPalette desktop = paletteOf(200, Qt::black);
    QApplication::setPalette(desktop);
    const WindowFixture fixture;
    desktop.setBrush(QPalette::All, QPalette::Window, Qt::white);
    QCOMPARE(fixture.window.palette(), desktop);
}

void tst_Colors::nothingIsLeftOfADarkDesktop()
{
    const QPalette desktop = paletteOf(50, QColor(200, 201, 202));
    QApplication::setPalette(desktop);
    WindowFixture fixture;
    bringTo(fixture, "list");
    for (const QWidget *widget : fixture.window.findChildren<QWidget *>()) {
        for (int role = 0; role < QPalette::NColorRoles; ++role) {
            const QColor color = widget->palette().color(QPalette::ColorRole(role));
            QVERIFY2(color != desktop.color(QPalette::ColorRole(role)), qPrintable(QString::number(role)));
        }
    }
    const QPalette light = QApplication::style()->standardPalette();
    QCOMPARE(fixture.window.palette().color(QPalette::Button), light.color(QPalette::Button));
}

void tst_Colors::focusIsSeenOnAButton()
{
    QApplication::setPalette(darkPalette());
    WindowFixture fixture;
    bringTo(fixture, "confirmation");
    fixture.window.activateWindow();
    QTRY_VERIFY(fixture.window.isActiveWindow());
    QPushButton *button = WindowProbe::button(fixture.window, "Cancel");
    QTest::keyClick(button, Qt::Key_Backtab);
    const QImage without = button->grab().toImage();
    QTest::keyClick(fixture.window.focusWidget(), Qt::Key_Tab);
    const QImage with = button->grab().toImage();
    QVERIFY(with != without);
    // The outline of the button, which is enough to be seen on the page.
    const QColor outline = with.pixelColor(with.width() / 2, 0);
    QVERIFY2(contrast(outline, Qt::white) >= 3, qPrintable(outline.name()));
}

static const TestClass<tst_Colors, QApplication> colorsTests;
#include "tst_Colors.moc"
