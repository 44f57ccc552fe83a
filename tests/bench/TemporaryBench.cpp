#include "tests/bench/TemporaryBench.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QtTest>

using namespace bench;

TemporaryBench::TemporaryBench() : opened(std::make_unique<Bench>(folder(), imageFolder()))
{
    QString reason;
    if (!opened->create({}, false, &reason) || !makeFolder(imageFolder(), &reason)) {
        qFatal("%s", qPrintable(reason));
    }
    for (const Model &model : models()) {
        FirmwareImage image = FirmwareImage::forModel(model, model.newestFirmware, model.newestConfiguration);
        image.firmware.truncate(3000);
        image.configuration.truncate(500);
        if (!replaceFile(imageFolder() + '/' + model.imageName(), image.encode(), &reason)) {
            qFatal("%s", qPrintable(reason));
        }
    }
}

QString TemporaryBench::image(const QString &model) const
{
    return imageFolder() + '/' + findModel(model)->imageName();
}

void TemporaryBench::addOutdated(const QString &serial, const QString &model, std::int64_t rate)
{
    Drive drive;
    drive.serial = serial;
    drive.model = model;
    drive.chipset = findModel(model)->chipset;
    drive.flashRate = rate;
    drive.flashFirmware = "0.9";
    drive.flashConfiguration = "1";
    QString reason;
    QVERIFY2(opened->add(drive, &reason), qPrintable(reason));
}

Drive TemporaryBench::drive(const QString &serial) const
{
    Drive found;
    QString reason;
    if (!opened->drive(serial, &found, &reason)) {
        qFatal("%s", qPrintable(reason));
    }
    return found;
}

QMap<QString, QByteArray> TemporaryBench::content() const
{
    QMap<QString, QByteArray> files;
    QDirIterator walk(folder(), QDir::Files, QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        QFile file(walk.next());
        if (walk.fileName() != "lock" && file.open(QIODevice::ReadOnly)) {
            files.insert(file.fileName().mid(folder().size()), file.readAll());
        }
    }
    return files;
}

Fault numberFault(const char *name, qint64 number, bool once)
{
    Fault fault;
    fault.name = QString::fromLatin1(name);
    fault.number = number;
    fault.once = once;
    return fault;
}

Fault textFault(const char *name, const QString &text, const QString &field, bool once)
{
    Fault fault;
    fault.name = QString::fromLatin1(name);
    fault.text = text;
    fault.field = field;
    fault.once = once;
    return fault;
}
