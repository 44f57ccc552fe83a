#include "bench/core/Companion.h"
#include "bench/core/Flash.h"
#include "bench/core/SampleBench.h"
#include "bench/core/Unmount.h"
#include "bench/panel/DriveRow.h"
#include "tests/bench/panel/Panel.h"

#include <SQLiteCpp/Database.h>

#include <QCheckBox>
#include <QElapsedTimer>
#include <QFile>
#include <QProgressBar>
#include <QRegularExpression>
#include <QScrollArea>

#include <algorithm>
#include <filesystem>
#include <thread>

using namespace bench;

namespace {

/// Changes what the database holds, as somebody may who opens it with a tool of their own.
void execute(TemporaryBench &bench, const std::string &statement)
{
    bench.store().change([&] { bench.store().database().exec(statement); });
}

void overwrite(const std::string &path, const QByteArray &content)
{
    QFile file(QString::fromStdString(path));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

QRect placeIn(const QWidget &row, const QWidget &widget)
{
    return {widget.mapTo(&row, QPoint()), widget.size()};
}

/// As if all drives had been unplugged a while ago.
void letTimePass(TemporaryBench &bench)
{
    execute(bench, "UPDATE drives SET unpluggedAt = unpluggedAt - 3000 WHERE NOT plugged");
}

} // namespace

/// The panel: what it shows of a bench, and what its buttons do to one.
class tst_Panel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void theSampleIsShown();
    void theRowsFitTheWindow_data();
    void theRowsFitTheWindow();
    void unpluggingAndPlugging();
    void aRestartTakesThreeSeconds_data();
    void aRestartTakesThreeSeconds();
    void aDrivePluggedInEarlyWaits();
    void aDriveThatComesBackCanBeKeptAway();
    void aDriveIsNotLeftUnplugged_data();
    void aDriveIsNotLeftUnplugged();
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
    void theLastUpdate();
    void anInvalidDrive();
    void aDamagedBench();
    void aRefusedChange();
    void anEmptyBenchAndNone();
    void aBenchMadeAnew();
    void aTextWithMarkupIsShownAsItIs();
};

void tst_Panel::initTestCase()
{
    QLocale::setDefault(QLocale(QLocale::English));
    useUsualTextSize();
}

void tst_Panel::theSampleIsShown()
{
    TemporaryBench bench;
    for (const Drive &drive : sampleDrives()) {
        bench.lifeCycle().add(drive);
    }
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
        const auto *const picture = row->findChild<QLabel *>();
        QCOMPARE(picture->size(), QSize(48, 48));
        QCOMPARE(picture->sizeHint(), QSize(48, 48));
    }
}

void tst_Panel::theRowsFitTheWindow_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("isEveryTextWhole");
    QTest::newRow("smallest") << QSize(1, 1) << false;
    QTest::newRow("beside the updater on 1280 pixels") << QSize(422, 600) << true;
    QTest::newRow("narrow rows") << QSize(700, 600) << true;
    QTest::newRow("wide rows") << QSize(1040, 600) << true;
}

/// No button is cut off, and the columns of all rows are aligned.
void tst_Panel::theRowsFitTheWindow()
{
    QFETCH(QSize, size);
    QFETCH(bool, isEveryTextWhole);
    TemporaryBench bench;
    for (const Drive &drive : sampleDrives()) {
        bench.lifeCycle().add(drive);
    }
    Panel panel(bench);
    panel.window.resize(size);
    QTRY_VERIFY(panel.window.height() <= 600);
    const auto *const viewport = panel.window.findChild<QScrollArea *>()->viewport();
    for (QPushButton *button : panel.window.findChildren<QPushButton *>()) {
        QTRY_VERIFY(button->mapTo(viewport, QPoint(button->width(), 0)).x() <= viewport->width());
        QVERIFY2(button->width() >= button->sizeHint().width(), qPrintable(button->accessibleName()));
    }
    const QList<DriveRow *> rows = panel.window.findChildren<DriveRow *>();
    for (int i = 0; i < rows.first()->findChildren<QLabel *>().size(); ++i) {
        for (const DriveRow *row : rows) {
            const QLabel *const label = row->findChildren<QLabel *>().at(i);
            const int needed = label->fontMetrics().horizontalAdvance(label->text());
            QTRY_VERIFY2(label->width() >= needed || !isEveryTextWhole, qPrintable(label->text()));
            QCOMPARE(
                placeIn(*row, *label), placeIn(*rows.first(), *rows.first()->findChildren<QLabel *>().at(i)));
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
    QVERIFY(!panel.button("Replug A")->isEnabled());
    letTimePass(bench);
    panel.press("Plug A");
    QVERIFY(bench.drive("A").plugged);
    QVERIFY(!panel.shows("Unplugged"));
    QVERIFY(panel.button("Unplug A")->isEnabled());
}

void tst_Panel::aRestartTakesThreeSeconds_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("button");
    QTest::newRow("power button") << "Bollard"
                                  << "Power-cycle";
    QTest::newRow("unplugging") << "Pebble"
                                << "Replug";
    QTest::newRow("FireWire") << "Harbour FireWire"
                              << "Replug";
}

void tst_Panel::aRestartTakesThreeSeconds()
{
    QFETCH(QString, model);
    QFETCH(QString, button);
    TemporaryBench bench;
    bench.addOutdated("A", model.toStdString());
    const Panel panel(bench);
    QCOMPARE(panel.button(button + " A")->text(), button);
    QElapsedTimer time;
    time.start();
    panel.press(button + " A");
    // The window is not blocked meanwhile.
    QVERIFY(time.elapsed() < 1000);
    QVERIFY(!bench.drive("A").plugged);
    QVERIFY(panel.shows("Comes back by itself in 3 s"));
    QTRY_VERIFY(panel.shows("Comes back by itself in 1 s"));
    QTRY_VERIFY(bench.drive("A").plugged);
    QVERIFY2(time.elapsed() > 2900, qPrintable(QString::number(time.elapsed())));
    QCOMPARE(int(bench.drive("A").powerUps), 2);
    QVERIFY(!panel.shows("Comes back by itself"));
}

void tst_Panel::aDrivePluggedInEarlyWaits()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const Panel panel(bench);
    panel.press("Unplug A");
    execute(bench, "UPDATE drives SET unpluggedAt = unpluggedAt - 1500"); // half of the time has passed
    QElapsedTimer time;
    time.start();
    panel.press("Plug A");
    QVERIFY(time.elapsed() < 1000);
    QVERIFY(!bench.drive("A").plugged);
    QVERIFY(panel.shows("Comes back by itself in 2 s"));
    QVERIFY(!panel.button("Plug A")->isEnabled());
    QTRY_VERIFY(bench.drive("A").plugged);
    const Drive drive = bench.drive("A");
    QVERIFY(drive.pluggedAt - drive.unpluggedAt >= 3000);
    QVERIFY2(time.elapsed() < 2900, qPrintable(QString::number(time.elapsed())));

    // A clock that was set back must not keep it away.
    panel.press("Unplug A");
    execute(bench, "UPDATE drives SET unpluggedAt = unpluggedAt + 3600000");
    panel.press("Plug A");
    QVERIFY(bench.drive("A").plugged);
}

void tst_Panel::aDriveThatComesBackCanBeKeptAway()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const Panel panel(bench);
    panel.press("Replug A");
    panel.press("Unplug A");
    QVERIFY(!panel.shows("Comes back by itself"));
    QVERIFY(panel.text().endsWith("Unplugged"));
    letTimePass(bench);
    panel.press("Plug A");
    QVERIFY(bench.drive("A").plugged);

    // Somebody else may plug it in meanwhile.
    panel.press("Replug A");
    bench.lifeCycle().plug("A");
    QTRY_VERIFY_WITH_TIMEOUT(!panel.shows("Comes back by itself"), SoonEnough);
    QVERIFY(panel.button("Replug A")->isEnabled());
}

void tst_Panel::aDriveIsNotLeftUnplugged_data()
{
    QTest::addColumn<QStringList>("buttons");
    QTest::newRow("power-cycled") << QStringList{"Power-cycle A"};
    QTest::newRow("plugged in early") << QStringList{"Unplug A", "Plug A"};
}

void tst_Panel::aDriveIsNotLeftUnplugged()
{
    QFETCH(QStringList, buttons);
    TemporaryBench bench;
    bench.addOutdated("A", "Bollard");
    {
        const Panel panel(bench);
        for (const QString &button : buttons) {
            panel.press(button);
        }
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
    // It comes back a little later, and until then the key takes that back.
    QTest::keyClick(panel.window.focusWidget(), Qt::Key_Space);
    QVERIFY(panel.shows("Comes back by itself"));
    QCOMPARE(panel.window.focusWidget(), static_cast<QWidget *>(panel.button("Unplug A")));
    QTRY_VERIFY(bench.drive("A").plugged);
    QCOMPARE(panel.window.focusWidget(), static_cast<QWidget *>(panel.button("Unplug A")));
}

void tst_Panel::aFaultIsSetOnceAndCleared()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const Panel panel(bench);
    panel.choose("A", "Pulled out half-way");
    QCOMPARE(int(bench.drive("A").faults.size()), 1);
    const Fault fault = bench.drive("A").faults.front();
    QCOMPARE(fault.kind, FaultKind::PulledOut);
    QCOMPARE(int(fault.number), 20000);
    QVERIFY(fault.once);
    QVERIFY(panel.shows("Fault: Pulled out half-way, once"));
    QVERIFY(panel.entry("A", "Pulled out half-way")->isChecked());

    panel.choose("A", "Unmount refused");
    QCOMPARE(int(bench.drive("A").faults.size()), 2);
    panel.choose("A", "Pulled out half-way");
    QCOMPARE(int(bench.drive("A").faults.size()), 1);
    QCOMPARE(bench.drive("A").faults.front().kind, FaultKind::UnmountReturns);
    panel.choose("A", "Clear faults");
    QVERIFY(bench.drive("A").faults.empty());
    QVERIFY(!panel.shows("Fault:"));
    QVERIFY(!panel.entry("A", "Unmount refused")->isChecked());
}

void tst_Panel::aFaultStaysUntilCleared()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const Panel panel(bench);
    panel.choose("A", "Faults stay until cleared");
    QVERIFY(bench.drive("A").faults.empty());
    panel.choose("A", "Unknown firmware status");
    QVERIFY(!bench.drive("A").faults.front().once);
    bench.discovery().query();
    bench.discovery().query();
    QCOMPARE(int(bench.drive("A").faults.size()), 1);
}

void tst_Panel::aDriveGoesWhileItsMenuIsOpen()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Skiff");
    const Panel panel(bench);
    panel.whenOpen("A", [&](FaultMenu *menu) {
        bench.lifeCycle().remove("A");
        QTRY_VERIFY_WITH_TIMEOUT(panel.shows("No longer on the bench"), SoonEnough);
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
    FaultMenu menu(nullptr);
    QStringList chosen;
    connect(&menu, &FaultMenu::faultChosen, this, [&chosen](const Fault &fault) {
        QCOMPARE(refusal([&fault] { check(fault); }), std::string());
        const QString name = describe(fault.kind).name;
        QVERIFY(FaultMenu::title(fault.kind) != name);
        chosen.append(name);
    });
    for (QAction *action : menu.actions()) {
        if (action->text() != "Clear faults") {
            action->trigger();
        }
    }
    QStringList kinds;
    for (const FaultDescription &kind : faultDescriptions()) {
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
    QVERIFY(!companion->isChecked());
    click();
    QVERIFY(companion->isChecked());
    QVERIFY(bench.host().state().companionInstalled);
    click();
    QVERIFY(!companion->isChecked());
    QVERIFY(!bench.host().state().companionInstalled);

    Companion(bench.store(), bench.directory()).install();
    QTRY_VERIFY_WITH_TIMEOUT(companion->isChecked(), SoonEnough);
}

void tst_Panel::changesMadeElsewhereAreShown()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const Panel panel(bench);
    bench.lifeCycle().unplug("A");
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("Unplugged"), SoonEnough);
    bench.lifeCycle().plug("A");
    QTRY_VERIFY_WITH_TIMEOUT(!panel.shows("Unplugged"), SoonEnough);
    bench.addOutdated("B", "Skiff");
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("Skiff"), SoonEnough);
    bench.lifeCycle().setFault("A", numberFault(FaultKind::VerifyError));
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("Fault: Verify error"), SoonEnough);
    QCOMPARE(unmount(bench.store(), "A").value, 1);
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("volumes not mounted"), SoonEnough);
    bench.lifeCycle().remove("B");
    QTRY_VERIFY_WITH_TIMEOUT(!panel.shows("Skiff"), SoonEnough);
    execute(bench, "UPDATE drives SET runningFirmware = x'372E3737'");
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
        BenchStore store(bench.directory());
        Flash(store).run("A", Chipset::Asm1051, bench.image("Pebble"));
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
    Flash(bench.store()).run("A", Chipset::Asm1051, bench.image("Pebble"));
    Flash(bench.store()).run("B", Chipset::Asm1051, bench.image("Bollard"));
    QTRY_VERIFY(panel.shows("Updated: unplug it and plug it in"));
    QTRY_VERIFY(panel.shows("Updated: press power-cycle"));
    panel.press("Unplug A");
    letTimePass(bench);
    panel.press("Plug A");
    QVERIFY(panel.shows("Up to date"));
}

void tst_Panel::theLastUpdate()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    const Panel panel(bench);
    QVERIFY(!panel.shows("Last update"));
    bench.lifeCycle().setFault("A", numberFault(FaultKind::PulledOut, 1000));
    QVERIFY(
        !refusal([&] { Flash(bench.store()).run("A", Chipset::Asm1051, bench.image("Pebble")); }).empty());
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("Last update: failed: the drive was pulled out, at "), SoonEnough);
    QVERIFY(panel.shows(QString::fromStdString(bench.drive("A").lastUpdateText())));
    QVERIFY(panel.shows("incomplete"));

    bench.lifeCycle().clearFaults("A");
    bench.lifeCycle().plug("A");
    Flash(bench.store()).run("A", Chipset::Asm1051, bench.image("Pebble"));
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("Last update: succeeded, at "), SoonEnough);
}

void tst_Panel::anInvalidDrive()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Skiff");
    const Panel panel(bench);
    execute(bench, "UPDATE drives SET model = x'3F' WHERE serial = x'42'");
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("holds an invalid drive B"), SoonEnough);
    QVERIFY(panel.shows("take it off with: drive-bench remove B"));
    QVERIFY(panel.shows("There is no bench here that can be read"));
    bench.lifeCycle().remove("B");
    QTRY_VERIFY_WITH_TIMEOUT(!panel.shows("invalid"), SoonEnough);
    QVERIFY(panel.shows("Pebble"));
    QVERIFY(!panel.shows("Skiff"));
    QVERIFY(panel.button("Unplug A")->isEnabled());
}

void tst_Panel::aDamagedBench()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Skiff");
    const std::string whole = bench.directory() + "/whole";
    execute(bench, "PRAGMA user_version"); // nothing is left in the log
    BenchStore(bench.directory()).database().exec("VACUUM INTO '" + whole + "'");
    const Panel panel(bench);
    const std::string file = bench.directory() + "/bench.sqlite";
    overwrite(file, QByteArray(8192, 'x'));
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("bench.sqlite is damaged: "), SoonEnough);
    QVERIFY(!panel.shows("Pebble"));
    QVERIFY(!panel.window.findChild<QCheckBox *>()->isEnabled());
    std::filesystem::rename(whole, file);
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("Pebble"), SoonEnough);
    QVERIFY(!panel.shows("damaged"));
    QVERIFY(panel.button("Faults of B")->isEnabled());
}

void tst_Panel::aRefusedChange()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    execute(bench,
        "CREATE TRIGGER full BEFORE UPDATE ON drives BEGIN SELECT RAISE(ABORT, 'disk full'); END;"
        "CREATE TRIGGER full2 BEFORE INSERT ON host BEGIN SELECT RAISE(ABORT, 'disk full'); END");
    const Panel panel(bench);
    for (const char *button : {"Unplug A", "Replug A"}) {
        panel.press(button);
        QVERIFY(bench.drive("A").plugged);
        QVERIFY2(panel.shows("cannot write bench.sqlite: disk full; "), qPrintable(panel.text()));
        QVERIFY(!panel.shows("Comes back by itself"));
        QVERIFY(panel.button(button)->isEnabled());
    }
    auto *const companion = panel.window.findChild<QCheckBox *>();
    QTest::mouseClick(companion, Qt::LeftButton, {}, QPoint(8, companion->height() / 2));
    QVERIFY(!companion->isChecked());

    execute(bench, "DROP TRIGGER full");
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
    std::filesystem::remove_all(filled.directory());
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("There is no bench here"), SoonEnough);
    QVERIFY(panel.shows("drive-bench init"));
    QVERIFY(panel.shows("is no bench that can be read"));
    QVERIFY(!panel.shows("Pebble"));
    QVERIFY(!panel.window.findChild<QCheckBox *>()->isEnabled());
    BenchStore::create(filled.directory(), false, [](BenchStore &) {});
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("No drive is on this bench"), SoonEnough);
    BenchStore made(filled.directory());
    Drive drive = newDrive(*findModel("Skiff"));
    drive.serial = "C";
    DriveLifeCycle(made).add(drive);
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("Skiff"), SoonEnough);
}

void tst_Panel::aBenchMadeAnew()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble");
    bench.addOutdated("B", "Skiff");
    const Panel panel(bench);
    const auto fill = [](BenchStore &store) {
        Drive drive = newDrive(*findModel("Lamina"));
        drive.serial = "B";
        DriveLifeCycle(store).add(drive);
    };
    BenchStore::create(bench.directory(), true, fill);
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("Lamina"), SoonEnough);
    QVERIFY(!panel.shows("Pebble"));
    QVERIFY(!panel.shows("Skiff"));
    panel.press("Unplug B");
    QVERIFY(!bench.drive("B").plugged);

    // Also where another directory has taken the place of the first.
    std::filesystem::remove_all(bench.directory());
    BenchStore::create(bench.directory(), false, fill);
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("Plugged in"), SoonEnough);
    panel.press("Unplug B");
    QVERIFY(panel.shows("Unplugged"));
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
