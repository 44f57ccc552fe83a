// SPDX-License-Identifier: MIT
#include "tests/support/PageFixture.h"
#include "tests/support/TestProgram.h"
#include "tests/ui/Looks.h"
#include "ui/TextLine.h"

#include <QAccessible>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

#include <sys/stat.h>

/// Model names and versions stand in the texts as the drive sends them, so they may be markup.
class tst_Markup : public QObject
{
    Q_OBJECT

private slots:
    void noFileIsOpened_data();
    void noFileIsOpened();
    void markupIsDrawnAsALabelDrawsIt_data();
    void markupIsDrawnAsALabelDrawsIt();
};

void tst_Markup::noFileIsOpened_data()
{
    QTest::addColumn<QString>("look");
    QTest::addColumn<QString>("markup");
    for (const QString &look : Looks) {
        QTest::addRow("%s, picture", qPrintable(look)) << look << R"(<img src="%1">)";
        QTest::addRow("%s, picture by its address", qPrintable(look)) << look << R"(<img src="file://%1">)";
        QTest::addRow("%s, style sheet", qPrintable(look)) << look << R"(<style>@import url("%1");</style>)";
        QTest::addRow("%s, background", qPrintable(look)) << look << "<p style='background-image:url(%1)'>x";
    }
}

void tst_Markup::noFileIsOpened()
{
    QFETCH(QString, look);
    QFETCH(QString, markup);
    // Who opens it waits for somebody to write into it, until the test is ended.
    const QTemporaryDir directory;
    const QString pipe = directory.filePath("pipe");
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    WindowFixture fixture;
    bringTo(fixture, look, markup.arg(pipe).toStdString());
    fixture.window.grab();
    for (QLabel *label : fixture.window.findChildren<QLabel *>()) {
        QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name);
    }
}

void tst_Markup::markupIsDrawnAsALabelDrawsIt_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << "Tarvo Pebble";
    QTest::newRow("bold") << "Tarvo <b>Pebble</b>";
    QTest::newRow("color and size") << "Tarvo <font color=red size=5>Pebble</font>";
    QTest::newRow("not closed") << "Tarvo <i>Pebble";
    QTest::newRow("no markup") << "Tarvo 1 < 2 & 3";
}

void tst_Markup::markupIsDrawnAsALabelDrawsIt()
{
    QFETCH(QString, text);
    const std::unique_ptr<QLabel> line(newTextLine("<b>another text</b>"));
    setTextLine(line.get(), text);
    QLabel label(text);
    label.setFont(line->font());
    label.setFixedHeight(12);
    QCOMPARE(line->text(), text);
    QCOMPARE(line->sizeHint(), label.sizeHint());
    QCOMPARE(line->grab().toImage(), label.grab().toImage());
    QCOMPARE(QAccessible::queryAccessibleInterface(line.get())->text(QAccessible::Name),
        QAccessible::queryAccessibleInterface(&label)->text(QAccessible::Name));
}

static const TestClass<tst_Markup, QApplication> markupTests;
#include "tst_Markup.moc"
