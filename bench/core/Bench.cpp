#include "bench/core/Bench.h"

#include "bench/core/Discovery.h"
#include "bench/core/Files.h"
#include "bench/core/FirmwareImage.h"
#include "bench/core/FlashChip.h"
#include "bench/core/FlashRun.h"
#include "bench/core/Text.h"

#include <QDateTime>

#include <algorithm>
#include <chrono>
#include <thread>

namespace bench {

namespace {

constexpr std::int64_t MaximumFileSize = 256 * 1024;
constexpr int MaximumSerialLength = 80;
constexpr QLatin1String DraftExtension(".new");
constexpr QLatin1String NewBench("/new"); ///< where a bench is made that replaces another
QString cannotWrite(const QString &file, const QString &why)
{
    return QStringLiteral("cannot write %1: %2; the folder must be writable and have room").arg(file, why);
}

/// True when a drive's file would be accepted again: what a caller made of a drive is not trusted.
bool isReadable(const QByteArray &driveFile, QString *reason)
{
    Drive ignored;
    if (driveFile.size() > MaximumFileSize) {
        *reason = QStringLiteral("its file would be too large: %1 bytes, at most %2 are read")
                      .arg(driveFile.size())
                      .arg(MaximumFileSize);
        return false;
    }
    if (!Drive::decode(driveFile, &ignored, reason)) {
        *reason = QStringLiteral("a drive cannot be so: %1").arg(reason->section(QStringLiteral(": "), 1));
        return false;
    }
    return true;
}

} // namespace

QString stateText(DriveState state)
{
    switch (state) {
    case DriveState::Unplugged:
        return QStringLiteral("unplugged");
    case DriveState::Silent:
        return QStringLiteral("does not answer");
    case DriveState::Writing:
        return QStringLiteral("being written");
    case DriveState::BootRom:
        return QStringLiteral("boot ROM");
    case DriveState::RestartNeeded:
        return QStringLiteral("restart needed");
    case DriveState::Ready:
        break;
    }
    return QStringLiteral("ready");
}

Bench::Bench(const QString &folder, const QString &imageFolder) : path(folder), imagePath(imageFolder) { }

QString Bench::defaultFolder()
{
    const QByteArray set = qgetenv("TARVO_BENCH");
    return set.isEmpty() ? executableFolder() + QStringLiteral("/bench") : QString::fromUtf8(set);
}

bool Bench::exists(QString *reason) const
{
    if (!isReadableFolder(driveFolder(), reason)) {
        *reason =
            QStringLiteral("%1 is no bench that can be read: %2; make one with: drive-bench init --bench %3")
                .arg(path, *reason, shellQuoted(path));
        return false;
    }
    return true;
}

bool Bench::create(const QVector<Drive> &drives, bool force, QString *reason)
{
    QString ignored;
    const bool present = exists(&ignored);
    const bool isNewFolder = !isFolder(path);
    if (holdsOtherFiles()) {
        *reason =
            QStringLiteral("%1 holds other files; name a new or an empty folder with --bench").arg(path);
        return false;
    }
    if (present && !force) {
        *reason = QStringLiteral("%1 is a bench already; to make it anew, add --force").arg(path);
        return false;
    }
    if (!makeFolder(path, reason)) {
        *reason =
            QStringLiteral("cannot make the folder %1: %2; name another with --bench").arg(path, *reason);
        return false;
    }
    const FileLock lock(lockFile(), FileLock::Exclusive);
    const bool done = lockForChange(lock, reason) && replaceAll(drives, reason);
    if (!done && !present) {
        removeFile(lockFile(), &ignored);
    }
    if (!done && isNewFolder) {
        removeFolder(path);
    }
    return done;
}

/// Makes the drives and the host aside, so that they take the place of the old ones in one step each.
bool Bench::replaceAll(const QVector<Drive> &drives, QString *reason)
{
    Bench aside(path + NewBench, imagePath);
    const QString hostDraft = hostFile() + DraftExtension;
    const auto clear = [&] {
        QString ignored;
        removeFile(hostDraft, &ignored);
        removeFolder(aside.driveFolder());
        removeFolder(aside.path);
    };
    clear(); // of what an earlier one left that was killed

    bool done = makeFolder(aside.driveFolder(), reason);
    if (!done) {
        *reason = QStringLiteral("cannot make the folder %1: %2; name another with --bench")
                      .arg(aside.driveFolder(), *reason);
    }
    for (int i = 0; done && i < drives.size(); ++i) {
        done = aside.draftDrive(drives.at(i), reason) && aside.publishDraft(drives.at(i).serial, reason);
    }
    if (done && !writeFile(hostDraft, Host().encode(), reason)) {
        *reason = cannotWrite(hostDraft, *reason);
        done = false;
    }
    if (done) {
        done = (isFolder(driveFolder()) ? swapFolders(aside.driveFolder(), driveFolder(), reason)
                                        : renameFile(aside.driveFolder(), driveFolder(), reason))
            && renameFile(hostDraft, hostFile(), reason);
        if (!done) {
            *reason = cannotWrite(driveFolder(), *reason);
        }
    }
    clear();
    return done;
}

QVector<Drive> Bench::drives(QStringList *problems) const
{
    const FileLock lock(lockFile(), FileLock::Shared);
    return readDrives(problems);
}

bool Bench::drive(const QString &serial, Drive *found, QString *reason) const
{
    const FileLock lock(lockFile(), FileLock::Shared);
    return exists(reason) && readDrive(driveFile(serial), found, reason);
}

bool Bench::add(const Drive &drive, QString *reason)
{
    return change(
        [&] {
            if (changeTime(driveFile(drive.serial)) != 0) {
                *reason = QStringLiteral(
                    "a drive with this serial number is on the bench; choose another with --serial");
                return false;
            }
            if (!draftDrive(drive, reason)) {
                dropDraft(drive.serial);
                return false;
            }
            return publishDraft(drive.serial, reason);
        },
        reason);
}

bool Bench::remove(const QString &serial, QString *reason)
{
    return change(
        [&] {
            Drive found;
            if (changeTime(driveFile(serial)) == 0) {
                return readDrive(driveFile(serial), &found, reason);
            }
            if (!removeFile(driveFile(serial), reason)) {
                *reason = QStringLiteral("cannot remove %1: %2; the folder must be writable")
                              .arg(driveFile(serial), *reason);
                return false;
            }
            QString ignored;
            removeFile(chipFile(serial), &ignored);
            return true;
        },
        reason);
}

bool Bench::plug(const QString &serial, QString *reason)
{
    return changeDrive(
        serial,
        [this](Drive *drive, QString *why) {
            if (drive->plugged) {
                *why = QStringLiteral("it is plugged in already; to restart it, use: drive-bench replug");
                return false;
            }
            powerUp(drive, chipFile(drive->serial));
            return true;
        },
        reason);
}

bool Bench::unplug(const QString &serial, QString *reason)
{
    return changeDrive(
        serial,
        [](Drive *drive, QString *why) {
            if (!drive->plugged) {
                *why = QStringLiteral("it is unplugged already; to plug it in, use: drive-bench plug");
                return false;
            }
            drive->plugged = false;
            drive->mounted = false;
            drive->faultHadEffect("never-settles");
            return true;
        },
        reason);
}

bool Bench::setFault(const QString &serial, const Fault &fault, QString *reason)
{
    return changeDrive(
        serial,
        [&fault](Drive *drive, QString *why) {
            if (!isValid(fault)) {
                *why = QStringLiteral(
                    "there is no such fault, or it takes no such value; drive-bench fault --list "
                    "shows them");
                return false;
            }
            for (Fault &present : drive->faults) {
                if (present.name == fault.name && present.field == fault.field) {
                    present = fault;
                    return true;
                }
            }
            drive->faults.append(fault);
            return true;
        },
        reason);
}

bool Bench::clearFault(const QString &serial, const QString &name, QString *reason)
{
    return changeDrive(
        serial,
        [&name](Drive *drive, QString *why) {
            if (name.isEmpty()) {
                drive->faults.clear();
                return true;
            }
            if (!drive->clearFault(name)) {
                *why = QStringLiteral("the fault \"%1\" is not set; drive-bench show lists those that are")
                           .arg(name);
                return false;
            }
            return true;
        },
        reason);
}

bool Bench::changeDrive(const QString &serial, const DriveChange &driveChange, QString *reason)
{
    return change(
        [&] {
            Drive found;
            return readDrive(driveFile(serial), &found, reason) && driveChange(&found, reason)
                && writeDrive(found, reason);
        },
        reason);
}

DriveState Bench::state(const Drive &drive) const
{
    if (!drive.plugged) {
        return DriveState::Unplugged;
    }
    if (!drive.answers) {
        return DriveState::Silent;
    }
    if (drive.torn) {
        return isLocked(chipFile(drive.serial)) ? DriveState::Writing : DriveState::BootRom;
    }
    const bool current = !drive.bootRom && drive.runningFirmware == drive.flashFirmware
        && drive.runningConfiguration == drive.flashConfiguration;
    return current ? DriveState::Ready : DriveState::RestartNeeded;
}

QString Bench::driveFile(const QString &serial) const
{
    return QStringLiteral("%1/drives/%2.json").arg(path, fileNameFor(serial));
}

QString Bench::chipFile(const QString &serial) const
{
    return QStringLiteral("%1/drives/%2.flash").arg(path, fileNameFor(serial));
}

QVector<DriveRecord> Bench::query(QStringList *problems)
{
    QString reason;
    if (!exists(&reason)) {
        problems->append(reason);
        return {};
    }
    QStringList malformed;
    QVector<Drive> found = drives(&malformed);
    if (std::any_of(found.begin(), found.end(), isChangedByQuery)) {
        const FileLock lock(lockFile(), FileLock::Exclusive);
        malformed.clear();
        found = readDrives(&malformed);
        for (const Drive &drive : found) {
            Drive changed = drive;
            if (isChangedByQuery(drive)) {
                countQuery(&changed);
                if (!writeDrive(changed, &reason)) {
                    problems->append(reason);
                }
            }
        }
    }

    problems->append(malformed);

    QVector<DriveRecord> records = recordsOfQuery(found, imagePath);
    std::this_thread::sleep_for(std::chrono::milliseconds(probeMilliseconds(found)));
    return records;
}

QVector<DriveRecord> Bench::records(const QVector<Drive> &drives) const
{
    return recordsOf(drives, imagePath);
}

DriveRecord Bench::record(const Drive &drive) const
{
    return records({drive}).first();
}

bool Bench::flash(
    const QString &reportedSerial, std::int32_t chipset, const QString &imageFile, QString *reason)
{
    FlashRun run(this);
    return run.start(reportedSerial, chipset, imageFile, reason) && run.write(reason);
}

int Bench::unmount(const QString &reportedSerial)
{
    QString ignored;
    if (!exists(&ignored)) {
        return 0;
    }
    const FileLock lock(lockFile(), FileLock::Exclusive);
    Drive drive;
    if (!findReported(reportedSerial, &drive)) {
        return 0;
    }
    int result = 1;
    const Fault *const refused = findFault(drive.faults, "unmount-returns");
    if (refused != nullptr) {
        result = static_cast<int>(refused->number);
        drive.faultHadEffect("unmount-returns");
    } else {
        drive.mounted = false;
    }
    writeDrive(drive, &ignored);
    return result;
}

Host Bench::host(QStringList *problems) const
{
    const FileLock lock(lockFile(), FileLock::Shared);
    return readHost(problems);
}

bool Bench::changeHost(const HostChange &hostChange, QString *reason)
{
    return change(
        [&] {
            QStringList problems;
            Host found = readHost(&problems);
            if (!problems.isEmpty()) {
                *reason =
                    problems.first() + QStringLiteral("; correct the file, or remove it for a new host");
                return false;
            }
            return hostChange(&found, reason) && writeHost(found, reason);
        },
        reason);
}

QByteArray Bench::changeMark() const
{
    // Each file counts, since a hand may change one in place. Two changes within one tick of the file
    // system's clock look the same, so a change that is younger than that makes a mark of its own.
    QStringList files;
    QString ignored;
    listFolder(driveFolder(), &files, &ignored);
    files.sort();
    QStringList all{path, hostFile(), driveFolder()};
    for (const QString &file : files) {
        all.append(driveFolder() + QLatin1Char('/') + file);
    }
    std::int64_t latest = 0;
    QByteArray mark;
    for (const QString &file : all) {
        const std::int64_t changed = changeTime(file);
        mark += QByteArray::number(qlonglong(changed)) + '/';
        latest = std::max(latest, changed);
    }
    const std::int64_t now = QDateTime::currentMSecsSinceEpoch();
    if (now - latest / 1000000 < 50) {
        mark += QByteArray::number(qlonglong(now));
    }
    return mark;
}

QString Bench::lockFile() const
{
    return path + QStringLiteral("/lock");
}

QString Bench::driveFolder() const
{
    return path + QStringLiteral("/drives");
}

/// True when the folder holds what no bench does.
bool Bench::holdsOtherFiles() const
{
    QStringList names;
    QStringList driveNames;
    QString ignored;
    listFolder(path, &names, &ignored);
    listFolder(driveFolder(), &driveNames, &ignored);
    const QStringList own{QStringLiteral("drives"), QStringLiteral("host.json"),
        QStringLiteral("host.json.new"), QStringLiteral("lock"), QStringLiteral("calls.log"),
        QStringLiteral("new")};
    return std::any_of(names.begin(), names.end(), [&own](const QString &name) {
        return !own.contains(name) && !isProcessFile(name);
    }) || std::any_of(driveNames.begin(), driveNames.end(), [](const QString &name) {
        return !name.endsWith(QStringLiteral(".json")) && !name.endsWith(QStringLiteral(".flash"))
            && !name.endsWith(DraftExtension);
    });
}

QString Bench::hostFile() const
{
    return path + QStringLiteral("/host.json");
}

QString Bench::processFile(qint64 id) const
{
    return QStringLiteral("%1/process-%2.lock").arg(path).arg(id);
}

bool Bench::isProcessFile(const QString &name)
{
    return name.startsWith(QStringLiteral("process-")) && name.endsWith(QStringLiteral(".lock"));
}

QVector<Drive> Bench::readDrives(QStringList *problems) const
{
    const QString folder = driveFolder();
    const QString extension = QStringLiteral(".json");
    QStringList names;
    QString problem;
    if (!listFolder(folder, &names, &problem)) {
        problems->append(folder + QStringLiteral(": ") + problem);
        return {};
    }
    names.sort();
    QVector<Drive> found;
    for (const QString &name : names) {
        Drive drive;
        if (!name.endsWith(extension)) {
            continue;
        }
        if (readDrive(folder + QLatin1Char('/') + name, &drive, &problem)) {
            found.append(drive);
        } else {
            problems->append(problem);
        }
    }
    return found;
}

bool Bench::readDrive(const QString &file, Drive *drive, QString *problem) const
{
    QByteArray content;
    Drive found;
    if (!readFile(file, MaximumFileSize, &content, problem)) {
        *problem = changeTime(file) == 0 ? QStringLiteral(
                       "there is no drive with that serial number on the bench %1; drive-bench list shows "
                       "those that are")
                                               .arg(path)
                                         : QStringLiteral("%1:1:1: %2").arg(file, *problem);
        return false;
    }
    if (!Drive::decode(content, &found, problem)) {
        *problem = file + QLatin1Char(':') + *problem;
        return false;
    }
    if (!file.endsWith(QStringLiteral("/%1.json").arg(fileNameFor(found.serial)))) {
        *problem = file + QStringLiteral(":1:1: \"serial\" is not the one that the file is named for");
        return false;
    }
    *drive = found;
    return true;
}

bool Bench::writeDrive(const Drive &drive, QString *reason)
{
    const QString file = driveFile(drive.serial);
    const QByteArray content = drive.encode();
    if (!isReadable(content, reason)) {
        return false;
    }
    if (!replaceFile(file, content, reason)) {
        *reason = cannotWrite(file, *reason);
        return false;
    }
    return true;
}

bool Bench::draftDrive(const Drive &drive, QString *reason)
{
    const Model *const model = findModel(drive.model);
    if (model == nullptr) {
        *reason = QStringLiteral("there is no model \"%1\"; drive-bench models lists them").arg(drive.model);
        return false;
    }
    const std::int64_t length = drive.serial.size();
    if (length < 1 || length > MaximumSerialLength) {
        *reason = QStringLiteral("a serial number has 1 to %1 characters, this one %2")
                      .arg(MaximumSerialLength)
                      .arg(length);
        return false;
    }
    const QString chipDraft = chipFile(drive.serial) + DraftExtension;
    FlashChip chip(chipDraft, FlashChip::Write);
    if (!chip.isOpen()
        || !chip.load(FirmwareImage::forModel(*model, drive.flashFirmware, drive.flashConfiguration))) {
        *reason = cannotWrite(chipDraft, chip.reason());
        return false;
    }
    Drive added = drive;
    powerUp(&added, chipDraft);
    added.plugged = drive.plugged;
    added.mounted = drive.plugged;
    const QString driveDraft = driveFile(drive.serial) + DraftExtension;
    const QByteArray content = added.encode();
    if (!isReadable(content, reason)) {
        return false;
    }
    if (!writeFile(driveDraft, content, reason)) {
        *reason = cannotWrite(driveDraft, *reason);
        return false;
    }
    return true;
}

bool Bench::publishDraft(const QString &serial, QString *reason)
{
    // The drive is on the bench with its own file, so its chip must be there first.
    for (const QString &file : {chipFile(serial), driveFile(serial)}) {
        if (!renameFile(file + DraftExtension, file, reason)) {
            *reason = cannotWrite(file, *reason);
            return false;
        }
    }
    return true;
}

void Bench::dropDraft(const QString &serial)
{
    QString ignored;
    removeFile(chipFile(serial) + DraftExtension, &ignored);
    removeFile(driveFile(serial) + DraftExtension, &ignored);
}

bool Bench::change(const std::function<bool()> &change, QString *reason)
{
    if (!exists(reason)) {
        return false;
    }
    const FileLock lock(lockFile(), FileLock::Exclusive);
    return lockForChange(lock, reason) && change();
}

bool Bench::lockForChange(const FileLock &lock, QString *reason) const
{
    if (!lock.isHeld()) {
        *reason =
            QStringLiteral("cannot lock %1: %2; the folder must be writable").arg(lockFile(), lock.reason());
    }
    return lock.isHeld();
}

Host Bench::readHost(QStringList *problems) const
{
    QByteArray content;
    QString problem;
    Host host;
    if (!readFile(hostFile(), MaximumFileSize, &content, &problem)) {
        if (changeTime(hostFile()) != 0) {
            problems->append(hostFile() + QStringLiteral(":1:1: ") + problem);
        }
        return host;
    }
    if (!Host::decode(content, &host, &problem)) {
        problems->append(hostFile() + QLatin1Char(':') + problem);
    }
    QVector<Process> alive;
    for (const Process &process : host.processes) {
        if (isLocked(processFile(process.id))) {
            alive.append(process);
        }
    }
    host.processes = alive;
    return host;
}

bool Bench::writeHost(const Host &host, QString *reason)
{
    if (!replaceFile(hostFile(), host.encode(), reason)) {
        *reason = cannotWrite(hostFile(), *reason);
        return false;
    }
    return true;
}

bool Bench::findReported(const QString &reportedSerial, Drive *found) const
{
    QStringList ignored;
    for (const Drive &drive : readDrives(&ignored)) {
        if (drive.plugged && drive.answers && drive.reportedSerial == reportedSerial) {
            *found = drive;
            return true;
        }
    }
    return false;
}

void Bench::powerUp(Drive *drive, const QString &chipPath) const
{
    FlashChip chip(chipPath, FlashChip::Read);
    drive->flashFirmware = chip.isOpen() ? chip.version(FlashChip::Firmware) : QString();
    drive->flashConfiguration = chip.isOpen() ? chip.version(FlashChip::Configuration) : QString();
    drive->torn = drive->flashFirmware.isEmpty() || drive->flashConfiguration.isEmpty();
    drive->bootRom = drive->torn;
    drive->runningFirmware = drive->bootRom ? QString() : drive->flashFirmware;
    drive->runningConfiguration = drive->bootRom ? QString() : drive->flashConfiguration;
    drive->plugged = true;
    drive->mounted = !drive->bootRom;
    drive->pluggedAt = QDateTime::currentMSecsSinceEpoch();
    drive->queries = 0;
    ++drive->powerUps;

    drive->answers = findFault(drive->faults, "no-return") == nullptr;
    drive->faultHadEffect("no-return");
    const Fault *const renamed = findFault(drive->faults, "new-serial");
    drive->reportedSerial = renamed == nullptr ? drive->serial : renamed->text;
    drive->faultHadEffect("new-serial");
}

} // namespace bench
