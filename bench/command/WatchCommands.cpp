#include "bench/core/Files.h"
#include "bench/core/Text.h"
#include "bench/command/Commands.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

#include <unistd.h>

namespace bench {

namespace {

constexpr std::chrono::milliseconds LookInterval(100);

volatile std::sig_atomic_t stopped = 0;

void stop(int)
{
    stopped = 1;
}

/// What can be told of a bench at one moment, one short text for each thing that can change.
using Snapshot = QMap<QString, QString>;

QString versions(const QString &firmware, const QString &configuration)
{
    return firmware.isEmpty()
        ? QStringLiteral("none")
        : QStringLiteral("firmware %1, configuration %2").arg(escaped(firmware), escaped(configuration));
}

/// The keys are "<what>/<serial>" or "host/<what>", so that the drives' changes print in an order that makes
/// sense: a change of state first.
Snapshot snapshotOf(const Bench &bench, QStringList *problems)
{
    Snapshot snapshot;
    for (const Drive &drive : bench.drives(problems)) {
        const QString name = escaped(drive.serial);
        const DriveState state = bench.state(drive);
        snapshot.insert(name + QStringLiteral("/1 state"), stateText(state));
        if (state == DriveState::Writing && drive.bytesToWrite > 0) {
            snapshot.insert(name + QStringLiteral("/2 written"),
                QStringLiteral("%1% (%2 of %3 bytes)")
                    .arg(100 * drive.bytesWritten / drive.bytesToWrite)
                    .arg(drive.bytesWritten)
                    .arg(drive.bytesToWrite));
        }
        snapshot.insert(
            name + QStringLiteral("/3 running"), versions(drive.runningFirmware, drive.runningConfiguration));
        snapshot.insert(
            name + QStringLiteral("/4 in flash"), versions(drive.flashFirmware, drive.flashConfiguration));
        snapshot.insert(name + QStringLiteral("/5 volumes"),
            drive.mounted ? QStringLiteral("mounted") : QStringLiteral("not mounted"));
        snapshot.insert(name + QStringLiteral("/6 goes by"), escaped(drive.reportedSerial));
        QStringList faults;
        for (const Fault &fault : drive.faults) {
            faults.append(fault.name);
        }
        snapshot.insert(name + QStringLiteral("/7 faults"),
            faults.isEmpty() ? QStringLiteral("none") : faults.join(QLatin1String(", ")));
    }
    const Host host = bench.host(problems);
    const auto yesNo = [](bool value) { return value ? QStringLiteral("yes") : QStringLiteral("no"); };
    snapshot.insert(QStringLiteral("host/1 companion installed"), yesNo(host.companionInstalled));
    snapshot.insert(QStringLiteral("host/2 companion processes"), QString::number(host.processes.size()));
    snapshot.insert(QStringLiteral("host/3 service submitted"), yesNo(host.serviceSubmitted));
    snapshot.insert(QStringLiteral("host/4 kernel extension loaded"), yesNo(host.extensionLoaded));
    return snapshot;
}

void printChange(const QString &key, const QString &value, bool asJson)
{
    const QString time = QDateTime::currentDateTime().toString(QStringLiteral("HH:mm:ss.zzz"));
    const int slash = static_cast<int>(key.lastIndexOf(QLatin1Char('/')));
    const QString who = key.left(slash);
    const QString what = key.mid(slash + 3);
    if (asJson) {
        const QJsonObject object{{QStringLiteral("time"), time}, {QStringLiteral("of"), who},
            {QStringLiteral("change"), what}, {QStringLiteral("to"), value}};
        print(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + QLatin1Char('\n'));
    } else {
        print(QStringLiteral("%1  %2  %3: %4\n").arg(time, who, what, value));
    }
    std::fflush(stdout);
}

void printChanges(const Snapshot &before, const Snapshot &after, bool asJson)
{
    for (auto now = after.constBegin(); now != after.constEnd(); ++now) {
        if (before.value(now.key()) != now.value()) {
            printChange(now.key(), now.value(), asJson);
        }
    }
    for (const QString &key : before.keys()) {
        if (key.endsWith(QStringLiteral("/1 state")) && !after.contains(key)) {
            printChange(key, QStringLiteral("removed"), asJson);
        }
    }
}

int watch(const CommandLine &line)
{
    const Bench bench = line.bench();
    QString reason;
    if (!bench.exists(&reason)) {
        return refuse(reason);
    }
    std::signal(SIGINT, stop);
    std::signal(SIGTERM, stop);
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::seconds(line.number("--for", 365 * 24 * 3600));
    QByteArray mark = bench.changeMark();
    QStringList known;
    Snapshot before = snapshotOf(bench, &known);
    printProblems(known);
    while (stopped == 0 && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(LookInterval);
        // The end of a process changes no file: while something is being written or runs, look regardless.
        const bool processes =
            before.value(QStringLiteral("host/2 companion processes")) != QLatin1String("0");
        const bool writing = before.values().contains(stateText(DriveState::Writing));
        const QByteArray current = bench.changeMark();
        if (current == mark && !processes && !writing) {
            continue;
        }
        mark = current;
        QStringList problems;
        const Snapshot after = snapshotOf(bench, &problems);
        printChanges(before, after, line.has("--json"));
        before = after;
        for (const QString &problem : problems) {
            if (!known.contains(problem)) {
                known.append(problem);
                printProblems({problem});
            }
        }
    }
    return 0;
}

int panel(const CommandLine &line)
{
    const QByteArray program = (executableFolder() + QStringLiteral("/drive-bench-panel")).toUtf8();
    const QByteArray folder = line.benchFolder().toUtf8();
    ::execl(program.constData(), program.constData(), "--bench", folder.constData(), nullptr);
    return refuse(QStringLiteral("cannot open the panel: %1: %2; build the target drive-bench-panel")
                      .arg(QString::fromUtf8(program), systemReason()));
}

} // namespace

QVector<Command> watchCommands()
{
    return {
        {QStringLiteral("watch"), QString(), QStringLiteral("print each change on the bench as it happens"),
            QStringLiteral("Ends with Ctrl+C."), QStringLiteral("drive-bench watch --for 60"), {}, 0, 0,
            {{QStringLiteral("--json"), QString(), QStringLiteral("print a JSON object a line")},
                {QStringLiteral("--for"), QStringLiteral("SECONDS"), QStringLiteral("end after so long"), 0,
                    365 * 24 * 3600}},
            watch},
        {QStringLiteral("panel"), QString(), QStringLiteral("open the window with the bench"), QString(),
            QStringLiteral("drive-bench panel"), {}, 0, 0, {}, panel},
    };
}

} // namespace bench
