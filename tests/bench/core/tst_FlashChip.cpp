#include "bench/core/FirmwareImage.h"
#include "bench/core/FlashChip.h"
#include "tests/bench/core/CoreTest.h"

using namespace bench;

Q_DECLARE_METATYPE(bench::FlashChip)

class tst_FlashChip : public QObject
{
    Q_OBJECT

private slots:
    void isBlankWithoutContent();
    void keepsItsContent();
    void programmingOnlyClearsBits();
    void erasesOneSector();
    void isIncompleteUntilItIsDescribed();
    void holdsAVersion_data();
    void holdsAVersion();
};

namespace {

FlashChip loaded()
{
    FlashChip chip;
    chip.load(FirmwareImage::forModel(*findModel("Lamina"), "3.20", "6"));
    return chip;
}

/// A chip that holds an image, with these bytes put into the content.
FlashChip changed(std::size_t position, const std::string &bytes)
{
    std::string content = loaded().content();
    return FlashChip(content.replace(position, bytes.size(), bytes));
}

} // namespace

void tst_FlashChip::isBlankWithoutContent()
{
    for (const FlashChip &chip : {FlashChip(), FlashChip("")}) {
        QCOMPARE(chip.content(), std::string(FlashChip::Size, '\xff'));
        QCOMPARE(chip.version(FlashChip::Firmware), ""s);
        QCOMPARE(chip.version(FlashChip::Configuration), ""s);
    }
}

void tst_FlashChip::keepsItsContent()
{
    const FlashChip chip("abc");
    QCOMPARE(chip.content().substr(0, 4), "abc\xff"s);
    QCOMPARE(chip.content().size(), FlashChip::Size);
    QCOMPARE(FlashChip(std::string(FlashChip::Size + 1, 'x')).content().size(), FlashChip::Size);
    QCOMPARE(FlashChip(loaded().content()).version(FlashChip::Firmware), "3.20"s);
}

void tst_FlashChip::programmingOnlyClearsBits()
{
    FlashChip chip;
    chip.program(FlashChip::PageSize, "\xf0");
    chip.program(FlashChip::PageSize, "\x3c");
    chip.program(FlashChip::Size - 2, "ab");
    std::string expected(FlashChip::Size - 2, '\xff');
    expected[FlashChip::PageSize] = '\x30';
    QCOMPARE(chip.content(), expected + "ab");
}

void tst_FlashChip::erasesOneSector()
{
    FlashChip chip(std::string(FlashChip::Size, '\0'));
    chip.eraseSector(1);
    QCOMPARE(chip.content(),
        std::string(FlashChip::SectorSize, '\0') + std::string(FlashChip::SectorSize, '\xff')
            + std::string(FlashChip::Size - 2 * FlashChip::SectorSize, '\0'));
}

void tst_FlashChip::isIncompleteUntilItIsDescribed()
{
    const FirmwareImage image = FirmwareImage::forModel(*findModel("Lamina"), "3.20", "6");
    FlashChip chip;
    for (const FlashChip::Part &part : FlashChip::parts(image)) {
        for (std::size_t done = 0; done < part.payload.size(); done += FlashChip::PageSize) {
            chip.program(part.payloadStart() + done, part.payload.substr(done, FlashChip::PageSize));
            QCOMPARE(chip.version(part.region), ""s);
        }
        chip.program(part.region.start, part.descriptor());
        QCOMPARE(chip.version(part.region), part.version);
    }
    QCOMPARE(chip.version(FlashChip::Firmware) + ' ' + chip.version(FlashChip::Configuration), "3.20 6"s);
    QCOMPARE(chip.content(), loaded().content());
}

void tst_FlashChip::holdsAVersion_data()
{
    QTest::addColumn<FlashChip>("chip");
    QTest::addColumn<std::string>("firmware");
    QTest::addColumn<std::string>("configuration");
    const std::size_t upper = FlashChip::Configuration.start;
    QTest::newRow("whole") << loaded() << "3.20"s
                           << "6"s;
    QTest::newRow("mark of the firmware") << changed(0, "X") << ""s
                                          << "6"s;
    QTest::newRow("mark of the configuration") << changed(upper + 3, "X") << "3.20"s
                                               << ""s;
    QTest::newRow("size") << changed(4, "\1") << ""s
                          << "6"s;
    QTest::newRow("huge size") << changed(4, "\xff\xff\xff\xff") << ""s
                               << "6"s;
    QTest::newRow("digest") << changed(upper + 8, "X") << "3.20"s
                            << ""s;
    QTest::newRow("first byte of the payload") << changed(FlashChip::PageSize, std::string(1, '\0')) << ""s
                                               << "6"s;
    QTest::newRow("page of the payload")
        << changed(5 * FlashChip::PageSize, std::string(FlashChip::PageSize, '\0')) << ""s
        << "6"s;
    QTest::newRow("length of the version") << changed(40, "\x21") << ""s
                                           << "6"s;
    QTest::newRow("bytes behind the payload") << changed(upper - 1, "X") << "3.20"s
                                              << "6"s;
    FlashChip longest;
    FirmwareImage image = FirmwareImage::forModel(*findModel("Lamina"), "", "");
    image.firmwareVersion = everyByte().substr(0, FirmwareImage::MaximumText);
    image.configurationRevision.assign(FirmwareImage::MaximumText, '\xff');
    image.firmware.assign(FirmwareImage::MaximumFirmware, '\0');
    image.configuration.assign(FirmwareImage::MaximumConfiguration, '\0');
    longest.load(image);
    QTest::newRow("largest image") << longest << image.firmwareVersion << image.configurationRevision;
}

void tst_FlashChip::holdsAVersion()
{
    QFETCH(FlashChip, chip);
    QTEST(chip.version(FlashChip::Firmware), "firmware");
    QTEST(chip.version(FlashChip::Configuration), "configuration");
}

static const TestClass<tst_FlashChip> flashChipTests;

#include "tst_FlashChip.moc"
