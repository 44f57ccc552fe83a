#include "tests/support/TestProgram.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <QLocale>
#include <QPixmap>
#include <QProcess>
#include <QResource>
#include <QSet>
#include <QTest>
#include <QtEndian>

#include <cstdio>
#include <cstdlib>

int qInitResources_TarvoFirmwareUpdater();
int qCleanupResources_TarvoFirmwareUpdater();

namespace {

const QString root = QStringLiteral(":/firmwareUpdater/");
const QString usbFolder = QStringLiteral(":/firmwareUpdater/device/0x0E7A/");
const QString fireWireFolder = QStringLiteral(":/firmwareUpdater/device/0xC5E2/");

struct Picture
{
    const char *path; // below root
    int width;
    int height;
};

const Picture pictures[] = {
    {"TarvoLogo.png", 32, 32},
    {"Ok.png", 48, 48},
    {"Update.png", 48, 48},
    {"Warning.png", 256, 256},
    {"Error.png", 48, 48},
    {"device/UnknownDevice.png", 48, 64},
    {"device/0x0E7A/1A20.png", 48, 48},
    {"device/0x0E7A/1A21.png", 48, 48},
    {"device/0x0E7A/1A24.png", 512, 512},
    {"device/0x0E7A/1A27.png", 48, 48},
    {"device/0x0E7A/1A28.png", 48, 48},
    {"device/0x0E7A/1A2B.png", 512, 512},
    {"device/0x0E7A/1A2E.png", 48, 48},
    {"device/0x0E7A/1A2F.png", 48, 48},
    {"device/0x0E7A/1A33.png", 48, 48},
    {"device/0x0E7A/1A35.png", 48, 48},
    {"device/0x0E7A/1A38.png", 48, 48},
    {"device/0x0E7A/1A3C.png", 48, 48},
    {"device/0x0E7A/1A3D.png", 48, 48},
    {"device/0x0E7A/1A41.png", 48, 48},
    {"device/0x0E7A/1A46.png", 512, 512},
    {"device/0x0E7A/1A4D.png", 48, 48},
    {"device/0xC5E2/Pebble Triple.png", 48, 48},
    {"device/0xC5E2/Harbour FireWire.png", 48, 48},
    {"device/0xC5E2/Harbour (FireWire 800).png", 48, 48},
    {"device/0xC5E2/Bollard Duo (FireWire 800).png", 512, 512},
    {"device/0xC5E2/breakwater Mk II.png", 48, 48},
};

const char *const iconFiles[] = {"TarvoLogo.ico", "TarvoLogo.icns"};

QStringList filesOfCollection()
{
    QStringList files;
    QDirIterator iterator(":/firmwareUpdater", QDir::Files, QDirIterator::Subdirectories);
    while (iterator.hasNext()) {
        files << iterator.next();
    }
    files.sort();
    return files;
}

QByteArray content(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool isRegistered()
{
    return QResource(":/firmwareUpdater").isValid();
}

bool registeredBeforeMain = false;

/// Runs before the collection registers itself, so what it asks for runs after the collection's own end.
__attribute__((constructor(101))) void reportAtExit()
{
    if (qEnvironmentVariableIsSet("REPORT_AT_EXIT")) {
        isRegistered(); // Qt's list of collections is made by its first use, so it now ends later
        std::atexit([] { std::puts(isRegistered() ? "still registered" : "unregistered"); });
    }
}

} // namespace

class tst_Resources : public QObject
{
    Q_OBJECT

public:
    static void initMain();

private slots:
    void initTestCase();
    void collectionIsRegisteredBeforeMain();
    void collectionIsUnregisteredAtExit();
    void registeringAndUnregisteringReturnOne();
    void collectionHoldsTheseFilesAndNoOthers();
    void eachFileIsTheOneOfItsName();
    void picture_data();
    void picture();
    void windowsIconHoldsNineImages();
    void appleIconHoldsItsImages();
    void onlyTheIconFilesAreCompressed();
    void collectionHasFormatVersionOne();
    void collectionHasNoLocaleVariants();
    void collectionIsSmall();
    void severalModelsShareOneImage();
    void fireWireNameThatDiffersInLetterCaseIsNotFound();
    void usbNameIsAlwaysFourUpperCaseDigits();
};

// Nothing in the program has called anything by then.
void tst_Resources::initMain()
{
    registeredBeforeMain = isRegistered();
}

// The pictures are shown by a program that loads no plug-ins for images.
void tst_Resources::initTestCase()
{
    QCoreApplication::setLibraryPaths({});
    QVERIFY(!QImageReader::supportedImageFormats().contains("ico"));
}

// Neither this test nor the program registers the collection by a call.
void tst_Resources::collectionIsRegisteredBeforeMain()
{
    QVERIFY(registeredBeforeMain);
}

void tst_Resources::collectionIsUnregisteredAtExit()
{
    QProcess process;
    process.setEnvironment(QProcess::systemEnvironment() + QStringList{"REPORT_AT_EXIT=1"});
    process.start(
        QCoreApplication::applicationFilePath(), {"tst_Resources", "collectionIsRegisteredBeforeMain"});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    QVERIFY(process.readAllStandardOutput().endsWith("\nunregistered\n"));
}

void tst_Resources::registeringAndUnregisteringReturnOne()
{
    QCOMPARE(qCleanupResources_TarvoFirmwareUpdater(), 1);
    QVERIFY(!isRegistered());
    QCOMPARE(qInitResources_TarvoFirmwareUpdater(), 1);
    QVERIFY(isRegistered());
}

void tst_Resources::collectionHoldsTheseFilesAndNoOthers()
{
    QStringList expected;
    for (const Picture &entry : pictures) {
        expected << root + entry.path;
    }
    for (const char *icon : iconFiles) {
        expected << root + icon;
    }
    expected.sort();
    QCOMPARE(filesOfCollection(), expected);

    QStringList folders;
    QDirIterator iterator(
        ":/firmwareUpdater", QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (iterator.hasNext()) {
        folders << iterator.next();
    }
    folders.sort();
    QCOMPARE(folders, QStringList({root + "device", root + "device/0x0E7A", root + "device/0xC5E2"}));
}

void tst_Resources::eachFileIsTheOneOfItsName()
{
    for (const QString &path : filesOfCollection()) {
        const QByteArray file = content(RESOURCES "/" + path.mid(root.size()));
        QVERIFY2(!file.isEmpty() && content(path) == file, qPrintable(path));
    }
    // The pictures of what the program says, as against those of the drives, are all different.
    QSet<QByteArray> contents;
    for (const char *name : {"TarvoLogo", "Ok", "Update", "Warning", "Error", "device/UnknownDevice"}) {
        contents.insert(content(root + name + ".png"));
    }
    QCOMPARE(int(contents.size()), 6);
}

void tst_Resources::picture_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QSize>("size");
    for (const Picture &entry : pictures) {
        QTest::newRow(entry.path) << root + entry.path << QSize(entry.width, entry.height);
    }
}

void tst_Resources::picture()
{
    QFETCH(QString, path);
    QFETCH(QSize, size);

    QCOMPARE(QImageReader(path).format(), QByteArray("png"));
    const QImage image(path);
    QCOMPARE(image.size(), size);
    QCOMPARE(QPixmap(path).size(), size);

    // Drawn on nothing: the corners are clear, so that the white of the page shows.
    QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
    QCOMPARE(qAlpha(image.pixel(size.width() - 1, size.height() - 1)), 0);
    QCOMPARE(qAlpha(image.pixel(size.width() / 2, size.height() / 2)), 255);

    // No chunk but those that make the picture.
    const QByteArray png = content(path);
    const QList<QByteArray> needed = {"IHDR", "PLTE", "tRNS", "IDAT", "IEND"};
    for (int offset = 8; offset < png.size();) {
        const QByteArray type = png.mid(offset + 4, 4);
        QVERIFY2(needed.contains(type), type.constData());
        offset += 12 + int(qFromBigEndian<quint32>(png.constData() + offset));
    }
}

void tst_Resources::windowsIconHoldsNineImages()
{
    const QByteArray icon = content(root + "TarvoLogo.ico");
    QCOMPARE(icon.left(4), QByteArray("\0\0\1\0", 4));
    QCOMPARE(int(qFromLittleEndian<quint16>(icon.constData() + 4)), 9);

    QList<int> sizes;
    int end = 6 + 9 * 16;
    for (int index = 0; index < 9; ++index) {
        const char *entry = icon.constData() + 6 + index * 16;
        const int length = int(qFromLittleEndian<quint32>(entry + 8));
        QCOMPARE(int(qFromLittleEndian<quint32>(entry + 12)), end);
        const QByteArray data = icon.mid(end, length);
        end += length;

        const int size = entry[0] == 0 ? 256 : uchar(entry[0]);
        if (data.startsWith("\x89PNG")) {
            QCOMPARE(QImage::fromData(data, "PNG").size(), QSize(size, size));
        } else {
            // Header of 40 bytes, then four bytes a pixel and a mask of one bit a pixel in rows of whole
            // words.
            QCOMPARE(int(qFromLittleEndian<quint32>(data.constData() + 4)), size);
            QCOMPARE(int(qFromLittleEndian<quint32>(data.constData() + 8)), 2 * size);
            QCOMPARE(int(qFromLittleEndian<quint16>(data.constData() + 14)), 32);
            QCOMPARE(length, 40 + size * size * 4 + size * ((size + 31) / 32 * 4));
        }
        sizes << size;
    }
    QCOMPARE(end, int(icon.size()));
    QCOMPARE(sizes, QList<int>({16, 20, 24, 32, 40, 48, 64, 128, 256}));
}

void tst_Resources::appleIconHoldsItsImages()
{
    const QByteArray icon = content(root + "TarvoLogo.icns");
    QVERIFY(icon.startsWith("icns"));
    QCOMPARE(int(qFromBigEndian<quint32>(icon.constData() + 4)), int(icon.size()));

    QStringList images;
    for (int offset = 8; offset < icon.size();) {
        const int length = int(qFromBigEndian<quint32>(icon.constData() + offset + 4));
        QVERIFY(length > 8);
        const QString type = QString::fromLatin1(icon.mid(offset, 4));
        const QByteArray data = icon.mid(offset + 8, length - 8);
        if (data.startsWith("\x89PNG")) {
            images << type + ' ' + QString::number(QImage::fromData(data, "PNG").width());
        } else {
            images << type;
        }
        offset += length;
    }
    QCOMPARE(images,
        QStringList({"is32", "s8mk", "il32", "l8mk", "ic11 32", "ic12 64", "ic07 128", "ic13 256", "ic08 256",
            "ic14 512", "ic09 512"}));
}

void tst_Resources::onlyTheIconFilesAreCompressed()
{
    QStringList compressed;
    for (const QString &path : filesOfCollection()) {
        const QResource::Compression compression = QResource(path).compressionAlgorithm();
        if (compression == QResource::ZlibCompression) {
            compressed << path;
        } else {
            QVERIFY2(compression == QResource::NoCompression, qPrintable(path));
        }
    }
    QCOMPARE(compressed, QStringList({root + "TarvoLogo.icns", root + "TarvoLogo.ico"}));
}

// Later versions record when a file was changed.
void tst_Resources::collectionHasFormatVersionOne()
{
    for (const QString &path : filesOfCollection()) {
        QVERIFY2(!QResource(path).lastModified().isValid(), qPrintable(path));
    }
}

void tst_Resources::collectionHasNoLocaleVariants()
{
    const QLocale locales[] = {QLocale(QLocale::English, QLocale::UnitedStates),
        QLocale(QLocale::French, QLocale::France), QLocale(QLocale::Japanese, QLocale::Japan)};
    for (const QString &path : filesOfCollection()) {
        for (const QLocale &locale : locales) {
            QCOMPARE(QResource(path, locale).data(), QResource(path, QLocale::c()).data());
        }
    }
}

void tst_Resources::collectionIsSmall()
{
    qint64 bytes = 0;
    for (const QString &path : filesOfCollection()) {
        bytes += QFileInfo(path).size();
    }
    QVERIFY2(bytes < 400 * 1024, qPrintable(QString::number(bytes)));
}

void tst_Resources::severalModelsShareOneImage()
{
    QCOMPARE(content(usbFolder + "1A20.png"), content(usbFolder + "1A21.png"));
    QCOMPARE(content(fireWireFolder + "Harbour FireWire.png"),
        content(fireWireFolder + "Harbour (FireWire 800).png"));
    QVERIFY(content(usbFolder + "1A20.png") != content(fireWireFolder + "Pebble Triple.png"));
}

void tst_Resources::fireWireNameThatDiffersInLetterCaseIsNotFound()
{
    QVERIFY(QFile::exists(fireWireFolder + "breakwater Mk II.png"));
    QVERIFY(!QFile::exists(fireWireFolder + "Breakwater Mk II.png"));
    QVERIFY(!QFile::exists(fireWireFolder + "breakwater mk ii.png"));
    QVERIFY(QPixmap(fireWireFolder + "Breakwater Mk II.png").isNull());
}

void tst_Resources::usbNameIsAlwaysFourUpperCaseDigits()
{
    QVERIFY(QFile::exists(usbFolder + "1A2B.png"));
    QVERIFY(!QFile::exists(usbFolder + "1a2b.png"));
    // Leading zeros make an ID below 0x1000 four digits long, and no more than that are ever needed.
    for (const QFileInfo &file : QDir(usbFolder).entryInfoList()) {
        const uint productId = file.completeBaseName().toUInt(nullptr, 16);
        QCOMPARE(file.fileName(), QString::asprintf("%04X.png", productId));
    }
}

static const TestClass<tst_Resources, QGuiApplication> resourcesTests;
#include "tst_Resources.moc"
