// SPDX-License-Identifier: MIT
#include "tests/support/TestProgram.h"
#include "tests/ui/UpdateLook.h"
#include "tests/ui/WindowMembers.h"

#include <QtTest>

namespace {

/// A drive by its kind and serial number, in which "_" is a blank: "usb:A", "firewire:B", or "updated:A" for
/// a USB drive that needs nothing.
DeviceInfo driveOf(const QString &name)
{
    const std::string serialNumber = name.section(':', 1).replace('_', ' ').toLatin1().toStdString();
    DeviceInfo drive = name.startsWith("firewire") ? DeviceRecords::fireWireDrive(serialNumber)
                                                   : DeviceRecords::usbDrive(serialNumber);
    if (name.startsWith("updated")) {
        drive.firmwareVersion = drive.newFirmwareVersion;
        drive.firmwareStatus = Status::UpToDate;
        drive.configurationStatus = Status::UpToDate;
    }
    bool isChipset = false;
    const int chipset = name.section(':', 0, 0).toInt(&isChipset);
    drive.chipsetType = isChipset ? chipset : drive.chipsetType;
    return drive;
}

void carryOut(const QString &step, WindowFixture &fixture)
{
    const QString verb = step.section(' ', 0, 0);
    const QString object = step.section(' ', 1);
    if (verb == "list") {
        QVector<DeviceInfo> list;
        for (const QString &name : object.split(' ', Qt::SkipEmptyParts)) {
            list.append(driveOf(name));
        }
        fixture.deliver(list);
    } else if (verb == "press") {
        QVERIFY(fixture.click(object));
    } else if (verb == "result") {
        fixture.finish(object == "true");
    } else if (object.isEmpty()) {
        QVERIFY(QMetaObject::invokeMethod(&fixture.window, verb.toLatin1()));
    } else {
        QVERIFY(QMetaObject::invokeMethod(&fixture.window, verb.toLatin1(), Q_ARG(QString, object)));
    }
}

const QStringList Listed{"list usb:A => list"};
const QStringList Confirmed = Listed + QStringList{"updateDevice A => confirmation"};
const QStringList Started = Listed + QStringList{"startUpdate A => in progress"};
const QStringList Restarting = Started + QStringList{"result true => restart"};

} // namespace

/// What the window shows after each step: of a person, a device list, or a worker's result. A step that is
/// followed by "same" rebuilds nothing; every other one does.
class tst_UpdateStories : public QObject
{
    Q_OBJECT

private slots:
    void story_data();
    void story();
    void unpluggedFlagSurvivesTheReturn();
};

void tst_UpdateStories::story_data()
{
    QTest::addColumn<QStringList>("steps");
    const auto row = [](const char *name, const QStringList &before, const QStringList &steps) {
        QTest::newRow(name) << before + steps;
    };

    row("the same list again", Listed, {"list usb:A => same"});
    row("an empty list again", {}, {"list => same"});
    row("a longer list", Listed, {"list usb:A usb:B => list of 2"});
    row("a shorter list", {"list usb:A usb:B usb:C => list of 3"}, {"list usb:A usb:B => list of 2"});
    row("another order", {"list usb:A usb:B => list of 2"}, {"list usb:B usb:A => list of 2"});
    row("another last drive", {"list usb:A usb:B => list of 2"}, {"list usb:A usb:C => list of 2"});
    row("a drive that changes", Listed, {"list updated:A => list"});
    row("the last drive unplugged", Listed, {"list => no drive"});

    const QStringList thenAll{"list usb:A firewire:C => list of 2"};
    row("a change in Idle", Listed, QStringList{"list usb:A firewire:B => list of 2"} + thenAll);
    row("a change in DeviceSelected", Confirmed,
        QStringList{"list usb:A firewire:B => confirmation"} + thenAll);
    row("a change in InProgress", Started, QStringList{"list usb:A firewire:B => in progress"} + thenAll);
    row("a change in Success", Restarting,
        QStringList{"list => same", "list usb:A => success", "list usb:A firewire:B => success"} + thenAll);
    row("a change in Failure", Started,
        QStringList{"result false => failure", "list usb:A firewire:B => failure"} + thenAll);
    row("after a change the buttons of the confirmation work: start", Confirmed,
        {"list usb:A firewire:B => confirmation", "press Update Firmware => in progress"});
    row("after a change the buttons of the confirmation work: cancel", Confirmed,
        {"list usb:A firewire:B => confirmation", "press Cancel => list of 2"});

    row("the updated drive is followed out and back in", Restarting,
        {"list firewire:B => same", "list updated:A firewire:B => success", "list updated:A => success",
            "list updated:A firewire:B => list of 2"});
    row("another drive changes during the restart", Restarting,
        {"list usb:A usb:B => same", "list usb:A usb:C => same", "list usb:A => same"});
    row("a drive back as a changed record is still the drive", Restarting,
        {"list updated:A => same", "list => same", "list usb:B => same", "list usb:B updated:A => success"});
    row("each of two records of one serial number counts", Restarting,
        {"list => same", "list usb:A usb:A => success of 2"});
    row("the next restart waits anew", Restarting,
        {"list => same", "list usb:A => success", "list => no drive", "list usb:A => list",
            "startUpdate A => in progress", "result true => restart", "list usb:A usb:B => same"});
    row("a serial number in other letters is another drive", Restarting,
        {"list => same", "list usb:a => same", "list usb:A_ => same", "list usb:_A => same",
            "list usb:AA => same", "list usb: => same", "list usb:A => success"});
    row("a serial number with high bytes", {"list usb:B usb:S\u00C4\u00FFN => list of 2"},
        {"updateDevice S\u00C4\u00FFN => confirmation", "startUpdate S\u00C4\u00FFN => in progress"});

    row("update, then cancel", {"list usb:A firewire:B => list of 2"},
        {"updateDevice A => confirmation", "press Cancel => list of 2"});
    // A drive without a serial number is what an empty selection names.
    row("cancel forgets the drive", Confirmed,
        {"cancelUpdate => list", "result false => nothing", "list usb: => failure"});
    row("terminate forgets the drive", Confirmed, {"terminateUpdate => list", "result false => nothing"});
    row("the bridge is taken from the list at the time of the result", Started,
        {"list firewire:A => in progress", "result true => success"});
    row("success of a drive that is gone after a change", Started,
        {"list usb:B => nothing", "result true => list"});
    row("success of a drive that is gone leaves the state", Listed,
        {"updateDevice GONE => nothing", "result true => nothing", "list usb:A usb:GONE => confirmation"});
    row("start of a drive that is gone", Listed, {"startUpdate GONE => same"});
    for (const int chipset : {1, 2, 3, 4, 5, 6, 7, -1}) {
        const QString list = QString("list %1:A => list").arg(chipset);
        const QString success = chipset >= 1 && chipset <= 3 ? "restart" : "success";
        QTest::addRow("success of chipset %d", chipset)
            << QStringList{list, "startUpdate A => in progress", "result true => " + success};
        QTest::addRow("failure of chipset %d", chipset)
            << QStringList{list, "startUpdate A => in progress", "result false => failure"};
    }
    row("slots act from any state", {"list usb:A firewire:B => list of 2"},
        {"result true => list of 2", "startUpdate A => in progress", "updateDevice B => confirmation",
            "result false => failure", "result true => success", "cancelUpdate => list of 2"});
}

void tst_UpdateStories::story()
{
    QFETCH(QStringList, steps);
    WindowFixture fixture;
    // The results are the test's, not the workers'.
    ScriptedPlatform::holdFlashes();
    for (const QString &line : steps) {
        const QString look = line.section(" => ", 1);
        const QPointer<QWidget> page = fixture.page();
        const QString before = lookOf(fixture);
        carryOut(line.section(" => ", 0, 0), fixture);
        QVERIFY2(page.isNull() == (look != "same"), qPrintable(line));
        QVERIFY2(
            lookOf(fixture) == (look == "same" ? before : look), qPrintable(line + ": " + lookOf(fixture)));
    }
}

void tst_UpdateStories::unpluggedFlagSurvivesTheReturn()
{
    WindowFixture fixture;
    ScriptedPlatform::holdFlashes();
    const bool &unplugged = WindowMembers::updatedDeviceUnplugged(fixture.window);
    for (const QString &line : Restarting) {
        carryOut(line.section(" => ", 0, 0), fixture);
    }
    QVERIFY(!unplugged);
    fixture.deliver({});
    QVERIFY(unplugged);
    fixture.deliver({DeviceRecords::usbDrive("A")});
    QCOMPARE(lookOf(fixture), QString("success"));
    QVERIFY(unplugged);
}

static const TestClass<tst_UpdateStories, QApplication> updateStoriesTests;
#include "tst_UpdateStories.moc"
