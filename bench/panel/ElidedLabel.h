#pragma once

#include <QLabel>

namespace bench {

/// One line of plain text that takes the width it is given: what does not fit ends in "…" and is in the tool
/// tip.
class ElidedLabel : public QLabel
{
    Q_OBJECT

public:
    /// `role`: that of the text's colour.
    explicit ElidedLabel(QWidget *parent, QPalette::ColorRole role = QPalette::WindowText);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;
};

} // namespace bench
