#include "bench/core/SampleBench.h"
#include "tests/bench/panel/Panel.h"

#include <QCheckBox>
#include <QProcess>
#include <QScrollArea>
#include <QStyle>

#include <algorithm>
#include <cmath>
#include <filesystem>

using namespace bench;

namespace {

constexpr double TextContrast = 7;
constexpr double DisabledTextContrast = 4.5;

void addSample(TemporaryBench &bench)
{
    for (const Drive &drive : sampleDrives()) {
        bench.lifeCycle().add(drive);
    }
}

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
    panel.whenOpen("TV0001PEBBLE", [&measured](FaultMenu *menu) {
        for (QAction *action : menu->actions()) {
            if (!action->text().isEmpty()) {
                const double found = contrastIn(*menu, menu->actionGeometry(action).adjusted(20, 3, -20, -3));
                QVERIFY2(found >= (action->isEnabled() ? TextContrast : DisabledTextContrast),
                    qPrintable(QString("%1: %2").arg(action->text()).arg(found)));
                measured = true;
            }
        }
        menu->close();
    });
    panel.press("Faults of TV0001PEBBLE");
    QVERIFY(measured);
}

} // namespace

/// The panel's window on the desktop: its colours, its place, and where there is no display.
class tst_PanelWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useUsualTextSize(); }
    void cleanup() { lighten(); }
    void everyTextIsLegible_data();
    void everyTextIsLegible();
    void itsPlaceBesideTheUpdater_data();
    void itsPlaceBesideTheUpdater();
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
    bench.lifeCycle().setFault("TV0003LAMINA", numberFault(FaultKind::VerifyError));
    bench.store().change([&bench] {
        bench.store().database().exec("UPDATE drives SET lastUpdate = 'failed: it had to', lastUpdateAt = 1");
    });
    isDarkBefore ? darken() : lighten();
    Panel panel(bench);
    panel.window.resize(1000, 1100);
    bench.lifeCycle().unplug("TV0002BOLLARD");
    panel.press("Unplug TV0002BOLLARD");
    QVERIFY(panel.shows("it is unplugged already"));
    isDarkLater ? darken() : lighten();
    QCoreApplication::processEvents();
    verifyTexts(panel, 6 * 12);
    verifyMenu(panel);
    std::filesystem::remove_all(bench.directory());
    QTRY_VERIFY(panel.shows("There is no bench here"));
    verifyTexts(panel, 3);
}

void tst_PanelWindow::itsPlaceBesideTheUpdater_data()
{
    QTest::addColumn<QRect>("screen");
    QTest::addColumn<int>("drives");
    QTest::addColumn<bool>("isBeside");
    QTest::newRow("1280 x 800") << QRect(0, 0, 1280, 800) << 6 << true;
    QTest::newRow("1280 x 800, nine drives") << QRect(0, 0, 1280, 800) << 9 << true;
    QTest::newRow("1366 x 768 with a bar at the top") << QRect(0, 30, 1366, 738) << 6 << true;
    QTest::newRow("1920 x 1080") << QRect(0, 0, 1920, 1080) << 6 << true;
    QTest::newRow("1920 x 1080 with a bar at the left") << QRect(70, 0, 1850, 1080) << 6 << true;
    QTest::newRow("1024 x 768") << QRect(0, 0, 1024, 768) << 6 << false;
    QTest::newRow("1024 x 768, one drive") << QRect(0, 0, 1024, 768) << 1 << false;
}

void tst_PanelWindow::itsPlaceBesideTheUpdater()
{
    QFETCH(QRect, screen);
    QFETCH(int, drives);
    QFETCH(bool, isBeside);
    TemporaryBench bench;
    for (int i = 0; i < drives; ++i) {
        bench.addOutdated("TV" + std::to_string(i), "Bollard Duo (FireWire 800)");
    }
    PanelWindow window(bench.directory(), bench.imageDirectory());
    window.placeBesideUpdater(screen);
    const QRect place(window.pos(), window.size());
    QVERIFY(screen.contains(place));
    QVERIFY(place.width() >= window.minimumSizeHint().width());
    QVERIFY(place.height() >= window.minimumSizeHint().height());
    // The updater is 850 pixels wide and at most 700 high; two rows of drives are 520 high.
    const int updaterHeight = std::min(700, (drives + 2) / 3 * 200 + 120);
    const QRect updater(screen.topLeft(), QSize(850, updaterHeight));
    QVERIFY(!place.intersects(updater));
    QCOMPARE(place.left() >= updater.right(), isBeside);

    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const auto *const viewport = window.findChild<QScrollArea *>()->viewport();
    for (QPushButton *button : window.findChildren<QPushButton *>()) {
        QTRY_VERIFY(button->mapTo(viewport, QPoint(button->width(), 0)).x() <= viewport->width());
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
    QTest::newRow("no display") << "--bench=x"
                                << "" << 1 << ""
                                << "there is no display to open it on; set DISPLAY";
    QTest::newRow("display that is not there")
        << "--bench=x"
        << ":4711" << 1 << ""
        << "no window can be opened: could not connect to display :4711; set DISPLAY to one that answers";
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
