// SPDX-License-Identifier: MIT
#include "bench/core/Catalogue.h"

#include "bench/core/Refused.h"
#include "bench/core/Table.h"

#include <cstdio>

namespace bench {

namespace {

// clang-format off
constexpr std::array<Model, 21> Models = {{
    {Vendor::Usb, 0x1A20, "Pebble",          Chipset::Asm1051, "rugged mobile", "2.14", "5"},
    {Vendor::Usb, 0x1A21, "Pebble Mini",     Chipset::Asm1051, "rugged mobile", "2.14", "5"},
    {Vendor::Usb, 0x1A24, "Pebble USB3",     Chipset::Asm1053, "rugged mobile", "4.03", "8"},
    {Vendor::Usb, 0x1A27, "Lamina",          Chipset::Asm1051E, "slim aluminium mobile", "3.20", "6"},
    {Vendor::Usb, 0x1A28, "Lamina Slim",     Chipset::Asm1051E, "slim aluminium mobile", "3.20", "6"},
    {Vendor::Usb, 0x1A2B, "Lamina Slim SSD", Chipset::Asm1053, "slim aluminium mobile", "4.05", "9"},
    {Vendor::Usb, 0x1A2E, "Skiff",           Chipset::Asm1051, "small round-cornered mobile", "2.11", "4"},
    {Vendor::Usb, 0x1A2F, "Skiff Go",        Chipset::Asm1051E, "small round-cornered mobile", "3.18", "6"},
    {Vendor::Usb, 0x1A33, "Harbour",         Chipset::Asm1053, "desktop", "4.03", "8"},
    {Vendor::Usb, 0x1A35, "Harbour Mini",    Chipset::Asm1051, "desktop", "2.14", "5"},
    {Vendor::Usb, 0x1A38, "Harbour Duo",     Chipset::Asm1053, "two-bay desktop", "4.07", "11"},
    {Vendor::Usb, 0x1A3C, "Bollard",         Chipset::Asm1051, "desktop with power button", "2.16", "7"},
    {Vendor::Usb, 0x1A3D, "Bollard USB3",    Chipset::Asm1053, "desktop with power button", "4.06", "10"},
    {Vendor::Usb, 0x1A41, "Bollard Duo",     Chipset::Asm1051E, "two-bay with power button", "3.22", "8"},
    {Vendor::Usb, 0x1A46, "Breakwater",      Chipset::Asm1053, "two-bay with power button", "4.07", "12"},
    {Vendor::Usb, 0x1A4D, "Breakwater Max",  Chipset::Asm1053, "two-bay with power button", "4.08", "12"},
    {Vendor::FireWire, 0, "Pebble Triple",              Chipset::OxSemiFireWire934, "rugged mobile with FireWire ports", "1.31", "3"},
    {Vendor::FireWire, 0, "Harbour FireWire",           Chipset::OxSemiFireWire934, "desktop with FireWire ports", "1.31", "3"},
    {Vendor::FireWire, 0, "Harbour (FireWire 800)",     Chipset::OxSemiFireWire944, "desktop with FireWire ports", "1.52", "4"},
    {Vendor::FireWire, 0, "Bollard Duo (FireWire 800)", Chipset::OxSemiFireWire944, "two-bay with FireWire ports", "1.54", "5"},
    {Vendor::FireWire, 0, "breakwater Mk II",           Chipset::OxSemiFireWire944, "two-bay with FireWire ports", "1.54", "5"},
}};
// clang-format on

// In the order of the enumerators.
constexpr const char *RestartTexts[] = {"unplug", "power button", "not needed", "not known"};

} // namespace

const char *restartText(Restart restart)
{
    return RestartTexts[static_cast<std::size_t>(restart)];
}

std::string Model::imageName() const
{
    std::string stem;
    for (const char *letter = name; *letter != '\0'; ++letter) {
        const bool isUpper = *letter >= 'A' && *letter <= 'Z';
        const char lower = isUpper ? static_cast<char>(*letter + 'a' - 'A') : *letter;
        if ((lower >= 'a' && lower <= 'z') || (lower >= '0' && lower <= '9')) {
            stem += lower;
        } else if (!stem.empty() && stem.back() != '-') {
            stem += '-';
        }
    }
    if (stem.back() == '-') {
        stem.pop_back();
    }
    return stem + ".tfw";
}

std::string Model::picture() const
{
    const std::string directory = ":/firmwareUpdater/device/" + hexadecimalId(vendorId) + "/";
    return directory + (isFireWire() ? name : hexadecimalId(productId).substr(2)) + ".png";
}

const std::array<Model, 21> &models()
{
    return Models;
}

const Model &modelNamed(const std::string &name)
{
    const Model *const model = findRow(Models, name);
    if (model == nullptr) {
        throw Refused("there is no model \"" + escaped(name) + "\"; drive-bench models lists them");
    }
    return *model;
}

const char *bridgeName(std::int64_t chipset)
{
    switch (chipset) {
    case Chipset::Asm1051:
        return "Asm1051";
    case Chipset::Asm1051E:
        return "Asm1051E";
    case Chipset::Asm1053:
        return "Asm1053";
    case Chipset::OxSemiFireWire934:
        return "OxSemiFireWire934";
    case Chipset::OxSemiFireWire944:
        return "OxSemiFireWire944";
    default:
        return "none";
    }
}

std::string hexadecimalId(std::uint16_t number)
{
    char text[8];
    std::snprintf(text, sizeof text, "0x%04X", static_cast<unsigned>(number));
    return text;
}

} // namespace bench
