// SPDX-License-Identifier: MIT
#include "tests/support/TestProgram.h"
#include "tests/ui/Looks.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QtTest>

namespace {

/// That many drives, in the states of mixedDrives() by turns.
QVector<DeviceInfo> drivesByTurns(int count)
{
    QVector<DeviceInfo> list;
    for (int number = 0; number < count; ++number) {
        list.append(mixedDrives()[number % 4]);
        list.last().serialNumber += std::to_string(number);
    }
    return list;
}

/// What needs its room: buttons, bars, and labels that are not empty.
QList<QWidget *> contentsOf(const QWidget &container)
{
    QList<QWidget *> widgets;
    for (QWidget *widget : container.findChildren<QWidget *>()) {
        const auto *label = qobject_cast<QLabel *>(widget);
        const bool filled =
            label != nullptr && (!label->text().isEmpty() || !label->pixmap(Qt::ReturnByValue).isNull());
        const bool other =
            qobject_cast<QPushButton *>(widget) != nullptr || qobject_cast<QProgressBar *>(widget) != nullptr;
        if (widget->isVisible() && (filled || other)) {
            widgets.append(widget);
        }
    }
    return widgets;
}

/// Whether the widget shows all of its text. The lines of a page keep their height whatever the font is.
bool hasRoom(const QWidget &widget)
{
    const auto *label = qobject_cast<const QLabel *>(&widget);
    if (label != nullptr && label->wordWrap()) {
        return label->height() >= label->heightForWidth(label->width());
    }
    const bool line = label != nullptr && !label->text().isEmpty();
    return widget.width() >= widget.sizeHint().width()
        && (line ? widget.height() == 12 : widget.height() >= widget.sizeHint().height());
}

/// Nothing on the page is clipped or overlaps, and scrolling brings every corner of it into sight.
void verifyPage(const QScrollArea &area)
{
    QList<QRect> places;
    for (const QWidget *widget : contentsOf(*area.widget())) {
        QVERIFY2(hasRoom(*widget), qPrintable(widget->property("text").toString()));
        const QRect place(widget->mapTo(area.widget(), QPoint()), widget->size());
        QVERIFY(area.widget()->rect().contains(place));
        for (const QRect &other : places) {
            QVERIFY(!place.intersects(other));
        }
        places.append(place);
    }
    const QSize hidden = area.widget()->size() - area.viewport()->size();
    QVERIFY(area.horizontalScrollBar()->maximum() >= hidden.width());
    QVERIFY(area.verticalScrollBar()->maximum() >= hidden.height());
}

} // namespace

class tst_Sizes : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void everythingHasItsRoom_data();
    void everythingHasItsRoom();

private:
    const QFont desktopFont = QApplication::font();
};

void tst_Sizes::cleanup()
{
    QApplication::setFont(desktopFont);
}

void tst_Sizes::everythingHasItsRoom_data()
{
    QTest::addColumn<QFont>("font");
    QTest::addColumn<QString>("look");
    QTest::addColumn<int>("count"); // of the drives in a list
    // Another family is as good for the test where one of these is not installed.
    for (const char *family : {"DejaVu Sans", "DejaVu Serif", "Noto Sans CJK JP"}) {
        for (const int points : {8, 11, 20}) {
            for (const QString &look : Looks) {
                QTest::addRow("%s %d, %s", family, points, qPrintable(look))
                    << QFont(family, points) << look << 4;
            }
        }
    }
    for (const int count : {1, 10, 60}) {
        QTest::addRow("%d drives", count) << QFont("DejaVu Sans", 20) << "list" << count;
    }
}

void tst_Sizes::everythingHasItsRoom()
{
    QFETCH(QFont, font);
    QFETCH(QString, look);
    QFETCH(int, count);
    QApplication::setFont(font);
    WindowFixture fixture;
    bringTo(fixture, look);
    if (look == "list") {
        fixture.deliver(drivesByTurns(count));
    }
    for (const QSize size : {QSize(850, 700), QSize(850, 300), QSize(350, 700), QSize(350, 300)}) {
        fixture.window.resize(size);
        QCoreApplication::processEvents();
        verifyPage(*fixture.window.findChild<QScrollArea *>());
        if (QTest::currentTestFailed()) {
            qWarning("at %d x %d", size.width(), size.height());
            return;
        }
    }
}

static const TestClass<tst_Sizes, QApplication> sizesTests;
#include "tst_Sizes.moc"
