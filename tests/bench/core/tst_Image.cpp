// SPDX-License-Identifier: MIT
#include "bench/core/Image.h"

#include "bench/core/Files.h"
#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <zlib.h>

#include <filesystem>

using namespace bench;
using namespace std::string_literals;

/// Firmware images: what is written is read, anything else is refused with its reason.
class tst_Image : public QObject
{
    Q_OBJECT

private slots:
    void whatIsWrittenIsRead();
    void refusesAFile();
    void refusesAHeader();
    void noticesEachChangedByte();
    void theHeaderIsReadAlone();
    void theBenchsOwnCountsFirst();

private:
    std::string reading(const std::string &content, std::size_t limit = Image::MaximumFile);

    QTemporaryDir directory;
};

namespace {

const std::string Magic("TFW2\r\n\x1a\n", 8);

/// An image with that header and ten bytes of content.
std::string imageWith(const std::string &header)
{
    const std::string file = Magic + header + "\n0123456789";
    const auto checksum = ::crc32(0, reinterpret_cast<const Bytef *>(file.data()), uInt(file.size()));
    return file + QByteArray::number(quint32(checksum), 16).rightJustified(8, '0').toStdString();
}

std::string valid()
{
    return imageWith(R"({"bridge": 1, "firmware": "1", "configuration": "2", "length": 10})");
}

} // namespace

/// Why a file with that content is refused.
std::string tst_Image::reading(const std::string &content, std::size_t limit)
{
    const std::string path = directory.filePath("image").toStdString();
    writeFile(path, content);
    return refusal([&] { readImage(path, limit); });
}

void tst_Image::whatIsWrittenIsRead()
{
    const std::string path = directory.filePath("image").toStdString();
    for (const Model &model : models()) {
        const std::string file = imageFile(model, "\u00E91.0", model.newestConfiguration);
        QCOMPARE(imageFile(model, "\u00E91.0", model.newestConfiguration), file);
        writeFile(path, file);
        const Image image = readImage(path);
        QCOMPARE(image.bridge, std::int64_t(model.chipset));
        QCOMPARE(image.firmware, "\u00E91.0"s);
        QCOMPARE(image.configuration, std::string(model.newestConfiguration));
        QVERIFY(image.length > 40000 && image.length < std::int64_t(file.size()));
    }
    const Model &model = models().front();
    QVERIFY(imageFile(model, "1", "2").substr(200, 1000) != imageFile(model, "1", "3").substr(200, 1000));
}

void tst_Image::refusesAFile()
{
    const std::string whole = valid();
    const std::string size = std::to_string(whole.size());
    std::string damaged = whole;
    damaged[whole.size() - 12] ^= 1;
    const std::pair<std::string, std::string> reasons[] = {{whole, ""}, {"", "is empty"},
        {"PK\3\4", "is not a firmware image: it does not begin with \"TFW2\""},
        {"TFW2\n\x1a\n" + whole.substr(8), "is not a firmware image: it does not begin with \"TFW2\""},
        {"TFW", "is truncated in its header"}, {whole.substr(0, 30), "is truncated in its header"},
        {Magic + std::string(2000, ' '), "has no valid header"},
        {whole.substr(0, whole.size() - 1),
            "is truncated: " + std::to_string(whole.size() - 1) + " bytes, its header says " + size},
        {whole + "x",
            "has bytes after its end: " + std::to_string(whole.size() + 1) + " bytes, its header says "
                + size},
        {damaged, "is damaged: its checksum does not match"},
        {std::string(Image::MaximumFile + 1, 'x'), "is too large, more than 163840 bytes"}};
    for (const auto &[content, reason] : reasons) {
        QCOMPARE(reading(content), reason);
    }
}

void tst_Image::refusesAHeader()
{
    const auto with = [](const char *member, const Json &value) {
        Json header{{"bridge", 1}, {"firmware", "1"}, {"configuration", "2"}, {"length", 10}};
        header[member] = value;
        return header.dump();
    };
    const std::pair<std::string, std::string> reasons[] = {{"", "has no valid header"},
        {"[]", "has no valid header"}, {"{\"bridge\": 1", "has no valid header"},
        {with("colour", 1), "has no valid header: /colour: is not a known member"},
        {with("bridge", "1"), "has no valid header: /bridge: must be a whole number"},
        {with("bridge", 0), "is for an unknown bridge, code 0"},
        {with("bridge", 4), "is for an unknown bridge, code 4"},
        {with("bridge", 4294967297), "is for an unknown bridge, code 4294967297"},
        {with("firmware", ""), "has no valid versions"},
        {with("firmware", "\u0100"), "has no valid versions"},
        {with("configuration", std::string(33, '1')), "has no valid versions"},
        {with("configuration", std::string(32, '1')), ""}, {with("length", 0), "has no valid length, 0"},
        {with("length", 163841), "has no valid length, 163841"}};
    for (const auto &[header, reason] : reasons) {
        const std::string refused = reading(imageWith(header));
        QCOMPARE(refused.substr(0, reason.empty() ? refused.size() : reason.size()), reason);
    }
}

void tst_Image::noticesEachChangedByte()
{
    const std::string whole = valid();
    for (std::size_t i = 0; i < whole.size(); ++i) {
        std::string damaged = whole;
        damaged[i] ^= 4;
        QVERIFY2(!reading(damaged).empty(), std::to_string(i).c_str());
        QVERIFY2(
            contains(reading(whole, i), i == 0 ? "is empty" : "is truncated"), std::to_string(i).c_str());
    }
}

void tst_Image::theHeaderIsReadAlone()
{
    const std::string path = directory.filePath("image").toStdString();
    const std::string whole = imageFile(modelNamed("Skiff"), "7.1", "8");
    writeFile(path, whole.substr(0, 200));
    QCOMPARE(readImageHeader(path).firmware, "7.1"s);
    QCOMPARE(refusal([&] { readImage(path); }).substr(0, 13), "is truncated:"s);
    writeFile(path, "x");
    QCOMPARE(refusal([&] { readImageHeader(path); }).substr(0, 23), "is not a firmware image"s);
    QCOMPARE(refusal([] { readImageHeader("/nowhere/x"); }), "No such file or directory"s);
}

void tst_Image::theBenchsOwnCountsFirst()
{
    const std::string bench = directory.path().toStdString();
    QCOMPARE(imagePath(bench, "/lib/a.tfw"), "/lib/a.tfw"s);
    std::filesystem::create_directory(bench + "/images");
    QCOMPARE(imagePath(bench, "/lib/a.tfw"), "/lib/a.tfw"s);
    writeFile(bench + "/images/a.tfw", "");
    QCOMPARE(imagePath(bench, "/lib/a.tfw"), bench + "/images/a.tfw");
    QCOMPARE(imagePath(bench, "a.tfw"), bench + "/images/a.tfw");
}

static const TestClass<tst_Image> imageTests;
#include "tst_Image.moc"
