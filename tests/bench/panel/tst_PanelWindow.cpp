// SPDX-License-Identifier: MIT
#include "tests/bench/panel/Panel.h"

#include <QProcess>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>

using namespace bench;

namespace {

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

} // namespace

/// The panel's window on the desktop: its colours, its place, and where there is no display.
class tst_PanelWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useTextSize(); }
    void cleanup()
    {
        QApplication::setPalette(QApplication::style()->standardPalette());
        useTextSize();
    }
    void itLooksTheSameOnADarkDesktop();
    void itsPlaceBesideTheUpdater_data();
    void itsPlaceBesideTheUpdater();
    void theRowsAreAligned_data();
    void theRowsAreAligned();
    void itEndsWithoutAWindow_data();
    void itEndsWithoutAWindow();
};

void tst_PanelWindow::itLooksTheSameOnADarkDesktop()
{
    TemporaryBench bench;
    addSample(bench);
    bench.edit("TV0003LAMINA", [](Drive &drive) {
        drive.faults = {fault("verify-error")};
        drive.setLastUpdate("failed: it had to");
    });
    QList<QImage> looks;
    const auto look = [&looks](Panel &panel) {
        panel.open("Faults TV0001PEBBLE", [&](QMenu *menu) { looks.append(menu->grab().toImage()); });
        panel.choose("Faults TV0001PEBBLE", "slow-probe…");
        auto *const question = panel.window.findChild<QInputDialog *>();
        for (const QWidget *widget : {static_cast<QWidget *>(question), question->findChild<QWidget *>()}) {
            QCOMPARE(widget->palette().color(QPalette::Window), QColor(Qt::white));
            QCOMPARE(widget->palette().color(QPalette::Text), QColor(Qt::black));
        }
        question->close();
        looks.append(panel.window.grab().toImage());
    };
    Panel panel(bench);
    look(panel);
    darken();
    look(panel);
    Panel other(bench);
    look(other);
    QCOMPARE(looks.mid(2, 2), looks.mid(0, 2));
    QCOMPARE(looks.mid(4), looks.mid(0, 2));
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
    QVERIFY(screen.contains(place) || textSize > 24);
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
    QTest::addColumn<int>("textSize");
    QTest::addColumn<int>("width");
    QTest::newRow("beside the updater on 1280 pixels") << 12 << 422;
    QTest::newRow("large texts") << 24 << 900;
}

void tst_PanelWindow::theRowsAreAligned()
{
    QFETCH(int, textSize);
    QFETCH(int, width);
    useTextSize(textSize);
    TemporaryBench bench;
    addSample(bench);
    Panel panel(bench);
    panel.window.resize(width, 1400);
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

void tst_PanelWindow::itEndsWithoutAWindow_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("display"); // null where there is one
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("printed");
    const auto row = [](const char *argument, const QString &display, int status, const char *printed) {
        QTest::newRow(argument) << QString(argument) << display << status << QString(printed);
    };
    row("--bench=x", ":4711", 1,
        "drive-bench-panel: no window can be opened: could not connect to display :4711; see DISPLAY and "
        "QT_QPA_PLATFORM\n");
    row("--help", {}, 0, "drive-bench-panel [options]");
    row("-h", {}, 0, "$XDG_DATA_HOME/tarvo-drive-bench");
    row("--bnech", {}, 2, "drive-bench-panel: Unknown option 'bnech'. See: drive-bench-panel --help\n");
    row("bench", {}, 2, "drive-bench-panel: It takes no argument \"bench\". See: drive-bench-panel --help\n");
}

void tst_PanelWindow::itEndsWithoutAWindow()
{
    QFETCH(QString, argument);
    QFETCH(QString, display);
    QFETCH(int, status);
    QFETCH(QString, printed);
    QProcess panel;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", display.isNull() ? "offscreen" : "xcb");
    environment.insert("DISPLAY", display);
    panel.setProcessEnvironment(environment);
    panel.start(PANEL, {argument});
    QVERIFY(panel.waitForFinished());
    QCOMPARE(panel.exitStatus(), QProcess::NormalExit);
    QCOMPARE(panel.exitCode(), status);
    const QString output = panel.readAllStandardOutput();
    const QString error = panel.readAllStandardError();
    QVERIFY2(status == 0 ? output.contains(printed) : error == printed, qPrintable(output + error));
}

QTEST_MAIN(tst_PanelWindow)
#include "tst_PanelWindow.moc"
