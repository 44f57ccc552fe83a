#pragma once

#include "bench/core/Drive.h"
#include "bench/core/DriveRecord.h"
#include "bench/core/Host.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

namespace bench {

class FileLock;

enum class DriveState {
    Unplugged,
    Silent, ///< plugged in and does not come up
    Writing, ///< its flash is being written; the progress is in the drive
    BootRom, ///< its flash is torn: it enumerates with unknown statuses and can be flashed
    RestartNeeded, ///< its flash holds another version than it runs
    Ready,
};

/// The state in a few words, for a person.
QString stateText(DriveState state);

/**
 * A bench: a folder that holds drives, their flash chips and the host computer.
 *
 *     drives/<serial>.json    a drive, the serial number percent-encoded
 *     drives/<serial>.flash   its flash chip
 *     host.json               the host
 *     lock                    held, shared, while reading and, exclusive, while changing
 *     process-<id>.lock       locked while a process of the companion lives
 *     calls.log               what the stand-ins for the host's tools were called with
 *
 * Any number of processes and threads may use one folder, each through objects of its own or a common one:
 * an object holds nothing but two paths. Every change is made under the lock and replaces whole files, so
 * that no reader sees half of it and no kill leaves half of it.
 *
 * Functions that can be refused return false and then say in `reason`, in one line, what was refused, why,
 * and what would work. A file that is malformed is left alone and passed over; functions that read many files
 * add a line "path:line:column: reason" for it to `problems`.
 */
class Bench
{
public:
    /// `imageFolder`: where the firmware images lie that decide what is up to date.
    Bench(const QString &folder, const QString &imageFolder);

    /// $TARVO_BENCH, and where that is not set the folder "bench" beside the executable.
    static QString defaultFolder();

    QString folder() const { return path; }

    /// True when the folder is a bench that can be read.
    bool exists(QString *reason) const;

    /// Makes a bench with these drives, each as add() takes it; the folders above it are made too. Refused
    /// for a folder that holds other files, and, unless `force` is given, for a bench: with it, that bench's
    /// drives give way to the new ones in one step, and then its host.
    bool create(const QVector<Drive> &drives, bool force, QString *reason);

    // Drives ---------------------------------------------------------------------------------------------

    /// All drives, plugged in or not, by file name.
    QVector<Drive> drives(QStringList *problems) const;

    bool drive(const QString &serial, Drive *found, QString *reason) const;

    /// Puts a new drive on the bench, plugged in: its flash chip holds `flashFirmware` and
    /// `flashConfiguration`, which are made up for the drive's model. Everything that a power-up sets is set
    /// here.
    bool add(const Drive &drive, QString *reason);

    /// Takes a drive off the bench for good, also one whose file is malformed.
    bool remove(const QString &serial, QString *reason);

    bool plug(const QString &serial, QString *reason);
    bool unplug(const QString &serial, QString *reason);

    /// Sets a fault; one of the same kind (for "text", of the same field) is replaced.
    bool setFault(const QString &serial, const Fault &fault, QString *reason);
    /// Clears the fault of that name, or all faults when the name is empty.
    bool clearFault(const QString &serial, const QString &name, QString *reason);

    using DriveChange = std::function<bool(Drive *drive, QString *reason)>;
    /// Runs `driveChange` on the drive under the lock and writes the result, unless it returns false.
    /// It must not call the bench, and `serial` names the drive for good: a change of it is not
    /// possible.
    bool changeDrive(const QString &serial, const DriveChange &driveChange, QString *reason);

    /// What the drive is doing. It turns from Writing to BootRom without a change of any file when the
    /// process that writes is killed.
    DriveState state(const Drive &drive) const;

    QString driveFile(const QString &serial) const;
    QString chipFile(const QString &serial) const;

    // What the maker's libraries do ----------------------------------------------------------------------

    /// One discovery: a record for each drive that is plugged in and answers. Counts as a query, uses up
    /// faults that are set for once, and takes the time that slow probes take. The caller's thread sleeps.
    QVector<DriveRecord> query(QStringList *problems);

    /// What discovery would report of each of these drives now, without counting as a query.
    QVector<DriveRecord> records(const QVector<Drive> &drives) const;
    /// As records(), for one drive.
    DriveRecord record(const Drive &drive) const;

    /// Writes the image file into the drive that reports this serial number, at the drive's rate; the
    /// caller's thread sleeps meanwhile. `chipset` is the code of the bridge that the updater is made for.
    /// The whole image is checked before anything is erased.
    bool flash(
        const QString &reportedSerial, std::int32_t chipset, const QString &imageFile, QString *reason);

    /// Unmounts the volumes of the drive that reports this serial number. 1, or what a fault says; 0 when
    /// there is no such drive.
    int unmount(const QString &reportedSerial);

    // Host -----------------------------------------------------------------------------------------------

    /// The host, with those of its processes that are alive.
    Host host(QStringList *problems) const;

    using HostChange = std::function<bool(Host *host, QString *reason)>;
    bool changeHost(const HostChange &hostChange, QString *reason);

    /// Locked while the process with that ID lives, if it is one that the bench started.
    QString processFile(qint64 id) const;
    /// True for the name of such a file, whatever the ID.
    static bool isProcessFile(const QString &name);

    // Watching -------------------------------------------------------------------------------------------

    /// A mark of everything that can change on the bench; a few microseconds a drive. Two calls give the same
    /// mark as long as nothing was changed between them.
    QByteArray changeMark() const;

private:
    QString lockFile() const;
    QString hostFile() const;
    QString driveFolder() const;
    bool holdsOtherFiles() const;
    QVector<Drive> readDrives(QStringList *problems) const;
    bool readDrive(const QString &file, Drive *drive, QString *problem) const;
    bool writeDrive(const Drive &drive, QString *reason);
    bool draftDrive(const Drive &drive, QString *reason);
    bool publishDraft(const QString &serial, QString *reason);
    void dropDraft(const QString &serial);
    /// Runs `change` under the lock; false with a reason when there is no bench, or no lock to be had.
    bool change(const std::function<bool()> &change, QString *reason);
    bool lockForChange(const FileLock &lock, QString *reason) const;
    Host readHost(QStringList *problems) const;
    bool writeHost(const Host &host, QString *reason);
    bool replaceAll(const QVector<Drive> &drives, QString *reason);
    bool findReported(const QString &reportedSerial, Drive *found) const;
    void powerUp(Drive *drive, const QString &chipPath) const;

    QString path;
    QString imagePath;

    friend class FlashRun;
};

} // namespace bench
