// SPDX-License-Identifier: MIT
#include "devices/DeviceDiscoveryThread.h"
#include "tests/support/DeviceRecords.h"
#include "tests/support/TestProgram.h"
#include "tests/ui/BoxAnswerer.h"
#include "tests/ui/WindowFixture.h"
#include "tests/ui/WindowMembers.h"
#include "update/UpdateDeviceThread.h"

#include <QPaintEvent>
#include <QScrollArea>
#include <QStackedWidget>
#include <QtTest>

#include <functional>
#include <memory>

using DeviceRecords::fireWireDrive;
using DeviceRecords::usbDrive;

namespace {

QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
bool isListTypeRegistered()
{
    // Qt 6 has another function for it, which Qt 5 has not.
    return QMetaType::type("QVector<DeviceInfo>") != QMetaType::UnknownType;
}
QT_WARNING_POP

MainWindow *findWindow()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *window = qobject_cast<MainWindow *>(widget)) {
            return window;
        }
    }
    return nullptr;
}

/// Calls the function for each event of that type of a window.
class EventObserver : public QObject
{
public:
    using Function = std::function<void(MainWindow &, QEvent &)>;
    EventObserver(QEvent::Type type, const Function &function) : type(type), function(function)
    {
        qApp->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        auto *window = qobject_cast<MainWindow *>(object);
        if (window != nullptr && event->type() == type) {
            function(*window, *event);
        }
        return false;
    }

private:
    const QEvent::Type type;
    const Function function;
};

} // namespace

class tst_MainWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void slotsHaveTheirIndexAndAccess();
    void rightAfterConstructionTheEmptyWindowIsOnScreen();
    void updateStatesHaveTheirNumbers();
    void terminateUpdateWorksThroughItsSlotIndex();
    void windowIsSetUpBeforeTheCompanionIsLookedFor();
    void threadRunsWhenTheWindowIsShown();
    void threadsInheritThePriority();
    void listsAndResultsFromTheSameThreadAreTakenAtOnce();
    void listsAndResultsFromOtherThreadsAreTakenOnTheWindows();
    void selectionIsEmptyButNotNull();
    void refreshPutsTheNewPageBeforeTheOldOne();
    void refreshDrawsTheWholeWindow();
    void destructionOnlyFlagsTheThreadToStop();
};

/// Before any test has built a window.
void tst_MainWindow::initTestCase()
{
    QVERIFY(!isListTypeRegistered());
    const WindowFixture fixture;
    QVERIFY(isListTypeRegistered());
}

void tst_MainWindow::slotsHaveTheirIndexAndAccess()
{
    const QMetaObject &meta = MainWindow::staticMetaObject;
    QStringList methods;
    for (int index = meta.methodOffset(); index < meta.methodCount(); ++index) {
        const QMetaMethod method = meta.method(index);
        QCOMPARE(method.methodType(), QMetaMethod::Slot);
        methods.append(QString(method.access() == QMetaMethod::Public ? "public " : "private ")
            + method.methodSignature() + ' ' + method.parameterNames().join());
    }
    const QString list = QMetaObject::normalizedSignature("updateDeviceList(QVector<DeviceInfo>)");
    QCOMPARE(methods,
        (QStringList{"public onExit() ", "public cancelUpdate() ",
            "public updateDevice(QString) deviceSerialNumber",
            "public startUpdate(QString) deviceSerialNumber", "public terminateUpdate() ",
            "private updateResult(bool) result", "private " + list + " deviceList"}));
    QCOMPARE(meta.className(), "MainWindow");
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
}

void tst_MainWindow::rightAfterConstructionTheEmptyWindowIsOnScreen()
{
    WindowFixture fixture;
    QVERIFY(fixture.window.isVisible());
    QWidget plain;
    plain.show();
    QCOMPARE(fixture.window.windowFlags(), plain.windowFlags());
    QCOMPARE(fixture.window.size(), QSize(850, 300));
    QCOMPARE(fixture.window.minimumSize(), QSize(350, 300));
    QCOMPARE(fixture.window.maximumSize(), QSize(850, 700));
    QCOMPARE(fixture.window.windowTitle(), QString("Tarvo Firmware Updater"));
    QCOMPARE(fixture.window.windowIcon().pixmap(32, 32).toImage(),
        QPixmap(":/firmwareUpdater/TarvoLogo.png").toImage());
    QVERIFY(fixture.texts().first().contains("No compatible Tarvo device were found."));
    QVERIFY(!fixture.window.quitAtStartup);
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        QCOMPARE(fixture.window.palette().brush(group, QPalette::Window), QBrush(Qt::white));
    }
    const QImage shot = fixture.window.grab().toImage();
    QCOMPARE(shot.pixelColor(2, 2), QColor(Qt::white));
    QCOMPARE(shot.pixelColor(shot.width() / 2, shot.height() / 4), QColor(Qt::white));
    // Nothing but the stack is a child of the window, and its blank page is gone.
    auto *stack = fixture.window.findChild<QStackedWidget *>();
    QCOMPARE(fixture.window.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly),
        QList<QWidget *>{stack});
    QCOMPARE(stack->count(), 1);
    QVERIFY(stack->currentWidget()->findChild<QScrollArea *>() != nullptr);
}

void tst_MainWindow::updateStatesHaveTheirNumbers()
{
    const QList<int> states{MainWindow::Idle, MainWindow::DeviceSelected, MainWindow::InProgress,
        MainWindow::Success, MainWindow::RestartDevice, MainWindow::Failure};
    QCOMPARE(states, (QList<int>{0, 1, 2, 3, 4, 5}));
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

void tst_MainWindow::windowIsSetUpBeforeTheCompanionIsLookedFor()
{
    bool looked = false;
    const WarnedWindow warned([&looked](QMessageBox &) {
        MainWindow *window = findWindow();
        QVERIFY(!window->isVisible());
        QCOMPARE(window->size(), QSize(850, 300));
        QCOMPARE(window->maximumSize(), QSize(850, 700));
        QCOMPARE(window->windowTitle(), QString("Tarvo Firmware Updater"));
        QVERIFY(!window->windowIcon().isNull());
        QCOMPARE(window->palette().window(), QBrush(Qt::white));
        // The blank page; and nobody looks for drives yet.
        QCOMPARE(window->findChild<QStackedWidget *>()->count(), 1);
        QCOMPARE(ScriptedPlatform::calls(), QStringList());
        QVERIFY(WindowMembers::discoveryThread(*window) == nullptr);
        looked = true;
    });
    QVERIFY(looked);
    QVERIFY(warned.window->isVisible());
}

void tst_MainWindow::threadRunsWhenTheWindowIsShown()
{
    QList<bool> runs;
    const EventObserver observer(QEvent::Show, [&runs](MainWindow &window, QEvent &) {
        const DeviceDiscoveryThread *thread = WindowMembers::discoveryThread(window);
        runs.append(thread != nullptr && thread->isRunning());
    });
    const WindowFixture fixture;
    QCOMPARE(runs, QList<bool>{true});
}

void tst_MainWindow::threadsInheritThePriority()
{
    WindowFixture fixture;
    ScriptedPlatform::holdFlashes();
    QCOMPARE(WindowMembers::discoveryThread(fixture.window)->priority(), QThread::InheritPriority);
    QVERIFY(WindowMembers::updateThread(fixture.window) == nullptr);
    fixture.deliver({usbDrive("A")});
    fixture.window.startUpdate("A");
    QTRY_COMPARE(ScriptedPlatform::count("updateDevice"), 1);
    QCOMPARE(WindowMembers::updateThread(fixture.window)->priority(), QThread::InheritPriority);
}

void tst_MainWindow::listsAndResultsFromTheSameThreadAreTakenAtOnce()
{
    WindowFixture fixture;
    ScriptedPlatform::holdFlashes();
    emit WindowMembers::discoveryThread(fixture.window)->updateDeviceList({usbDrive("A")});
    QCOMPARE(fixture.buttons(), QStringList{"Update Firmware and Configuration"});
    fixture.window.startUpdate("A");
    QCOMPARE(fixture.buttons(), QStringList());
    emit WindowMembers::updateThread(fixture.window)->updateResult(false);
    QCOMPARE(fixture.buttons(), QStringList{"Finish"});
    QTRY_COMPARE(ScriptedPlatform::count("updateDevice"), 1);
}

void tst_MainWindow::listsAndResultsFromOtherThreadsAreTakenOnTheWindows()
{
    WindowFixture fixture;
    QList<QThread *> threads;
    const auto *stack = fixture.window.findChild<QStackedWidget *>();
    connect(
        stack, &QStackedWidget::widgetRemoved, stack,
        [&threads] { threads.append(QThread::currentThread()); }, Qt::DirectConnection);
    ScriptedPlatform::attach({fireWireDrive("A")});
    ScriptedPlatform::releaseQueries();
    QTRY_COMPARE(threads.size(), 1);
    QVERIFY(fixture.texts().contains("Tarvo Harbour FireWire"));
    fixture.window.startUpdate("A");
    QTRY_COMPARE(threads.size(), 4);
    for (const QThread *thread : threads) {
        QCOMPARE(thread, qApp->thread());
    }
}

void tst_MainWindow::selectionIsEmptyButNotNull()
{
    WindowFixture fixture;
    const QString &selection = WindowMembers::selectedSerialNumber(fixture.window);
    const auto verifyEmpty = [&selection] {
        QVERIFY(selection.isEmpty());
        QVERIFY(!selection.isNull());
    };
    verifyEmpty();
    QStringList whileRefreshing;
    const auto *stack = fixture.window.findChild<QStackedWidget *>();
    connect(stack, &QStackedWidget::widgetRemoved, stack, [&] { whileRefreshing.append(selection); });
    fixture.window.updateDevice("A");
    QCOMPARE(selection, QString("A"));
    fixture.window.cancelUpdate();
    verifyEmpty();
    fixture.window.updateDevice("B");
    fixture.window.terminateUpdate();
    verifyEmpty();
    QCOMPARE(whileRefreshing, (QStringList{"A", "", "B", ""}));
    // Whether or not there is such a drive.
    fixture.window.startUpdate("GONE");
    QCOMPARE(selection, QString("GONE"));
}

void tst_MainWindow::refreshPutsTheNewPageBeforeTheOldOne()
{
    WindowFixture fixture;
    auto *stack = fixture.window.findChild<QStackedWidget *>();
    const QPointer<QWidget> previous = stack->currentWidget();
    QList<int> indices;
    connect(stack, &QStackedWidget::widgetRemoved, stack, [&](int index) {
        indices.append(index);
        QCOMPARE(stack->count(), 1);
        QVERIFY(!previous.isNull());
        // Only then is the window sized for the new page.
        QCOMPARE(fixture.window.size(), QSize(850, 300));
    });
    fixture.deliver(numberedDrives(4));
    QCOMPARE(indices, QList<int>{1});
    QVERIFY(previous.isNull());
    QCOMPARE(fixture.window.size(), QSize(850, 520));
}

void tst_MainWindow::refreshDrawsTheWholeWindow()
{
    WindowFixture fixture;
    QVERIFY(QTest::qWaitForWindowExposed(&fixture.window));
    QCoreApplication::processEvents();
    QRegion drawn;
    const EventObserver observer(QEvent::Paint,
        [&drawn](MainWindow &, QEvent &event) { drawn += static_cast<QPaintEvent &>(event).region(); });
    fixture.window.updateWindow();
    QTRY_VERIFY(drawn.contains(fixture.window.rect().topLeft()));
    QVERIFY(drawn.contains(fixture.window.rect().bottomRight()));
}

void tst_MainWindow::destructionOnlyFlagsTheThreadToStop()
{
    const StandInTools tools;
    const HeldPlatform platform;
    Arguments arguments;
    auto window = std::make_unique<MainWindow>(arguments.count, arguments.vector);
    QTRY_COMPARE(ScriptedPlatform::count("getTarvoDevice"), 1);
    const DeviceDiscoveryThread *thread = WindowMembers::discoveryThread(*window);
    // The thread is inside the library; waiting for it would never end.
    window.reset();
    QVERIFY(thread->isRunning());
    ScriptedPlatform::releaseQueries();
    QTRY_COMPARE(ScriptedPlatform::count("~DeviceDiscovery()"), 1);
    // It ends after its pause, without having asked again.
    QTRY_VERIFY(thread->isFinished());
    QCOMPARE(ScriptedPlatform::count("DeviceDiscovery()"), 1);
}

static const TestClass<tst_MainWindow, QApplication> mainWindowTests;
#include "tst_MainWindow.moc"
