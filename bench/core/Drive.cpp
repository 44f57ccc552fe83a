#include "bench/core/Drive.h"

#include "bench/core/JsonReader.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <limits>

namespace bench {

namespace {

// The largest whole number that JSON carries exactly.
constexpr std::int64_t Largest = std::int64_t(1) << 53;
constexpr std::int64_t MaximumRate = 1000 * 1000 * 1000;

QJsonObject faultToJson(const Fault &fault)
{
    QJsonObject object{{QStringLiteral("fault"), fault.name}, {QStringLiteral("once"), fault.once}};
    switch (findFaultKind(fault.name)->value) {
    case FaultValue::None:
        break;
    case FaultValue::OptionalNumber:
        if (fault.number == 0) {
            break;
        }
        [[fallthrough]];
    case FaultValue::Number:
        object.insert(QStringLiteral("value"), double(fault.number));
        break;
    case FaultValue::OptionalText:
        if (fault.text.isEmpty()) {
            break;
        }
        [[fallthrough]];
    case FaultValue::Text:
        object.insert(QStringLiteral("value"), fault.text);
        break;
    case FaultValue::Field:
        object.insert(QStringLiteral("field"), fault.field);
        object.insert(QStringLiteral("value"), fault.text);
        break;
    }
    return object;
}

/// Reads one entry of the list of faults; false with a reason.
bool faultFromJson(const QJsonValue &json, Fault *fault, QString *reason)
{
    JsonReader reader(QJsonDocument(json.toObject()).toJson());
    fault->name = reader.text("fault");
    fault->once = reader.boolean("once");
    const FaultKind *const kind = findFaultKind(fault->name);
    if (reader.isGood() && kind == nullptr) {
        reader.fail("fault", QStringLiteral("names no known fault"));
    }
    if (kind != nullptr) {
        switch (kind->value) {
        case FaultValue::None:
            break;
        case FaultValue::OptionalNumber:
            if (!reader.has("value")) {
                break;
            }
            [[fallthrough]];
        case FaultValue::Number:
            fault->number = reader.number("value", kind->minimum, kind->maximum);
            break;
        case FaultValue::OptionalText:
            if (!reader.has("value")) {
                break;
            }
            [[fallthrough]];
        case FaultValue::Text:
            fault->text = reader.text("value");
            break;
        case FaultValue::Field:
            fault->field = reader.text("field");
            if (!faultFields().contains(fault->field)) {
                reader.fail("field", QStringLiteral("names no known field"));
            }
            fault->text = reader.text("value");
            break;
        }
    }
    reader.finish();
    *reason = reader.problem().section(QStringLiteral(": "), 1);
    return reader.isGood();
}

} // namespace

const Model &Drive::catalogueModel() const
{
    // A drive of no known model is never read from a file nor put on a bench.
    const Model *const found = findModel(model);
    return found == nullptr ? models().first() : *found;
}

QJsonObject Drive::toJson() const
{
    QJsonArray faultList;
    for (const Fault &fault : faults) {
        faultList.append(faultToJson(fault));
    }
    return {
        {QStringLiteral("serial"), serial},
        {QStringLiteral("model"), model},
        {QStringLiteral("chipset"), chipset},
        {QStringLiteral("plugged"), plugged},
        {QStringLiteral("answers"), answers},
        {QStringLiteral("reportedSerial"), reportedSerial},
        {QStringLiteral("runningFirmware"), runningFirmware},
        {QStringLiteral("runningConfiguration"), runningConfiguration},
        {QStringLiteral("bootRom"), bootRom},
        {QStringLiteral("flashFirmware"), flashFirmware},
        {QStringLiteral("flashConfiguration"), flashConfiguration},
        {QStringLiteral("torn"), torn},
        {QStringLiteral("bytesWritten"), double(bytesWritten)},
        {QStringLiteral("bytesToWrite"), double(bytesToWrite)},
        {QStringLiteral("mounted"), mounted},
        {QStringLiteral("flashRate"), double(flashRate)},
        {QStringLiteral("powerUps"), double(powerUps)},
        {QStringLiteral("pluggedAt"), double(pluggedAt)},
        {QStringLiteral("queries"), double(queries)},
        {QStringLiteral("faults"), faultList},
    };
}

QByteArray Drive::encode() const
{
    return QJsonDocument(toJson()).toJson();
}

bool Drive::decode(const QByteArray &file, Drive *drive, QString *problem)
{
    JsonReader reader(file);
    Drive found;
    found.serial = reader.text("serial");
    found.model = reader.text("model");
    found.chipset = static_cast<std::int32_t>(reader.number(
        "chipset", std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
    found.plugged = reader.boolean("plugged");
    found.answers = reader.boolean("answers");
    found.reportedSerial = reader.text("reportedSerial");
    found.runningFirmware = reader.text("runningFirmware");
    found.runningConfiguration = reader.text("runningConfiguration");
    found.bootRom = reader.boolean("bootRom");
    found.flashFirmware = reader.text("flashFirmware");
    found.flashConfiguration = reader.text("flashConfiguration");
    found.torn = reader.boolean("torn");
    found.bytesWritten = reader.number("bytesWritten", 0, Largest);
    found.bytesToWrite = reader.number("bytesToWrite", 0, Largest);
    found.mounted = reader.boolean("mounted");
    found.flashRate = reader.number("flashRate", 1, MaximumRate);
    found.powerUps = reader.number("powerUps", 0, Largest);
    found.pluggedAt = reader.number("pluggedAt", 0, Largest);
    found.queries = reader.number("queries", 0, Largest);
    const QJsonArray faultList = reader.array("faults");
    for (int i = 0; i < faultList.size(); ++i) {
        Fault fault;
        QString reason;
        if (!faultFromJson(faultList.at(i), &fault, &reason)) {
            reader.fail("faults", QStringLiteral("entry %1: %2").arg(i + 1).arg(reason));
        }
        found.faults.append(fault);
    }
    if (reader.isGood() && findModel(found.model) == nullptr) {
        reader.fail("model", QStringLiteral("names no model of the catalogue"));
    }
    reader.finish();
    if (!reader.isGood()) {
        *problem = reader.problem();
        return false;
    }
    *drive = found;
    return true;
}

bool Drive::clearFault(const QString &name)
{
    bool cleared = false;
    for (int i = static_cast<int>(faults.size()) - 1; i >= 0; --i) {
        if (faults.at(i).name == name) {
            faults.removeAt(i);
            cleared = true;
        }
    }
    return cleared;
}

void Drive::faultHadEffect(const char *name)
{
    const Fault *const fault = findFault(faults, name);
    if (fault != nullptr && fault->once) {
        clearFault(QString::fromLatin1(name));
    }
}

bool operator==(const Drive &left, const Drive &right)
{
    return left.encode() == right.encode();
}

QString fileNameFor(const QString &serial)
{
    // A leading dot would hide the file.
    return QString::fromLatin1(serial.toLatin1().toPercentEncoding(QByteArray(), "."));
}

} // namespace bench
