#include "tests/support/TestProgram.h"
#include "tests/ui/BoxAnswerer.h"
#include "tests/ui/Looks.h"

#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QtTest>

#include <cmath>

namespace {

constexpr double TextContrast = 7;

/// What a dark desktop gives to all programs.
QPalette darkPalette()
{
    return QPalette(QColor(240, 240, 240), QColor(50, 50, 50), QColor(75, 75, 75), QColor(33, 33, 33),
        QColor(38, 38, 38), QColor(240, 240, 240), Qt::white, QColor(36, 36, 36), QColor(50, 50, 50));
}

/// A palette of shades of one color, each role and group with its own.
QPalette paletteOf(int value)
{
    QPalette palette;
    for (int role = 0; role < QPalette::NColorRoles; ++role) {
        for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            palette.setColor(group, QPalette::ColorRole(role), QColor(value, value + group, value + role));
        }
    }
    return palette;
}

/// Of some widgets only, as a desktop may do.
void setClassPalettes()
{
    for (const char *name : {"QLabel", "QAbstractButton", "QPushButton", "QScrollArea", "QProgressBar"}) {
        QApplication::setPalette(darkPalette(), name);
    }
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

/// The contrast of what is drawn in the middle of a widget to the colour that most of it has.
double contrastInside(QWidget &widget)
{
    if (auto *button = qobject_cast<QPushButton *>(&widget)) {
        button->setIcon(QIcon());
    }
    QWidget &window = *widget.window();
    const QRect place(widget.mapTo(&window, QPoint()), widget.size());
    const QRect inside =
        qobject_cast<QPushButton *>(&widget) != nullptr ? place.adjusted(5, 4, -5, -4) : place;
    const QImage shot = window.grab(inside).toImage();
    QHash<QRgb, int> pixels;
    for (int y = 0; y < shot.height(); ++y) {
        for (int x = 0; x < shot.width(); ++x) {
            ++pixels[shot.pixel(x, y)];
        }
    }
    QRgb background = 0;
    for (auto color = pixels.cbegin(); color != pixels.cend(); ++color) {
        background = color.value() > pixels.value(background) ? color.key() : background;
    }
    double highest = 1;
    for (auto color = pixels.cbegin(); color != pixels.cend(); ++color) {
        highest = qMax(highest, contrast(color.key(), background));
    }
    return highest;
}

/// Every text on screen has the contrast.
void verifyTexts(const QWidget &window)
{
    int texts = 0;
    for (QWidget *widget : window.findChildren<QWidget *>()) {
        const auto *label = qobject_cast<QLabel *>(widget);
        const auto *button = qobject_cast<QPushButton *>(widget);
        const QString text = label != nullptr ? label->text()
            : button != nullptr               ? button->text()
                                              : QString();
        if (!text.isEmpty() && widget->isVisible()) {
            ++texts;
            const double measured = contrastInside(*widget);
            QVERIFY2(measured >= TextContrast, qPrintable(QString("%1: %2").arg(text).arg(measured)));
        }
    }
    QVERIFY(texts > 0);
}

} // namespace

class tst_Colors : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void everyTextStandsOutOnADarkDesktop_data();
    void everyTextStandsOutOnADarkDesktop();
    void linksStandOutOnADarkDesktop();
    void lightDesktopKeepsItsColorsButForTheWindow();
    void nothingIsLeftOfADarkDesktop();
    void focusIsSeenOnAButton();
    void companionBoxStandsOut_data();
    void companionBoxStandsOut();
};

void tst_Colors::cleanup()
{
    QApplication::setPalette(QApplication::style()->standardPalette());
}

void tst_Colors::everyTextStandsOutOnADarkDesktop_data()
{
    QTest::addColumn<QString>("look");
    QTest::addColumn<QString>("darkened");
    QTest::addColumn<QString>("state");
    for (const QString &look : Looks) {
        for (const char *darkened :
            {"before", "while it runs", "by class before", "by class while it runs"}) {
            for (const char *state : {"active", "inactive"}) {
                QTest::addRow("%s, dark %s, %s", qPrintable(look), darkened, state)
                    << look << darkened << state;
            }
        }
    }
}

void tst_Colors::everyTextStandsOutOnADarkDesktop()
{
    QFETCH(QString, look);
    QFETCH(QString, darkened);
    QFETCH(QString, state);
    const auto darken = [&darkened] {
        if (darkened.startsWith("by class")) {
            setClassPalettes();
        } else {
            QApplication::setPalette(darkPalette());
        }
    };
    if (darkened.endsWith("before")) {
        darken();
    }
    WindowFixture fixture;
    bringTo(fixture, look);
    if (!darkened.endsWith("before")) {
        darken();
        QCoreApplication::processEvents();
    }
    QWidget other;
    if (state == "inactive") {
        other.show();
        other.activateWindow();
        QTRY_VERIFY(other.isActiveWindow());
    } else {
        fixture.window.activateWindow();
        QTRY_VERIFY(fixture.window.isActiveWindow());
    }
    verifyTexts(fixture.window);
}

void tst_Colors::linksStandOutOnADarkDesktop()
{
    QApplication::setPalette(darkPalette());
    const WindowFixture fixture;
    QVERIFY(contrast(fixture.window.palette().color(QPalette::Link), Qt::white) >= TextContrast);
}

void tst_Colors::lightDesktopKeepsItsColorsButForTheWindow()
{
    QPalette desktop = paletteOf(200);
    desktop.setColor(QPalette::All, QPalette::WindowText, Qt::black);
    QApplication::setPalette(desktop);
    const WindowFixture fixture;
    desktop.setBrush(QPalette::All, QPalette::Window, Qt::white);
    QCOMPARE(fixture.window.palette(), desktop);
}

void tst_Colors::nothingIsLeftOfADarkDesktop()
{
    QPalette desktop = paletteOf(50);
    desktop.setColor(QPalette::All, QPalette::WindowText, QColor(200, 201, 202));
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
    QTest::keyClick(fixture.window.focusWidget(), Qt::Key_Backtab);
    const QImage without = button->grab().toImage();
    QTest::keyClick(fixture.window.focusWidget(), Qt::Key_Tab);
    QVERIFY(button->hasFocus());
    const QImage with = button->grab().toImage();
    // The outline of the button, which is enough to be seen on the page.
    const QColor outline = with.pixelColor(with.width() / 2, 0);
    QVERIFY(with != without);
    QVERIFY2(contrast(outline, Qt::white) >= 3, qPrintable(outline.name()));
}

void tst_Colors::companionBoxStandsOut_data()
{
    QTest::addColumn<QPalette>("desktop");
    QTest::newRow("light") << QApplication::style()->standardPalette();
    QTest::newRow("dark") << darkPalette();
}

void tst_Colors::companionBoxStandsOut()
{
    QFETCH(QPalette, desktop);
    QApplication::setPalette(desktop);
    bool measured = false;
    const WarnedWindow warned([&measured](QMessageBox &box) {
        verifyTexts(box);
        measured = true;
    });
    QVERIFY(measured);
}

static const TestClass<tst_Colors, QApplication> colorsTests;
#include "tst_Colors.moc"
