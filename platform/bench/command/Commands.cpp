#include "platform/bench/command/Commands.h"

#include "platform/bench/Text.h"

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

} // namespace bench
