#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>

/**
 * The few file operations on which the bench rests.
 *
 * They go straight to the operating system: the discovery thread may be inside one of them while the process
 * is already taking its global objects apart. Paths are text, handed to the system as UTF-8. A reason is the
 * system's own words for what failed.
 */
namespace bench {

/// The content of the regular file at `path`, at most `limit` bytes of it. False with a reason when there is
/// no such file, when it is not a regular file (a FIFO is not waited for) or holds more than `limit` bytes.
bool readFile(const QString &path, std::int64_t limit, QByteArray *content, QString *reason);

/// Writes a file that nobody reads yet. False with a reason, and without the file.
bool writeFile(const QString &path, const QByteArray &content, QString *reason);

/// Gives a file another name, in one step. False with a reason.
bool renameFile(const QString &from, const QString &to, QString *reason);

/// Gives two folders each other's name, in one step wherever the file system can. False with a reason.
bool swapFolders(const QString &path, const QString &other, QString *reason);

/// Replaces the file at `path` in one step: a reader sees the old content or the new one, whenever this
/// process is killed. The caller holds the bench's lock. False with a reason, the old file untouched.
bool replaceFile(const QString &path, const QByteArray &content, QString *reason);

/// The names in the folder, in no order, without "." and "..". False with a reason when it cannot be read.
bool listFolder(const QString &path, QStringList *names, QString *reason);

/// Creates the folder and those above it. False with a reason.
bool makeFolder(const QString &path, QString *reason);

/// Removes a file. False with a reason.
bool removeFile(const QString &path, QString *reason);

/// Removes a folder with the files in it; what cannot be removed stays.
void removeFolder(const QString &path);

/// False with a reason when the folder cannot be listed.
bool isReadableFolder(const QString &path, QString *reason);

bool isFolder(const QString &path);

/// True while somebody holds an exclusive lock on the file.
bool isLocked(const QString &path);

/// Nanoseconds since 1970 at which the file or the folder's set of names last changed; 0 when there is none.
std::int64_t changeTime(const QString &path);

/// The folder that holds the running executable, symbolic links followed, without a trailing slash.
QString executableFolder();

/// The last system error in words.
QString systemReason();

/**
 * A lock on a file, shared with other processes and with the threads of this one.
 *
 * It ends with the object, and with the process, however that ends: nothing stale can be left behind.
 */
class FileLock
{
public:
    enum Mode { Shared, Exclusive };

    /// Waits for the lock. A missing file is created for an exclusive lock only; whoever reads where nobody
    /// ever wrote needs none.
    FileLock(const QString &path, Mode mode);
    ~FileLock();
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;

    bool isHeld() const { return held; }
    /// Why it is not held.
    QString reason() const { return whyNot; }

private:
    int descriptor;
    bool held = false;
    QString whyNot;
};

} // namespace bench
