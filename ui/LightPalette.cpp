#include "ui/LightPalette.h"

#include <QPalette>

namespace {

struct RoleColors
{
    QPalette::ColorRole role;
    QRgb enabled;
    QRgb disabled;
};

constexpr QRgb AccentColor = 0xff165a95;

// Text stands out at least 7 to 1 from what it is drawn on, disabled text 4.5 to 1. What is not text has the
// colours of the Fusion style on a light desktop, but for the white window.
constexpr RoleColors LightColors[] = {
    {QPalette::Window, 0xffffffff, 0xffffffff},
    {QPalette::WindowText, 0xff000000, 0xff5f5f5f},
    {QPalette::Base, 0xffffffff, 0xffefefef},
    {QPalette::AlternateBase, 0xfff7f7f7, 0xfff7f7f7},
    {QPalette::Text, 0xff000000, 0xff5f5f5f},
    {QPalette::PlaceholderText, 0xff505050, 0xff5f5f5f},
    {QPalette::Button, 0xffefefef, 0xffefefef},
    {QPalette::ButtonText, 0xff000000, 0xff5f5f5f},
    {QPalette::BrightText, 0xff8b0000, 0xff5f5f5f},
    {QPalette::Highlight, AccentColor, 0xff5f5f5f},
    {QPalette::HighlightedText, 0xffffffff, 0xffffffff},
    {QPalette::Link, 0xff0000ff, 0xff5f5f5f},
    {QPalette::LinkVisited, 0xff551a8b, 0xff5f5f5f},
    {QPalette::ToolTipBase, 0xffffffdc, 0xffffffdc},
    {QPalette::ToolTipText, 0xff000000, 0xff5f5f5f},
    {QPalette::Light, 0xffffffff, 0xffffffff},
    {QPalette::Midlight, 0xffcacaca, 0xffcacaca},
    {QPalette::Mid, 0xffb8b8b8, 0xffb8b8b8},
    {QPalette::Dark, 0xff9f9f9f, 0xffbebebe},
    {QPalette::Shadow, 0xff767676, 0xffb1b1b1},
};

} // namespace

QPalette lightPalette()
{
    QPalette palette;
    // For the roles that later versions of Qt add: what is not set is taken from the desktop.
    for (int role = 0; role < QPalette::NColorRoles; ++role) {
        palette.setColor(QPalette::All, QPalette::ColorRole(role), AccentColor);
    }
    for (const RoleColors &colors : LightColors) {
        palette.setColor(QPalette::Active, colors.role, colors.enabled);
        palette.setColor(QPalette::Inactive, colors.role, colors.enabled);
        palette.setColor(QPalette::Disabled, colors.role, colors.disabled);
    }
    return palette;
}
