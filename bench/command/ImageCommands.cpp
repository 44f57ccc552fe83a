#include "bench/core/Files.h"
#include "bench/core/FirmwareImage.h"
#include "bench/core/Text.h"
#include "bench/command/Commands.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QJsonObject>

namespace bench {

namespace {

QString digestText(const QByteArray &payload)
{
    return QString::fromLatin1(QCryptographicHash::hash(payload, QCryptographicHash::Sha256).toHex());
}

int build(const CommandLine &line)
{
    QVector<Model> wanted;
    for (const QString &name : line.arguments()) {
        const Model *const model = findModel(name);
        if (model == nullptr) {
            return refuse(QStringLiteral(
                "cannot build an image for \"%1\": there is no such model; drive-bench models lists them")
                              .arg(name));
        }
        wanted.append(*model);
    }
    if (wanted.isEmpty()) {
        wanted = models();
    }
    const QString folder = line.has("--output") ? line.value("--output") : executableFolder();
    if (!hasVersions(line)) {
        return wrongUsage(versionRule(), QStringLiteral("image build"));
    }
    // All of them are written aside before the first takes its place.
    const QString draftExtension = QStringLiteral(".new");
    QStringList files;
    QString problem;
    for (const Model &model : wanted) {
        const FirmwareImage image = FirmwareImage::forModel(model,
            line.has("--firmware") ? line.value("--firmware") : model.newestFirmware,
            line.has("--configuration") ? line.value("--configuration") : model.newestConfiguration);
        const QString file = folder + QLatin1Char('/') + model.imageName();
        QString reason = QStringLiteral("it is a folder");
        if (isFolder(file) || !writeFile(file + draftExtension, image.encode(), &reason)) {
            problem =
                QStringLiteral("cannot write %1: %2; name another folder with --output").arg(file, reason);
            break;
        }
        files.append(file);
    }
    for (const QString &file : files) {
        QString reason;
        if (!problem.isEmpty()) {
            removeFile(file + draftExtension, &reason);
        } else if (!renameFile(file + draftExtension, file, &reason)) {
            return refuse(
                QStringLiteral("cannot write %1: %2; the folder must be writable").arg(file, reason));
        }
    }
    if (!problem.isEmpty()) {
        return refuse(problem);
    }
    if (!line.has("--quiet")) {
        print(QStringLiteral("%1: %2 images\n").arg(folder, QString::number(wanted.size())));
    }
    return 0;
}

int inspect(const CommandLine &line)
{
    const QString file = line.argument(0);
    FirmwareImage image;
    QString reason;
    if (!FirmwareImage::read(file, &image, &reason)) {
        return refuse(QStringLiteral("%1: %2; drive-bench image build makes sound ones").arg(file, reason));
    }
    if (line.has("--json")) {
        const QJsonObject object{
            {QStringLiteral("bridge"), bridgeName(image.bridge)},
            {QStringLiteral("chipset"), image.bridge},
            {QStringLiteral("firmwareVersion"), image.firmwareVersion},
            {QStringLiteral("firmwareSize"), static_cast<int>(image.firmware.size())},
            {QStringLiteral("firmwareDigest"), digestText(image.firmware)},
            {QStringLiteral("configurationRevision"), image.configurationRevision},
            {QStringLiteral("configurationSize"), static_cast<int>(image.configuration.size())},
            {QStringLiteral("configurationDigest"), digestText(image.configuration)},
        };
        print(QString::fromUtf8(QJsonDocument(object).toJson()));
        return 0;
    }
    const QString part = QStringLiteral("%1 %2, %3 bytes, SHA-256 %4\n");
    print(QStringLiteral("bridge         %1\n").arg(bridgeName(image.bridge)));
    print(part.arg(QStringLiteral("firmware      "), escaped(image.firmwareVersion),
        QString::number(image.firmware.size()), digestText(image.firmware)));
    print(part.arg(QStringLiteral("configuration "), escaped(image.configurationRevision),
        QString::number(image.configuration.size()), digestText(image.configuration)));
    return 0;
}

} // namespace

QVector<Command> imageCommands()
{
    return {
        {QStringLiteral("image build"), QStringLiteral("[MODEL...]"),
            QStringLiteral("write the firmware images of the models"),
            QStringLiteral("Without a model, those of all models. They go beside the executable, where the "
                           "program looks\n"
                           "for them."),
            QStringLiteral("drive-bench image build Pebble --firmware 2.15 --output ."), {Argument::Model}, 0,
            1000,
            {{QStringLiteral("--output"), QStringLiteral("DIR"), QStringLiteral("write into this folder")},
                {QStringLiteral("--firmware"), QStringLiteral("VERSION"),
                    QStringLiteral("instead of the newest firmware version")},
                {QStringLiteral("--configuration"), QStringLiteral("REVISION"),
                    QStringLiteral("instead of the newest configuration revision")},
                {QStringLiteral("--quiet"), QString(), QStringLiteral("print nothing")}},
            build},
        {QStringLiteral("image inspect"), QStringLiteral("FILE"),
            QStringLiteral("check a firmware image and show what is in it"), QString(),
            QStringLiteral("drive-bench image inspect pebble.tfw"), {Argument::File}, 1, 1,
            {{QStringLiteral("--json"), QString(), QStringLiteral("print JSON")}}, inspect},
    };
}

} // namespace bench
