#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QVector>

#include <cstdint>

namespace bench {

/// A process that the bench started in the place of one of the companion product's.
struct Process
{
    std::int64_t id; ///< process ID
    QString command; ///< the program that it stands for, with its path
};

/// What the host computer holds besides drives, as its file says: a plain value.
struct Host
{
    bool companionInstalled =
        false; ///< the service's property list and the applications lie in their folders
    bool serviceSubmitted = false; ///< launchctl knows the service
    bool extensionInstalled = false; ///< the kernel extension lies in its folder
    bool extensionLoaded = false;
    QString extensionVersion = QStringLiteral("1.2.4");
    QVector<Process> processes;

    /// The host's file, as an object and as the bytes of the file.
    QJsonObject toJson() const;
    QByteArray encode() const;
    /// False with "line:column: reason"; `host` is then untouched.
    static bool decode(const QByteArray &file, Host *host, QString *problem);
};

} // namespace bench
