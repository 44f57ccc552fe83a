#include "tests/support/TestProgram.h"
#include "tests/ui/Looks.h"
#include "ui/LightPalette.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QStyle>
#include <QTimer>
#include <QtTest>

#include <cmath>
#include <memory>

namespace {

constexpr double TextContrast = 7;
constexpr double DisabledTextContrast = 4.5;

const QList<QPalette::ColorGroup> Groups{QPalette::Active, QPalette::Inactive, QPalette::Disabled};

/// What a dark desktop gives to all programs.
QPalette darkPalette()
{
    QPalette palette(QColor(240, 240, 240), QColor(50, 50, 50), QColor(75, 75, 75), QColor(33, 33, 33),
        QColor(38, 38, 38), QColor(240, 240, 240), Qt::white, QColor(36, 36, 36), QColor(50, 50, 50));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, QColor(130, 130, 130));
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
void verifyTexts(const QWidget &window, double required)
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
            QVERIFY2(measured >= required, qPrintable(QString("%1: %2").arg(text).arg(measured)));
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
    void everyPairOfRolesStandsOut_data();
    void everyPairOfRolesStandsOut();
    void noRoleIsLeftToTheDesktop();
    void lightDesktopLooksAsTheStyleDrawsIt();
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
            for (const char *state : {"active", "inactive", "disabled"}) {
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
    fixture.window.setEnabled(state != "disabled");
    verifyTexts(fixture.window, state == "disabled" ? DisabledTextContrast : TextContrast);
}

void tst_Colors::everyPairOfRolesStandsOut_data()
{
    QTest::addColumn<QPalette::ColorRole>("text");
    QTest::addColumn<QPalette::ColorRole>("background");
    QTest::newRow("text on the page") << QPalette::WindowText << QPalette::Window;
    QTest::newRow("text of a button") << QPalette::ButtonText << QPalette::Button;
    QTest::newRow("text to be edited") << QPalette::Text << QPalette::Base;
    QTest::newRow("text in every other row") << QPalette::Text << QPalette::AlternateBase;
    QTest::newRow("placeholder") << QPalette::PlaceholderText << QPalette::Base;
    QTest::newRow("selected text") << QPalette::HighlightedText << QPalette::Highlight;
    QTest::newRow("link") << QPalette::Link << QPalette::Window;
    QTest::newRow("link in a text to be edited") << QPalette::Link << QPalette::Base;
    QTest::newRow("visited link") << QPalette::LinkVisited << QPalette::Window;
    QTest::newRow("visited link in a text to be edited") << QPalette::LinkVisited << QPalette::Base;
    QTest::newRow("tool tip") << QPalette::ToolTipText << QPalette::ToolTipBase;
    QTest::newRow("bright text") << QPalette::BrightText << QPalette::Window;
}

void tst_Colors::everyPairOfRolesStandsOut()
{
    QFETCH(QPalette::ColorRole, text);
    QFETCH(QPalette::ColorRole, background);
    QApplication::setPalette(darkPalette());
    const WindowFixture fixture;
    const QPalette palette = fixture.window.palette();
    for (const QPalette::ColorGroup group : Groups) {
        const double measured = contrast(palette.color(group, text), palette.color(group, background));
        const double required = group == QPalette::Disabled ? DisabledTextContrast : TextContrast;
        QVERIFY2(measured >= required, qPrintable(QString("group %1: %2").arg(group).arg(measured)));
    }
}

void tst_Colors::noRoleIsLeftToTheDesktop()
{
    QPalette oneColor;
    for (int role = 0; role < QPalette::NColorRoles; ++role) {
        oneColor.setColor(QPalette::All, QPalette::ColorRole(role), QColor(1, 2, 3));
    }
    QApplication::setPalette(oneColor);
    WindowFixture fixture;
    bringTo(fixture, "list");
    for (const QWidget *widget : fixture.window.findChildren<QWidget *>()) {
        for (int role = 0; role < QPalette::NColorRoles; ++role) {
            for (const QPalette::ColorGroup group : Groups) {
                const QColor color = widget->palette().color(group, QPalette::ColorRole(role));
                QVERIFY2(
                    color != QColor(1, 2, 3) || role == QPalette::NoRole, qPrintable(QString::number(role)));
            }
        }
    }
}

void tst_Colors::lightDesktopLooksAsTheStyleDrawsIt()
{
    WindowFixture fixture;
    bringTo(fixture, "list");
    const QImage ours = fixture.window.grab().toImage();
    QPalette styles = QApplication::style()->standardPalette();
    styles.setBrush(QPalette::All, QPalette::Window, Qt::white);
    fixture.window.setPalette(styles);
    QCoreApplication::processEvents();
    QCOMPARE(fixture.window.grab().toImage(), ours);
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
    StandInTools tools;
    tools.installCompanion();
    const HeldPlatform platform;
    Arguments arguments;
    bool measured = false;
    QTimer answerer;
    connect(&answerer, &QTimer::timeout, &answerer, [&] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (box != nullptr && box->isVisible()) {
            answerer.stop();
            verifyTexts(*box, TextContrast);
            measured = true;
            QTest::mouseClick(box->button(QMessageBox::Ok), Qt::LeftButton);
        }
    });
    answerer.start(1);
    const MainWindow window(arguments.count, arguments.vector);
    QVERIFY(measured);
    QTRY_COMPARE(ScriptedPlatform::count("getTarvoDevice"), 1);
}

static const TestClass<tst_Colors, QApplication> colorsTests;
#include "tst_Colors.moc"
