#include "tests/support/DeviceRecords.h"
#include "tests/support/PageFixture.h"
#include "tests/support/TestProgram.h"
#include "tests/support/WidgetDescription.h"
#include "tests/support/WindowTexts.h"
#include "tests/ui/WindowFixture.h"

#include <QProgressBar>
#include <QScrollArea>
#include <QtTest>

using DeviceRecords::usbDrive;

namespace {

QFont smallFont()
{
    QFont font = QApplication::font();
    font.setPixelSize(10);
    return font;
}

QLabel *labelReading(const QWidget &widget, const QString &text)
{
    for (QLabel *label : widget.findChildren<QLabel *>()) {
        if (label->text() == text) {
            return label;
        }
    }
    return nullptr;
}

DeviceInfo driveWithChipset(std::int32_t chipsetType)
{
    DeviceInfo drive = usbDrive();
    drive.chipsetType = chipsetType;
    return drive;
}

QStringList indented(const QStringList &lines)
{
    QStringList result;
    for (const QString &line : lines) {
        result.append("  " + line);
    }
    return result;
}

/// A row of the column with that many drives.
QStringList rowOf(int drives)
{
    QStringList lines{"row", "  stretch"};
    for (int drive = 0; drive < drives; ++drive) {
        lines += QStringList{"  QWidget, centred horizontally", "  stretch"};
    }
    return indented(lines);
}

const QString Stretch = "  stretch";

/// The application's font is underlined, and the one that it gives to labels bold as well.
class LabelFont
{
public:
    LabelFont()
    {
        QFont font = previous;
        font.setUnderline(true);
        font.setBold(false);
        QApplication::setFont(font);
        font.setUnderline(false);
        font.setBold(true);
        QApplication::setFont(font, "QLabel");
    }
    ~LabelFont() { QApplication::setFont(previous); }
    LabelFont(const LabelFont &) = delete;
    LabelFont &operator=(const LabelFont &) = delete;

private:
    QFont previous = QApplication::font();
};

} // namespace

/// What holds the texts, pictures and buttons: an item that is placed or set up otherwise is a fault,
/// whether or not it shows with the style and the font that the test happens to run with.
class tst_Layouts : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void page_data();
    void page();
    void pageBelongsToItsContentAndTheContentToThePage();
    void pageWidgetsAreSetUpAsNew();
    void builtLabels_data();
    void builtLabels();
    void builtIcon();
    void builtLabelsHaveTheApplicationsFont_data();
    void builtLabelsHaveTheApplicationsFont();
    void window();
    void columnOfTheWindow_data();
    void columnOfTheWindow();
    void windowWidgetsAreSetUpAsNew();
    void versionHasTheApplicationsFont();
};

/// The pictures that a builder made beside its text belong to nobody in these tests.
void tst_Layouts::cleanup()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (qobject_cast<QLabel *>(widget) != nullptr) {
            delete widget;
        }
    }
}

void tst_Layouts::page_data()
{
    QTest::addColumn<DeviceInfo>("device");
    QTest::addColumn<QStringList>("firstLines");
    QTest::addColumn<QStringList>("firstButton");
    const QStringList statusRows{"row", Stretch, "  QLabel Firmware: Update required!, centred horizontally",
        "  QLabel picture, centred horizontally", Stretch, "row", Stretch,
        "  QLabel Configuration: Update required!, centred horizontally",
        "  QLabel picture, centred horizontally", Stretch};
    QTest::newRow("supported")
        << usbDrive()
        << QStringList{"QLabel Tarvo Pebble, centred horizontally",
               "QLabel (firmware version: <b>1.2</b> => <b>1.3</b> ), centred horizontally"}
            + statusRows
        << QStringList{"QPushButton Update Firmware and Configuration, centred"};
    // Its empty lines keep their places.
    QTest::newRow("not supported") << driveWithChipset(Chipset::NotSupported)
                                   << QStringList{"QLabel Tarvo Pebble, centred horizontally",
                                          "QLabel picture, centred horizontally", "row", Stretch,
                                          "  QLabel <b>Device not supported !</b>, centred horizontally",
                                          "  QLabel picture, centred horizontally", Stretch, "row", Stretch,
                                          "  QLabel picture, centred horizontally",
                                          "  QLabel picture, centred horizontally", Stretch}
                                   << QStringList{};
}

void tst_Layouts::page()
{
    QFETCH(DeviceInfo, device);
    QFETCH(QStringList, firstLines);
    QFETCH(QStringList, firstButton);
    const PageFixture fixture(device);
    const QStringList buttonsAndBar{"row", Stretch, "  QPushButton Update Firmware", Stretch,
        "  QPushButton Cancel", Stretch, "row", Stretch, "  spacing 25",
        "  QProgressBar, centred horizontally", Stretch, "QPushButton Finish, centred"};
    QCOMPARE(WidgetDescription::linesOf(*fixture.page->contentWidget->layout()),
        QStringList{"column"}
            + indented(QStringList{"QLabel picture, centred horizontally"} + firstLines
                + QStringList{"spacing 10"} + firstButton + buttonsAndBar));
}

void tst_Layouts::pageBelongsToItsContentAndTheContentToThePage()
{
    PageReceiver receiver;
    auto *page = new DeviceLayout(&receiver, usbDrive());
    QVERIFY(page->parent() == nullptr);
    QCOMPARE(page->contentWidget->parentWidget(), static_cast<QWidget *>(page));
    QVERIFY(page->layout() == nullptr);
    const QPointer<QWidget> content = page->contentWidget;
    for (const QWidget *widget : page->findChildren<QWidget *>()) {
        QVERIFY(widget == content || widget->parentWidget() == content);
    }
    delete page;
    QVERIFY(content.isNull());
}

void tst_Layouts::pageWidgetsAreSetUpAsNew()
{
    const PageFixture fixture(usbDrive());
    QWidget *content = fixture.page->contentWidget;
    QCOMPARE(WidgetDescription::differences(*content, QWidget(content->parentWidget())), QString());
    for (const QPushButton *button : content->findChildren<QPushButton *>()) {
        QPushButton reference(button->icon(), button->text(), content);
        QCOMPARE(WidgetDescription::differences(*button, reference), QString());
    }
    for (const QLabel *label : content->findChildren<QLabel *>()) {
        QLabel reference(label->text(), content);
        if (label->text().isEmpty()) {
            reference.setPixmap(label->pixmap(Qt::ReturnByValue));
        } else {
            reference.setFont(smallFont());
            reference.setFixedHeight(12);
        }
        QCOMPARE(WidgetDescription::differences(*label, reference), QString());
    }
    QProgressBar reference(content);
    reference.setRange(0, 0);
    reference.setMinimumWidth(300);
    QCOMPARE(WidgetDescription::differences(*content->findChild<QProgressBar *>(), reference), QString());
}

void tst_Layouts::builtLabels_data()
{
    QTest::addColumn<Builder>("builder");
    QTest::newRow("messageModelName") << Builder(&DeviceLayout::messageModelName);
    QTest::newRow("messageFirmwareVersion") << Builder(&DeviceLayout::messageFirmwareVersion);
    QTest::newRow("messageFirmwareStatus") << Builder(&DeviceLayout::messageFirmwareStatus);
    QTest::newRow("messageConfigurationStatus") << Builder(&DeviceLayout::messageConfigurationStatus);
    QTest::newRow("messageInstructions") << Builder(&DeviceLayout::messageInstructions);
    QTest::newRow("messageWarning") << Builder(&DeviceLayout::messageWarning);
    QTest::newRow("messageSuccess") << Builder(&DeviceLayout::messageSuccess);
    QTest::newRow("messageFailure") << Builder(&DeviceLayout::messageFailure);
}

void tst_Layouts::builtLabels()
{
    QFETCH(Builder, builder);
    for (const std::int32_t chipsetType : {Chipset::NotSupported, Chipset::Asm1051}) {
        PageReceiver receiver;
        DeviceLayout page(&receiver, driveWithChipset(chipsetType));
        const std::unique_ptr<QLabel> label((page.*builder)());
        QLabel reference(label->text());
        reference.setFont(smallFont());
        reference.setFixedHeight(12);
        QVERIFY(label->parent() == nullptr);
        QCOMPARE(label->windowFlags(), reference.windowFlags());
        QCOMPARE(WidgetDescription::differences(*label, reference), QString());
    }
}

void tst_Layouts::builtIcon()
{
    PageReceiver receiver;
    DeviceLayout page(&receiver, usbDrive());
    const std::unique_ptr<QLabel> icon(page.getIcon());
    QLabel reference;
    reference.setPixmap(icon->pixmap(Qt::ReturnByValue));
    QVERIFY(icon->parent() == nullptr);
    QCOMPARE(WidgetDescription::differences(*icon, reference), QString());
}

void tst_Layouts::builtLabelsHaveTheApplicationsFont_data()
{
    builtLabels_data();
}

void tst_Layouts::builtLabelsHaveTheApplicationsFont()
{
    QFETCH(Builder, builder);
    const LabelFont font;
    PageReceiver receiver;
    DeviceLayout page(&receiver, usbDrive());
    const std::unique_ptr<QLabel> label((page.*builder)());
    QVERIFY(label->font().underline());
    QVERIFY(!label->font().bold());
}

void tst_Layouts::window()
{
    WindowFixture fixture;
    fixture.deliver({usbDrive()});
    QCOMPARE(
        WidgetDescription::linesOf(*fixture.window.layout()), (QStringList{"column", "  QStackedWidget"}));
    QCOMPARE(WidgetDescription::linesOf(*fixture.page()->layout()),
        (QStringList{"column, margins 0 0 0 0", "  QScrollArea", "  row", "    QLabel " + VersionText}));
}

void tst_Layouts::columnOfTheWindow_data()
{
    QTest::addColumn<int>("drives");
    QTest::addColumn<bool>("selected");
    QTest::addColumn<QStringList>("lines");
    const QStringList first{"column", Stretch};
    QTest::newRow("no drive") << 0 << false << first + QStringList{"  QLabel " + NoDriveText, Stretch};
    QTest::newRow("one drive") << 1 << false
                               << first + rowOf(0) + QStringList{Stretch} + rowOf(1) + QStringList{Stretch};
    QTest::newRow("three drives") << 3 << false
                                  << first + rowOf(0) + QStringList{Stretch} + rowOf(3)
            + QStringList{Stretch};
    QTest::newRow("four drives") << 4 << false
                                 << first + rowOf(0) + QStringList{Stretch} + rowOf(3) + QStringList{Stretch}
            + rowOf(1) + QStringList{Stretch};
    QTest::newRow("one of five") << 5 << true << first + rowOf(1) + QStringList{Stretch};
}

void tst_Layouts::columnOfTheWindow()
{
    QFETCH(int, drives);
    QFETCH(bool, selected);
    QFETCH(QStringList, lines);
    WindowFixture fixture;
    QVector<DeviceInfo> list;
    for (int number = 0; number < drives; ++number) {
        list.append(usbDrive("SN-" + std::to_string(number)));
    }
    fixture.deliver(list);
    if (selected) {
        QVERIFY(QMetaObject::invokeMethod(&fixture.window, "updateDevice", Q_ARG(QString, "SN-4")));
    }
    const QScrollArea *area = fixture.window.findChild<QScrollArea *>();
    QCOMPARE(WidgetDescription::linesOf(*area->widget()->layout()), lines);
}

void tst_Layouts::windowWidgetsAreSetUpAsNew()
{
    WindowFixture fixture;
    QWidget *page = fixture.page();
    QCOMPARE(WidgetDescription::differences(*page, QWidget(page->parentWidget())), QString());

    QScrollArea area(page);
    area.setWidgetResizable(true);
    QCOMPARE(WidgetDescription::differences(*page->findChild<QScrollArea *>(), area), QString());

    const QLabel *version = labelReading(*page, VersionText);
    QLabel italic(version->text(), page);
    QFont font = smallFont();
    font.setStyle(QFont::StyleItalic);
    italic.setFont(font);
    italic.setFixedHeight(12);
    QCOMPARE(WidgetDescription::differences(*version, italic), QString());

    const QLabel *message = labelReading(*page, NoDriveText);
    QLabel centred(NoDriveText, message->parentWidget());
    centred.setAlignment(Qt::AlignCenter);
    centred.setWordWrap(true);
    QCOMPARE(WidgetDescription::differences(*message, centred), QString());
}

void tst_Layouts::versionHasTheApplicationsFont()
{
    const LabelFont font;
    WindowFixture fixture;
    const QLabel *version = labelReading(fixture.window, VersionText);
    QVERIFY(version->font().underline());
    QVERIFY(!version->font().bold());
}

static const TestClass<tst_Layouts, QApplication> layoutsTests;
#include "tst_Layouts.moc"
