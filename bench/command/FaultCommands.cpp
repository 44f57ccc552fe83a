#include "bench/core/Text.h"
#include "bench/command/Commands.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace bench {

namespace {

const QString FaultCommand = QStringLiteral("fault");

int listFaults(bool asJson)
{
    QJsonArray list;
    QString text;
    for (const FaultKind &kind : faultKinds()) {
        const QString name = QString::fromLatin1(kind.name);
        const QString value = QString::fromLatin1(kind.valueName);
        const QString description = QString::fromLatin1(kind.description);
        const bool optional =
            kind.value == FaultValue::OptionalNumber || kind.value == FaultValue::OptionalText;
        const QString shown = optional ? QLatin1Char('[') + value + QLatin1Char(']') : value;
        text += (name + QLatin1Char(' ') + shown).leftJustified(34) + description + QLatin1Char('\n');
        list.append(QJsonObject{{QStringLiteral("fault"), name}, {QStringLiteral("value"), shown},
            {QStringLiteral("description"), description}});
    }
    text += QStringLiteral("\nFIELD is one of %1.\n").arg(faultFields().join(QLatin1String(", ")));
    print(asJson ? QString::fromUtf8(QJsonDocument(QJsonObject{{QStringLiteral("faults"), list}}).toJson())
                 : text);
    return 0;
}

/// Reads the value that a kind of fault takes. False with what is wrong with it.
bool readValue(const FaultKind &kind, bool given, const QString &argument, Fault *fault, QString *reason)
{
    const QString name = QString::fromLatin1(kind.name);
    const QString valueName = QString::fromLatin1(kind.valueName);
    const bool optional = kind.value == FaultValue::OptionalNumber || kind.value == FaultValue::OptionalText;
    if (kind.value == FaultValue::None && given) {
        *reason = QStringLiteral("%1 takes no value").arg(name);
        return false;
    }
    if (kind.value == FaultValue::None || (optional && !given)) {
        return true;
    }
    if (!given) {
        *reason = QStringLiteral("%1 needs a value, %2").arg(name, valueName);
        return false;
    }
    bool valid = true;
    switch (kind.value) {
    case FaultValue::None:
        break;
    case FaultValue::Number:
    case FaultValue::OptionalNumber:
        fault->number = argument.toLongLong(
            &valid, argument.contains(QLatin1String("0x"), Qt::CaseInsensitive) ? 16 : 10);
        valid = valid && fault->number >= kind.minimum && fault->number <= kind.maximum;
        *reason = QStringLiteral("%1 needs a whole number from %2 to %3")
                      .arg(name)
                      .arg(kind.minimum)
                      .arg(kind.maximum);
        break;
    case FaultValue::Text:
    case FaultValue::OptionalText:
        valid = unescape(argument, &fault->text) && !fault->text.isEmpty();
        *reason =
            QStringLiteral("%1 needs a text of characters up to U+00FF, with \\xNN for any byte").arg(name);
        break;
    case FaultValue::Field:
        fault->field = argument.section(QLatin1Char('='), 0, 0);
        valid = argument.contains(QLatin1Char('=')) && faultFields().contains(fault->field)
            && unescape(argument.section(QLatin1Char('='), 1), &fault->text);
        *reason =
            QStringLiteral("%1 needs FIELD=TEXT, where FIELD is one of %2, and \\xNN stands for any byte")
                .arg(name, faultFields().join(QLatin1String(", ")));
        break;
    }
    return valid;
}

int setFault(const CommandLine &line)
{
    if (line.has("--list")) {
        return listFaults(line.has("--json"));
    }
    if (line.arguments().size() < 2) {
        return wrongUsage(QStringLiteral("fault needs SERIAL FAULT, or --list"), FaultCommand);
    }
    const FaultKind *const kind = findFaultKind(line.argument(1));
    if (kind == nullptr) {
        return wrongUsage(QStringLiteral("there is no fault \"%1\"; drive-bench fault --list shows them")
                              .arg(line.argument(1)),
            FaultCommand);
    }
    Fault fault;
    fault.name = QString::fromLatin1(kind->name);
    fault.once = line.has("--once");
    QString reason;
    if (!readValue(*kind, line.arguments().size() > 2, line.argument(2), &fault, &reason)) {
        return wrongUsage(reason, FaultCommand);
    }
    QString serial;
    if (!readSerial(line.argument(0), &serial)) {
        return wrongUsage(QStringLiteral("\"%1\" is no serial number").arg(line.argument(0)), FaultCommand);
    }
    if (!line.bench().setFault(serial, fault, &reason)) {
        return refuse(QStringLiteral("cannot set a fault on %1: %2").arg(line.argument(0), reason));
    }
    return 0;
}

int clearFaults(const CommandLine &line)
{
    const QString name = line.argument(1);
    if (line.arguments().size() > 1 && findFaultKind(name) == nullptr) {
        return wrongUsage(
            QStringLiteral("there is no fault \"%1\"; drive-bench fault --list shows them").arg(name),
            QStringLiteral("clear"));
    }
    QString serial;
    QString reason;
    if (!readSerial(line.argument(0), &serial)) {
        return wrongUsage(
            QStringLiteral("\"%1\" is no serial number").arg(line.argument(0)), QStringLiteral("clear"));
    }
    if (!line.bench().clearFault(serial, name, &reason)) {
        return refuse(QStringLiteral("cannot clear a fault of %1: %2").arg(line.argument(0), reason));
    }
    return 0;
}

} // namespace

QVector<Command> faultCommands()
{
    return {
        {FaultCommand, QStringLiteral("SERIAL FAULT [VALUE]"),
            QStringLiteral("set a fault on a drive, or list all faults"),
            QStringLiteral("A fault stays until it is cleared, or with --once until it has had its effect. "
                           "Numbers may be\n"
                           "written in hexadecimal with 0x."),
            QStringLiteral("drive-bench fault TV0001PEBBLE pulled-out 20000 --once"),
            {Argument::Serial, Argument::FaultName, Argument::FaultValue}, 0, 3,
            {{QStringLiteral("--once"), QString(), QStringLiteral("clear it after it has had its effect")},
                {QStringLiteral("--list"), QString(), QStringLiteral("list all faults and their values")},
                {QStringLiteral("--json"), QString(), QStringLiteral("print that list as JSON")}},
            setFault},
        {QStringLiteral("clear"), QStringLiteral("SERIAL [FAULT]"),
            QStringLiteral("clear a fault of a drive, or all its faults"), QString(),
            QStringLiteral("drive-bench clear TV0001PEBBLE pulled-out"),
            {Argument::Serial, Argument::FaultOfDrive}, 1, 2, {}, clearFaults},
    };
}

} // namespace bench
