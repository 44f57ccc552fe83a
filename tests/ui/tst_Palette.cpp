#include "tests/support/TestProgram.h"
#include "tests/ui/WindowFixture.h"

#include <QStyle>
#include <QStyleFactory>
#include <QtTest>

#include <memory>

class tst_Palette : public QObject
{
    Q_OBJECT

private slots:
    void whatIsNotTextIsDrawnAsOnALightDesktop_data();
    void whatIsNotTextIsDrawnAsOnALightDesktop();
    void linksHaveColorsOfTheirOwn_data();
    void linksHaveColorsOfTheirOwn();
};

void tst_Palette::whatIsNotTextIsDrawnAsOnALightDesktop_data()
{
    QTest::addColumn<QPalette::ColorRole>("role");
    QTest::newRow("background of what is edited") << QPalette::Base;
    QTest::newRow("every other row") << QPalette::AlternateBase;
    QTest::newRow("button") << QPalette::Button;
    QTest::newRow("tool tip") << QPalette::ToolTipBase;
    QTest::newRow("light edge") << QPalette::Light;
    QTest::newRow("edge between light and the button") << QPalette::Midlight;
    QTest::newRow("edge between dark and the button") << QPalette::Mid;
    QTest::newRow("dark edge") << QPalette::Dark;
    QTest::newRow("shadow") << QPalette::Shadow;
}

void tst_Palette::whatIsNotTextIsDrawnAsOnALightDesktop()
{
    QFETCH(QPalette::ColorRole, role);
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create("Fusion"));
    QApplication::setPalette(QPalette(QColor(75, 75, 75), QColor(50, 50, 50)));
    const WindowFixture fixture;
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        const QColor wanted = fusion->standardPalette().color(group, role);
        QCOMPARE(fixture.window.palette().color(group, role).name(), wanted.name());
    }
}

void tst_Palette::linksHaveColorsOfTheirOwn_data()
{
    QTest::addColumn<QPalette::ColorRole>("role");
    QTest::addColumn<QString>("color");
    QTest::newRow("not visited") << QPalette::Link << "#0000ff";
    QTest::newRow("visited") << QPalette::LinkVisited << "#551a8b";
}

void tst_Palette::linksHaveColorsOfTheirOwn()
{
    QFETCH(QPalette::ColorRole, role);
    QFETCH(QString, color);
    QApplication::setPalette(QPalette(QColor(75, 75, 75), QColor(50, 50, 50)));
    const WindowFixture fixture;
    QCOMPARE(fixture.window.palette().color(QPalette::Active, role).name(), color);
    QCOMPARE(fixture.window.palette().color(QPalette::Inactive, role).name(), color);
}

static const TestClass<tst_Palette, QApplication> paletteTests;
#include "tst_Palette.moc"
