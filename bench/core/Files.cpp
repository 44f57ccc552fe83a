#include "bench/core/Files.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#ifdef __APPLE__
#include <mach-o/dyld.h>
#endif

namespace bench {

namespace {

bool failWithSystemReason(QString *reason)
{
    *reason = systemReason();
    return false;
}

/// Closes the descriptor at the end of a function, whichever way that ends.
class Descriptor
{
public:
    explicit Descriptor(int opened) : number(opened) { }
    ~Descriptor()
    {
        if (number >= 0) {
            ::close(number);
        }
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    const int number;
};

} // namespace

QString systemReason()
{
    return QString::fromStdString(std::generic_category().message(errno));
}

bool readFile(const QString &path, std::int64_t limit, QByteArray *content, QString *reason)
{
    // Without O_NONBLOCK the opening of a FIFO would wait for a writer.
    const Descriptor file(::open(path.toUtf8().constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status;
    if (file.number < 0 || ::fstat(file.number, &status) != 0) {
        return failWithSystemReason(reason);
    }
    if (!S_ISREG(status.st_mode)) {
        *reason =
            S_ISDIR(status.st_mode) ? QStringLiteral("is a folder") : QStringLiteral("is not a regular file");
        return false;
    }
    if (status.st_size > limit) {
        *reason =
            QStringLiteral("is too large: %1 bytes, at most %2 are read").arg(status.st_size).arg(limit);
        return false;
    }
    content->resize(static_cast<int>(status.st_size));
    int length = 0;
    while (length < content->size()) {
        const ssize_t count =
            ::read(file.number, content->data() + length, static_cast<std::size_t>(content->size() - length));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return failWithSystemReason(reason);
        }
        if (count == 0) {
            break;
        }
        length += static_cast<int>(count);
    }
    content->truncate(length);
    return true;
}

bool writeFile(const QString &path, const QByteArray &content, QString *reason)
{
    const QByteArray name = path.toUtf8();
    const Descriptor file(
        ::open(name.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0666));
    int length = 0;
    ssize_t count = file.number < 0 ? -1 : 0;
    while (count >= 0 && length < content.size()) {
        count = ::write(
            file.number, content.constData() + length, static_cast<std::size_t>(content.size() - length));
        if (count < 0 && errno == EINTR) {
            count = 0;
        }
        length += static_cast<int>(count);
    }
    if (count < 0) {
        failWithSystemReason(reason);
        ::unlink(name.constData());
        return false;
    }
    return true;
}

bool renameFile(const QString &from, const QString &to, QString *reason)
{
    return std::rename(from.toUtf8().constData(), to.toUtf8().constData()) == 0
        || failWithSystemReason(reason);
}

bool swapFolders(const QString &path, const QString &other, QString *reason)
{
    const QByteArray from = path.toUtf8();
    const QByteArray to = other.toUtf8();
#ifdef __APPLE__
    const bool swapped = ::renamex_np(from.constData(), to.constData(), RENAME_SWAP) == 0;
#else
    const bool swapped =
        ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_EXCHANGE) == 0;
#endif
    if (swapped) {
        return true;
    }
    // Some file systems cannot; then it takes a moment in which there is no `other`.
    const QByteArray aside = from + ".aside";
    const bool moved = std::rename(to.constData(), aside.constData()) == 0
        && std::rename(from.constData(), to.constData()) == 0
        && std::rename(aside.constData(), from.constData()) == 0;
    return moved || failWithSystemReason(reason);
}

bool replaceFile(const QString &path, const QByteArray &content, QString *reason)
{
    const QString draft = path + QStringLiteral(".new");
    if (!writeFile(draft, content, reason)) {
        return false;
    }
    if (!renameFile(draft, path, reason)) {
        QString ignored;
        removeFile(draft, &ignored);
        return false;
    }
    return true;
}

bool listFolder(const QString &path, QStringList *names, QString *reason)
{
    DIR *folder = ::opendir(path.toUtf8().constData());
    if (folder == nullptr) {
        return failWithSystemReason(reason);
    }
    while (const dirent *entry = ::readdir(folder)) {
        const QString name = QString::fromUtf8(entry->d_name);
        if (name != QLatin1String(".") && name != QLatin1String("..")) {
            names->append(name);
        }
    }
    ::closedir(folder);
    return true;
}

bool makeFolder(const QString &path, QString *reason)
{
    if (isFolder(path) || ::mkdir(path.toUtf8().constData(), 0777) == 0) {
        return true;
    }
    const int slash = static_cast<int>(path.lastIndexOf(QLatin1Char('/')));
    if (errno == ENOENT && slash > 0 && makeFolder(path.left(slash), reason)
        && (::mkdir(path.toUtf8().constData(), 0777) == 0 || isFolder(path))) {
        return true;
    }
    return failWithSystemReason(reason);
}

bool removeFile(const QString &path, QString *reason)
{
    return ::unlink(path.toUtf8().constData()) == 0 || failWithSystemReason(reason);
}

void removeFolder(const QString &path)
{
    QStringList names;
    QString ignored;
    listFolder(path, &names, &ignored);
    for (const QString &name : names) {
        removeFile(path + QLatin1Char('/') + name, &ignored);
    }
    ::rmdir(path.toUtf8().constData());
}

bool isReadableFolder(const QString &path, QString *reason)
{
    DIR *const folder = ::opendir(path.toUtf8().constData());
    if (folder == nullptr) {
        return failWithSystemReason(reason);
    }
    ::closedir(folder);
    return true;
}

bool isFolder(const QString &path)
{
    struct stat status;
    return ::stat(path.toUtf8().constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool isLocked(const QString &path)
{
    const Descriptor file(::open(path.toUtf8().constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    return file.number >= 0 && ::flock(file.number, LOCK_SH | LOCK_NB) != 0;
}

std::int64_t changeTime(const QString &path)
{
    struct stat status;
    if (::stat(path.toUtf8().constData(), &status) != 0) {
        return 0;
    }
#ifdef __APPLE__
    const timespec &time = status.st_mtimespec;
#else
    const timespec &time = status.st_mtim;
#endif
    return static_cast<std::int64_t>(time.tv_sec) * 1000000000 + time.tv_nsec;
}

QString executableFolder()
{
    char path[PATH_MAX] = {};
#ifdef __APPLE__
    char unresolved[PATH_MAX] = {};
    std::uint32_t size = sizeof unresolved;
    if (::_NSGetExecutablePath(unresolved, &size) != 0 || ::realpath(unresolved, path) == nullptr) {
        return QStringLiteral(".");
    }
#else
    if (::readlink("/proc/self/exe", path, sizeof path - 1) < 0) {
        return QStringLiteral(".");
    }
#endif
    const QString executable = QString::fromUtf8(path);
    return executable.left(executable.lastIndexOf(QLatin1Char('/')));
}

FileLock::FileLock(const QString &path, Mode mode)
{
    const int flags = mode == Shared ? O_RDONLY : O_RDWR | O_CREAT;
    descriptor = ::open(path.toUtf8().constData(), flags | O_CLOEXEC | O_NONBLOCK, 0666);
    if (descriptor < 0) {
        whyNot = systemReason();
        return;
    }
    int result = 0;
    do {
        result = ::flock(descriptor, mode == Shared ? LOCK_SH : LOCK_EX);
    } while (result != 0 && errno == EINTR);
    held = result == 0;
    if (!held) {
        whyNot = systemReason();
    }
}

FileLock::~FileLock()
{
    if (descriptor >= 0) {
        ::close(descriptor);
    }
}

} // namespace bench
