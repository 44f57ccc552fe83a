// SPDX-License-Identifier: MIT
#include "devices/DeviceTexts.h"
#include "tests/support/DeviceRecords.h"
#include "tests/support/PageFixture.h"
#include "tests/support/TestProgram.h"
#include "tests/support/WidgetDescription.h"
#include "tests/support/WindowTexts.h"
#include "tests/ui/LabelFont.h"

#include <QProgressBar>
#include <QtTest>

#include <memory>

using DeviceRecords::usbDrive;

namespace {

const QString UsbPictures = ":/firmwareUpdater/device/0x0E7A/";
const QString FireWirePictures = ":/firmwareUpdater/device/0xC5E2/";

/// A label with the look of every line of text.
std::unique_ptr<QLabel> newReference(const QString &text, QWidget *parent = nullptr)
{
    auto label = std::make_unique<QLabel>(text, parent);
    QFont font = QApplication::font();
    font.setPixelSize(10);
    label->setFont(font);
    label->setFixedHeight(12);
    return label;
}

} // namespace

class tst_DevicePage : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void methodsHaveTheirIndex();
    void itemsStandInTheirPlaces_data();
    void itemsStandInTheirPlaces();
    void widgetsAreSetUpAsNew();
    void barIsBusyAndSitsOffCentreToTheRight();
    void builderMakesANewLabelOfItsText_data();
    void builderMakesANewLabelOfItsText();
    void vendorDecidesTheDrivePicture_data();
    void vendorDecidesTheDrivePicture();
    void statusesDecideTheStatusPictures_data();
    void statusesDecideTheStatusPictures();
    void pageBelongsToItsContentAndTheContentToThePage();
    void pageLivesExactlyAsLongAsItsContent();
};

/// The pictures that a builder made beside its text belong to nobody in these tests.
void tst_DevicePage::cleanup()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (qobject_cast<QLabel *>(widget) != nullptr) {
            delete widget;
        }
    }
}

void tst_DevicePage::methodsHaveTheirIndex()
{
    const QMetaObject &meta = DeviceLayout::staticMetaObject;
    QStringList methods;
    for (int index = meta.methodOffset(); index < meta.methodCount(); ++index) {
        const QString kind = meta.method(index).methodType() == QMetaMethod::Signal ? "signal " : "slot ";
        methods.append(kind + meta.method(index).methodSignature());
    }
    QCOMPARE(methods,
        (QStringList{"signal cancelUpdate()", "signal updateDevice(QString)", "signal startUpdate(QString)",
            "slot updateDevice()", "slot startUpdate()"}));
    QCOMPARE(meta.className(), "DeviceLayout");
}

void tst_DevicePage::itemsStandInTheirPlaces_data()
{
    QTest::addColumn<int>("chipsetType");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QStringList>("firstButton");
    QTest::newRow("supported") << 1
                               << QStringList{"(firmware version: <b>1.2</b> => <b>1.3</b> )",
                                      "Firmware: Update required!", "Configuration: Update required!"}
                               << QStringList{"  QPushButton Update Firmware and Configuration, centred"};
    // Its empty lines keep their places.
    QTest::newRow("not supported: no first button")
        << 0 << QStringList{"picture", "<b>Device not supported !</b>", "picture"} << QStringList{};
}

void tst_DevicePage::itemsStandInTheirPlaces()
{
    QFETCH(int, chipsetType);
    QFETCH(QStringList, texts);
    QFETCH(QStringList, firstButton);
    DeviceInfo drive = usbDrive();
    drive.chipsetType = chipsetType;
    const PageFixture fixture(drive);
    const auto statusRow = [](const QString &text) {
        return QStringList{"  row", "    stretch", "    QLabel " + text + ", centred horizontally",
            "    QLabel picture, centred horizontally", "    stretch"};
    };
    const QStringList before{"column", "  QLabel picture, centred horizontally",
        "  QLabel Tarvo Pebble, centred horizontally", "  QLabel " + texts[0] + ", centred horizontally"};
    const QStringList after{"  row", "    stretch", "    QPushButton Update Firmware", "    stretch",
        "    QPushButton Cancel", "    stretch", "  row", "    stretch", "    spacing 25",
        "    QProgressBar, centred horizontally", "    stretch", "  QPushButton Finish, centred"};
    QCOMPARE(WidgetDescription::linesOf(*fixture.page->contentWidget->layout()),
        before + statusRow(texts[1]) + statusRow(texts[2]) + QStringList{"  spacing 10"} + firstButton
            + after);
}

void tst_DevicePage::widgetsAreSetUpAsNew()
{
    const PageFixture fixture(usbDrive());
    QWidget *content = fixture.page->contentWidget;
    QCOMPARE(WidgetDescription::differences(*content, QWidget(content->parentWidget())), QString());
    for (const QPushButton *button : content->findChildren<QPushButton *>()) {
        const QPushButton reference(button->icon(), button->text(), content);
        QCOMPARE(WidgetDescription::differences(*button, reference), QString());
    }
    for (const QLabel *label : content->findChildren<QLabel *>()) {
        QLabel picture(content);
        picture.setPixmap(label->pixmap(Qt::ReturnByValue));
        const auto text = newReference(label->text(), content);
        QCOMPARE(
            WidgetDescription::differences(*label, label->text().isEmpty() ? picture : *text), QString());
    }
    QProgressBar bar(content);
    bar.setRange(0, 0);
    bar.setMinimumWidth(300);
    QCOMPARE(WidgetDescription::differences(*content->findChild<QProgressBar *>(), bar), QString());
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        QCOMPARE(fixture.page->palette().brush(group, QPalette::Window), QBrush(Qt::white));
    }
}

void tst_DevicePage::barIsBusyAndSitsOffCentreToTheRight()
{
    const PageFixture fixture(usbDrive(), &DeviceLayout::updateInProgess);
    const auto *bar = fixture.window.findChild<QProgressBar *>();
    QVERIFY(WindowProbe::showsBusyBar(fixture.window));
    QVERIFY(bar->text().isEmpty());
    QVERIFY(bar->width() >= 300);
    const QWidget *content = fixture.page->contentWidget;
    const int left = bar->mapTo(content, QPoint()).x();
    const int right = content->width() - left - bar->width();
    QVERIFY2(qAbs(left - right - 25) <= 1, qPrintable(QString("%1 %2").arg(left).arg(right)));
}

void tst_DevicePage::builderMakesANewLabelOfItsText_data()
{
    QTest::addColumn<Builder>("builder");
    QTest::addColumn<QString>("text");
    const DeviceInfo drive = usbDrive();
    const auto row = [](const char *name, Builder builder, const QString &text) {
        QTest::newRow(name) << builder << text;
    };
    row("messageModelName", &DeviceLayout::messageModelName, DeviceTexts::modelName(drive));
    row("messageFirmwareVersion", &DeviceLayout::messageFirmwareVersion, DeviceTexts::firmwareVersion(drive));
    row("messageFirmwareStatus", &DeviceLayout::messageFirmwareStatus, DeviceTexts::firmwareStatus(drive));
    row("messageConfigurationStatus", &DeviceLayout::messageConfigurationStatus,
        DeviceTexts::configurationStatus(drive));
    row("messageInstructions", &DeviceLayout::messageInstructions, DeviceTexts::instructions());
    row("messageWarning", &DeviceLayout::messageWarning, DeviceTexts::warning(drive));
    row("messageSuccess", &DeviceLayout::messageSuccess, DeviceTexts::success(drive));
    row("messageFailure", &DeviceLayout::messageFailure, DeviceTexts::failure(drive));
}

void tst_DevicePage::builderMakesANewLabelOfItsText()
{
    QFETCH(Builder, builder);
    QFETCH(QString, text);
    PageReceiver receiver;
    DeviceLayout page(&receiver, usbDrive());
    const std::unique_ptr<QLabel> label((page.*builder)());
    const std::unique_ptr<QLabel> another((page.*builder)());
    QVERIFY(label != another);
    QVERIFY(label->parent() == nullptr);
    QCOMPARE(label->text(), text);
    QCOMPARE(WidgetDescription::differences(*label, *newReference(text)), QString());
    const LabelFont font;
    QVERIFY(LabelFont::isApplications(*std::unique_ptr<QLabel>((page.*builder)())));
}

void tst_DevicePage::vendorDecidesTheDrivePicture_data()
{
    QTest::addColumn<int>("vendorId");
    QTest::addColumn<int>("productId");
    QTest::addColumn<QByteArray>("modelName");
    QTest::addColumn<QString>("path"); // empty for no picture
    QTest::addColumn<QSize>("size");
    const auto row = [](const char *name, int vendorId, int productId, const QByteArray &modelName,
                         const QString &path, const QSize &size = QSize(48, 48)) {
        QTest::newRow(name) << vendorId << productId << modelName << path << size;
    };
    const QString latin1 = FireWirePictures + "Mod" + QChar(0xE8) + "le.png";
    row("USB: by product ID", 3706, 0x1a2b, "ModelX", UsbPictures + "1A2B.png");
    row("USB: leading zeros; 100 x 200", 3706, 0xab, "ModelX", UsbPictures + "00AB.png", QSize(24, 48));
    row("USB: 12 x 12", 3706, 0xac, "ModelX", UsbPictures + "00AC.png");
    row("USB: 512 x 512", 3706, 0x1a24, "ModelX", UsbPictures + "1A24.png");
    row("USB: without a picture", 3706, 0x9999, "Pebble", "");
    row("FireWire: by model name", 50658, 0x1a2b, "ModelX", FireWirePictures + "ModelX.png");
    row("FireWire: blanks and parentheses", 50658, 0, "Harbour (FireWire 800)",
        FireWirePictures + "Harbour (FireWire 800).png");
    row("FireWire: Latin-1", 50658, 0, "Mod\xE8le", latin1);
    row("FireWire: blanks at both ends", 50658, 0, " ModelX ", FireWirePictures + " ModelX .png",
        QSize(24, 48));
    row("FireWire: without a picture", 50658, 0x1a2b, "Nobody", "");
    row("FireWire: in other letters", 50658, 0x1a2b, "modelx", "");
    row("FireWire: without a name", 50658, 0x1a2b, "", "");
    row("another bus", 1234, 0x1a2b, "ModelX", WarningPicture);
    row("no bus", 0, 0x1a2b, "ModelX", WarningPicture);
}

void tst_DevicePage::vendorDecidesTheDrivePicture()
{
    QFETCH(int, vendorId);
    QFETCH(int, productId);
    QFETCH(QByteArray, modelName);
    QFETCH(QString, path);
    QFETCH(QSize, size);
    DeviceInfo drive = usbDrive();
    drive.vendorId = std::uint16_t(vendorId);
    drive.productId = std::uint16_t(productId);
    drive.modelName = modelName.toStdString();
    PageReceiver receiver;
    DeviceLayout page(&receiver, drive);
    const std::unique_ptr<QLabel> icon(page.getIcon());
    QVERIFY(icon->parent() == nullptr);
    const QPixmap picture = icon->pixmap(Qt::ReturnByValue);
    QCOMPARE(picture.isNull(), path.isEmpty());
    if (!path.isEmpty()) {
        QCOMPARE(picture.size(), size);
        QCOMPARE(picture.toImage(), scaledPicture(path, 48));
    }
}

void tst_DevicePage::statusesDecideTheStatusPictures_data()
{
    QTest::addColumn<int>("chipsetType");
    QTest::addColumn<int>("firmwareStatus");
    QTest::addColumn<int>("configurationStatus");
    QTest::addColumn<QStringList>("pictures");
    QTest::newRow("not supported: once") << 0 << 1 << 2 << QStringList{WarningPicture};
    QTest::newRow("update required, up to date") << 1 << 1 << 2 << QStringList{UpdatePicture, OkPicture};
    QTest::newRow("up to date, update required") << -1 << 2 << 1 << QStringList{OkPicture, UpdatePicture};
    QTest::newRow("not determined") << 4 << 0 << 0 << QStringList{WarningPicture, WarningPicture};
    QTest::newRow("unknown, up to date") << 1 << 3 << 2 << QStringList{WarningPicture, OkPicture};
    QTest::newRow("up to date, unknown") << 1 << 2 << -1 << QStringList{OkPicture, WarningPicture};
}

void tst_DevicePage::statusesDecideTheStatusPictures()
{
    QFETCH(int, chipsetType);
    QFETCH(int, firmwareStatus);
    QFETCH(int, configurationStatus);
    QFETCH(QStringList, pictures);
    DeviceInfo drive = usbDrive();
    drive.chipsetType = chipsetType;
    drive.firmwareStatus = firmwareStatus;
    drive.configurationStatus = configurationStatus;
    QList<QImage> expected{scaledPicture(UsbPictures + "1A20.png", 48)};
    for (const QString &picture : pictures) {
        expected.append(scaledPicture(picture, 20));
    }
    QCOMPARE(PageFixture(drive).pictures(), expected);
}

void tst_DevicePage::pageBelongsToItsContentAndTheContentToThePage()
{
    PageReceiver receiver;
    auto *page = new DeviceLayout(&receiver, usbDrive());
    QVERIFY(page->parent() == nullptr);
    QVERIFY(page->layout() == nullptr);
    const QPointer<QWidget> content = page->contentWidget;
    QCOMPARE(content->parentWidget(), static_cast<QWidget *>(page));
    for (const QWidget *widget : page->findChildren<QWidget *>()) {
        QVERIFY(widget == content || widget->parentWidget() == content);
    }
    delete page;
    QVERIFY(content.isNull());
}

void tst_DevicePage::pageLivesExactlyAsLongAsItsContent()
{
    PageFixture fixture(usbDrive());
    QVERIFY(!fixture.page->isVisible());
    delete fixture.page->contentWidget;
    QVERIFY(!fixture.page.isNull());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(fixture.page.isNull());
}

static const TestClass<tst_DevicePage, QApplication> devicePageTests;
#include "tst_DevicePage.moc"
