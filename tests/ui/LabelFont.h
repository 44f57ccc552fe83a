// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QLabel>

/// The application's font is underlined, and the one that it gives to labels bold instead.
class LabelFont
{
public:
    LabelFont()
    {
        QFont font = previous;
        font.setUnderline(true);
        font.setBold(false);
        QApplication::setFont(font);
        font.setUnderline(false);
        font.setBold(true);
        QApplication::setFont(font, "QLabel");
    }
    ~LabelFont() { QApplication::setFont(previous); }
    LabelFont(const LabelFont &) = delete;
    LabelFont &operator=(const LabelFont &) = delete;

    /// The label's font comes from the application's.
    static bool isApplications(const QLabel &label)
    {
        return label.font().underline() && !label.font().bold();
    }

private:
    QFont previous = QApplication::font();
};
