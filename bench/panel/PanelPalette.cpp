#include "bench/panel/PanelPalette.h"

#include <QPalette>

namespace bench {

QPalette panelPalette()
{
    const QColor text(0x20, 0x20, 0x20);
    const QColor disabledText(0x60, 0x60, 0x60);
    const QColor button(0xF0, 0xF0, 0xF0);
    const QColor marked(0x14, 0x53, 0x8C);

    // Derives the shades of frames from the colour of a button, and the rest from the three others.
    QPalette palette(text, button, Qt::white, QColor(0xA0, 0xA0, 0xA0), QColor(0xC0, 0xC0, 0xC0), text,
        ProblemTextColor, Qt::white, Qt::white);
    const auto set = [&palette](QPalette::ColorRole role, const QColor &color) {
        palette.setColor(QPalette::All, role, color);
    };
    set(QPalette::Midlight, QColor(0xD0, 0xD0, 0xD0));
    set(QPalette::Shadow, QColor(0x70, 0x70, 0x70));
    set(QPalette::AlternateBase, button);
    set(QPalette::Highlight, marked);
    set(QPalette::HighlightedText, Qt::white);
    set(QPalette::Link, marked);
    set(QPalette::LinkVisited, QColor(0x5A, 0x1E, 0x82));
    set(QPalette::ToolTipBase, Qt::white);
    set(QPalette::ToolTipText, text);
    set(QPalette::PlaceholderText, disabledText);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, disabledText);
    }
    return palette;
}

} // namespace bench
