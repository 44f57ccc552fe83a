#include "bench/core/Companion.h"
#include "bench/core/SampleBench.h"
#include "bench/panel/DriveRow.h"
#include "bench/panel/ElidedLabel.h"
#include "bench/panel/FaultMenu.h"
#include "bench/panel/PanelWindow.h"
#include "tests/bench/TemporaryBench.h"

#include <QCheckBox>
#include <QElapsedTimer>
#include <QFile>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QtTest>

#include <functional>
#include <thread>

using namespace bench;

namespace {

/// Changes made elsewhere are shown within this time; without the margin that other programs may cost.
constexpr int SoonEnough = 500;

/// The panel on a temporary bench, looked at and pressed as a person does.
struct Panel
{
    explicit Panel(const TemporaryBench &bench) : window(Bench(bench.folder(), bench.imageFolder()))
    {
        window.show();
        if (!QTest::qWaitForWindowExposed(&window)) {
            qFatal("the panel does not come up");
        }
    }

    /// The button that a screen reader calls by this name; fails the test when there is none.
    QPushButton *button(const QString &name) const
    {
        for (QPushButton *button : window.findChildren<QPushButton *>()) {
            if (button->accessibleName() == name && button->isVisible()) {
                return button;
            }
        }
        qFatal("no button \"%s\"", qPrintable(name));
    }

    void press(const QString &name) const { QTest::mouseClick(button(name), Qt::LeftButton); }

    /// Chooses an entry of a drive's fault menu with the mouse.
    void choose(const QString &serial, const QString &title) const
    {
        // A pressed menu button waits until its menu is closed again.
        bool chosen = false;
        whenOpen(serial, [&](FaultMenu *menu) {
            QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(entry(serial, title)).center());
            chosen = !menu->isVisible();
            menu->close();
        });
        press("Faults of " + serial);
        QVERIFY2(chosen, qPrintable(title));
    }

    /// Does something as soon as a drive's fault menu, which is pressed next, is open.
    void whenOpen(const QString &serial, const std::function<void(FaultMenu *)> &action) const
    {
        auto *const menu = button("Faults of " + serial)->findChild<FaultMenu *>();
        auto *const once = new QTimer(menu);
        once->setInterval(20);
        QObject::connect(once, &QTimer::timeout, menu, [once, menu, action] {
            if (menu->isVisible()) {
                once->stop();
                action(menu);
            }
        });
        once->start();
    }

    QAction *entry(const QString &serial, const QString &title) const
    {
        for (QAction *action : button("Faults of " + serial)->findChild<FaultMenu *>()->actions()) {
            if (action->text() == title) {
                return action;
            }
        }
        qFatal("no fault \"%s\"", qPrintable(title));
    }

    /// All visible texts, one a line.
    QString text() const
    {
        QStringList lines;
        for (const QLabel *label : window.findChildren<QLabel *>()) {
            if (label->isVisible() && !label->text().isEmpty()) {
                lines.append(label->text());
            }
        }
        return lines.join('\n');
    }

    bool shows(const QString &part) const { return text().contains(part); }

    PanelWindow window;
};

} // namespace

/// The panel: what it shows of a bench, and what its buttons do to one.
class tst_Panel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English)); }
    void theSampleIsShown();
    void unpluggingAndPlugging();
    void aPowerCycleTakesThreeSeconds();
    void aPowerCycleEndsWithThePanel();
    void theKeyboardUndoesWhatItDid();
    void aFaultIsSetOnceAndCleared();
    void aFaultStaysUntilCleared();
    void aDriveGoesWhileItsMenuIsOpen();
    void theMenuKnowsEveryFault();
    void theCompanionSwitch();
    void changesMadeElsewhereAreShown();
    void rowsStayInPlace();
    void theProgressOfAFlash();
    void anUpdatedDriveAsksForARestart();
    void aMalformedFile();
    void aRefusedChange();
    void anEmptyBenchAndNone();
    void aTextWithMarkupIsShownAsItIs();
};

void tst_Panel::theSampleIsShown()
{
    TemporaryBench bench;
    QString reason;
    QVERIFY2(bench->create(sampleDrives(), true, &reason), qPrintable(reason));
    Panel panel(bench);
    QCOMPARE(panel.window.windowTitle(), QString("Drive bench"));
    const QList<DriveRow *> rows = panel.window.findChildren<DriveRow *>();
    QCOMPARE(int(rows.size()), 6);
    for (const char *part :
        {"Pebble", "TV0001PEBBLE", "USB, Asm1051", "2.07, conf. 3", "2.14", "Plugged in, volumes mounted",
            "Needs firmware and configuration", "Needs firmware\n", "Needs configuration\n",
            "FireWire, OxSemiFireWire944", "Up to date", "No updater for its bridge"}) {
        QVERIFY2(panel.shows(part), part);
    }
    for (const DriveRow *row : rows) {
        const auto *const picture = row->findChild<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(picture->size(), QSize(48, 48));
        QCOMPARE(picture->sizeHint(), QSize(48, 48));
    }
    // In the smallest window too, nothing of a row is cut off, and the columns of all rows are at the same
    // place.
    panel.window.resize(1, 1);
    QTRY_VERIFY(panel.window.height() < 600);
    for (QPushButton *button : panel.window.findChildren<QPushButton *>()) {
        const auto *const viewport = panel.window.findChild<QScrollArea *>()->viewport();
        QVERIFY(button->mapTo(viewport, QPoint(button->width(), 0)).x() <= viewport->width());
        QVERIFY2(button->width() >= button->sizeHint().width(), qPrintable(button->accessibleName()));
    }
    for (int i = 0; i < rows.first()->findChildren<QLabel *>().size(); ++i) {
        for (const DriveRow *row : rows) {
            QCOMPARE(row->findChildren<QLabel *>().at(i)->geometry(),
                rows.first()->findChildren<QLabel *>().at(i)->geometry());
        }
    }
}

void tst_Panel::unpluggingAndPlugging()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Skiff");
    const Panel panel(bench);
    QVERIFY(!panel.button("Plug A")->isEnabled());
    panel.press("Unplug A");
    QVERIFY(!bench.drive("A").plugged);
    QVERIFY(bench.drive("B").plugged);
    QVERIFY(panel.shows("Unplugged"));
    QVERIFY(!panel.button("Unplug A")->isEnabled());
    QVERIFY(!panel.button("Power-cycle A")->isEnabled());
    panel.press("Plug A");
    QVERIFY(bench.drive("A").plugged);
    QVERIFY(!panel.shows("Unplugged"));
    QVERIFY(panel.button("Unplug A")->isEnabled());
}

void tst_Panel::aPowerCycleTakesThreeSeconds()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Bollard");
    const Panel panel(bench);
    QElapsedTimer time;
    time.start();
    panel.press("Power-cycle A");
    // The window is not blocked meanwhile.
    QVERIFY(time.elapsed() < 1000);
    QVERIFY(!bench.drive("A").plugged);
    QVERIFY(panel.shows("Comes back by itself"));
    QTRY_VERIFY(bench.drive("A").plugged);
    QVERIFY2(time.elapsed() > 2900, qPrintable(QString::number(time.elapsed())));
    QCOMPARE(int(bench.drive("A").powerUps), 2);
    QVERIFY(!panel.shows("Comes back by itself"));
}

void tst_Panel::aPowerCycleEndsWithThePanel()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Bollard");
    {
        const Panel panel(bench);
        panel.press("Power-cycle A");
        QVERIFY(!bench.drive("A").plugged);
    }
    QVERIFY(bench.drive("A").plugged);
}

void tst_Panel::theKeyboardUndoesWhatItDid()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    Panel panel(bench);
    panel.window.activateWindow();
    panel.button("Unplug A")->setFocus();
    QTRY_VERIFY(panel.button("Unplug A")->hasFocus());
    QTest::keyClick(panel.window.focusWidget(), Qt::Key_Space);
    QVERIFY(!bench.drive("A").plugged);
    QCOMPARE(panel.window.focusWidget(), static_cast<QWidget *>(panel.button("Plug A")));
    QTest::keyClick(panel.window.focusWidget(), Qt::Key_Space);
    QVERIFY(bench.drive("A").plugged);
    QCOMPARE(panel.window.focusWidget(), static_cast<QWidget *>(panel.button("Unplug A")));
}

void tst_Panel::aFaultIsSetOnceAndCleared()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const Panel panel(bench);
    panel.choose("A", "Pulled out half-way");
    QCOMPARE(int(bench.drive("A").faults.size()), 1);
    QCOMPARE(bench.drive("A").faults.first().name, QString("pulled-out"));
    QCOMPARE(bench.drive("A").faults.first().number, qint64(20000));
    QVERIFY(bench.drive("A").faults.first().once);
    QVERIFY(panel.shows("Fault: Pulled out half-way, once"));
    QVERIFY(panel.entry("A", "Pulled out half-way")->isChecked());

    panel.choose("A", "Unmount refused");
    QCOMPARE(int(bench.drive("A").faults.size()), 2);
    panel.choose("A", "Pulled out half-way");
    QCOMPARE(int(bench.drive("A").faults.size()), 1);
    QCOMPARE(bench.drive("A").faults.first().name, QString("unmount-returns"));
    panel.choose("A", "Clear faults");
    QVERIFY(bench.drive("A").faults.isEmpty());
    QVERIFY(!panel.shows("Fault:"));
    QVERIFY(!panel.entry("A", "Unmount refused")->isChecked());
}

void tst_Panel::aFaultStaysUntilCleared()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const Panel panel(bench);
    panel.choose("A", "Faults stay until cleared");
    QVERIFY(bench.drive("A").faults.isEmpty());
    panel.choose("A", "Unknown firmware status");
    QVERIFY(!bench.drive("A").faults.first().once);
    QStringList problems;
    bench->query(&problems);
    bench->query(&problems);
    QCOMPARE(int(bench.drive("A").faults.size()), 1);
}

void tst_Panel::aDriveGoesWhileItsMenuIsOpen()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Skiff");
    const Panel panel(bench);
    QString reason;
    panel.whenOpen("A", [&](FaultMenu *menu) {
        bench->remove("A", &reason);
        QTest::qWait(SoonEnough);
        QVERIFY(panel.shows("Its file cannot be read"));
        menu->close();
    });
    panel.press("Faults of A");
    QTRY_VERIFY(!panel.shows("Pebble"));
    QCOMPARE(int(panel.window.findChildren<DriveRow *>().size()), 1);
    panel.press("Unplug B");
    QVERIFY(!bench.drive("B").plugged);
}

void tst_Panel::theMenuKnowsEveryFault()
{
    TemporaryBench bench;
    FaultMenu menu(nullptr);
    QStringList chosen;
    connect(&menu, &FaultMenu::faultChosen, this, [&chosen](const Fault &fault) {
        QVERIFY2(isValid(fault), qPrintable(fault.name));
        QVERIFY(FaultMenu::title(fault) != fault.name);
        chosen.append(fault.name);
    });
    for (QAction *action : menu.actions()) {
        if (action->text() != "Clear faults") {
            action->trigger();
        }
    }
    QStringList kinds;
    for (const FaultKind &kind : faultKinds()) {
        kinds.append(kind.name);
    }
    kinds.sort();
    chosen.sort();
    QCOMPARE(chosen, kinds);
}

void tst_Panel::theCompanionSwitch()
{
    TemporaryBench bench;
    const Panel panel(bench);
    auto *const companion = panel.window.findChild<QCheckBox *>();
    const auto click = [companion] {
        QTest::mouseClick(companion, Qt::LeftButton, {}, QPoint(8, companion->height() / 2));
    };
    QStringList problems;
    QVERIFY(!companion->isChecked());
    click();
    QVERIFY(companion->isChecked());
    QVERIFY(bench->host(&problems).companionInstalled);
    click();
    QVERIFY(!companion->isChecked());
    QVERIFY(!bench->host(&problems).companionInstalled);

    QString reason;
    QVERIFY(Companion(bench.folder()).install(&reason));
    QTRY_VERIFY_WITH_TIMEOUT(companion->isChecked(), SoonEnough);
}

void tst_Panel::changesMadeElsewhereAreShown()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const Panel panel(bench);
    QString reason;
    QVERIFY(bench->unplug("A", &reason));
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("Unplugged"), SoonEnough);
    QVERIFY(bench->plug("A", &reason));
    QTRY_VERIFY_WITH_TIMEOUT(!panel.shows("Unplugged"), SoonEnough);
    bench.addOutdated("B", "Skiff");
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("Skiff"), SoonEnough);
    QVERIFY(bench->setFault("A", numberFault("verify-error"), &reason));
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("Fault: Verify error"), SoonEnough);
    QVERIFY(bench->unmount("A") == 1);
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("volumes not mounted"), SoonEnough);
    QVERIFY(bench->remove("B", &reason));
    QTRY_VERIFY_WITH_TIMEOUT(!panel.shows("Skiff"), SoonEnough);

    // An editor may write the file in place, which changes no folder.
    Drive changed = bench.drive("A");
    changed.runningFirmware = "7.77";
    QFile file(bench->driveFile("A"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(changed.encode());
    file.close();
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("7.77"), SoonEnough);
}

void tst_Panel::rowsStayInPlace()
{
    TemporaryBench bench;
    bench.addOutdated("B", "Pebble");
    const Panel panel(bench);
    QPushButton *const unplug = panel.button("Unplug B");
    const QPoint place = unplug->mapTo(&panel.window, QPoint());
    bench.addOutdated("A", "Skiff");
    QTRY_VERIFY(panel.shows("Skiff"));
    panel.press("Unplug B");
    panel.choose("B", "Verify error");
    QCOMPARE(panel.button("Unplug B"), unplug);
    QCOMPARE(unplug->mapTo(&panel.window, QPoint()), place);
}

void tst_Panel::theProgressOfAFlash()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble", 1750);
    const Panel panel(bench);
    auto *const progress = panel.window.findChild<QProgressBar *>();
    QCOMPARE(progress->accessibleName(), QString("Flash of A"));
    QVERIFY(!progress->isVisible());
    std::thread writer([&bench] {
        QString reason;
        bench->flash("A", 1, bench.image("Pebble"), &reason);
    });
    const auto progressText = [&panel](const QString &pattern) {
        return QRegularExpression(pattern).match(panel.text()).hasMatch();
    };
    const bool began =
        QTest::qWaitFor([&] { return progress->isVisible() && progress->value() > 0; }, 2 * SoonEnough);
    const bool told = progressText("[0-9,]+ of 3,500 bytes, [12] s left");
    const bool advanced = QTest::qWaitFor([&] { return progress->value() > 1750; }, 5000);
    const int maximum = progress->maximum();
    writer.join();
    QVERIFY(began && told && advanced);
    QCOMPARE(maximum, 3500);
    QTRY_VERIFY_WITH_TIMEOUT(!progress->isVisible(), SoonEnough);
    QVERIFY(!panel.shows("bytes"));
}

void tst_Panel::anUpdatedDriveAsksForARestart()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Bollard");
    const Panel panel(bench);
    QString reason;
    QVERIFY2(bench->flash("A", 1, bench.image("Pebble"), &reason), qPrintable(reason));
    QVERIFY2(bench->flash("B", 1, bench.image("Bollard"), &reason), qPrintable(reason));
    QTRY_VERIFY(panel.shows("Updated: unplug it and plug it in"));
    QTRY_VERIFY(panel.shows("Updated: press power-cycle"));
    panel.press("Unplug A");
    panel.press("Plug A");
    QVERIFY(panel.shows("Up to date"));
}

void tst_Panel::aMalformedFile()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Skiff");
    const Panel panel(bench);
    const Drive good = bench.drive("B");
    QString reason;
    QVERIFY(replaceFile(bench->driveFile("B"), "{", &reason));
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("drives/B.json:1:"), SoonEnough);
    QVERIFY(panel.shows("; correct the file, or remove it"));
    // Its row waits for the file to be corrected.
    QVERIFY(panel.shows("Its file cannot be read"));
    QVERIFY(!panel.button("Unplug B")->isEnabled());
    QVERIFY(panel.button("Unplug A")->isEnabled());
    QVERIFY(replaceFile(bench->driveFile("B"), good.encode(), &reason));
    QTRY_VERIFY_WITH_TIMEOUT(!panel.shows("B.json"), SoonEnough);
    QVERIFY(panel.button("Unplug B")->isEnabled());
    QVERIFY(panel.button("Faults of B")->isEnabled());
}

void tst_Panel::aRefusedChange()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    // A lock that nobody can take, as in a folder that is read-only.
    QString reason;
    QVERIFY(removeFile(bench.folder() + "/lock", &reason));
    QVERIFY(makeFolder(bench.folder() + "/lock", &reason));
    const Panel panel(bench);
    panel.press("Unplug A");
    QVERIFY(bench.drive("A").plugged);
    QVERIFY2(panel.shows("cannot lock lock: "), qPrintable(panel.text()));
    QVERIFY(panel.shows("; the folder must be writable"));
    QVERIFY(panel.button("Unplug A")->isEnabled());
    auto *const companion = panel.window.findChild<QCheckBox *>();
    QTest::mouseClick(companion, Qt::LeftButton, {}, QPoint(8, companion->height() / 2));
    QVERIFY(!companion->isChecked());

    QVERIFY(QDir().rmdir(bench.folder() + "/lock"));
    panel.press("Unplug A");
    QVERIFY(!panel.shows("cannot"));
}

void tst_Panel::anEmptyBenchAndNone()
{
    const TemporaryBench bench;
    {
        const Panel panel(bench);
        QVERIFY(panel.shows("No drive is on this bench"));
        QVERIFY(panel.shows("drive-bench add Pebble"));
    }
    TemporaryBench filled;
    filled.addOutdated("A", "Pebble");
    const Panel panel(filled);
    QVERIFY(!panel.shows("No drive"));
    removeFolder(filled.folder() + "/drives");
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("There is no bench here"), SoonEnough);
    QVERIFY(panel.shows("drive-bench init"));
    QVERIFY(panel.shows("is no bench that can be read"));
    QVERIFY(!panel.window.findChild<QCheckBox *>()->isEnabled());
    QString reason;
    QVERIFY(makeFolder(filled.folder() + "/drives", &reason));
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("No drive is on this bench"), SoonEnough);
    filled.addOutdated("C", "Skiff");
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("Skiff"), SoonEnough);
}

void tst_Panel::aTextWithMarkupIsShownAsItIs()
{
    TemporaryBench bench;
    bench.addOutdated("<b>bold</b>", "Pebble");
    const Panel panel(bench);
    QVERIFY(panel.shows("<b>"));
    for (const QLabel *label : panel.window.findChildren<QLabel *>()) {
        QVERIFY(label->text().isEmpty() || label->textFormat() == Qt::PlainText || label->text() == "Running"
            || label->text() == "In flash" || label->text() == "On offer");
    }
}

QTEST_MAIN(tst_Panel)
#include "tst_Panel.moc"
