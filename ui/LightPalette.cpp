// SPDX-License-Identifier: MIT
#include "ui/LightPalette.h"

QPalette lightPalette(const QPalette &desktop)
{
    const bool dark =
        desktop.color(QPalette::WindowText).lightness() > desktop.color(QPalette::Window).lightness();
    QPalette palette = dark ? QPalette(QColor(0xef, 0xef, 0xef), Qt::white) : desktop;
    palette.setBrush(QPalette::All, QPalette::Window, Qt::white);
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        for (int role = 0; role < QPalette::NColorRoles; ++role) {
            palette.setBrush(
                group, QPalette::ColorRole(role), palette.brush(group, QPalette::ColorRole(role)));
        }
    }
    return palette;
}
