// SPDX-License-Identifier: MIT
#include "tests/support/TestProgram.h"
#include "tests/support/WindowTexts.h"
#include "tests/ui/Looks.h"

#include <QLabel>
#include <QPushButton>
#include <QtTest>

using DeviceRecords::usbDrive;

namespace {

const QString DevicePictures = ":/firmwareUpdater/device/0x0E7A/";

qreal scaleFactor()
{
    return qEnvironmentVariableIsSet("QT_SCALE_FACTOR") ? qgetenv("QT_SCALE_FACTOR").toDouble() : 1;
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
    void picturesHaveThePixelsOfTheScreen_data();
    void picturesHaveThePixelsOfTheScreen();
    void buttonsShareTheirIcon();
};

void tst_DenseScreens::picturesHaveThePixelsOfTheScreen_data()
{
    QTest::addColumn<QString>("look"); // of a drive whose picture has 48 pixels; else the list
    QTest::addColumn<int>("productId");
    QTest::addColumn<int>("status");
    QTest::addColumn<QStringList>("paths"); // of the drive, of its status, of its button
    const auto row = [](const char *name, const char *look, int productId, int status,
                         const QStringList &paths) {
        QTest::newRow(name) << QString(look) << productId << status << paths;
    };
    row("512 pixels, update required", "list", 0x1A24, 1,
        {DevicePictures + "1A24.png", UpdatePicture, UpdatePicture});
    // Enlarged smoothly: drawn with its own pixels, some rows and columns of them would be twice as wide.
    row("48 pixels, up to date", "list", 0x1A20, 2, {DevicePictures + "1A20.png", OkPicture});
    row("unknown status", "list", 0x1A20, 7, {DevicePictures + "1A20.png", WarningPicture, WarningPicture});
    row("restart", "restart", 0, 1, {DevicePictures + "1A20.png", WarningPicture});
    row("failure", "failure", 0, 1, {DevicePictures + "1A20.png", ":/firmwareUpdater/Error.png"});
}

void tst_DenseScreens::picturesHaveThePixelsOfTheScreen()
{
    QFETCH(QString, look);
    QFETCH(int, productId);
    QFETCH(int, status);
    QFETCH(QStringList, paths);
    WindowFixture fixture;
    QCOMPARE(fixture.window.devicePixelRatioF(), scaleFactor());
    bringTo(fixture, look);
    if (look == "list") {
        DeviceInfo drive = usbDrive("A");
        drive.productId = std::uint16_t(productId);
        drive.firmwareStatus = status;
        drive.configurationStatus = status;
        fixture.deliver({drive});
    }
    QCoreApplication::processEvents();
    for (const int index : {0, 1}) {
        const int size = index == 0 || look != "list" ? 48 : 20;
        QLabel *label = WindowProbe::pictures(fixture.window).value(index);
        QImage picture = label->pixmap(Qt::ReturnByValue).toImage();
        QCOMPARE(label->size(), QSize(size, size));
        QCOMPARE(picture.devicePixelRatio(), scaleFactor());
        picture.setDevicePixelRatio(1);
        QCOMPARE(picture, scaledOnce(paths[index], size));
        // And so it is drawn.
        QVERIFY(isSomewhereIn(label->grab().toImage(), scaledOnce(paths[index], size)));
    }
    if (paths.size() == 3) {
        auto *button = fixture.window.findChild<QPushButton *>("updateButton");
        QCOMPARE(button->iconSize(), QSize(16, 16));
        QVERIFY(isSomewhereIn(button->grab().toImage(), scaledOnce(paths[2], 16)));
    }
    QCOMPARE(fixture.window.size(), QSize(850, 320));
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
