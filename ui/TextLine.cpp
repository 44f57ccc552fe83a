#include "ui/TextLine.h"

#include <QApplication>
#include <QLabel>

QLabel *newTextLine(const QString &text)
{
    auto *label = new QLabel(text);
    QFont font = QApplication::font();
    font.setPixelSize(10);
    label->setFixedHeight(12);
    label->setFont(font);
    return label;
}
