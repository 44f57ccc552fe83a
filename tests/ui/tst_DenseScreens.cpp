#include "tests/support/TestProgram.h"
#include "tests/support/WindowTexts.h"
#include "tests/ui/Looks.h"

#include <QLabel>
#include <QPushButton>
#include <QtTest>

using DeviceRecords::usbDrive;

namespace {

const QString DevicePictures = ":/firmwareUpdater/device/0x0E7A/";
const QString ErrorPicture = ":/firmwareUpdater/Error.png";

qreal scaleFactor()
{
    return qEnvironmentVariableIsSet("QT_SCALE_FACTOR") ? qgetenv("QT_SCALE_FACTOR").toDouble() : 1;
}

DeviceInfo drive(int productId, int status)
{
    DeviceInfo drive = usbDrive("A");
    drive.productId = std::uint16_t(productId);
    drive.firmwareStatus = status;
    return drive;
}

/// The compiled-in picture scaled once, to a pixel for each of the screen's.
QImage scaledOnce(const QString &path, int size)
{
    const int pixels = qRound(size * scaleFactor());
    return QPixmap(path).scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation).toImage();
}

/// True when the picture's opaque pixels are there, each as it is, with its corner at that place.
bool isAt(const QPoint &place, const QImage &picture, const QImage &shot)
{
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const bool opaque = qAlpha(picture.pixel(x, y)) == 255;
            if (opaque && shot.pixel(place.x() + x, place.y() + y) != picture.pixel(x, y)) {
                return false;
            }
        }
    }
    return true;
}

bool isSomewhereIn(const QImage &shot, const QImage &picture)
{
    for (int y = 0; y <= shot.height() - picture.height(); ++y) {
        for (int x = 0; x <= shot.width() - picture.width(); ++x) {
            if (isAt(QPoint(x, y), picture, shot)) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

/// Run once for each scale factor, which comes in QT_SCALE_FACTOR.
class tst_DenseScreens : public QObject
{
    Q_OBJECT

private slots:
    void pictureHasThePixelsOfTheScreen_data();
    void pictureHasThePixelsOfTheScreen();
    void sizesAreThoseOfFactorOne();
    void buttonIconHasThePixelsOfTheScreen_data();
    void buttonIconHasThePixelsOfTheScreen();
    void buttonsShareTheirIcon();
};

void tst_DenseScreens::pictureHasThePixelsOfTheScreen_data()
{
    QTest::addColumn<QVector<DeviceInfo>>("drives");
    QTest::addColumn<QString>("look");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("size");
    const auto row = [](const char *name, const DeviceInfo &drive, const char *look, int index,
                         const QString &path, int size) {
        QTest::newRow(name) << QVector<DeviceInfo>{drive} << QString(look) << index << path << size;
    };
    DeviceInfo anotherBus = usbDrive("A");
    anotherBus.vendorId = 1234;
    row("drive, source of 512 pixels", drive(0x1A24, 1), "", 0, DevicePictures + "1A24.png", 48);
    // Enlarged smoothly: drawn with its own pixels, some rows and columns of them would be twice as wide.
    row("drive, source of 48 pixels", drive(0x1A20, 1), "", 0, DevicePictures + "1A20.png", 48);
    row("drive on another bus", anotherBus, "", 0, WarningPicture, 48);
    row("update required", drive(0x1A20, 1), "", 1, UpdatePicture, 20);
    row("up to date", drive(0x1A20, 2), "", 1, OkPicture, 20);
    row("unknown", drive(0x1A20, 0), "", 1, WarningPicture, 20);
    row("restart", drive(0x1A20, 1), "restart", 1, WarningPicture, 48);
    row("failure", drive(0x1A20, 1), "failure", 1, ErrorPicture, 48);
}

void tst_DenseScreens::pictureHasThePixelsOfTheScreen()
{
    QFETCH(QVector<DeviceInfo>, drives);
    QFETCH(QString, look);
    QFETCH(int, index);
    QFETCH(QString, path);
    QFETCH(int, size);
    WindowFixture fixture;
    QCOMPARE(fixture.window.devicePixelRatioF(), scaleFactor());
    if (look.isEmpty()) {
        fixture.deliver(drives);
    } else {
        bringTo(fixture, look);
    }
    QCoreApplication::processEvents();
    QLabel *label = WindowProbe::pictures(fixture.window).value(index);
    QImage picture = label->pixmap(Qt::ReturnByValue).toImage();
    QCOMPARE(picture.devicePixelRatio(), scaleFactor());
    picture.setDevicePixelRatio(1);
    QCOMPARE(picture, scaledOnce(path, size));
    // And so it is drawn.
    QVERIFY(isSomewhereIn(label->grab().toImage(), scaledOnce(path, size)));
}

void tst_DenseScreens::sizesAreThoseOfFactorOne()
{
    WindowFixture fixture;
    fixture.deliver({drive(0x1A24, 1), drive(0x1A20, 2)});
    QCoreApplication::processEvents();
    QCOMPARE(fixture.window.size(), QSize(850, 320));
    QList<QSize> sizes;
    for (const QLabel *picture : WindowProbe::pictures(fixture.window)) {
        sizes.append(picture->size());
    }
    const QSize device(48, 48);
    const QSize status(20, 20);
    QCOMPARE(sizes, (QList<QSize>{device, device, status, status, status, status}));
    for (const QLabel *label : fixture.window.findChildren<QLabel *>()) {
        QVERIFY(label->text().isEmpty() || label->height() == 12);
    }
}

void tst_DenseScreens::buttonIconHasThePixelsOfTheScreen_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("path");
    QTest::newRow("update required") << 1 << UpdatePicture;
    QTest::newRow("unknown") << 7 << WarningPicture;
}

void tst_DenseScreens::buttonIconHasThePixelsOfTheScreen()
{
    QFETCH(int, status);
    QFETCH(QString, path);
    WindowFixture fixture;
    DeviceInfo device = drive(0x1A20, status);
    device.configurationStatus = status;
    fixture.deliver({device});
    QCoreApplication::processEvents();
    auto *button = fixture.window.findChild<QPushButton *>("updateButton");
    QCOMPARE(button->iconSize(), QSize(16, 16));
    QVERIFY(isSomewhereIn(button->grab().toImage(), scaledOnce(path, 16)));
}

// Each icon would put scaled copies of its own into the pixmap cache.
void tst_DenseScreens::buttonsShareTheirIcon()
{
    WindowFixture fixture;
    fixture.deliver({usbDrive("A"), usbDrive("B")});
    const auto buttons = fixture.window.findChildren<QPushButton *>("updateButton");
    QCOMPARE(buttons.size(), 2);
    QVERIFY(!buttons[0]->icon().isNull());
    QCOMPARE(buttons[0]->icon().cacheKey(), buttons[1]->icon().cacheKey());
}

static const TestClass<tst_DenseScreens, QApplication> denseScreensTests;
#include "tst_DenseScreens.moc"
