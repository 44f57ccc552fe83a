// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

namespace bench {

/// A label that shows any text as it is, in as many lines as it takes in the width that the layout gives it.
class TextLabel : public QLabel
{
public:
    /// `role`: that of the text's colour.
    explicit TextLabel(QWidget *parent, QPalette::ColorRole role = QPalette::WindowText) : QLabel(parent)
    {
        setForegroundRole(role);
        setTextFormat(Qt::PlainText);
        setWordWrap(true);
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    }
};

} // namespace bench
