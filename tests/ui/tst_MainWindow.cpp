#include "devices/DeviceDiscoveryThread.h"
#include "tests/support/DeviceRecords.h"
#include "tests/ui/WindowFixture.h"

#include <QScrollArea>
#include <QStackedWidget>
#include <QtTest>

#include <memory>

using DeviceRecords::usbDrive;

class tst_MainWindow : public QObject
{
    Q_OBJECT

private slots:
    void slotsHaveTheirIndexAndAccess_data();
    void slotsHaveTheirIndexAndAccess();
    void hasNoSignalsNoPropertiesAndItsName();
    void rightAfterConstructionTheEmptyWindowIsOnScreen();
    void windowHasTheLogo();
    void backgroundIsWhiteInAllColourGroups();
    void stackHoldsExactlyOnePageAndTheBlankOneIsGone();
    void firstListArrivesFromTheDiscoveryThread();
    void updateStatesHaveTheirNumbers_data();
    void updateStatesHaveTheirNumbers();
    void terminateUpdateWorksThroughItsSlotIndex();
    void destructionOnlyFlagsTheThreadToStop();
};

void tst_MainWindow::slotsHaveTheirIndexAndAccess_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("signature");
    QTest::addColumn<QList<QByteArray>>("parameters");
    QTest::addColumn<int>("access");
    const int open = QMetaMethod::Public;
    const int closed = QMetaMethod::Private;
    QTest::newRow("onExit") << 0 << QByteArray("onExit()") << QList<QByteArray>() << open;
    QTest::newRow("cancelUpdate") << 1 << QByteArray("cancelUpdate()") << QList<QByteArray>() << open;
    QTest::newRow("updateDevice") << 2 << QByteArray("updateDevice(QString)")
                                  << QList<QByteArray>{"deviceSerialNumber"} << open;
    QTest::newRow("startUpdate") << 3 << QByteArray("startUpdate(QString)")
                                 << QList<QByteArray>{"deviceSerialNumber"} << open;
    QTest::newRow("terminateUpdate") << 4 << QByteArray("terminateUpdate()") << QList<QByteArray>() << open;
    QTest::newRow("updateResult") << 5 << QByteArray("updateResult(bool)") << QList<QByteArray>{"result"}
                                  << closed;
    QTest::newRow("updateDeviceList") << 6 << QByteArray("updateDeviceList(QVector<DeviceInfo>)")
                                      << QList<QByteArray>{"deviceList"} << closed;
}

void tst_MainWindow::slotsHaveTheirIndexAndAccess()
{
    QFETCH(int, index);
    QFETCH(QByteArray, signature);
    QFETCH(QList<QByteArray>, parameters);
    QFETCH(int, access);
    const QMetaObject &meta = MainWindow::staticMetaObject;
    const QMetaMethod method = meta.method(meta.methodOffset() + index);
    QCOMPARE(method.methodSignature(), QMetaObject::normalizedSignature(signature));
    QCOMPARE(method.parameterNames(), parameters);
    QCOMPARE(method.methodType(), QMetaMethod::Slot);
    QCOMPARE(int(method.access()), access);
}

void tst_MainWindow::hasNoSignalsNoPropertiesAndItsName()
{
    const QMetaObject &meta = MainWindow::staticMetaObject;
    QCOMPARE(meta.className(), "MainWindow");
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 7);
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    WindowFixture fixture;
    QCOMPARE(fixture.window.qt_metacast("MainWindow"), static_cast<void *>(&fixture.window));
    QCOMPARE(fixture.window.qt_metacast("QWidget"), static_cast<void *>(&fixture.window));
    QVERIFY(fixture.window.qt_metacast("DeviceLayout") == nullptr);
}

void tst_MainWindow::rightAfterConstructionTheEmptyWindowIsOnScreen()
{
    WindowFixture fixture;
    QVERIFY(fixture.window.isVisible());
    QVERIFY(fixture.window.isWindow());
    QCOMPARE(fixture.window.size(), QSize(850, 300));
    QCOMPARE(fixture.window.minimumSize(), QSize(350, 300));
    QCOMPARE(fixture.window.maximumSize(), QSize(850, 700));
    QCOMPARE(fixture.window.windowTitle(), QString("Tarvo Firmware Updater"));
    QVERIFY(fixture.texts().first().contains("No compatible Tarvo device were found."));
    QVERIFY(!fixture.window.quitAtStartup);
}

void tst_MainWindow::windowHasTheLogo()
{
    WindowFixture fixture;
    const QPixmap logo(":/firmwareUpdater/TarvoLogo.png");
    QVERIFY(!logo.isNull());
    QCOMPARE(fixture.window.windowIcon().pixmap(32, 32).toImage(), logo.toImage());
}

void tst_MainWindow::backgroundIsWhiteInAllColourGroups()
{
    WindowFixture fixture;
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        QCOMPARE(fixture.window.palette().brush(group, QPalette::Window), QBrush(Qt::white));
    }
    const QImage shot = fixture.window.grab().toImage();
    QCOMPARE(shot.pixelColor(2, 2), QColor(Qt::white));
    QCOMPARE(shot.pixelColor(shot.width() / 2, shot.height() / 4), QColor(Qt::white));
}

void tst_MainWindow::stackHoldsExactlyOnePageAndTheBlankOneIsGone()
{
    WindowFixture fixture;
    auto *stack = fixture.window.findChild<QStackedWidget *>();
    QVERIFY(stack != nullptr);
    QCOMPARE(stack->count(), 1);
    // Nothing but the stack is a child of the window, and the one page has content.
    QCOMPARE(fixture.window.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly),
        QList<QWidget *>{stack});
    QVERIFY(stack->currentWidget()->findChild<QScrollArea *>() != nullptr);
    fixture.deliver({usbDrive()});
    QCOMPARE(stack->count(), 1);
    QCOMPARE(stack->currentIndex(), 0);
}

void tst_MainWindow::firstListArrivesFromTheDiscoveryThread()
{
    WindowFixture fixture;
    QVERIFY(fixture.texts().first().contains("No compatible Tarvo device were found."));
    ScriptedPlatform::attach({usbDrive()});
    ScriptedPlatform::releaseQueries();
    QTRY_VERIFY(fixture.texts().contains("Tarvo Pebble"));
}

void tst_MainWindow::updateStatesHaveTheirNumbers_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<int>("number");
    QTest::newRow("Idle") << int(MainWindow::Idle) << 0;
    QTest::newRow("DeviceSelected") << int(MainWindow::DeviceSelected) << 1;
    QTest::newRow("InProgress") << int(MainWindow::InProgress) << 2;
    QTest::newRow("Success") << int(MainWindow::Success) << 3;
    QTest::newRow("RestartDevice") << int(MainWindow::RestartDevice) << 4;
    QTest::newRow("Failure") << int(MainWindow::Failure) << 5;
}

void tst_MainWindow::updateStatesHaveTheirNumbers()
{
    QFETCH(int, state);
    QFETCH(int, number);
    QCOMPARE(state, number);
}

void tst_MainWindow::terminateUpdateWorksThroughItsSlotIndex()
{
    WindowFixture fixture;
    fixture.deliver({usbDrive("A"), usbDrive("B")});
    QVERIFY(fixture.click("Update Firmware and Configuration"));
    QCOMPARE(fixture.buttons(), (QStringList{"Update Firmware", "Cancel"}));
    const QMetaObject &meta = MainWindow::staticMetaObject;
    QVERIFY(meta.method(meta.methodOffset() + 4).invoke(&fixture.window));
    QCOMPARE(fixture.buttons(), WindowProbe::repeated(2, "Update Firmware and Configuration"));
}

void tst_MainWindow::destructionOnlyFlagsTheThreadToStop()
{
    const StandInTools tools;
    const HeldPlatform platform;
    Arguments arguments;
    auto window = std::make_unique<MainWindow>(arguments.count, arguments.vector);
    QTRY_COMPARE(ScriptedPlatform::count("getTarvoDevice"), 1);
    // The thread is inside the library; waiting for it would never end.
    window.reset();
    ScriptedPlatform::releaseQueries();
    QTRY_COMPARE(ScriptedPlatform::count("~DeviceDiscovery()"), 1);
    // Its pause is over after two seconds; a thread that had not been told to stop would ask again.
    QElapsedTimer pause;
    pause.start();
    QTRY_VERIFY(pause.elapsed() > 2500);
    QCOMPARE(ScriptedPlatform::count("DeviceDiscovery()"), 1);
}

QTEST_MAIN(tst_MainWindow)
#include "tst_MainWindow.moc"
