#include "bench/core/Host.h"

#include "bench/core/JsonReader.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <limits>

namespace bench {

QJsonObject Host::toJson() const
{
    QJsonArray processList;
    for (const Process &process : processes) {
        processList.append(QJsonObject{
            {QStringLiteral("id"), double(process.id)}, {QStringLiteral("command"), process.command}});
    }
    return {
        {QStringLiteral("companionInstalled"), companionInstalled},
        {QStringLiteral("serviceSubmitted"), serviceSubmitted},
        {QStringLiteral("extensionInstalled"), extensionInstalled},
        {QStringLiteral("extensionLoaded"), extensionLoaded},
        {QStringLiteral("extensionVersion"), extensionVersion},
        {QStringLiteral("processes"), processList},
    };
}

QByteArray Host::encode() const
{
    return QJsonDocument(toJson()).toJson();
}

bool Host::decode(const QByteArray &file, Host *host, QString *problem)
{
    JsonReader reader(file);
    Host found;
    found.companionInstalled = reader.boolean("companionInstalled");
    found.serviceSubmitted = reader.boolean("serviceSubmitted");
    found.extensionInstalled = reader.boolean("extensionInstalled");
    found.extensionLoaded = reader.boolean("extensionLoaded");
    found.extensionVersion = reader.text("extensionVersion");
    for (const QJsonValue entry : reader.array("processes")) {
        const double id = entry.toObject().value(QStringLiteral("id")).toDouble();
        const QJsonValue command = entry.toObject().value(QStringLiteral("command"));
        if (id < 1 || id > std::numeric_limits<std::int32_t>::max() || !command.isString()) {
            reader.fail("processes", QStringLiteral("must be a list of objects with \"id\" and \"command\""));
        }
        found.processes.append({static_cast<std::int64_t>(id), command.toString()});
    }
    reader.finish();
    if (!reader.isGood()) {
        *problem = reader.problem();
        return false;
    }
    *host = found;
    return true;
}

} // namespace bench
