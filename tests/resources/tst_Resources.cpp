// SPDX-License-Identifier: MIT
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
    void iconFilesAreWhole();
    void onlyTheIconFilesAreCompressed();
    void collectionHasFormatVersionOne();
    void collectionHasNoLocaleVariants();
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
    QCOMPARE(QDir(root).entryList(QDir::Files, QDir::Name),
        (QStringList{"Error.png", "Ok.png", "TarvoLogo.icns", "TarvoLogo.ico", "TarvoLogo.png", "Update.png",
            "Warning.png"}));
    QCOMPARE(QDir(root).entryList(QDir::Dirs), QStringList{"device"});
    QCOMPARE(QDir(root + "device").entryList(QDir::Files), QStringList{"UnknownDevice.png"});
    QCOMPARE(QDir(root + "device").entryList(QDir::Dirs, QDir::Name), (QStringList{"0x0E7A", "0xC5E2"}));
    QCOMPARE(QDir(usbFolder).entryList({"*.png"}).size(), 16);
    QCOMPARE(QDir(fireWireFolder).entryList({"*.png"}).size(), 5);
    QCOMPARE(filesOfCollection().size(), 29);
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
    for (const QString &path : filesOfCollection().filter(".png")) {
        QTest::newRow(qPrintable(path)) << path;
    }
}

void tst_Resources::picture()
{
    QFETCH(QString, path);
    static const QHash<QString, QSize> sizes{{"TarvoLogo.png", {32, 32}}, {"Warning.png", {256, 256}},
        {"device/UnknownDevice.png", {48, 64}}, {"device/0x0E7A/1A24.png", {512, 512}},
        {"device/0x0E7A/1A2B.png", {512, 512}}, {"device/0x0E7A/1A46.png", {512, 512}},
        {"device/0xC5E2/Bollard Duo (FireWire 800).png", {512, 512}}};
    const QSize size = sizes.value(path.mid(root.size()), {48, 48});
    QCOMPARE(QImageReader(path).format(), QByteArray("png"));
    const QImage image(path);
    QCOMPARE(image.size(), size);
    // Drawn on nothing: the corners are clear, so that the white of the page shows.
    QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
    QCOMPARE(qAlpha(image.pixel(size.width() - 1, size.height() - 1)), 0);
    QCOMPARE(qAlpha(image.pixel(size.width() / 2, size.height() / 2)), 255);
}

void tst_Resources::iconFilesAreWhole()
{
    const QByteArray windows = content(root + "TarvoLogo.ico");
    QCOMPARE(windows.left(6), QByteArray("\0\0\1\0\x09\0", 6));
    const char *lastEntry = windows.constData() + 6 + 8 * 16;
    QCOMPARE(qFromLittleEndian<quint32>(lastEntry + 8) + qFromLittleEndian<quint32>(lastEntry + 12),
        quint32(windows.size()));
    const QByteArray apple = content(root + "TarvoLogo.icns");
    QVERIFY(apple.startsWith("icns"));
    QCOMPARE(qFromBigEndian<quint32>(apple.constData() + 4), quint32(apple.size()));
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
    for (const QString &path : filesOfCollection()) {
        for (const QLocale::Language language : {QLocale::English, QLocale::French, QLocale::Japanese}) {
            QCOMPARE(QResource(path, QLocale(language)).data(), QResource(path, QLocale::c()).data());
        }
    }
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
