#include "bench/core/Catalogue.h"

namespace bench {

namespace {

constexpr std::uint16_t Usb = 0x0E7A;
constexpr std::uint16_t FireWire = 0xC5E2;

struct Bridge
{
    std::int32_t code;
    const char *name;
};

constexpr Bridge Bridges[] = {
    {1, "Asm1051"},
    {2, "Asm1051E"},
    {3, "Asm1053"},
    {5, "OxSemiFireWire934"},
    {6, "OxSemiFireWire944"},
};

struct Row
{
    std::uint16_t vendorId;
    std::uint16_t productId;
    const char *name;
    std::int32_t chipset;
    Restart restart;
    const char *body;
    int pictureSize;
    const char *newestFirmware;
    const char *newestConfiguration;
};

// clang-format off
constexpr Row Rows[] = {
    {Usb, 0x1A20, "Pebble",          1, Restart::Unplug,      "rugged mobile",                48,  "2.14", "5"},
    {Usb, 0x1A21, "Pebble Mini",     1, Restart::Unplug,      "rugged mobile",                48,  "2.14", "5"},
    {Usb, 0x1A24, "Pebble USB3",     3, Restart::Unplug,      "rugged mobile",                512, "4.03", "8"},
    {Usb, 0x1A27, "Lamina",          2, Restart::Unplug,      "slim aluminium mobile",        48,  "3.20", "6"},
    {Usb, 0x1A28, "Lamina Slim",     2, Restart::Unplug,      "slim aluminium mobile",        48,  "3.20", "6"},
    {Usb, 0x1A2B, "Lamina Slim SSD", 3, Restart::Unplug,      "slim aluminium mobile",        512, "4.05", "9"},
    {Usb, 0x1A2E, "Skiff",           1, Restart::Unplug,      "small round-cornered mobile",  48,  "2.11", "4"},
    {Usb, 0x1A2F, "Skiff Go",        2, Restart::Unplug,      "small round-cornered mobile",  48,  "3.18", "6"},
    {Usb, 0x1A33, "Harbour",         3, Restart::Unplug,      "desktop",                      48,  "4.03", "8"},
    {Usb, 0x1A35, "Harbour Mini",    1, Restart::Unplug,      "desktop",                      48,  "2.14", "5"},
    {Usb, 0x1A38, "Harbour Duo",     3, Restart::Unplug,      "two-bay desktop",              48,  "4.07", "11"},
    {Usb, 0x1A3C, "Bollard",         1, Restart::PowerButton, "desktop with power button",    48,  "2.16", "7"},
    {Usb, 0x1A3D, "Bollard USB3",    3, Restart::PowerButton, "desktop with power button",    48,  "4.06", "10"},
    {Usb, 0x1A41, "Bollard Duo",     2, Restart::PowerButton, "two-bay with power button",    48,  "3.22", "8"},
    {Usb, 0x1A46, "Breakwater",      3, Restart::PowerButton, "two-bay with power button",    512, "4.07", "12"},
    {Usb, 0x1A4D, "Breakwater Max",  3, Restart::PowerButton, "two-bay with power button",    48,  "4.08", "12"},
    {FireWire, 0, "Pebble Triple",              5, Restart::NotNeeded, "rugged mobile with FireWire ports", 48,  "1.31", "3"},
    {FireWire, 0, "Harbour FireWire",           5, Restart::NotNeeded, "desktop with FireWire ports",       48,  "1.31", "3"},
    {FireWire, 0, "Harbour (FireWire 800)",     6, Restart::NotNeeded, "desktop with FireWire ports",       48,  "1.52", "4"},
    {FireWire, 0, "Bollard Duo (FireWire 800)", 6, Restart::NotNeeded, "two-bay with FireWire ports",       512, "1.54", "5"},
    {FireWire, 0, "breakwater Mk II",           6, Restart::NotNeeded, "two-bay with FireWire ports",       48,  "1.54", "5"},
};
// clang-format on

Model fromRow(const Row &row)
{
    return {row.vendorId, row.productId, QString::fromLatin1(row.name), row.chipset, row.restart,
        QString::fromLatin1(row.body), row.pictureSize, QString::fromLatin1(row.newestFirmware),
        QString::fromLatin1(row.newestConfiguration)};
}

} // namespace

QString Model::imageName() const
{
    QString stem;
    for (const QChar letter : name.toLower()) {
        const bool kept = (letter >= QLatin1Char('a') && letter <= QLatin1Char('z'))
            || (letter >= QLatin1Char('0') && letter <= QLatin1Char('9'));
        if (kept) {
            stem += letter;
        } else if (!stem.isEmpty() && !stem.endsWith(QLatin1Char('-'))) {
            stem += QLatin1Char('-');
        }
    }
    if (stem.endsWith(QLatin1Char('-'))) {
        stem.chop(1);
    }
    return stem + QStringLiteral(".tfw");
}

QString Model::picture() const
{
    if (isFireWire()) {
        return QStringLiteral(":/firmwareUpdater/device/0xC5E2/%1.png").arg(name);
    }
    return QStringLiteral(":/firmwareUpdater/device/0x0E7A/%1.png")
        .arg(QString::number(productId, 16).toUpper(), 4, QLatin1Char('0'));
}

const QVector<Model> &models()
{
    // Never freed: the discovery thread may still look into it while the process ends.
    static const auto *const all = [] {
        auto *const list = new QVector<Model>;
        for (const Row &row : Rows) {
            list->append(fromRow(row));
        }
        return list;
    }();
    return *all;
}

const Model *findModel(const QString &name)
{
    for (const Model &model : models()) {
        if (model.name == name) {
            return &model;
        }
    }
    return nullptr;
}

QString bridgeName(std::int32_t chipset)
{
    for (const Bridge &bridge : Bridges) {
        if (bridge.code == chipset) {
            return QString::fromLatin1(bridge.name);
        }
    }
    return QStringLiteral("none");
}

} // namespace bench
