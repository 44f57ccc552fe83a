#include "bench/core/FlashChip.h"

#include "bench/core/Files.h"
#include "bench/core/FirmwareImage.h"

#include <QCryptographicHash>
#include <QtEndian>

#include <chrono>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {

namespace {

// The page that describes a part of the chip: mark, size, digest, length of the version, version.
constexpr char Mark[] = {'T', 'V', 'R', 'G'};
constexpr int MarkSize = 4;
constexpr int PayloadSizeAt = 4;
constexpr int DigestAt = 8;
constexpr int DigestSize = 32;
constexpr int VersionSizeAt = 40;
constexpr int VersionAt = 41;

/// Whoever looks whether the chip is being written holds it for a moment, which is waited out.
bool holdForWriting(int descriptor)
{
    for (int attempt = 0; attempt < 20; ++attempt) {
        if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

} // namespace

FlashChip::FlashChip(const QString &path, Access access)
{
    const int flags = access == Write ? O_RDWR | O_CREAT : O_RDONLY;
    descriptor = ::open(path.toUtf8().constData(), flags | O_CLOEXEC | O_NONBLOCK, 0666);
    struct stat status;
    if (descriptor < 0 || ::fstat(descriptor, &status) != 0) {
        whyNot = systemReason();
        return;
    }
    if (!S_ISREG(status.st_mode)) {
        whyNot = QStringLiteral("is not a regular file");
        return;
    }
    if (access == Write && !holdForWriting(descriptor)) {
        whyNot = QStringLiteral("is being written by somebody else");
        return;
    }
    open = true;
    if (access == Write && status.st_size != Size) {
        for (int sector = 0; sector < Size / SectorSize && open; ++sector) {
            open = eraseSector(sector);
        }
        open = open && ::ftruncate(descriptor, Size) == 0;
    }
}

FlashChip::~FlashChip()
{
    if (descriptor >= 0) {
        ::close(descriptor);
    }
}

bool FlashChip::fail(const QString &why)
{
    whyNot = why;
    return false;
}

bool FlashChip::eraseSector(int sector)
{
    const QByteArray blank(SectorSize, '\xff');
    const ssize_t count = ::pwrite(descriptor, blank.constData(), SectorSize, off_t(sector) * SectorSize);
    return count == SectorSize || fail(systemReason());
}

bool FlashChip::programPage(int page, const QByteArray &data)
{
    const int position = page * PageSize;
    QByteArray content = read(position, PageSize);
    if (content.size() != PageSize || data.size() > PageSize) {
        return fail(QStringLiteral("there is no such page"));
    }
    for (int i = 0; i < data.size(); ++i) {
        content[i] = static_cast<char>(content.at(i) & data.at(i));
    }
    return ::pwrite(descriptor, content.constData(), PageSize, position) == PageSize || fail(systemReason());
}

QByteArray FlashChip::read(int position, int size)
{
    QByteArray content(size, '\0');
    const ssize_t count = ::pread(descriptor, content.data(), static_cast<std::size_t>(size), position);
    content.truncate(count < 0 ? 0 : static_cast<int>(count));
    return content;
}

bool FlashChip::describe(const Region &region, const QString &version, const QByteArray &payload)
{
    const QByteArray text = version.toLatin1();
    QByteArray page(VersionAt, '\0');
    page.replace(0, MarkSize, QByteArray(Mark, MarkSize));
    qToLittleEndian(static_cast<quint32>(payload.size()), page.data() + PayloadSizeAt);
    page.replace(DigestAt, DigestSize, QCryptographicHash::hash(payload, QCryptographicHash::Sha256));
    page[VersionSizeAt] = static_cast<char>(text.size());
    return programPage(region.start / PageSize, page + text);
}

QString FlashChip::version(const Region &region)
{
    const QByteArray page = read(region.start, PageSize);
    if (page.size() != PageSize || !page.startsWith(QByteArray(Mark, MarkSize))) {
        return {};
    }
    const auto size = qFromLittleEndian<quint32>(page.constData() + PayloadSizeAt);
    const int versionSize = static_cast<quint8>(page.at(VersionSizeAt));
    if (size > static_cast<quint32>(region.size - PageSize) || versionSize > PageSize - VersionAt) {
        return {};
    }
    const QByteArray payload = read(region.start + PageSize, static_cast<int>(size));
    if (QCryptographicHash::hash(payload, QCryptographicHash::Sha256) != page.mid(DigestAt, DigestSize)) {
        return {};
    }
    return QString::fromLatin1(page.mid(VersionAt, versionSize));
}

bool FlashChip::load(const FirmwareImage &image)
{
    for (int sector = 0; sector < Size / SectorSize; ++sector) {
        if (!eraseSector(sector)) {
            return false;
        }
    }
    return programPayload(Firmware, image.firmware) && programPayload(Configuration, image.configuration)
        && describe(Firmware, image.firmwareVersion, image.firmware)
        && describe(Configuration, image.configurationRevision, image.configuration);
}

bool FlashChip::programPayload(const Region &region, const QByteArray &payload)
{
    const int firstPage = region.start / PageSize + 1;
    for (int offset = 0; offset < payload.size(); offset += PageSize) {
        if (!programPage(firstPage + offset / PageSize, payload.mid(offset, PageSize))) {
            return false;
        }
    }
    return true;
}

} // namespace bench
