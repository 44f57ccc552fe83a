#include "bench/core/JsonReader.h"

#include "bench/core/Text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>

#include <cmath>

namespace bench {

JsonReader::JsonReader(const QByteArray &text) : source(text)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(source, &error);
    if (error.error != QJsonParseError::NoError) {
        complaint = position(error.offset) + error.errorString();
    } else if (!document.isObject()) {
        complaint = position(0) + QStringLiteral("must be a JSON object");
    } else {
        object = document.object();
    }
}

bool JsonReader::has(const char *name) const
{
    return object.contains(QLatin1String(name));
}

bool JsonReader::boolean(const char *name)
{
    const QJsonValue value = member(name);
    if (isGood() && !value.isBool()) {
        fail(name, QStringLiteral("must be true or false"));
    }
    return value.toBool();
}

std::int64_t JsonReader::number(const char *name, std::int64_t minimum, std::int64_t maximum)
{
    const double value = member(name).toDouble(std::nan(""));
    const bool inRange = value >= static_cast<double>(minimum) && value <= static_cast<double>(maximum);
    if (isGood() && (!inRange || value != std::floor(value))) {
        fail(name, QStringLiteral("must be a whole number from %1 to %2").arg(minimum).arg(maximum));
    }
    return isGood() ? static_cast<std::int64_t>(value) : 0;
}

QString JsonReader::text(const char *name)
{
    const QJsonValue value = member(name);
    QString text = value.toString();
    if (isGood() && !value.isString()) {
        fail(name, QStringLiteral("must be a text"));
    }
    for (const QChar letter : text) {
        if (letter.unicode() > 0xFF) {
            fail(name, QStringLiteral("must hold characters U+0000 to U+00FF only, one for each byte"));
        }
    }
    return text;
}

QJsonArray JsonReader::array(const char *name)
{
    const QJsonValue value = member(name);
    if (isGood() && !value.isArray()) {
        fail(name, QStringLiteral("must be a list"));
    }
    return value.toArray();
}

void JsonReader::finish()
{
    if (object.size() == asked.size()) {
        return;
    }
    for (auto found = object.constBegin(); found != object.constEnd(); ++found) {
        if (!asked.contains(QLatin1String(found.key().toLatin1()))) {
            fail(found.key().toUtf8().constData(), QStringLiteral("is not a known member"));
        }
    }
}

void JsonReader::fail(const char *name, const QString &reason)
{
    if (!isGood()) {
        return;
    }
    // The name in quotes and before a colon is the member itself, not a text that reads the same.
    const QByteArray quoted = '"' + QByteArray(name) + '"';
    qint64 offset = -1;
    do {
        offset = source.indexOf(quoted, static_cast<int>(offset + 1));
    } while (offset >= 0 && !source.mid(static_cast<int>(offset) + quoted.size()).trimmed().startsWith(':'));
    complaint =
        position(offset < 0 ? 0 : offset) + escaped(QString::fromUtf8(quoted)) + QLatin1Char(' ') + reason;
}

QJsonValue JsonReader::member(const char *name)
{
    const QLatin1String key(name);
    asked.append(key);
    QJsonValue value = object.value(key);
    if (isGood() && value.isUndefined()) {
        fail(name, QStringLiteral("is missing"));
    }
    return value;
}

QString JsonReader::position(qint64 offset) const
{
    const QByteArray before = source.left(static_cast<int>(offset));
    const qint64 column = offset - (before.lastIndexOf('\n') + 1) + 1;
    return QStringLiteral("%1:%2: ").arg(before.count('\n') + 1).arg(column);
}

} // namespace bench
