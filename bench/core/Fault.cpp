#include "bench/core/Fault.h"

#include <limits>

namespace bench {

namespace {

constexpr qint64 Smallest = std::numeric_limits<std::int32_t>::min();
constexpr qint64 Largest = std::numeric_limits<std::int32_t>::max();
constexpr qint64 Minute = 60000;

} // namespace

const QVector<FaultKind> &faultKinds()
{
    // Never freed: the discovery thread may still look into it while the process ends.
    // clang-format off
    static const auto *const kinds = new QVector<FaultKind>{
        {"slow-probe", FaultValue::Number, "MILLISECONDS", "each query takes so much longer", 0, Minute},
        {"settle-queries", FaultValue::Number, "QUERIES", "statuses stay undetermined for so many queries after power-up", 0, Largest},
        {"settle-time", FaultValue::Number, "MILLISECONDS", "statuses stay undetermined for so long after power-up", 0, Largest},
        {"never-settles", FaultValue::None, "", "statuses stay undetermined for ever"},
        {"flash-error", FaultValue::Number, "BYTES", "writing fails after so many bytes; the flash is torn", 0, Largest},
        {"verify-error", FaultValue::None, "", "what is read back is not what was written; the flash is torn"},
        {"pulled-out", FaultValue::Number, "BYTES", "the drive is unplugged after so many bytes; the flash is torn", 0, Largest},
        {"wrong-image", FaultValue::None, "", "discovery names an image for another bridge, which is refused"},
        {"truncated-image", FaultValue::OptionalNumber, "BYTES", "the updater sees only so many bytes of the image (1000) and refuses it", 1, Largest},
        {"unmount-returns", FaultValue::Number, "VALUE", "volumes stay mounted and the unmount returns this value", Smallest, Largest},
        {"no-return", FaultValue::None, "", "the drive does not answer after it was plugged in"},
        {"new-serial", FaultValue::Text, "SERIAL", "the drive comes back with this serial number"},
        {"duplicate-serial", FaultValue::OptionalText, "SERIAL", "the drive reports this serial number of another; without one it is listed twice"},
        {"firmware-status", FaultValue::Number, "CODE", "discovery reports this firmware status", Smallest, Largest},
        {"configuration-status", FaultValue::Number, "CODE", "discovery reports this configuration status", Smallest, Largest},
        {"chipset", FaultValue::Number, "CODE", "discovery reports this bridge", Smallest, Largest},
        {"vendor-id", FaultValue::Number, "ID", "discovery reports this vendor ID", 0, 0xFFFF},
        {"product-id", FaultValue::Number, "ID", "discovery reports this product ID", 0, 0xFFFF},
        {"text", FaultValue::Field, "FIELD=TEXT", "discovery reports this text; \\xNN stands for any byte"},
    };
    // clang-format on
    return *kinds;
}

const FaultKind *findFaultKind(const QString &name)
{
    for (const FaultKind &kind : faultKinds()) {
        if (name == QLatin1String(kind.name)) {
            return &kind;
        }
    }
    return nullptr;
}

QStringList faultFields()
{
    return {QStringLiteral("auxiliaryText1"), QStringLiteral("modelName"), QStringLiteral("serialNumber"),
        QStringLiteral("auxiliaryText2"), QStringLiteral("firmwareVersion"),
        QStringLiteral("firmwareFileName"), QStringLiteral("newFirmwareVersion")};
}

const Fault *findFault(const QVector<Fault> &faults, const char *name, const QString &field)
{
    for (const Fault &fault : faults) {
        if (fault.name == QLatin1String(name) && fault.field == field) {
            return &fault;
        }
    }
    return nullptr;
}

bool isValid(const Fault &fault)
{
    const FaultKind *const kind = findFaultKind(fault.name);
    if (kind == nullptr) {
        return false;
    }
    const bool inRange = fault.number >= kind->minimum && fault.number <= kind->maximum;
    switch (kind->value) {
    case FaultValue::Number:
        return inRange;
    case FaultValue::OptionalNumber:
        return inRange || fault.number == 0;
    case FaultValue::Field:
        return faultFields().contains(fault.field);
    case FaultValue::Text:
        return !fault.text.isEmpty();
    case FaultValue::None:
    case FaultValue::OptionalText:
        break;
    }
    return true;
}

bool actsOnQuery(const Fault &fault)
{
    static const char *const names[] = {"slow-probe", "duplicate-serial", "firmware-status",
        "configuration-status", "chipset", "vendor-id", "product-id", "text"};
    for (const char *name : names) {
        if (fault.name == QLatin1String(name)) {
            return true;
        }
    }
    return false;
}

} // namespace bench
