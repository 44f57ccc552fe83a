// SPDX-License-Identifier: MIT
#include "tests/support/DeviceRecords.h"
#include "tests/support/TestProgram.h"
#include "tests/ui/WindowFixture.h"

#include <QLabel>
#include <QScreen>
#include <QtTest>

using DeviceRecords::usbDrive;

/// Run with the two screens of two-screens.json, of which the right one has twice as many pixels.
class tst_TwoScreens : public QObject
{
    Q_OBJECT

private slots:
    void pictureFollowsTheScreenAtTheNextRefresh();
};

void tst_TwoScreens::pictureFollowsTheScreenAtTheNextRefresh()
{
    QCOMPARE(QGuiApplication::screens().size(), 2);
    WindowFixture fixture;
    fixture.window.move(100, 100);
    const auto pictureRatio = [&fixture] {
        return WindowProbe::pictures(fixture.window).first()->pixmap(Qt::ReturnByValue).devicePixelRatio();
    };
    fixture.deliver({usbDrive("A")});
    QCOMPARE(pictureRatio(), 1.0);
    fixture.window.move(1400, 100);
    QTRY_COMPARE(fixture.window.devicePixelRatioF(), 2.0);
    fixture.deliver({usbDrive("A"), usbDrive("B")});
    QCOMPARE(pictureRatio(), 2.0);
    fixture.window.move(100, 100);
    QTRY_COMPARE(fixture.window.devicePixelRatioF(), 1.0);
    fixture.deliver({usbDrive("A")});
    QCOMPARE(pictureRatio(), 1.0);
}

static const TestClass<tst_TwoScreens, QApplication> twoScreensTests;
#include "tst_TwoScreens.moc"
