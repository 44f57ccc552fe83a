// SPDX-License-Identifier: MIT
#include "ui/TextLine.h"

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QTextDocument>

namespace {

/**
 * Instead of the pictures and style sheets that a drive's texts name: nothing, and no file is opened for it.
 *
 * A document asks its parent first. What a resource provider answers comes too late: it is asked only after
 * the file could not be opened.
 */
class ClosedDocument : public QTextDocument
{
public:
    using QTextDocument::QTextDocument;

protected:
    QVariant loadResource(int /*type*/, const QUrl & /*name*/) override
    {
        // A picture, since without one the file would be tried once more.
        QImage nothing(1, 1, QImage::Format_ARGB32_Premultiplied);
        nothing.fill(Qt::transparent);
        return nothing;
    }
};

} // namespace

QLabel *newTextLine(const QString &text)
{
    auto *line = new QLabel;
    setTextLine(line, text);
    QFont font = QApplication::font();
    font.setPixelSize(10);
    line->setFixedHeight(12);
    line->setFont(font);
    return line;
}

void setTextLine(QLabel *line, const QString &text)
{
    // Before the text: a screen reader that is told of it would have Qt take the markup apart.
    line->setAccessibleName(withoutMarkup(text));
    line->setText(text);
    // For rich text the label has a document of its own, which it fills when it is laid out.
    if (auto *document = line->findChild<QTextDocument *>()) {
        document->setParent(new ClosedDocument(document->parent()));
    }
}

QString withoutMarkup(const QString &text)
{
    if (!Qt::mightBeRichText(text)) {
        return text;
    }
    ClosedDocument document;
    document.setHtml(text);
    return document.toPlainText();
}
