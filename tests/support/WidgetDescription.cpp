// SPDX-License-Identifier: MIT
#include "tests/support/WidgetDescription.h"

#include <QAbstractButton>
#include <QBoxLayout>
#include <QLabel>
#include <QMetaProperty>
#include <QWidget>

namespace {

QString alignmentOf(const QLayoutItem &item)
{
    const Qt::Alignment alignment = item.alignment();
    if (alignment == Qt::Alignment()) {
        return {};
    }
    if (alignment == Qt::AlignCenter) {
        return ", centred";
    }
    return alignment == Qt::AlignHCenter ? ", centred horizontally" : ", aligned otherwise";
}

QString nameOf(const QWidget &widget)
{
    QString text;
    if (const auto *label = qobject_cast<const QLabel *>(&widget)) {
        text = label->text().isEmpty() ? "picture" : label->text();
    } else if (const auto *button = qobject_cast<const QAbstractButton *>(&widget)) {
        text = button->text();
    } else {
        text = widget.objectName();
    }
    const QString kind = widget.metaObject()->className();
    return text.isEmpty() ? kind : kind + " " + text;
}

QString nameOf(QSpacerItem &spacer, bool vertical)
{
    const Qt::Orientation along = vertical ? Qt::Vertical : Qt::Horizontal;
    if (spacer.expandingDirections().testFlag(along)) {
        return "stretch";
    }
    const QSize size = spacer.sizeHint();
    return QString("spacing %1").arg(vertical ? size.height() : size.width());
}

/// The layout's own line, with what is not as in a layout in the same place that nobody has set up.
QString headingOf(const QLayout &layout, bool nested)
{
    const bool vertical = qobject_cast<const QVBoxLayout *>(&layout) != nullptr;
    const QBoxLayout::Direction direction = vertical ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight;
    // A window's margins are wider than those of a widget in it.
    QWidget window;
    QWidget child(&window);
    auto *outer = new QBoxLayout(direction, layout.parentWidget()->isWindow() ? &window : &child);
    const QBoxLayout *reference = outer;
    if (nested) {
        auto *inner = new QBoxLayout(direction);
        outer->addLayout(inner);
        reference = inner;
    }
    QString heading = vertical ? "column" : "row";
    const QMargins margins = layout.contentsMargins();
    if (margins != reference->contentsMargins()) {
        heading += QString(", margins %1 %2 %3 %4")
                       .arg(margins.left())
                       .arg(margins.top())
                       .arg(margins.right())
                       .arg(margins.bottom());
    }
    if (layout.spacing() != reference->spacing()) {
        heading += QString(", spacing %1").arg(layout.spacing());
    }
    return heading;
}

void describe(const QLayout &layout, const QString &indent, QStringList &lines)
{
    const auto *box = qobject_cast<const QBoxLayout *>(&layout);
    for (int index = 0; index < layout.count(); ++index) {
        QLayoutItem *item = layout.itemAt(index);
        const QString stretch =
            box->stretch(index) == 0 ? QString() : QString(", stretch factor %1").arg(box->stretch(index));
        const QString ending = alignmentOf(*item) + stretch;
        if (const QWidget *widget = item->widget()) {
            lines.append(indent + nameOf(*widget) + ending);
        } else if (const QLayout *nested = item->layout()) {
            lines.append(indent + headingOf(*nested, true) + ending);
            describe(*nested, indent + "  ", lines);
        } else {
            const bool vertical = qobject_cast<const QVBoxLayout *>(&layout) != nullptr;
            lines.append(indent + nameOf(*item->spacerItem(), vertical) + ending);
        }
    }
}

bool isLeftOut(const QByteArray &name)
{
    static const QList<QByteArray> names = {"objectName", "accessibleName", "accessibleDescription",
        "accessibleIdentifier", "focus", "focusPolicy", "autoDefault", "isActiveWindow", "visible",
        "minimized", "maximized", "fullScreen", "pos", "x", "y", "size", "width", "height", "rect",
        "geometry", "frameGeometry", "normalGeometry", "frameSize", "childrenRect", "childrenRegion",
        "frameRect", "sizeHint", "minimumSizeHint", "pixmap", "iconPixmap", "icon", "windowIcon"};
    return names.contains(name);
}

} // namespace

QStringList WidgetDescription::linesOf(const QLayout &layout)
{
    QStringList lines{headingOf(layout, false)};
    describe(layout, "  ", lines);
    return lines;
}

QString WidgetDescription::differences(const QWidget &widget, const QWidget &reference)
{
    QStringList different;
    const QMetaObject &meta = *widget.metaObject();
    for (int index = 0; index < meta.propertyCount(); ++index) {
        const QMetaProperty property = meta.property(index);
        if (!isLeftOut(property.name()) && property.read(&widget) != property.read(&reference)) {
            different.append(property.name());
        }
    }
    return different.join(", ");
}
