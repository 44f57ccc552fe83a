#include "bench/core/Text.h"
#include "bench/command/Commands.h"

#include <chrono>
#include <thread>

namespace bench {

namespace {

constexpr qint64 DefaultPause = 3;

/// Runs one change of the drive that the first argument names; `verb` says what it is, for what is refused.
int change(const CommandLine &line, const QString &verb, bool (Bench::*function)(const QString &, QString *))
{
    QString serial;
    if (!readSerial(line.argument(0), &serial)) {
        return refuse(QStringLiteral(
            "cannot %1 \"%2\": it is no serial number; drive-bench list shows those on the bench")
                          .arg(verb, line.argument(0)));
    }
    Bench bench = line.bench();
    QString reason;
    if (!(bench.*function)(serial, &reason)) {
        return refuse(QStringLiteral("cannot %1 %2: %3").arg(verb, line.argument(0), reason));
    }
    return 0;
}

int remove(const CommandLine &line)
{
    return change(line, QStringLiteral("remove"), &Bench::remove);
}

int plug(const CommandLine &line)
{
    return change(line, QStringLiteral("plug in"), &Bench::plug);
}

int unplug(const CommandLine &line)
{
    return change(line, QStringLiteral("unplug"), &Bench::unplug);
}

/// Off and, after the pause, on again.
int restart(const CommandLine &line)
{
    const int status = unplug(line);
    if (status != 0) {
        return status;
    }
    std::this_thread::sleep_for(std::chrono::seconds(line.number("--for", DefaultPause)));
    return plug(line);
}

/// "TV" and the lowest free number, then the first word of the model's name.
QString freeSerial(const Bench &bench, const QString &model)
{
    QStringList ignored;
    QStringList taken;
    for (const Drive &drive : bench.drives(&ignored)) {
        taken.append(drive.serial.left(6));
    }
    int number = 1;
    QString start;
    do {
        start = QStringLiteral("TV%1").arg(number++, 4, 10, QLatin1Char('0'));
    } while (taken.contains(start));
    return start + model.section(QLatin1Char(' '), 0, 0).toUpper();
}

int add(const CommandLine &line)
{
    const QString name = line.argument(0);
    Bench bench = line.bench();
    const Model *const model = findModel(name);
    if (model == nullptr) {
        return refuse(
            QStringLiteral("cannot add \"%1\": there is no such model; drive-bench models lists them")
                .arg(name));
    }
    if (!hasVersions(line)) {
        return wrongUsage(versionRule(), QStringLiteral("add"));
    }
    Drive drive;
    drive.model = model->name;
    drive.chipset = static_cast<std::int32_t>(line.number("--chipset", model->chipset));
    drive.plugged = !line.has("--unplugged");
    drive.flashRate = line.number("--rate", drive.flashRate);
    drive.flashFirmware = line.has("--firmware") ? line.value("--firmware") : model->newestFirmware;
    drive.flashConfiguration =
        line.has("--configuration") ? line.value("--configuration") : model->newestConfiguration;
    if (!line.has("--serial")) {
        drive.serial = freeSerial(bench, model->name);
    } else if (!readSerial(line.value("--serial"), &drive.serial)) {
        return refuse(QStringLiteral("cannot add a drive with the serial number \"%1\": it may hold "
                                     "characters up to U+00FF and \\xNN for any byte")
                          .arg(line.value("--serial")));
    }
    QString reason;
    if (!bench.add(drive, &reason)) {
        return refuse(QStringLiteral("cannot add %1: %2").arg(escaped(drive.serial), reason));
    }
    print(escaped(drive.serial) + QLatin1Char('\n'));
    return 0;
}

} // namespace

QVector<Command> driveCommands()
{
    const QString serial = QStringLiteral("SERIAL");
    const Option pause{QStringLiteral("--for"), QStringLiteral("SECONDS"),
        QStringLiteral("how long it is off (3); the program looks every 2 seconds"), 0, 3600};
    return {
        {QStringLiteral("add"), QStringLiteral("MODEL"),
            QStringLiteral("put a new drive on the bench and print its serial number"),
            QStringLiteral("Without --firmware and --configuration the drive is up to date."),
            QStringLiteral("drive-bench add \"Lamina Slim\" --serial TV0042LAMINA --firmware 3.11"),
            {Argument::Model}, 1, 1,
            {{QStringLiteral("--serial"), serial,
                 QStringLiteral("its serial number; \\xNN stands for any byte")},
                {QStringLiteral("--firmware"), QStringLiteral("VERSION"),
                    QStringLiteral("firmware version in its flash")},
                {QStringLiteral("--configuration"), QStringLiteral("REVISION"),
                    QStringLiteral("configuration revision in its flash")},
                {QStringLiteral("--chipset"), QStringLiteral("CODE"),
                    QStringLiteral("code of its bridge, instead of the model's"), -2147483647 - 1,
                    2147483647},
                {QStringLiteral("--rate"), QStringLiteral("BYTES"),
                    QStringLiteral("flash rate in bytes a second (16384)"), 1, 1000000000},
                {QStringLiteral("--unplugged"), QString(), QStringLiteral("leave it unplugged")}},
            add},
        {QStringLiteral("remove"), serial, QStringLiteral("take a drive off the bench for good"), QString(),
            QStringLiteral("drive-bench remove TV0005SKIFF"), {Argument::Serial}, 1, 1, {}, remove},
        {QStringLiteral("plug"), serial, QStringLiteral("plug a drive in"),
            QStringLiteral("It runs what is then in its flash."),
            QStringLiteral("drive-bench plug TV0001PEBBLE"), {Argument::Serial}, 1, 1, {}, plug},
        {QStringLiteral("unplug"), serial, QStringLiteral("unplug a drive, whatever it is doing"), QString(),
            QStringLiteral("drive-bench unplug TV0001PEBBLE"), {Argument::Serial}, 1, 1, {}, unplug},
        {QStringLiteral("replug"), serial, QStringLiteral("unplug a drive and plug it in again"), QString(),
            QStringLiteral("drive-bench replug TV0001PEBBLE --for 5"), {Argument::Serial}, 1, 1, {pause},
            restart},
        {QStringLiteral("power-cycle"), serial,
            QStringLiteral("switch a drive off and on with its power button"), QString(),
            QStringLiteral("drive-bench power-cycle TV0002BOLLARD"), {Argument::Serial}, 1, 1, {pause},
            restart},
    };
}

} // namespace bench
