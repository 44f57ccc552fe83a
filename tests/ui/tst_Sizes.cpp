#include "tests/support/TestProgram.h"
#include "tests/ui/Looks.h"

#include <QFontDatabase>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QtTest>

namespace {

/// Fonts that a desktop may have as its default.
QList<QFont> fonts()
{
    QList<QFont> fonts;
    for (const char *family : {"DejaVu Sans", "DejaVu Serif", "Noto Sans CJK JP"}) {
        // Another family is as good for the test where this one is not installed.
        for (const int points : {8, 9, 11, 14, 17, 20}) {
            fonts.append(QFont(family, points));
        }
    }
    return fonts;
}

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

template <typename Widget>
QList<Widget *> visible(const QWidget &window)
{
    QList<Widget *> widgets;
    for (Widget *widget : window.findChildren<Widget *>()) {
        if (widget->isVisible()) {
            widgets.append(widget);
        }
    }
    return widgets;
}

/// Everything with something on it: buttons, bars, and labels that are not empty.
QList<QWidget *> contents(const QWidget &container)
{
    QList<QWidget *> widgets;
    for (QLabel *label : visible<QLabel>(container)) {
        if (!label->text().isEmpty() || !label->pixmap(Qt::ReturnByValue).isNull()) {
            widgets.append(label);
        }
    }
    for (QWidget *widget : visible<QPushButton>(container)) {
        widgets.append(widget);
    }
    for (QWidget *widget : visible<QProgressBar>(container)) {
        widgets.append(widget);
    }
    return widgets;
}

void verifyNothingIsClipped(const QWidget &window)
{
    for (const QPushButton *button : visible<QPushButton>(window)) {
        QVERIFY2(button->width() >= button->sizeHint().width(), qPrintable(button->text()));
        QVERIFY2(button->height() >= button->sizeHint().height(), qPrintable(button->text()));
        QVERIFY(button->height() >= button->fontMetrics().height());
    }
    for (const QLabel *label : visible<QLabel>(window)) {
        if (label->wordWrap()) {
            QVERIFY2(label->height() >= label->heightForWidth(label->width()), qPrintable(label->text()));
        } else if (!label->text().isEmpty()) {
            QVERIFY2(label->width() >= label->sizeHint().width(), qPrintable(label->text()));
            QCOMPARE(label->height(), 12);
            QCOMPARE(label->font().pixelSize(), 10);
        }
    }
}

void verifyNothingOverlaps(const QWidget &container)
{
    QList<QRect> places;
    for (const QWidget *widget : contents(container)) {
        const QRect place(widget->mapTo(&container, QPoint()), widget->size());
        QVERIFY(container.rect().contains(place));
        for (const QRect &other : places) {
            QVERIFY(!place.intersects(other));
        }
        places.append(place);
    }
}

/// Scrolling brings every corner of the container into sight.
void verifyScrollsEverywhere(const QScrollArea &area)
{
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
    void nothingIsClippedInAnyFont_data();
    void nothingIsClippedInAnyFont();
    void nothingOverlapsInAnyWindow_data();
    void nothingOverlapsInAnyWindow();

private:
    const QFont desktopFont = QApplication::font();
};

void tst_Sizes::cleanup()
{
    QApplication::setFont(desktopFont);
}

void tst_Sizes::nothingIsClippedInAnyFont_data()
{
    QTest::addColumn<QFont>("font");
    QTest::addColumn<QString>("look");
    for (const QFont &font : fonts()) {
        for (const QString &look : Looks) {
            QTest::addRow("%s %d, %s", qPrintable(font.family()), font.pointSize(), qPrintable(look))
                << font << look;
        }
    }
}

void tst_Sizes::nothingIsClippedInAnyFont()
{
    QFETCH(QFont, font);
    QFETCH(QString, look);
    QApplication::setFont(font);
    WindowFixture fixture;
    bringTo(fixture, look);
    for (const QSize size : {QSize(850, 700), QSize(850, 300), QSize(350, 700), QSize(350, 300)}) {
        fixture.window.resize(size);
        QCoreApplication::processEvents();
        verifyNothingIsClipped(fixture.window);
        const auto *area = fixture.window.findChild<QScrollArea *>();
        verifyNothingOverlaps(*area->widget());
        verifyScrollsEverywhere(*area);
        if (QTest::currentTestFailed()) {
            qWarning("at %d x %d", size.width(), size.height());
            return;
        }
    }
}

void tst_Sizes::nothingOverlapsInAnyWindow_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("points");
    for (const int count : {1, 3, 10, 60}) {
        for (const QSize size : {QSize(850, 700), QSize(350, 700), QSize(350, 300)}) {
            for (const int points : {8, 20}) {
                QTest::addRow("%d drives, %d x %d, %d points", count, size.width(), size.height(), points)
                    << count << size << points;
            }
        }
    }
}

void tst_Sizes::nothingOverlapsInAnyWindow()
{
    QFETCH(int, count);
    QFETCH(QSize, size);
    QFETCH(int, points);
    QApplication::setFont(QFont("DejaVu Sans", points));
    WindowFixture fixture;
    fixture.deliver(drivesByTurns(count));
    fixture.window.resize(size);
    QCoreApplication::processEvents();
    QCOMPARE(fixture.window.size(), size);
    verifyNothingIsClipped(fixture.window);
    const auto *area = fixture.window.findChild<QScrollArea *>();
    verifyNothingOverlaps(*area->widget());
    verifyScrollsEverywhere(*area);
}

static const TestClass<tst_Sizes, QApplication> sizesTests;
#include "tst_Sizes.moc"
