#include "tests/support/DeviceRecords.h"
#include "tests/support/EventLoop.h"
#include "tests/support/PageFixture.h"
#include "tests/support/TestProgram.h"
#include "tests/support/WindowTexts.h"

#include <QtTest>

using DeviceRecords::usbDrive;

namespace {

const QString DrivePicture = ":/firmwareUpdater/device/0x0E7A/1A20.png";

DeviceInfo updatedDrive()
{
    DeviceInfo drive = usbDrive();
    drive.firmwareStatus = Status::UpToDate;
    drive.configurationStatus = Status::UpdateRequired;
    return drive;
}

/// The page's widgets, from top to bottom and left to right.
const QStringList WidgetNames = {"icon", "model", "version", "firmware status", "firmware icon",
    "configuration status", "configuration icon", "update", "start", "cancel", "bar", "finish"};

QList<QWidget *> widgetsOf(const QLayout &layout)
{
    QList<QWidget *> widgets;
    for (int index = 0; index < layout.count(); ++index) {
        if (QWidget *widget = layout.itemAt(index)->widget()) {
            widgets.append(widget);
        } else if (const QLayout *nested = layout.itemAt(index)->layout()) {
            widgets += widgetsOf(*nested);
        }
    }
    return widgets;
}

/// What happens to the widgets that it is installed on.
class EventLog : public QObject
{
public:
    QStringList changes;
    int paintings = 0;

protected:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::HideToParent) {
            changes.append("hide " + object->objectName());
        } else if (event->type() == QEvent::ShowToParent) {
            changes.append("show " + object->objectName());
        } else if (event->type() == QEvent::Paint) {
            ++paintings;
        }
        return false;
    }
};

} // namespace

class tst_DevicePageLooks : public QObject
{
    Q_OBJECT

private slots:
    void eachLookShowsItsWidgets_data();
    void eachLookShowsItsWidgets();
    void inProgressLookOffersNoButton();
    void restartLookHasNoButtonAndTheBusyBarRuns();
    void successLookComputesItsRowsFromTheRecordUnderTheSuccessLine();
    void failureLookKeepsTheModelLineAndShowsTheErrorImage();
    void successAndFailureOfferOnlyFinishWhichQuits_data();
    void successAndFailureOfferOnlyFinishWhichQuits();
    void successKeepsTheIconsOfTheConstructionOnScreen_data();
    void successKeepsTheIconsOfTheConstructionOnScreen();
    void looksHideAndShowInOrder_data();
    void looksHideAndShowInOrder();
    void looksAreDrawnAgain_data();
    void looksAreDrawnAgain();
    void onlySuccessEnablesFinish();
};

void tst_DevicePageLooks::eachLookShowsItsWidgets_data()
{
    QTest::addColumn<StateFunction>("stateFunction");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QStringList>("pictures");
    QTest::addColumn<QStringList>("buttons");
    QTest::addColumn<bool>("busy");
    const QString drive = DrivePicture + "@48";
    const QString update = ":/firmwareUpdater/Update.png@20";
    QTest::newRow("initial") << StateFunction(nullptr)
                             << QStringList{"Tarvo Pebble", "(firmware version: <b>1.2</b> => <b>1.3</b> )",
                                    "Firmware: Update required!", "Configuration: Update required!"}
                             << QStringList{drive, update, update}
                             << QStringList{"Update Firmware and Configuration"} << false;
    QTest::newRow("confirmation") << StateFunction(&DeviceLayout::deviceSelected)
                                  << QStringList{"Tarvo Pebble",
                                         "You are about to update your Tarvo <b>Pebble</b> firmware and "
                                         "configuration. (\"<b>1.2</b>\" => "
                                         "\"<b>1.3</b>\")",
                                         "To update your device, press <b>\"Update\"</b> button. To update "
                                         "later, press <b>\"Cancel\"</b> "
                                         "button."}
                                  << QStringList{drive} << QStringList{"Update Firmware", "Cancel"} << false;
    QTest::newRow("in progress")
        << StateFunction(&DeviceLayout::updateInProgess)
        << QStringList{"Tarvo Pebble", "<b>DO NOT disconnect the device during the firmware update.</b>",
               "<b>Doing so may cause irreparable harm to your data and/or disk.</b>"}
        << QStringList{drive} << QStringList{} << true;
    QTest::newRow("success") << StateFunction(&DeviceLayout::updateSuccess)
                             << QStringList{SuccessLine, "Firmware: Update required!",
                                    "Configuration: Update required!"}
                             << QStringList{drive, update, update} << QStringList{"Finish"} << false;
    QTest::newRow("restart") << StateFunction(&DeviceLayout::restartDevice)
                             << QStringList{SuccessLine,
                                    "Please unplug and replug your Tarvo <b>Pebble</b> hard drive to power "
                                    "off and power on the device."}
                             << QStringList{drive, ":/firmwareUpdater/Warning.png@48"} << QStringList{}
                             << true;
    QTest::newRow("failure") << StateFunction(&DeviceLayout::updateFailure)
                             << QStringList{"Tarvo Pebble",
                                    "Error while updating your Tarvo <b>Pebble</b> device. Please retry."}
                             << QStringList{drive, ":/firmwareUpdater/Error.png@48"} << QStringList{"Finish"}
                             << false;
}

void tst_DevicePageLooks::eachLookShowsItsWidgets()
{
    QFETCH(StateFunction, stateFunction);
    QFETCH(QStringList, texts);
    QFETCH(QStringList, pictures);
    QFETCH(QStringList, buttons);
    QFETCH(bool, busy);
    const PageFixture fixture(usbDrive());
    if (stateFunction != nullptr) {
        // The texts on screen are all set anew.
        for (QLabel *label : fixture.window.findChildren<QLabel *>()) {
            if (!label->text().isEmpty()) {
                label->setText("text of another look");
            }
        }
        (fixture.page->*stateFunction)();
        QCoreApplication::processEvents();
    }
    QCOMPARE(fixture.texts(), texts);
    QCOMPARE(fixture.buttons(), buttons);
    QCOMPARE(WindowProbe::showsBusyBar(fixture.window), busy);
    QList<QImage> expected;
    for (const QString &picture : pictures) {
        expected.append(scaledPicture(picture.section('@', 0, 0), picture.section('@', 1).toInt()));
    }
    QCOMPARE(fixture.pictures(), expected);
}

void tst_DevicePageLooks::inProgressLookOffersNoButton()
{
    const PageFixture fixture(usbDrive(), &DeviceLayout::updateInProgess);
    QVERIFY(fixture.buttons().isEmpty());
}

void tst_DevicePageLooks::restartLookHasNoButtonAndTheBusyBarRuns()
{
    const PageFixture fixture(usbDrive(), &DeviceLayout::restartDevice);
    QVERIFY(fixture.buttons().isEmpty());
    QVERIFY(WindowProbe::showsBusyBar(fixture.window));
}

void tst_DevicePageLooks::successLookComputesItsRowsFromTheRecordUnderTheSuccessLine()
{
    const PageFixture fixture(updatedDrive(), &DeviceLayout::updateSuccess);
    QCOMPARE(fixture.texts(),
        (QStringList{SuccessLine, "Firmware: Up to date.", "Configuration: Update required!"}));
    QCOMPARE(fixture.pictures(),
        (QList<QImage>{scaledPicture(DrivePicture, 48), scaledPicture(":/firmwareUpdater/Ok.png", 20),
            scaledPicture(":/firmwareUpdater/Update.png", 20)}));
}

void tst_DevicePageLooks::failureLookKeepsTheModelLineAndShowsTheErrorImage()
{
    const PageFixture fixture(usbDrive(), &DeviceLayout::updateFailure);
    QCOMPARE(fixture.texts().first(), QString("Tarvo Pebble"));
    QCOMPARE(fixture.pictures().last(), scaledPicture(":/firmwareUpdater/Error.png", 48));
}

void tst_DevicePageLooks::successAndFailureOfferOnlyFinishWhichQuits_data()
{
    QTest::addColumn<StateFunction>("stateFunction");
    QTest::newRow("success") << StateFunction(&DeviceLayout::updateSuccess);
    QTest::newRow("failure") << StateFunction(&DeviceLayout::updateFailure);
}

void tst_DevicePageLooks::successAndFailureOfferOnlyFinishWhichQuits()
{
    QFETCH(StateFunction, stateFunction);
    PageFixture fixture(usbDrive(), stateFunction);
    QCOMPARE(fixture.buttons(), QStringList{"Finish"});
    QVERIFY(WindowProbe::button(fixture.window, "Finish")->isEnabled());
    QCOMPARE(exitCodeAfterQuitting([&fixture] { fixture.click("Finish"); }), 0);
    QVERIFY(fixture.receiver.received.isEmpty());
}

void tst_DevicePageLooks::successKeepsTheIconsOfTheConstructionOnScreen_data()
{
    QTest::addColumn<int>("chipsetType");
    QTest::addColumn<int>("firmwareStatus");
    QTest::addColumn<int>("configurationStatus");
    QTest::newRow("both required") << 1 << 1 << 1;
    QTest::newRow("both up to date") << 1 << 2 << 2;
    QTest::newRow("both unknown") << 1 << 3 << 3;
    QTest::newRow("firmware up to date") << 1 << 2 << 1;
    QTest::newRow("configuration up to date") << 1 << 1 << 2;
    QTest::newRow("not supported") << 0 << 1 << 1;
}

void tst_DevicePageLooks::successKeepsTheIconsOfTheConstructionOnScreen()
{
    DeviceInfo drive = usbDrive();
    QFETCH(int, chipsetType);
    QFETCH(int, firmwareStatus);
    QFETCH(int, configurationStatus);
    drive.chipsetType = chipsetType;
    drive.firmwareStatus = firmwareStatus;
    drive.configurationStatus = configurationStatus;
    const QList<QImage> constructed = PageFixture(drive).pictures();
    {
        const PageFixture fixture(drive, &DeviceLayout::updateSuccess);
        QCOMPARE(fixture.pictures(), constructed);
    }

    PageReceiver receiver;
    const QPointer<DeviceLayout> page = new DeviceLayout(&receiver, drive);
    const QList<QWidget *> onScreen = widgetsOf(*page->contentWidget->layout());
    const auto widgets = QApplication::allWidgets().size();
    page->updateSuccess();
    QCOMPARE(widgetsOf(*page->contentWidget->layout()), onScreen);
    QCOMPARE(QApplication::allWidgets().size(), widgets);
    delete page->contentWidget;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(page.isNull());
    QVERIFY(QApplication::allWidgets().isEmpty());
}

void tst_DevicePageLooks::looksHideAndShowInOrder_data()
{
    QTest::addColumn<StateFunction>("stateFunction");
    QTest::addColumn<QStringList>("changes");
    QTest::newRow("confirmation") << StateFunction(&DeviceLayout::deviceSelected)
                                  << QStringList{"hide firmware icon", "hide configuration status",
                                         "hide configuration icon", "hide update", "show start",
                                         "show cancel", "hide bar", "hide finish"};
    QTest::newRow("in progress") << StateFunction(&DeviceLayout::updateInProgess)
                                 << QStringList{"hide firmware icon", "hide configuration status",
                                        "hide configuration icon", "hide update", "hide start", "hide cancel",
                                        "show bar", "hide finish"};
    QTest::newRow("success") << StateFunction(&DeviceLayout::updateSuccess)
                             << QStringList{"hide version", "hide update", "hide start", "hide cancel",
                                    "hide bar", "show finish"};
    QTest::newRow("restart") << StateFunction(&DeviceLayout::restartDevice)
                             << QStringList{"hide version", "hide firmware status", "hide configuration icon",
                                    "show bar", "hide update", "hide start", "hide cancel", "hide finish"};
    QTest::newRow("failure") << StateFunction(&DeviceLayout::updateFailure)
                             << QStringList{"hide version", "hide firmware status", "hide configuration icon",
                                    "hide update", "hide start", "hide cancel", "hide bar", "show finish"};
}

void tst_DevicePageLooks::looksHideAndShowInOrder()
{
    QFETCH(StateFunction, stateFunction);
    QFETCH(QStringList, changes);
    const PageFixture fixture(usbDrive());
    const QList<QWidget *> widgets = widgetsOf(*fixture.page->contentWidget->layout());
    QCOMPARE(widgets.size(), WidgetNames.size());
    EventLog log;
    for (int index = 0; index < widgets.size(); ++index) {
        const QString &name = WidgetNames[index];
        // Each change is one, whatever the widget was before.
        if (changes.contains("hide " + name)) {
            widgets[index]->show();
        } else if (changes.contains("show " + name)) {
            widgets[index]->hide();
        }
        widgets[index]->setObjectName(name);
        widgets[index]->installEventFilter(&log);
    }
    (fixture.page->*stateFunction)();
    QCOMPARE(log.changes, changes);
    for (const QWidget *widget : widgets) {
        QVERIFY(widget->isEnabled());
    }
}

void tst_DevicePageLooks::looksAreDrawnAgain_data()
{
    QTest::addColumn<StateFunction>("stateFunction");
    QTest::newRow("confirmation") << StateFunction(&DeviceLayout::deviceSelected);
    QTest::newRow("in progress") << StateFunction(&DeviceLayout::updateInProgess);
    QTest::newRow("success") << StateFunction(&DeviceLayout::updateSuccess);
    QTest::newRow("restart") << StateFunction(&DeviceLayout::restartDevice);
    QTest::newRow("failure") << StateFunction(&DeviceLayout::updateFailure);
}

void tst_DevicePageLooks::looksAreDrawnAgain()
{
    QFETCH(StateFunction, stateFunction);
    const PageFixture fixture(usbDrive());
    EventLog log;
    fixture.page->installEventFilter(&log);
    fixture.page->show();
    QTRY_VERIFY(log.paintings > 0);
    QCoreApplication::processEvents();
    log.paintings = 0;
    (fixture.page->*stateFunction)();
    // Not at once, but by the event loop.
    QCOMPARE(log.paintings, 0);
    QTRY_COMPARE(log.paintings, 1);
}

void tst_DevicePageLooks::onlySuccessEnablesFinish()
{
    for (const StateFunction stateFunction : {&DeviceLayout::updateSuccess, &DeviceLayout::updateFailure}) {
        const PageFixture fixture(usbDrive());
        QWidget *finish = widgetsOf(*fixture.page->contentWidget->layout()).last();
        QVERIFY(finish->isEnabled());
        finish->setEnabled(false);
        (fixture.page->*stateFunction)();
        QCOMPARE(finish->isEnabled(), stateFunction == &DeviceLayout::updateSuccess);
    }
}

static const TestClass<tst_DevicePageLooks, QApplication> devicePageLooksTests;
#include "tst_DevicePageLooks.moc"
