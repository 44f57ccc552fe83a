#include "bench/core/FirmwareImage.h"

#include "bench/core/Files.h"

#include <QCryptographicHash>
#include <QtEndian>

#include <algorithm>

namespace bench {

namespace {

// Byte positions in the header; all numbers are little-endian.
constexpr char Magic[] = {'T', 'F', 'W', '1', '\r', '\n', '\x1a', '\n'};
constexpr int MagicSize = 8;
constexpr int FormatAt = 8;
constexpr int BridgeAt = 12;
constexpr int FirmwareVersionAt = 16;
constexpr int ConfigurationRevisionAt = 48;
constexpr int FirmwareSizeAt = 80;
constexpr int ConfigurationSizeAt = 84;
constexpr int FirmwareDigestAt = 88;
constexpr int ConfigurationDigestAt = 120;
constexpr int DigestSize = 32;
constexpr int HeaderSize = 152;
constexpr quint32 FormatVersion = 1;

QByteArray digest(const QByteArray &payload)
{
    return QCryptographicHash::hash(payload, QCryptographicHash::Sha256);
}

void putNumber(QByteArray *file, int position, quint32 number)
{
    qToLittleEndian(number, file->data() + position);
}

quint32 getNumber(const QByteArray &file, int position)
{
    return qFromLittleEndian<quint32>(file.constData() + position);
}

void putText(QByteArray *file, int position, const QString &text)
{
    const QByteArray bytes = text.toLatin1().left(FirmwareImage::MaximumText);
    file->replace(position, static_cast<int>(bytes.size()), bytes);
}

/// A text fills its field with zero bytes to the end; anything after the first of them is a damaged header.
bool getText(const QByteArray &file, int position, QString *text)
{
    const QByteArray field = file.mid(position, FirmwareImage::MaximumText);
    const int end = static_cast<int>(field.indexOf('\0'));
    const QByteArray bytes = end < 0 ? field : field.left(end);
    if (bytes.isEmpty() || field.count('\0') != field.size() - bytes.size()) {
        return false;
    }
    *text = QString::fromLatin1(bytes);
    return true;
}

QByteArray madeUpPayload(const QString &seed, int size)
{
    QByteArray payload;
    QByteArray block = seed.toUtf8();
    while (payload.size() < size) {
        block = digest(block);
        payload += block;
    }
    payload.truncate(size);
    return payload;
}

} // namespace

FirmwareImage FirmwareImage::forModel(
    const Model &model, const QString &firmwareVersion, const QString &configurationRevision)
{
    FirmwareImage image;
    image.bridge = model.chipset;
    image.firmwareVersion = firmwareVersion;
    image.configurationRevision = configurationRevision;
    image.firmware = madeUpPayload(QStringLiteral("%1 firmware %2").arg(model.name, firmwareVersion),
        (36 + 4 * model.chipset) * 1024 - 300);
    image.configuration = madeUpPayload(
        QStringLiteral("%1 configuration %2").arg(model.name, configurationRevision), 2 * 1024 + 40);
    return image;
}

QByteArray FirmwareImage::encode() const
{
    QByteArray file(HeaderSize, '\0');
    file.replace(0, MagicSize, QByteArray(Magic, MagicSize));
    putNumber(&file, FormatAt, FormatVersion);
    putNumber(&file, BridgeAt, static_cast<quint32>(bridge));
    putText(&file, FirmwareVersionAt, firmwareVersion);
    putText(&file, ConfigurationRevisionAt, configurationRevision);
    putNumber(&file, FirmwareSizeAt, static_cast<quint32>(firmware.size()));
    putNumber(&file, ConfigurationSizeAt, static_cast<quint32>(configuration.size()));
    file.replace(FirmwareDigestAt, DigestSize, digest(firmware));
    file.replace(ConfigurationDigestAt, DigestSize, digest(configuration));
    return file + firmware + configuration;
}

bool FirmwareImage::decode(const QByteArray &file, FirmwareImage *image, QString *reason)
{
    const auto refuse = [reason](const QString &why) {
        *reason = why;
        return false;
    };
    if (file.isEmpty()) {
        return refuse(QStringLiteral("is empty"));
    }
    if (!file.startsWith(QByteArray(Magic, std::min(MagicSize, static_cast<int>(file.size()))))) {
        return refuse(QStringLiteral("is not a firmware image: it does not begin with \"TFW1\""));
    }
    if (file.size() < HeaderSize) {
        return refuse(QStringLiteral("is truncated: %1 bytes, the header alone takes %2")
                          .arg(file.size())
                          .arg(HeaderSize));
    }
    const quint32 format = getNumber(file, FormatAt);
    if (format != FormatVersion) {
        return refuse(
            QStringLiteral("has format version %1, only %2 is known").arg(format).arg(FormatVersion));
    }
    FirmwareImage found;
    found.bridge = static_cast<std::int32_t>(getNumber(file, BridgeAt));
    if (bridgeName(found.bridge) == QLatin1String("none")) {
        return refuse(QStringLiteral("is for an unknown bridge, code %1").arg(found.bridge));
    }
    if (!getText(file, FirmwareVersionAt, &found.firmwareVersion)) {
        return refuse(QStringLiteral("has no valid firmware version"));
    }
    if (!getText(file, ConfigurationRevisionAt, &found.configurationRevision)) {
        return refuse(QStringLiteral("has no valid configuration revision"));
    }
    const quint32 firmwareSize = getNumber(file, FirmwareSizeAt);
    const quint32 configurationSize = getNumber(file, ConfigurationSizeAt);
    if (firmwareSize == 0 || firmwareSize > MaximumFirmware) {
        return refuse(QStringLiteral("has a firmware of %1 bytes; 1 to %2 fit into the flash chip")
                          .arg(firmwareSize)
                          .arg(MaximumFirmware));
    }
    if (configurationSize == 0 || configurationSize > MaximumConfiguration) {
        return refuse(QStringLiteral("has a configuration of %1 bytes; 1 to %2 fit into the flash chip")
                          .arg(configurationSize)
                          .arg(MaximumConfiguration));
    }
    const qint64 expected = HeaderSize + static_cast<qint64>(firmwareSize) + configurationSize;
    if (file.size() != expected) {
        return refuse(QStringLiteral("%1: %2 bytes, its header says %3")
                          .arg(file.size() < expected ? QStringLiteral("is truncated")
                                                      : QStringLiteral("has bytes after its end"))
                          .arg(file.size())
                          .arg(expected));
    }
    found.firmware = file.mid(HeaderSize, static_cast<int>(firmwareSize));
    found.configuration = file.mid(HeaderSize + static_cast<int>(firmwareSize));
    if (digest(found.firmware) != file.mid(FirmwareDigestAt, DigestSize)) {
        return refuse(QStringLiteral("is damaged: the digest of the firmware does not match"));
    }
    if (digest(found.configuration) != file.mid(ConfigurationDigestAt, DigestSize)) {
        return refuse(QStringLiteral("is damaged: the digest of the configuration does not match"));
    }
    *image = found;
    return true;
}

bool FirmwareImage::read(const QString &path, FirmwareImage *image, QString *reason, std::int64_t limit)
{
    QByteArray file;
    if (!readFile(path, MaximumFile, &file, reason)) {
        return false;
    }
    return decode(file.left(static_cast<int>(std::min<std::int64_t>(limit, MaximumFile))), image, reason);
}

} // namespace bench
