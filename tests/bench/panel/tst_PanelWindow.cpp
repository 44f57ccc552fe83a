#include "tests/bench/panel/Panel.h"

#include <QCheckBox>
#include <QProcess>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>

#include <algorithm>
#include <cmath>
#include <filesystem>

using namespace bench;

namespace {

constexpr double TextContrast = 7;
constexpr double DisabledTextContrast = 4.5;

/// Gives all programs dark colours, as a desktop does: some widgets have their own.
void darken()
{
    QPalette palette(QColor(0x30, 0x33, 0x36));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::All, role, QColor(0xF0, 0xF0, 0xF0));
        palette.setColor(QPalette::Disabled, role, QColor(0x80, 0x80, 0x80));
    }
    palette.setColor(QPalette::Base, QColor(0x20, 0x22, 0x24));
    QApplication::setPalette(palette);
    for (const char *name : {"QMenu", "QLabel", "QPushButton", "QCheckBox", "QScrollArea"}) {
        QApplication::setPalette(palette, name);
    }
}

void lighten()
{
    QApplication::setPalette(QApplication::style()->standardPalette());
}

double luminance(QRgb color)
{
    const auto linear = [](int value) {
        const double part = value / 255.0;
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(color)) + 0.7152 * linear(qGreen(color)) + 0.0722 * linear(qBlue(color));
}

/// The contrast between what most of the pixels show and what differs most from it.
double contrast(const QImage &image)
{
    QHash<QRgb, int> pixels;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            ++pixels[image.pixel(x, y)];
        }
    }
    const QRgb ground = *std::max_element(pixels.keyBegin(), pixels.keyEnd(),
        [&pixels](QRgb one, QRgb other) { return pixels.value(one) < pixels.value(other); });
    double highest = 1;
    for (const QRgb color : pixels.keys()) {
        const double lighter = std::max(luminance(color), luminance(ground)) + 0.05;
        const double darker = std::min(luminance(color), luminance(ground)) + 0.05;
        highest = std::max(highest, lighter / darker);
    }
    return highest;
}

double contrastIn(QWidget &window, const QRect &place)
{
    return contrast(window.grab(place).toImage().convertToFormat(QImage::Format_RGB32));
}

/// Fails unless every text of the window can be read, and there are that many.
void verifyTexts(const Panel &panel, int atLeast)
{
    auto &window = const_cast<PanelWindow &>(panel.window);
    int texts = 0;
    const auto verify = [&](const QWidget *widget, const QString &text, int border) {
        if (!widget->isVisible() || text.isEmpty() || QTest::currentTestFailed()) {
            return;
        }
        const QRect place(widget->mapTo(&window, QPoint()), widget->size());
        const QRect inside = place.adjusted(border, border, -border, -border);
        const double measured = contrastIn(window, inside);
        const double required = widget->isEnabled() ? TextContrast : DisabledTextContrast;
        QVERIFY2(measured >= required, qPrintable(QString("%1: %2").arg(text).arg(measured)));
        // The text is drawn on white, or on a light button.
        const QRgb corner = window.grab(QRect(inside.topLeft(), QSize(1, 1))).toImage().pixel(0, 0);
        QVERIFY2(luminance(corner) > 0.7, qPrintable(text));
        ++texts;
    };
    for (const QLabel *label : window.findChildren<QLabel *>()) {
        verify(label, label->text(), 0);
    }
    for (const QPushButton *button : window.findChildren<QPushButton *>()) {
        verify(button, button->text(), 5);
    }
    const auto *const companion = window.findChild<QCheckBox *>();
    verify(companion, companion->text(), 0);
    QVERIFY(texts >= atLeast);
}

void verifyMenu(const Panel &panel)
{
    bool measured = false;
    panel.open("Faults TV0001PEBBLE", [&measured](QMenu *menu) {
        for (QAction *action : menu->actions()) {
            if (!action->text().isEmpty()) {
                const double found = contrastIn(*menu, menu->actionGeometry(action).adjusted(20, 3, -20, -3));
                QVERIFY2(found >= (action->isEnabled() ? TextContrast : DisabledTextContrast),
                    qPrintable(QString("%1: %2").arg(action->text()).arg(found)));
                measured = true;
            }
        }
    });
    QVERIFY(measured);
}

} // namespace

/// The panel's window on the desktop: its colours, its place, and where there is no display.
class tst_PanelWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useTextSize(); }
    void cleanup()
    {
        lighten();
        useTextSize();
    }
    void everyTextIsLegible_data();
    void everyTextIsLegible();
    void itsPlaceBesideTheUpdater_data();
    void itsPlaceBesideTheUpdater();
    void theRowsAreAligned_data();
    void theRowsAreAligned();
    void itsIconIsThatOfTheTheme();
    void itEndsWithoutAWindow_data();
    void itEndsWithoutAWindow();
};

void tst_PanelWindow::everyTextIsLegible_data()
{
    QTest::addColumn<bool>("isDarkBefore");
    QTest::addColumn<bool>("isDarkLater");
    QTest::newRow("light") << false << false;
    QTest::newRow("dark") << true << true;
    QTest::newRow("dark while it runs") << false << true;
    QTest::newRow("light while it runs") << true << false;
}

void tst_PanelWindow::everyTextIsLegible()
{
    QFETCH(bool, isDarkBefore);
    QFETCH(bool, isDarkLater);
    TemporaryBench bench;
    addSample(bench);
    // Every kind of text: a refused change, a fault, an update that failed.
    bench.edit("TV0003LAMINA", [](Drive &drive) {
        drive.faults = {fault("verify-error")};
        drive.setLastUpdate("failed: it had to");
    });
    isDarkBefore ? darken() : lighten();
    Panel panel(bench);
    panel.window.resize(1000, 1100);
    unplugDrive(bench.store(), "TV0002BOLLARD");
    panel.press("Unplug TV0002BOLLARD");
    QVERIFY(panel.shows("it is unplugged already"));
    isDarkLater ? darken() : lighten();
    QCoreApplication::processEvents();
    verifyTexts(panel, 6 * 14);
    verifyMenu(panel);
    std::filesystem::remove_all(bench.directory());
    QTRY_VERIFY(panel.shows("There is no bench here"));
    verifyTexts(panel, 2);
}

void tst_PanelWindow::itsPlaceBesideTheUpdater_data()
{
    QTest::addColumn<QRect>("screen");
    QTest::addColumn<int>("textSize");
    QTest::addColumn<bool>("isBeside");
    QTest::newRow("1280 x 800") << QRect(0, 0, 1280, 800) << 12 << true;
    QTest::newRow("1366 x 768 with a bar at the top") << QRect(0, 30, 1366, 738) << 12 << true;
    QTest::newRow("1920 x 1080 with a bar at the left") << QRect(70, 0, 1850, 1080) << 24 << true;
    QTest::newRow("1024 x 600") << QRect(0, 0, 1024, 600) << 12 << false;
    QTest::newRow("1280 x 800, large texts") << QRect(0, 0, 1280, 800) << 24 << false;
    QTest::newRow("1024 x 600, large texts") << QRect(0, 0, 1024, 600) << 24 << false;
    QTest::newRow("800 x 600, huge texts") << QRect(0, 0, 800, 600) << 48 << false;
}

void tst_PanelWindow::itsPlaceBesideTheUpdater()
{
    QFETCH(QRect, screen);
    QFETCH(int, textSize);
    QFETCH(bool, isBeside);
    useTextSize(textSize);
    TemporaryBench bench;
    addSample(bench);
    PanelWindow window(bench.directory(), bench.imageDirectory());
    window.placeBesideUpdater(screen);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    // The title bar of at most 30 pixels is above what Qt calls the window.
    const QRect place(window.pos(), window.size() + QSize(0, 30));
    QVERIFY2(screen.contains(place) || textSize > 24, qPrintable(QDebug::toString(place)));
    QVERIFY(screen.contains(place.topLeft()));
    QCOMPARE(place.left() >= screen.left() + 850, isBeside);
    QVERIFY(place.left() >= screen.left() + 850 || place.top() > screen.top());
    const auto *const scrollArea = window.findChild<QScrollArea *>();
    QTRY_VERIFY(
        scrollArea->viewport()->height() >= window.findChild<DriveRow *>()->height() || textSize > 24);
    QCOMPARE(scrollArea->horizontalScrollBar()->maximum() > 0, textSize > 24);
    if (isBeside && textSize == 12) {
        QCOMPARE(scrollArea->verticalScrollBar()->maximum(), 0); // all six drives
    }
}

void tst_PanelWindow::theRowsAreAligned_data()
{
    QTest::addColumn<int>("width");
    QTest::newRow("beside the updater on 1280 pixels") << 422;
    QTest::newRow("wide") << 1040;
}

void tst_PanelWindow::theRowsAreAligned()
{
    QFETCH(int, width);
    TemporaryBench bench;
    addSample(bench);
    Panel panel(bench);
    panel.window.resize(width, 700);
    QTRY_COMPARE(panel.window.findChild<DriveRow *>()->width(), width);
    const auto placesIn = [](const DriveRow *row) {
        QList<QRect> places;
        for (const QPushButton *button : row->findChildren<QPushButton *>()) {
            places.append({button->mapTo(row, QPoint()), button->size()});
        }
        for (const QLabel *label : row->findChildren<QLabel *>()) {
            places.append({label->mapTo(row, QPoint()), label->size()});
        }
        return places;
    };
    const QList<DriveRow *> rows = panel.window.findChildren<DriveRow *>();
    QTRY_COMPARE(placesIn(rows.last()).last(), placesIn(rows.first()).last());
    for (const DriveRow *row : rows) {
        QCOMPARE(placesIn(row), placesIn(rows.first()));
        for (const QPushButton *button : row->findChildren<QPushButton *>()) {
            QVERIFY(button->width() >= button->sizeHint().width());
            QCOMPARE(button->width(), row->findChild<QPushButton *>()->width());
        }
        for (const QLabel *label : row->findChildren<QLabel *>()) {
            QVERIFY2(label->width() >= label->fontMetrics().horizontalAdvance(label->text()),
                qPrintable(label->text()));
        }
    }
}

/// An installed package brings an icon; a build directory has none.
void tst_PanelWindow::itsIconIsThatOfTheTheme()
{
    const auto iconColor = [] {
        const TemporaryBench bench;
        const PanelWindow window(bench.directory(), bench.imageDirectory());
        return window.windowIcon().pixmap(16).toImage().pixelColor(8, 8);
    };
    const QColor builtIn = iconColor();
    QVERIFY(builtIn.alpha() > 0);
    QTemporaryDir themes;
    QVERIFY(QDir(themes.path()).mkpath("test/16x16"));
    QFile index(themes.filePath("test/index.theme"));
    QVERIFY(index.open(QIODevice::WriteOnly));
    index.write("[Icon Theme]\nName=test\nDirectories=16x16\n[16x16]\nSize=16\n");
    index.close();
    QPixmap picture(16, 16);
    picture.fill(Qt::magenta);
    QVERIFY(picture.save(themes.filePath("test/16x16/com.tarvo.drivebench.png")));
    QIcon::setThemeSearchPaths({themes.path()});
    QIcon::setThemeName("test");
    QCOMPARE(iconColor(), QColor(Qt::magenta));
    QVERIFY(builtIn != QColor(Qt::magenta));
}

void tst_PanelWindow::itEndsWithoutAWindow_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("display"); // null where there is one
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("printed");
    QTest::addColumn<QString>("error");
    const QString window = "no window can be opened: could not connect to display ";
    QTest::newRow("no display") << "--bench=x"
                                << "" << 1 << "" << window + "; see DISPLAY and QT_QPA_PLATFORM";
    QTest::newRow("display that is not there")
        << "--bench=x"
        << ":4711" << 1 << "" << window + ":4711; see DISPLAY and QT_QPA_PLATFORM";
    QTest::newRow("help") << "--help" << QString() << 0 << "drive-bench-panel [options]"
                          << "";
    QTest::newRow("where the bench is") << "-h" << QString() << 0 << "$XDG_DATA_HOME/tarvo-drive-bench"
                                        << "";
    const QString see = " See: drive-bench-panel --help";
    QTest::newRow("unknown option") << "--bnech" << QString() << 2 << ""
                                    << "Unknown option 'bnech'." + see;
    QTest::newRow("argument") << "bench" << QString() << 2 << ""
                              << "It takes no argument \"bench\"." + see;
}

void tst_PanelWindow::itEndsWithoutAWindow()
{
    QFETCH(QString, argument);
    QFETCH(QString, display);
    QFETCH(int, status);
    QFETCH(QString, printed);
    QFETCH(QString, error);
    QProcess panel;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", display.isNull() ? "offscreen" : "xcb");
    environment.insert("DISPLAY", display);
    environment.remove("WAYLAND_DISPLAY");
    panel.setProcessEnvironment(environment);
    panel.start(PANEL, {argument});
    QVERIFY(panel.waitForFinished());
    QCOMPARE(panel.exitStatus(), QProcess::NormalExit);
    QCOMPARE(panel.exitCode(), status);
    QVERIFY(QString(panel.readAllStandardOutput()).contains(printed));
    QCOMPARE(QString(panel.readAllStandardError()),
        error.isEmpty() ? QString() : "drive-bench-panel: " + error + '\n');
}

QTEST_MAIN(tst_PanelWindow)
#include "tst_PanelWindow.moc"
