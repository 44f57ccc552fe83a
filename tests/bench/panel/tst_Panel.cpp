// SPDX-License-Identifier: MIT
#include "tests/bench/panel/Panel.h"

#include <QAccessible>
#include <QCheckBox>
#include <QProgressBar>

#include <chrono>
#include <filesystem>
#include <thread>

using namespace bench;

namespace {

constexpr int AwayTime = 1000 * AwaySeconds;

/// As if the drive had been unplugged that many milliseconds earlier.
void letTimePass(TemporaryBench &bench, int milliseconds = AwayTime)
{
    bench.edit("A", [milliseconds](Drive &drive) { drive.unpluggedAt -= milliseconds; });
}

QString accessibleName(QObject *object)
{
    return QAccessible::queryAccessibleInterface(object)->text(QAccessible::Name);
}

} // namespace

/// The panel: what it shows of a bench, and what its buttons do to one.
class tst_Panel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useTextSize(); }
    void theSampleIsShown();
    void aDrivesTexts_data();
    void aDrivesTexts();
    void aScreenReadersNames();
    void aRestartTakesAWhile();
    void aDrivePluggedInEarlyWaits();
    void aDriveThatComesBackCanBeKeptAway();
    void aDriveIsNotLeftUnplugged();
    void theKeyboard_data();
    void theKeyboard();
    void aLetterFindsItsButton();
    void aLetterFindsItsFault();
    void everyFaultIsSetAndCleared();
    void aValueIsAskedFor();
    void drivesAreAddedAndRemoved();
    void aDriveGoesWhileItIsAskedAbout();
    void theCompanionSwitch();
    void theProgressOfAFlash();
    void aRefusalNamesItsDrive();
    void aBenchThatGoesAndComesBack();
};

void tst_Panel::theSampleIsShown()
{
    TemporaryBench bench;
    addSample(bench);
    Panel panel(bench);
    QCOMPARE(panel.window.windowTitle(), "Drive bench " + QString::fromStdString(bench.directory()));
    QCOMPARE(panel.rows(), 6);
    for (const char *part : {"Pebble\n", "TV0001PEBBLE\n", "USB, Asm1051\n", "2.07, conf. 3\n", "2.14\n",
             "Needs firmware and configuration\n", "Needs firmware\n", "Needs configuration\n",
             "FireWire, OxSemiFireWire944\n", "Up to date\n", "No updater for its bridge\n"}) {
        QVERIFY2(panel.shows(part), part);
    }
}

void tst_Panel::aDrivesTexts_data()
{
    QTest::addColumn<QString>("patch"); // of the drive's document
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *patch, const char *shown) {
        QTest::newRow(patch) << QString(patch) << QString(shown);
    };
    row(R"({"plugged": false})", "Unplugged\n");
    row(R"({"answers": false})", "Does not answer\n");
    row(R"({"incomplete": true, "runningFirmware": ""})", "Boot ROM: update it again\n");
    row(R"({"incomplete": true})", "incomplete\n");
    row(R"({"incomplete": true, "heartbeat": 1})", "Last update: interrupted, at ");
    row(R"({"flashFirmware": "2.14"})", "Updated: press Replug\n");
    row(R"({"model": "Bollard", "flashFirmware": "2.14"})", "Updated: press Power-cycle\n");
    row(R"({"mounted": false})", "Needs firmware and configuration; volumes not mounted\n");
    row(R"({"faults": [{"fault": "never-settles"}]})", "Status not known yet\n");
    row(R"({"faults": [{"fault": "report", "value": "firmwareStatus=9"},
                       {"fault": "report", "value": "configurationStatus=9"}]})",
        "Status unknown\n");
    row(R"({"reportedSerial": "B"})", "A, goes by B\n");
    row(R"({"faults": [{"fault": "pulled-out", "value": "4096", "once": true},
                       {"fault": "report", "value": "modelName=<b>"}]})",
        "Faults: pulled-out 4096 (once), report modelName=<b>\n");
}

void tst_Panel::aDrivesTexts()
{
    QFETCH(QString, patch);
    QFETCH(QString, shown);
    TemporaryBench bench;
    bench.addOutdated("A");
    const Panel panel(bench);
    QVERIFY(!panel.shows(shown));
    bench.edit("A", [&patch](Drive &drive) {
        Json document = drive;
        document.merge_patch(Json::parse(patch.toStdString()));
        drive = document.get<Drive>();
    });
    QTRY_VERIFY2_WITH_TIMEOUT(panel.shows(shown), qPrintable(panel.text()), SoonEnough);
    for (const QLabel *label : panel.window.findChildren<DriveRow *>().first()->findChildren<QLabel *>()) {
        QVERIFY2(
            label->textFormat() == Qt::PlainText || !label->text().contains('<'), qPrintable(label->text()));
    }
}

void tst_Panel::aScreenReadersNames()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Bollard");
    const Panel panel(bench);
    auto *const row = panel.window.findChild<DriveRow *>();
    QCOMPARE(accessibleName(row), QString("Bollard A"));
    QStringList names;
    for (QLabel *label : row->findChildren<QLabel *>()) {
        names.append(accessibleName(label));
        if (label->buddy() != nullptr) {
            QVERIFY(accessibleName(label->buddy()).startsWith(label->text() + ' '));
        }
    }
    for (const QString &name : {"Picture: " + QString(modelNamed("Bollard").body),
             QString("Running 0.9, conf. 1"), QString("In flash 0.9, conf. 1"),
             QString("On offer %1").arg(modelNamed("Bollard").newestFirmware)}) {
        QVERIFY2(names.contains(name), qPrintable(names.join('\n')));
    }
    QCOMPARE(accessibleName(row->findChild<QProgressBar *>()), QString("Flash of A"));
}

void tst_Panel::aRestartTakesAWhile()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Bollard");
    const Panel panel(bench);
    panel.press("Power-cycle A");
    QVERIFY(!bench.drive("A").plugged);
    QVERIFY(panel.shows(QString("Unplugged, comes back by itself in %1 s\n").arg(AwaySeconds)));
    QTRY_VERIFY(panel.shows("comes back by itself in 1 s"));
    QTRY_VERIFY(bench.drive("A").plugged);
    const Drive drive = bench.drive("A");
    QVERIFY(drive.pluggedAt - drive.unpluggedAt >= AwayTime);
    QCOMPARE(int(drive.powerUps), 2);
    QVERIFY(!panel.shows("comes back by itself"));
}

void tst_Panel::aDrivePluggedInEarlyWaits()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    const Panel panel(bench);
    panel.press("Unplug A");
    letTimePass(bench, AwayTime / 2);
    panel.press("Plug A");
    QVERIFY(!bench.drive("A").plugged);
    QVERIFY(panel.shows("comes back by itself in 2 s"));
    QTRY_VERIFY(bench.drive("A").plugged);
    const Drive drive = bench.drive("A");
    QVERIFY(drive.pluggedAt - drive.unpluggedAt >= AwayTime);

    // A clock that was set back must not keep it away.
    panel.press("Unplug A");
    letTimePass(bench, -3600000);
    panel.press("Plug A");
    QVERIFY(bench.drive("A").plugged);
}

void tst_Panel::aDriveThatComesBackCanBeKeptAway()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    const Panel panel(bench);
    panel.press("Replug A");
    panel.press("Unplug A");
    QVERIFY(panel.shows("Unplugged\n"));
    letTimePass(bench);
    panel.press("Plug A");
    QVERIFY(bench.drive("A").plugged);

    // Somebody else may plug it in meanwhile.
    panel.press("Replug A");
    plugDrive(bench.store(), "A");
    QTRY_VERIFY_WITH_TIMEOUT(!panel.shows("Unplugged"), SoonEnough);
}

void tst_Panel::aDriveIsNotLeftUnplugged()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    {
        const Panel panel(bench);
        panel.press("Replug A");
        QVERIFY(!bench.drive("A").plugged);
    }
    QVERIFY(bench.drive("A").plugged);
}

void tst_Panel::theKeyboard_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("then"); // the button that has the focus
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        const QString name = QVariant::fromValue(key).toString();
        QTest::newRow(qPrintable(name + ", unplug")) << key << "Unplug A"
                                                     << "Plug A";
        QTest::newRow(qPrintable(name + ", replug")) << key << "Replug A"
                                                     << "Replug A";
    }
}

void tst_Panel::theKeyboard()
{
    QFETCH(Qt::Key, key);
    QFETCH(QString, button);
    QFETCH(QString, then);
    TemporaryBench bench;
    bench.addOutdated("A");
    Panel panel(bench);
    const auto focused = [&panel] { return panel.window.focusWidget()->accessibleName(); };
    panel.button(button)->setFocus();
    QTest::keyClick(panel.window.focusWidget(), key);
    QVERIFY(!bench.drive("A").plugged);
    QCOMPARE(focused(), then);
    QVERIFY(panel.window.focusWidget()->isEnabled());
    // Pressed once more, it brings the drive back, and the focus is still there.
    letTimePass(bench);
    QTest::keyClick(panel.window.focusWidget(), key);
    QVERIFY(bench.drive("A").plugged);
    QCOMPARE(focused(), button);
}

void tst_Panel::aLetterFindsItsButton()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    bench.addOutdated("B");
    Panel panel(bench);
    QTest::keyClick(&panel.window, Qt::Key_R, Qt::AltModifier);
    const QString first = panel.window.focusWidget()->accessibleName();
    QTest::keyClick(&panel.window, Qt::Key_R, Qt::AltModifier);
    QCOMPARE((QStringList{first, panel.window.focusWidget()->accessibleName()}),
        (QStringList{"Replug A", "Replug B"}));
    QTest::keyClick(&panel.window, Qt::Key_C, Qt::AltModifier);
    QTRY_VERIFY(isCompanionInstalled(bench.store()));
}

void tst_Panel::aLetterFindsItsFault()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    const Panel panel(bench);
    panel.open("Faults A", [](QMenu *menu) { QTest::keyClick(menu, Qt::Key_V); });
    QVERIFY(panel.shows("Faults: verify-error (once)\n"));
    panel.open("Faults A", [](QMenu *menu) {
        for (const Qt::Key key : {Qt::Key_N, Qt::Key_N, Qt::Key_Return}) {
            QTest::keyClick(menu, key);
        }
    });
    QVERIFY(panel.shows("Faults: verify-error (once), no-return (once)\n"));
}

void tst_Panel::everyFaultIsSetAndCleared()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    const Panel panel(bench);
    for (const FaultDescription &kind : faultDescriptions()) {
        const bool takesValue = kind.value != FaultValue::None;
        panel.choose("Faults A", QString(kind.name) + (takesValue ? "…" : ""));
        if (takesValue) {
            QVERIFY(panel.window.findChild<QInputDialog *>()->labelText().contains(kind.description));
            panel.answer();
        }
        QVERIFY(!bench.drive("A").faults.empty());
        const Fault set = bench.drive("A").faults.back();
        QCOMPARE(std::string(describe(set.fault).name), std::string(kind.name));
        QCOMPARE(set.value, std::string(kind.example));
    }
    panel.choose("Faults A", "Clear slow-probe");
    QVERIFY(panel.shows("Faults: settle-queries"));
    panel.choose("Faults A", "Clear all faults");
    QVERIFY(bench.drive("A").faults.empty() && !panel.shows("Faults:"));
}

void tst_Panel::aValueIsAskedFor()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    const Panel panel(bench);
    panel.choose("Faults A", "report…");
    panel.answer("modelName=caf\\xE9");
    QCOMPARE(bench.drive("A").faults.front().fieldValue(), std::string("caf\xC3\xA9"));
    panel.choose("Faults A", "pulled-out…");
    panel.answer("0x1000");
    QVERIFY(panel.shows("Faults: report modelName=caf\\xE9 (once), pulled-out 0x1000 (once)\n"));
    // What is set is proposed, and one that is not taken leaves it.
    panel.choose("Faults A", "pulled-out…");
    QCOMPARE(panel.window.findChild<QInputDialog *>()->textValue(), QString("0x1000"));
    panel.answer("many");
    QVERIFY2(
        panel.shows("cannot set a fault on A: pulled-out needs a whole number"), qPrintable(panel.text()));
    QCOMPARE(bench.drive("A").faults.back().value, std::string("0x1000"));

    panel.choose("Faults A", "Set once");
    panel.choose("Faults A", "verify-error");
    QVERIFY(panel.shows("verify-error\n"));
}

void tst_Panel::drivesAreAddedAndRemoved()
{
    TemporaryBench bench;
    const Panel panel(bench);
    QVERIFY(panel.shows("No drive is on this bench. \"Add drive…\" puts one on it."));
    panel.choose("&Add drive…", "Lamina Slim");
    panel.choose("&Add drive…", "Harbour (FireWire 800)");
    QVERIFY(!panel.shows("No drive"));
    QCOMPARE(bench.drive("TV0002HARBOUR").model, std::string("Harbour (FireWire 800)"));
    QCOMPARE(bench.record("TV0001LAMINA").firmwareStatus, Status::UpdateRequired);
    QCOMPARE(bench.record("TV0001LAMINA").configurationStatus, Status::UpdateRequired);
    panel.press("Remove TV0001LAMINA");
    QTRY_COMPARE(panel.rows(), 1);
    QCOMPARE(int(allDrives(bench.store()).size()), 1);
}

void tst_Panel::aDriveGoesWhileItIsAskedAbout()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    bench.addOutdated("B", "Skiff");
    const Panel panel(bench);
    panel.open("Faults A", [&](QMenu *) {
        removeDrive(bench.store(), "A");
        QTRY_COMPARE(panel.rows(), 1);
    });
    panel.choose("Faults B", "slow-probe…");
    removeDrive(bench.store(), "B");
    QTRY_COMPARE(panel.rows(), 0);
    QVERIFY(panel.window.findChild<QInputDialog *>() == nullptr);
    QVERIFY(panel.shows("No drive is on this bench"));
}

void tst_Panel::theCompanionSwitch()
{
    TemporaryBench bench;
    const Panel panel(bench);
    auto *const companion = panel.window.findChild<QCheckBox *>();
    for (const bool installed : {true, false}) {
        QTest::mouseClick(companion, Qt::LeftButton, {}, QPoint(8, companion->height() / 2));
        QCOMPARE(companion->isChecked(), installed);
        QCOMPARE(isCompanionInstalled(bench.store()), installed);
    }
    setCompanionInstalled(bench.store(), true);
    QTRY_VERIFY_WITH_TIMEOUT(companion->isChecked(), SoonEnough);
}

void tst_Panel::theProgressOfAFlash()
{
    TemporaryBench bench;
    bench.addOutdated("A", "Pebble", 20000);
    const Panel panel(bench);
    auto *const progress = panel.window.findChild<QProgressBar *>();
    QVERIFY(!progress->isVisible());
    std::string failure = "not ended";
    std::thread writer([&] { failure = bench.flash("A"); });
    const bool began = QTest::qWaitFor([&] { return progress->isVisible() && progress->value() > 0; }, 5000);
    const bool told = panel.shows("Being written\n");
    const bool advanced = QTest::qWaitFor([&] { return progress->value() > 50; }, 5000);
    writer.join();
    QCOMPARE(failure, std::string());
    QVERIFY(began && told && advanced);
    QTRY_VERIFY_WITH_TIMEOUT(!progress->isVisible(), SoonEnough);
    QVERIFY(panel.shows("Last update: succeeded, at "));
}

void tst_Panel::aRefusalNamesItsDrive()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    const Panel panel(bench);
    unplugDrive(bench.store(), "A");
    panel.press("Unplug A");
    QVERIFY(panel.shows("cannot unplug A: it is unplugged already; "));
    plugDrive(bench.store(), "A");
    QTRY_VERIFY(!panel.shows("Unplugged"));
    unplugDrive(bench.store(), "A");
    panel.press("Replug A");
    QVERIFY(panel.shows("cannot restart A: it is unplugged already; ") && !panel.shows("comes back"));
    letTimePass(bench);
    panel.press("Plug A");
    QVERIFY(!panel.shows("cannot"));
}

void tst_Panel::aBenchThatGoesAndComesBack()
{
    TemporaryBench bench;
    bench.addOutdated("A");
    bench.addOutdated("B", "Skiff");
    const Panel panel(bench);
    bench.execute("UPDATE documents SET document = x'7B7D' WHERE name = x'42'");
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("drive-bench remove B"), SoonEnough);
    removeDrive(bench.store(), "B");
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("Pebble"), SoonEnough);
    QVERIFY(!panel.shows("Skiff") && !panel.shows("no bench"));
    bench.addOutdated("B", "Skiff");
    // Another one may take its place, with another drive of the same serial number,
    const auto fill = [](Store &store) { addDrive(store, ::drive("B", "Lamina")); };
    createBench(bench.directory(), true, fill);
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("Lamina"), SoonEnough);
    QVERIFY(!panel.shows("Pebble") && !panel.shows("Skiff"));
    // or none.
    std::filesystem::remove_all(bench.directory());
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("There is no bench here"), SoonEnough);
    QVERIFY(panel.shows("drive-bench init") && !panel.shows("Lamina"));
    QVERIFY(!panel.window.findChild<QCheckBox *>()->isEnabled());
    createBench(bench.directory(), false, fill);
    QTRY_VERIFY_WITH_TIMEOUT(panel.shows("Up to date"), SoonEnough);
    panel.press("Unplug B");
    QVERIFY(panel.shows("Unplugged"));
}

QTEST_MAIN(tst_Panel)
#include "tst_Panel.moc"
