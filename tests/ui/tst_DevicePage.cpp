#include "tests/support/DeviceRecords.h"
#include "tests/support/PageFixture.h"
#include "tests/support/TestProgram.h"
#include "tests/support/WindowTexts.h"

#include <QProgressBar>
#include <QtTest>

using DeviceRecords::usbDrive;

namespace {

DeviceInfo driveNamed(std::uint16_t vendorId, std::uint16_t productId, const std::string &modelName)
{
    DeviceInfo drive = usbDrive();
    drive.vendorId = vendorId;
    drive.productId = productId;
    drive.modelName = modelName;
    return drive;
}

QString takePicturePath(const DeviceInfo &device, const QStringList &candidates)
{
    PageReceiver receiver;
    DeviceLayout page(&receiver, device);
    const std::unique_ptr<QLabel> icon(page.getIcon());
    if (icon->pixmap(Qt::ReturnByValue).isNull()) {
        return "none";
    }
    for (const QString &candidate : candidates) {
        if (icon->pixmap(Qt::ReturnByValue).toImage() == scaledPicture(candidate, 48)) {
            return candidate;
        }
    }
    return "another";
}

} // namespace

class tst_DevicePage : public QObject
{
    Q_OBJECT

private slots:
    void methodsHaveTheirIndex_data();
    void methodsHaveTheirIndex();
    void initialLook();
    void unsupportedBridgeHasNoFirstButtonButItsIconTextsAndRows();
    void vendorDecidesTheDrivePicture_data();
    void vendorDecidesTheDrivePicture();
    void missingPictureIsAnEmptyLabel_data();
    void missingPictureIsAnEmptyLabel();
    void pictureIsScaledIntoItsBoxKeepingItsRatio_data();
    void pictureIsScaledIntoItsBoxKeepingItsRatio();
    void progressBarIsWideAndBusyAndNeverShowsAPercentage();
    void progressBarSitsOffCentreToTheRight();
    void confirmationLook();
    void backgroundIsWhite();
    void pageLivesExactlyAsLongAsItsContent();
    void statesOfAPageWithoutFirstButtonAreHarmless();
};

void tst_DevicePage::methodsHaveTheirIndex_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("signature");
    QTest::addColumn<int>("type");
    QTest::newRow("0") << 0 << QByteArray("cancelUpdate()") << int(QMetaMethod::Signal);
    QTest::newRow("1") << 1 << QByteArray("updateDevice(QString)") << int(QMetaMethod::Signal);
    QTest::newRow("2") << 2 << QByteArray("startUpdate(QString)") << int(QMetaMethod::Signal);
    QTest::newRow("3") << 3 << QByteArray("updateDevice()") << int(QMetaMethod::Slot);
    QTest::newRow("4") << 4 << QByteArray("startUpdate()") << int(QMetaMethod::Slot);
}

void tst_DevicePage::methodsHaveTheirIndex()
{
    QFETCH(int, index);
    QFETCH(QByteArray, signature);
    QFETCH(int, type);
    const QMetaObject &meta = DeviceLayout::staticMetaObject;
    QCOMPARE(meta.className(), "DeviceLayout");
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 5);
    QCOMPARE(meta.method(meta.methodOffset() + index).methodSignature(), signature);
    QCOMPARE(int(meta.method(meta.methodOffset() + index).methodType()), type);
}

void tst_DevicePage::initialLook()
{
    PageFixture fixture(usbDrive());
    QCOMPARE(fixture.texts(),
        (QStringList{"Tarvo Pebble", "(firmware version: <b>1.2</b> => <b>1.3</b> )",
            "Firmware: Update required!", "Configuration: Update required!"}));
    QCOMPARE(fixture.pictures(),
        (QList<QImage>{scaledPicture(":/firmwareUpdater/device/0x0E7A/1A20.png", 48),
            scaledPicture(UpdatePicture, 20), scaledPicture(UpdatePicture, 20)}));
    QCOMPARE(fixture.buttons(), QStringList{"Update Firmware and Configuration"});
    QVERIFY(!WindowProbe::showsBusyBar(fixture.window));
    QVERIFY(!fixture.page->isVisible());
    QVERIFY(fixture.page->parentWidget() == nullptr);
    QVERIFY(fixture.page->layout() == nullptr);
}

void tst_DevicePage::unsupportedBridgeHasNoFirstButtonButItsIconTextsAndRows()
{
    DeviceInfo drive = usbDrive();
    drive.chipsetType = Chipset::NotSupported;
    PageFixture fixture(drive);
    QVERIFY(fixture.buttons().isEmpty());
    QCOMPARE(fixture.texts(), (QStringList{"Tarvo Pebble", "<b>Device not supported !</b>"}));
    QCOMPARE(fixture.pictures(),
        (QList<QImage>{scaledPicture(":/firmwareUpdater/device/0x0E7A/1A20.png", 48),
            scaledPicture(WarningPicture, 20)}));
}

void tst_DevicePage::vendorDecidesTheDrivePicture_data()
{
    QTest::addColumn<int>("vendorId");
    QTest::addColumn<int>("productId");
    QTest::addColumn<QByteArray>("modelName");
    QTest::addColumn<QString>("path");
    QTest::newRow("USB: by product ID")
        << 3706 << 0x1a2b << QByteArray("ModelX") << ":/firmwareUpdater/device/0x0E7A/1A2B.png";
    QTest::newRow("USB: ID below 0x1000 has leading zeros")
        << 3706 << 0xab << QByteArray("ModelX") << ":/firmwareUpdater/device/0x0E7A/00AB.png";
    QTest::newRow("FireWire: by model name")
        << 50658 << 0x1a2b << QByteArray("ModelX") << ":/firmwareUpdater/device/0xC5E2/ModelX.png";
    QTest::newRow("FireWire: blanks and parentheses")
        << 50658 << 0 << QByteArray("Harbour (FireWire 800)")
        << ":/firmwareUpdater/device/0xC5E2/Harbour (FireWire 800).png";
    QTest::newRow("FireWire: Latin-1")
        << 50658 << 0 << QByteArray("Mod\xE8le")
        << ":/firmwareUpdater/device/0xC5E2/Mod" + QString(QChar(0xE8)) + "le.png";
    QTest::newRow("FireWire: blanks at both ends")
        << 50658 << 0 << QByteArray(" ModelX ") << ":/firmwareUpdater/device/0xC5E2/ ModelX .png";
    QTest::newRow("another bus") << 1234 << 0x1a2b << QByteArray("ModelX") << WarningPicture;
    QTest::newRow("no bus") << 0 << 0x1a2b << QByteArray("ModelX") << WarningPicture;
}

void tst_DevicePage::vendorDecidesTheDrivePicture()
{
    QFETCH(int, vendorId);
    QFETCH(int, productId);
    QFETCH(QByteArray, modelName);
    QFETCH(QString, path);
    QVERIFY(!QPixmap(path).isNull());
    const DeviceInfo drive =
        driveNamed(std::uint16_t(vendorId), std::uint16_t(productId), modelName.toStdString());
    QCOMPARE(takePicturePath(drive, {path}), path);
}

void tst_DevicePage::missingPictureIsAnEmptyLabel_data()
{
    QTest::addColumn<int>("vendorId");
    QTest::addColumn<int>("productId");
    QTest::addColumn<QByteArray>("modelName");
    QTest::newRow("USB product without a picture") << 3706 << 0x9999 << QByteArray("Pebble");
    QTest::newRow("FireWire model without a picture") << 50658 << 0x1a2b << QByteArray("Nobody");
    QTest::newRow("FireWire model in other letters") << 50658 << 0x1a2b << QByteArray("modelx");
    QTest::newRow("FireWire model without a name") << 50658 << 0x1a2b << QByteArray();
}

void tst_DevicePage::missingPictureIsAnEmptyLabel()
{
    QFETCH(int, vendorId);
    QFETCH(int, productId);
    QFETCH(QByteArray, modelName);
    const DeviceInfo drive =
        driveNamed(std::uint16_t(vendorId), std::uint16_t(productId), modelName.toStdString());
    // Nothing is reported either.
    static QStringList messages;
    const QtMessageHandler previous = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext &, const QString &message) { messages.append(message); });
    const QString path = takePicturePath(drive, {});
    const qsizetype pictures = PageFixture(drive).pictures().size();
    qInstallMessageHandler(previous);
    QCOMPARE(path, QString("none"));
    QCOMPARE(pictures, qsizetype(2));
    QCOMPARE(messages.filter("QPixmap"), QStringList());
}

void tst_DevicePage::pictureIsScaledIntoItsBoxKeepingItsRatio_data()
{
    QTest::addColumn<int>("productId");
    QTest::addColumn<QSize>("size");
    QTest::newRow("100 x 200") << 0xab << QSize(24, 48);
    QTest::newRow("12 x 12") << 0xac << QSize(48, 48);
    QTest::newRow("512 x 512") << 0x1a24 << QSize(48, 48);
    QTest::newRow("48 x 48") << 0x1a20 << QSize(48, 48);
}

void tst_DevicePage::pictureIsScaledIntoItsBoxKeepingItsRatio()
{
    QFETCH(int, productId);
    QFETCH(QSize, size);
    PageFixture fixture(driveNamed(Vendor::Usb, std::uint16_t(productId), "Any"));
    QCOMPARE(fixture.pictures().first().size(), size);
}

void tst_DevicePage::progressBarIsWideAndBusyAndNeverShowsAPercentage()
{
    PageFixture fixture(usbDrive(), &DeviceLayout::updateInProgess);
    const auto *bar = fixture.window.findChild<QProgressBar *>();
    QVERIFY(bar->isVisible());
    QVERIFY(bar->width() >= 300);
    QCOMPARE(bar->minimumWidth(), 300);
    QCOMPARE(bar->minimum(), 0);
    QCOMPARE(bar->maximum(), 0);
    QVERIFY(bar->text().isEmpty());
}

void tst_DevicePage::progressBarSitsOffCentreToTheRight()
{
    PageFixture fixture(usbDrive(), &DeviceLayout::updateInProgess);
    const auto *bar = fixture.window.findChild<QProgressBar *>();
    const QWidget *content = fixture.page->contentWidget;
    const int left = bar->mapTo(content, QPoint()).x();
    const int right = content->width() - left - bar->width();
    QVERIFY2(qAbs(left - right - 25) <= 1, qPrintable(QString("%1 %2").arg(left).arg(right)));
}

void tst_DevicePage::confirmationLook()
{
    PageFixture fixture(usbDrive(), &DeviceLayout::deviceSelected);
    QCOMPARE(fixture.texts(),
        (QStringList{"Tarvo Pebble",
            "You are about to update your Tarvo <b>Pebble</b> firmware and configuration. (\"<b>1.2</b>\" => "
            "\"<b>1.3</b>\")",
            "To update your device, press <b>\"Update\"</b> button. To update later, press <b>\"Cancel\"</b> "
            "button."}));
    QCOMPARE(fixture.pictures().size(), 1);
    QCOMPARE(fixture.buttons(), (QStringList{"Update Firmware", "Cancel"}));
    QVERIFY(!WindowProbe::showsBusyBar(fixture.window));
}

void tst_DevicePage::backgroundIsWhite()
{
    PageFixture fixture(usbDrive());
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        QCOMPARE(fixture.page->palette().brush(group, QPalette::Window), QBrush(Qt::white));
    }
}

void tst_DevicePage::pageLivesExactlyAsLongAsItsContent()
{
    PageFixture fixture(usbDrive());
    delete fixture.page->contentWidget;
    QVERIFY(!fixture.page.isNull());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(fixture.page.isNull());
}

void tst_DevicePage::statesOfAPageWithoutFirstButtonAreHarmless()
{
    DeviceInfo drive = usbDrive();
    drive.chipsetType = Chipset::NotSupported;
    for (void (DeviceLayout::*stateFunction)() :
        {&DeviceLayout::deviceSelected, &DeviceLayout::updateInProgess, &DeviceLayout::updateSuccess,
            &DeviceLayout::restartDevice, &DeviceLayout::updateFailure}) {
        PageFixture fixture(drive, stateFunction);
        QVERIFY(!fixture.texts().isEmpty());
    }
}

static const TestClass<tst_DevicePage, QApplication> devicePageTests;
#include "tst_DevicePage.moc"
