#include "bench/core/Files.h"
#include "bench/core/FirmwareImage.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/bench/core/CoreTest.h"

#include <filesystem>

#include <sys/stat.h>

using namespace bench;

class tst_FirmwareImage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void comesBackAsItWas();
    void isTheSameForTheSameModelAndVersions();
    void fitsIntoItsChip();
    void refusesEveryTruncation();
    void refusesEveryChangedByte();
    void refusesHeaderFields_data();
    void refusesHeaderFields();
    void aVersionFillsItsField();
    void refusesFiles_data();
    void refusesFiles();
    void readsAtMostTheLimit();
    void readsTheHeaderAlone();

private:
    FirmwareImage image;
    std::string file;
};

void tst_FirmwareImage::init()
{
    image = FirmwareImage::forModel(*findModel("Pebble"), "2.14", "5");
    image.firmware.resize(700);
    image.configuration.resize(90);
    file = image.encode();
}

void tst_FirmwareImage::comesBackAsItWas()
{
    const FirmwareImage read = FirmwareImage::decode(file);
    QCOMPARE(read.bridge, Chipset::Asm1051);
    QCOMPARE(read.firmwareVersion, "2.14"s);
    QCOMPARE(read.configurationRevision, "5"s);
    QCOMPARE(read.firmware, image.firmware);
    QCOMPARE(read.configuration, image.configuration);
}

void tst_FirmwareImage::isTheSameForTheSameModelAndVersions()
{
    const Model &model = *findModel("Breakwater");
    const FirmwareImage made = FirmwareImage::forModel(model, "1", "2");
    QCOMPARE(FirmwareImage::forModel(model, "1", "2").encode(), made.encode());
    QVERIFY(FirmwareImage::forModel(model, "2", "2").firmware != made.firmware);
    QVERIFY(FirmwareImage::forModel(model, "2", "2").configuration == made.configuration);
    QVERIFY(FirmwareImage::forModel(model, "1", "3").configuration != made.configuration);
    QVERIFY(FirmwareImage::forModel(*findModel("Harbour"), "1", "2").firmware != made.firmware);
}

void tst_FirmwareImage::fitsIntoItsChip()
{
    for (const Model &model : models()) {
        const FirmwareImage made = FirmwareImage::forModel(model, "1", "2");
        QCOMPARE(made.bridge, model.chipset);
        QCOMPARE(FirmwareImage::decode(made.encode()).encode(), made.encode());
    }
    image.firmware.assign(FirmwareImage::MaximumFirmware, 'f');
    image.configuration.assign(FirmwareImage::MaximumConfiguration, 'c');
    QCOMPARE(FirmwareImage::decode(image.encode()).firmware, image.firmware);
    QVERIFY(image.encode().size() <= FirmwareImage::MaximumFile);
    image.firmware += 'f';
    QCOMPARE(refusal([&] { FirmwareImage::decode(image.encode()); }),
        "has a firmware of 122625 bytes; 1 to 122624 fit into the flash chip"s);
}

void tst_FirmwareImage::refusesEveryTruncation()
{
    for (std::size_t length = 0; length < file.size(); ++length) {
        const std::string reason = refusal([&] { FirmwareImage::decode(file.substr(0, length)); });
        QVERIFY2(!reason.empty() && reason.find('\n') == std::string::npos, reason.c_str());
        QVERIFY2(length < 8 || reason.rfind("is truncated: " + std::to_string(length) + " bytes, ", 0) == 0,
            reason.c_str());
    }
    QCOMPARE(refusal([&] { FirmwareImage::decode(""); }), "is empty"s);
    QCOMPARE(refusal([&] { FirmwareImage::decode(file + 'x'); }),
        "has bytes after its end: 943 bytes, its header says 942"s);
}

void tst_FirmwareImage::refusesEveryChangedByte()
{
    for (std::size_t position = 0; position < file.size(); ++position) {
        // A changed version is still a version: nothing but the payloads is signed.
        const bool isInTexts = position >= 16 && position < 80;
        // Another bridge that exists may come out of one bit.
        const bool isInBridge = position == 12;
        if (isInTexts || isInBridge) {
            continue;
        }
        std::string changed = file;
        changed[position] = static_cast<char>(changed[position] ^ 0x10);
        const std::string reason = refusal([&] { FirmwareImage::decode(changed); });
        QVERIFY2(!reason.empty(), std::to_string(position).c_str());
    }
}

void tst_FirmwareImage::refusesHeaderFields_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<std::string>("bytes");
    QTest::addColumn<std::string>("reason");
    const auto row = [](const char *name, int position, const std::string &bytes, const char *reason) {
        QTest::newRow(name) << position << bytes << std::string(reason);
    };
    row("magic", 0, "PK", "is not a firmware image: it does not begin with \"TFW1\"");
    row("format version", 8, "\2", "has format version 2, only 1 is known");
    row("bridge none", 12, std::string(1, '\0'), "is for an unknown bridge, code 0");
    row("bridge without an updater", 12, "\4", "is for an unknown bridge, code 4");
    row("bridge unknown", 12, "\7", "is for an unknown bridge, code 7");
    row("bridge negative", 12, "\xff\xff\xff\xff", "is for an unknown bridge, code -1");
    row("no firmware version", 16, std::string(32, '\0'), "has no valid firmware version");
    row("bytes after the version", 30, "x", "has no valid firmware version");
    row("bytes at the end of its field", 47, "x", "has no valid firmware version");
    row("no revision", 48, std::string(32, '\0'), "has no valid configuration revision");
    row("no firmware", 80, std::string(4, '\0'),
        "has a firmware of 0 bytes; 1 to 122624 fit into the flash chip");
    row("huge firmware", 80, "\xff\xff\xff\xff",
        "has a firmware of 4294967295 bytes; 1 to 122624 fit into the flash chip");
    row("no configuration", 84, std::string(4, '\0'),
        "has a configuration of 0 bytes; 1 to 7936 fit into the flash chip");
    row("huge configuration", 84, "\xff\xff\xff\x7f",
        "has a configuration of 2147483647 bytes; 1 to 7936 fit into the flash chip");
    row("firmware digest", 88, std::string(32, 'x'), "is damaged: the digest of the firmware does not match");
    row("configuration digest", 120, std::string(32, 'x'),
        "is damaged: the digest of the configuration does not match");
}

void tst_FirmwareImage::refusesHeaderFields()
{
    QFETCH(int, position);
    QFETCH(std::string, bytes);
    QFETCH(std::string, reason);
    file.replace(static_cast<std::size_t>(position), bytes.size(), bytes);
    QCOMPARE(refusal([&] { FirmwareImage::decode(file); }), reason);
}

void tst_FirmwareImage::aVersionFillsItsField()
{
    image.firmwareVersion.assign(FirmwareImage::MaximumText, '\xe9');
    image.configurationRevision.assign(FirmwareImage::MaximumText + 1, '7');
    const FirmwareImage read = FirmwareImage::decode(image.encode());
    QCOMPARE(read.firmwareVersion, image.firmwareVersion);
    QCOMPARE(read.configurationRevision, std::string(FirmwareImage::MaximumText, '7'));
}

void tst_FirmwareImage::refusesFiles_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<std::string>("reason");
    QTest::newRow("missing") << "missing"
                             << "No such file or directory"s;
    QTest::newRow("directory") << "directory"
                               << "is a directory"s;
    QTest::newRow("FIFO") << "fifo"
                          << "is not a regular file"s;
    QTest::newRow("empty") << "empty"
                           << "is empty"s;
    QTest::newRow("1 GiB") << "large"
                           << "is too large: 1073741824 bytes, at most 163840 are read"s;
}

void tst_FirmwareImage::refusesFiles()
{
    QFETCH(QString, kind);
    QFETCH(std::string, reason);
    const QTemporaryDir directory;
    const std::string path = directory.filePath("image.tfw").toStdString();
    if (kind == "directory") {
        QVERIFY(std::filesystem::create_directory(path));
    } else if (kind == "fifo") {
        QCOMPARE(::mkfifo(path.c_str(), 0600), 0);
    } else if (kind != "missing") {
        writeFile(path, "");
        std::filesystem::resize_file(path, kind == "large" ? 1U << 30 : 0);
    }
    QCOMPARE(refusal([&] { FirmwareImage::read(path); }), reason);
    const std::string header = refusal([&] { FirmwareImage::readHeader(path); });
    // A header of zeros is refused for what it holds.
    QCOMPARE(header, kind == "large" ? "is not a firmware image: it does not begin with \"TFW1\""s : reason);
}

void tst_FirmwareImage::readsAtMostTheLimit()
{
    const QTemporaryDir directory;
    const std::string path = directory.filePath("image.tfw").toStdString();
    writeFile(path, file);
    QCOMPARE(FirmwareImage::read(path).encode(), file);
    QCOMPARE(FirmwareImage::read(path, file.size()).encode(), file);
    QCOMPARE(
        refusal([&] { FirmwareImage::read(path, 300); }), "is truncated: 300 bytes, its header says 942"s);
}

void tst_FirmwareImage::readsTheHeaderAlone()
{
    const QTemporaryDir directory;
    const std::string path = directory.filePath("image.tfw").toStdString();
    std::string damaged = file;
    damaged.back() = static_cast<char>(~damaged.back()); // which the header does not know
    writeFile(path, damaged);
    const FirmwareImage header = FirmwareImage::readHeader(path);
    QCOMPARE(header.firmwareVersion, "2.14"s);
    QCOMPARE(header.configurationRevision, "5"s);
    QCOMPARE(header.bridge, Chipset::Asm1051);
    QCOMPARE(header.firmware + header.configuration, ""s);
    writeFile(path, file.substr(0, file.size() - 1));
    QCOMPARE(
        refusal([&] { FirmwareImage::readHeader(path); }), "is truncated: 941 bytes, its header says 942"s);
}

static const TestClass<tst_FirmwareImage> firmwareImageTests;

#include "tst_FirmwareImage.moc"
