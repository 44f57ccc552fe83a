#include "bench/core/SampleBench.h"
#include "bench/core/Text.h"
#include "bench/command/Commands.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace bench {

namespace {

QString hex(std::uint16_t number)
{
    return QStringLiteral("0x%1").arg(QString::number(number, 16).toUpper(), 4, QLatin1Char('0'));
}

QString restartText(Restart restart)
{
    switch (restart) {
    case Restart::Unplug:
        return QStringLiteral("unplug");
    case Restart::PowerButton:
        return QStringLiteral("power button");
    case Restart::NotNeeded:
        break;
    }
    return QStringLiteral("not needed");
}

QString statusText(std::int32_t status)
{
    switch (status) {
    case 0:
        return QStringLiteral("not yet determined");
    case 1:
        return QStringLiteral("update required");
    case 2:
        return QStringLiteral("up to date");
    default:
        return QStringLiteral("unknown");
    }
}

/// Prints rows in columns as wide as they need to be; the first row is the heading.
void printColumns(const QVector<QStringList> &rows)
{
    QVector<int> widths(rows.first().size());
    for (const QStringList &row : rows) {
        for (int i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths.at(i), static_cast<int>(row.at(i).size()));
        }
    }
    for (const QStringList &row : rows) {
        QString line;
        for (int i = 0; i < row.size(); ++i) {
            line += row.at(i).leftJustified(widths.at(i) + 2);
        }
        while (line.endsWith(QLatin1Char(' '))) {
            line.chop(1);
        }
        print(line + QLatin1Char('\n'));
    }
}

void printJson(const QJsonObject &object)
{
    print(QString::fromUtf8(QJsonDocument(object).toJson()));
}

QJsonObject recordToJson(const DriveRecord &record)
{
    return {
        {QStringLiteral("auxiliaryText1"), record.auxiliaryText1},
        {QStringLiteral("productId"), record.productId},
        {QStringLiteral("modelName"), record.modelName},
        {QStringLiteral("serialNumber"), record.serialNumber},
        {QStringLiteral("vendorId"), record.vendorId},
        {QStringLiteral("auxiliaryText2"), record.auxiliaryText2},
        {QStringLiteral("firmwareVersion"), record.firmwareVersion},
        {QStringLiteral("firmwareFileName"), record.firmwareFileName},
        {QStringLiteral("newFirmwareVersion"), record.newFirmwareVersion},
        {QStringLiteral("chipsetType"), record.chipsetType},
        {QStringLiteral("firmwareStatus"), record.firmwareStatus},
        {QStringLiteral("configurationStatus"), record.configurationStatus},
    };
}

/// The drive's file, what the drive is doing, and what discovery reports of it.
QJsonObject driveToJson(const Bench &bench, const Drive &drive, const DriveRecord &record)
{
    QJsonObject object = drive.toJson();
    object.insert(QStringLiteral("state"), stateText(bench.state(drive)));
    object.insert(QStringLiteral("record"), recordToJson(record));
    return object;
}

QString stateWithProgress(const Bench &bench, const Drive &drive)
{
    const DriveState state = bench.state(drive);
    const QString text = stateText(state);
    return state == DriveState::Writing && drive.bytesToWrite > 0
        ? QStringLiteral("%1 %2%").arg(text).arg(100 * drive.bytesWritten / drive.bytesToWrite)
        : text;
}

QString versionOrNone(const QString &version)
{
    return version.isEmpty() ? QStringLiteral("none") : escaped(version);
}

QString faultText(const Fault &fault)
{
    QString text = fault.name;
    switch (findFaultKind(fault.name)->value) {
    case FaultValue::None:
        break;
    case FaultValue::Number:
        text += QStringLiteral(" %1").arg(fault.number);
        break;
    case FaultValue::OptionalNumber:
        text += fault.number == 0 ? QString() : QStringLiteral(" %1").arg(fault.number);
        break;
    case FaultValue::Text:
    case FaultValue::OptionalText:
        text += fault.text.isEmpty() ? QString() : QLatin1Char(' ') + escaped(fault.text);
        break;
    case FaultValue::Field:
        text += QStringLiteral(" %1=%2").arg(fault.field, escaped(fault.text));
        break;
    }
    return fault.once ? text + QStringLiteral(" (once)") : text;
}

QString hostText(const Host &host)
{
    if (!host.companionInstalled) {
        return QStringLiteral("not installed");
    }
    return host.processes.isEmpty() ? QStringLiteral("installed, not running")
                                    : QStringLiteral("installed, running");
}

int init(const CommandLine &line)
{
    QVector<Drive> drives = sampleDrives();
    for (Drive &drive : drives) {
        drive.flashRate = line.number("--rate", drive.flashRate);
    }
    if (line.has("--empty")) {
        drives.clear();
    }
    QString reason;
    if (!line.bench().create(drives, line.has("--force"), &reason)) {
        return refuse(reason);
    }
    print(QStringLiteral("%1: a bench with %2 drives\n")
              .arg(line.benchFolder(), QString::number(drives.size())));
    return 0;
}

int listModels(const CommandLine &line)
{
    QJsonArray list;
    QVector<QStringList> rows{{QStringLiteral("MODEL"), QStringLiteral("BUS"), QStringLiteral("PRODUCT"),
        QStringLiteral("BRIDGE"), QStringLiteral("RESTART"), QStringLiteral("FIRMWARE"),
        QStringLiteral("CONFIGURATION"), QStringLiteral("IMAGE"), QStringLiteral("BODY")}};
    for (const Model &model : models()) {
        const QString bus = model.isFireWire() ? QStringLiteral("FireWire") : QStringLiteral("USB");
        rows.append({model.name, bus, model.isFireWire() ? QStringLiteral("-") : hex(model.productId),
            bridgeName(model.chipset), restartText(model.restart), model.newestFirmware,
            model.newestConfiguration, model.imageName(), model.body});
        list.append(QJsonObject{
            {QStringLiteral("name"), model.name},
            {QStringLiteral("vendorId"), model.vendorId},
            {QStringLiteral("productId"), model.productId},
            {QStringLiteral("bridge"), bridgeName(model.chipset)},
            {QStringLiteral("chipset"), model.chipset},
            {QStringLiteral("restart"), restartText(model.restart)},
            {QStringLiteral("newestFirmware"), model.newestFirmware},
            {QStringLiteral("newestConfiguration"), model.newestConfiguration},
            {QStringLiteral("image"), model.imageName()},
            {QStringLiteral("picture"), model.picture()},
            {QStringLiteral("pictureSize"), model.pictureSize},
            {QStringLiteral("body"), model.body},
        });
    }
    if (line.has("--json")) {
        printJson({{QStringLiteral("models"), list}});
    } else {
        printColumns(rows);
    }
    return 0;
}

int list(const CommandLine &line)
{
    const Bench bench = line.bench();
    QString reason;
    if (!bench.exists(&reason)) {
        return refuse(reason);
    }
    QStringList problems;
    const QVector<Drive> drives = bench.drives(&problems);
    const Host host = bench.host(&problems);
    printProblems(problems);

    if (line.has("--json")) {
        QJsonArray array;
        const QVector<DriveRecord> records = bench.records(drives);
        for (int i = 0; i < drives.size(); ++i) {
            array.append(driveToJson(bench, drives.at(i), records.at(i)));
        }
        printJson({{QStringLiteral("bench"), bench.folder()}, {QStringLiteral("drives"), array},
            {QStringLiteral("host"), host.toJson()}});
        return 0;
    }
    QVector<QStringList> rows{{QStringLiteral("SERIAL"), QStringLiteral("MODEL"), QStringLiteral("STATE"),
        QStringLiteral("FIRMWARE"), QStringLiteral("CONFIGURATION"), QStringLiteral("FAULTS")}};
    for (const Drive &drive : drives) {
        QStringList faults;
        for (const Fault &fault : drive.faults) {
            faults.append(fault.name);
        }
        rows.append({escaped(drive.serial), drive.model, stateWithProgress(bench, drive),
            versionOrNone(drive.torn ? QString() : drive.runningFirmware),
            versionOrNone(drive.torn ? QString() : drive.runningConfiguration),
            faults.isEmpty() ? QStringLiteral("-") : faults.join(QLatin1String(", "))});
    }
    printColumns(rows);
    print(QStringLiteral("\nCompanion: %1\n").arg(hostText(host)));
    return 0;
}

int show(const CommandLine &line)
{
    const Bench bench = line.bench();
    QString serial;
    QString reason;
    Drive drive;
    if (!readSerial(line.argument(0), &serial)) {
        return wrongUsage(
            QStringLiteral("\"%1\" is no serial number").arg(line.argument(0)), QStringLiteral("show"));
    }
    if (!bench.drive(serial, &drive, &reason)) {
        return refuse(QStringLiteral("cannot show %1: %2").arg(line.argument(0), reason));
    }
    if (line.has("--json")) {
        printJson(driveToJson(bench, drive, bench.record(drive)));
        return 0;
    }
    const Model &model = drive.catalogueModel();
    const DriveRecord record = bench.record(drive);
    const QString versions = QStringLiteral("firmware %1, configuration %2");
    print(QStringLiteral("serial      %1\n").arg(escaped(drive.serial)));
    if (drive.reportedSerial != drive.serial) {
        print(QStringLiteral("goes by     %1\n").arg(escaped(drive.reportedSerial)));
    }
    print(QStringLiteral("model       %1 (%2, %3)\n")
              .arg(drive.model,
                  model.isFireWire() ? QStringLiteral("FireWire")
                                     : QStringLiteral("USB ") + hex(model.productId),
                  model.body));
    print(QStringLiteral("bridge      %1 (chipset %2)\n").arg(bridgeName(drive.chipset)).arg(drive.chipset));
    print(QStringLiteral("restart     %1\n").arg(restartText(model.restart)));
    print(QStringLiteral("state       %1\n").arg(stateWithProgress(bench, drive)));
    print(QStringLiteral("running     %1\n")
              .arg(drive.bootRom
                      ? QStringLiteral("boot ROM")
                      : versions.arg(escaped(drive.runningFirmware), escaped(drive.runningConfiguration))));
    print(
        QStringLiteral("in flash    %1\n")
            .arg(drive.torn ? QStringLiteral("torn, %1 of %2 bytes written")
                                  .arg(drive.bytesWritten)
                                  .arg(drive.bytesToWrite)
                            : versions.arg(escaped(drive.flashFirmware), escaped(drive.flashConfiguration))));
    print(QStringLiteral("image       %1, firmware %2\n")
              .arg(escaped(record.firmwareFileName), escaped(record.newFirmwareVersion)));
    print(QStringLiteral("statuses    firmware %1 (%2), configuration %3 (%4)\n")
              .arg(statusText(record.firmwareStatus))
              .arg(record.firmwareStatus)
              .arg(statusText(record.configurationStatus))
              .arg(record.configurationStatus));
    print(QStringLiteral("volumes     %1\n")
              .arg(drive.mounted ? QStringLiteral("mounted") : QStringLiteral("not mounted")));
    print(QStringLiteral("flash rate  %1 bytes a second\n").arg(drive.flashRate));
    for (const Fault &fault : drive.faults) {
        print(QStringLiteral("fault       %1\n").arg(faultText(fault)));
    }
    return 0;
}

} // namespace

QVector<Command> benchCommands()
{
    const Option json{QStringLiteral("--json"), QString(), QStringLiteral("print JSON")};
    return {
        {QStringLiteral("init"), QString(), QStringLiteral("make a bench with six sample drives"),
            QStringLiteral(
                "One drive each that needs both, firmware, configuration, both over FireWire, nothing,\n"
                "and one whose bridge has no updater."),
            QStringLiteral("drive-bench init --bench /tmp/bench --force"), {}, 0, 0,
            {{QStringLiteral("--force"), QString(), QStringLiteral("replace the bench that is there")},
                {QStringLiteral("--empty"), QString(), QStringLiteral("without the sample drives")},
                {QStringLiteral("--rate"), QStringLiteral("BYTES"),
                    QStringLiteral("flash rate in bytes a second (16384)"), 1, 1000000000}},
            init},
        {QStringLiteral("models"), QString(), QStringLiteral("list the models of the catalogue"), QString(),
            QStringLiteral("drive-bench models --json"), {}, 0, 0, {json}, listModels},
        {QStringLiteral("list"), QString(), QStringLiteral("list the drives of the bench and the companion"),
            QStringLiteral("The versions are those that a drive runs, which may not be those in its flash."),
            QStringLiteral("drive-bench list"), {}, 0, 0, {json}, list},
        {QStringLiteral("show"), QStringLiteral("SERIAL"), QStringLiteral("show everything about one drive"),
            QString(), QStringLiteral("drive-bench show TV0001PEBBLE"), {Argument::Serial}, 1, 1, {json},
            show},
    };
}

} // namespace bench
