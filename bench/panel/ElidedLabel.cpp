#include "bench/panel/ElidedLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

namespace bench {

ElidedLabel::ElidedLabel(QWidget *parent, QPalette::ColorRole role) : QLabel(parent)
{
    setForegroundRole(role);
    setTextFormat(Qt::PlainText);
    // The text must not move the columns: their widths are the layout's business.
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

QSize ElidedLabel::sizeHint() const
{
    const QMargins margins = contentsMargins();
    return {0, fontMetrics().height() + margins.top() + margins.bottom()};
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width());
    style()->drawItemText(&painter, contentsRect(), static_cast<int>(alignment()) | Qt::TextSingleLine,
        palette(), isEnabled(), shown, foregroundRole());
}

bool ElidedLabel::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip
        && fontMetrics().horizontalAdvance(text()) > contentsRect().width()) {
        const QPoint position = static_cast<QHelpEvent *>(event)->globalPos();
        QToolTip::showText(position, QStringLiteral("<p>%1</p>").arg(text().toHtmlEscaped()), this);
        return true;
    }
    return QLabel::event(event);
}

} // namespace bench
