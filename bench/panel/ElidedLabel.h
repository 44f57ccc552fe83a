#pragma once

#include <QLabel>

namespace bench {

/// One line of plain text that takes the width it is given: what does not fit ends in "…" and is in the tool
/// tip.
class ElidedLabel : public QLabel
{
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget *parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;
};

} // namespace bench
