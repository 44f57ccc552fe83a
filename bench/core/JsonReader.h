#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QVector>

#include <cstdint>

namespace bench {

/**
 * Reads the flat JSON object of a bench file strictly: each member must be there, with the right type and in
 * its range, and no other member may be. After the first problem every further call does nothing.
 */
class JsonReader
{
public:
    explicit JsonReader(const QByteArray &text);

    bool isGood() const { return complaint.isEmpty(); }
    /// "line:column: reason" of the first problem.
    QString problem() const { return complaint; }

    bool has(const char *name) const;
    bool boolean(const char *name);
    /// A whole number between the limits, both included.
    std::int64_t number(const char *name, std::int64_t minimum, std::int64_t maximum);
    /// A text of code points U+0000 to U+00FF.
    QString text(const char *name);
    QJsonArray array(const char *name);

    /// Complains about a member that none of the calls above asked for.
    void finish();

    /// Complains about the member `name`.
    void fail(const char *name, const QString &reason);

private:
    QJsonValue member(const char *name);
    QString position(qint64 offset) const;

    QByteArray source;
    QJsonObject object;
    QVector<QLatin1String> asked;
    QString complaint;
};

} // namespace bench
