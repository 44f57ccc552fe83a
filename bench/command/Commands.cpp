#include "bench/command/Commands.h"

#include "bench/core/FirmwareImage.h"
#include "bench/core/Text.h"

namespace bench {

QVector<Command> allCommands()
{
    return benchCommands() + driveCommands() + faultCommands() + imageCommands() + hostCommands()
        + watchCommands();
}

bool readSerial(const QString &argument, QString *serial)
{
    return unescape(argument, serial) && !serial->isEmpty();
}

bool hasVersions(const CommandLine &line)
{
    for (const char *option : {"--firmware", "--configuration"}) {
        const QString version = line.value(option);
        if (version.size() > FirmwareImage::MaximumText || version.toLatin1() != version.toUtf8()) {
            return false;
        }
    }
    return true;
}

QString versionRule()
{
    return QStringLiteral("--firmware and --configuration take at most %1 ASCII characters each")
        .arg(FirmwareImage::MaximumText);
}

} // namespace bench
