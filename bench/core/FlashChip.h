#pragma once

#include <QByteArray>
#include <QString>

namespace bench {

struct FirmwareImage;

/**
 * The flash chip of a drive's bridge, as a file.
 *
 * A chip is erased by sectors, which sets every bit, and programmed by pages, which can only clear bits. Its
 * lower part holds the firmware, its upper part the configuration; each begins with a page that names the
 * version, the size and the digest of what follows. That page is programmed last, so a part is whole or it
 * is torn. Not for use by several threads at once; only one object at a time may hold the chip for writing.
 */
class FlashChip
{
public:
    static constexpr int PageSize = 256;
    static constexpr int SectorSize = 4096;
    static constexpr int Size = 128 * 1024;

    /// One part of the chip.
    struct Region
    {
        int start; ///< byte position, the beginning of a sector
        int size; ///< bytes, whole sectors
    };
    static constexpr Region Firmware = {0, 120 * 1024};
    static constexpr Region Configuration = {120 * 1024, 8 * 1024};

    enum Access { Read, Write };

    /// Opens the chip's file. For writing, a missing file becomes a blank chip, and the chip is held against
    /// other writers until the object goes.
    FlashChip(const QString &path, Access access);
    ~FlashChip();
    FlashChip(const FlashChip &) = delete;
    FlashChip &operator=(const FlashChip &) = delete;

    bool isOpen() const { return open; }
    /// Why it is not open, or why the last operation failed.
    QString reason() const { return whyNot; }

    bool eraseSector(int sector);
    /// Programs one page; `data` is at most PageSize bytes.
    bool programPage(int page, const QByteArray &data);
    QByteArray read(int position, int size);

    /// Makes a part whole: programs the page that describes what was programmed after it.
    bool describe(const Region &region, const QString &version, const QByteArray &payload);
    /// The version of what a part holds; empty when the part is blank or torn.
    QString version(const Region &region);

    /// Erases the chip and programs the whole image, in no time.
    bool load(const FirmwareImage &image);

private:
    bool fail(const QString &why);
    bool programPayload(const Region &region, const QByteArray &payload);

    int descriptor = -1;
    bool open = false;
    QString whyNot;
};

} // namespace bench
