// SPDX-License-Identifier: MIT
#include "tests/support/DeviceRecords.h"
#include "tests/support/EventLoop.h"
#include "tests/support/PageFixture.h"
#include "tests/support/TestProgram.h"
#include "tests/support/WindowTexts.h"

#include <QtTest>

using DeviceRecords::usbDrive;

namespace {

const QString DrivePicture = ":/firmwareUpdater/device/0x0E7A/1A20.png";

/// The page's widgets, from top to bottom and left to right.
const QStringList WidgetNames = {"icon", "model", "version", "firmware status", "firmware icon",
    "configuration status", "configuration icon", "update", "start", "cancel", "bar", "finish"};

const QList<StateFunction> StateFunctions{&DeviceLayout::deviceSelected, &DeviceLayout::updateInProgess,
    &DeviceLayout::updateSuccess, &DeviceLayout::restartDevice, &DeviceLayout::updateFailure};

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
    void successAndFailureOfferOnlyFinishWhichQuits_data();
    void successAndFailureOfferOnlyFinishWhichQuits();
    void looksMakeNoWidgets();
    void looksOfAnUnsupportedDriveAreHarmless();
    void looksHideAndShowInOrder_data();
    void looksHideAndShowInOrder();
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
    const auto row = [](const char *name, StateFunction stateFunction, const QStringList &texts,
                         const QStringList &pictures, const QStringList &buttons, bool busy = false) {
        QTest::newRow(name) << stateFunction << texts << pictures << buttons << busy;
    };
    const QString model = "Tarvo Pebble";
    const QString firmware = "Firmware: Update required!";
    const QString configuration = "Configuration: Up to date.";
    const QStringList statusPictures{UpdatePicture + "@20", OkPicture + "@20"};
    row("initial", nullptr, {model, "(firmware version: <b>1.2</b> => <b>1.3</b> )", firmware, configuration},
        statusPictures, {"Update Firmware"});
    row("confirmation", &DeviceLayout::deviceSelected,
        {model,
            "You are about to update your Tarvo <b>Pebble</b> firmware. (\"<b>1.2</b>\" => \"<b>1.3</b>\")",
            "To update your device, press <b>\"Update\"</b> button. To update later, press <b>\"Cancel\"</b> "
            "button."},
        {}, {"Update Firmware", "Cancel"});
    row("in progress: no button", &DeviceLayout::updateInProgess,
        {model, "<b>DO NOT disconnect the device during the firmware update.</b>",
            "<b>Doing so may cause irreparable harm to your data and/or disk.</b>"},
        {}, {}, true);
    row("success: rows from the record under the success line", &DeviceLayout::updateSuccess,
        {SuccessLine, firmware, configuration}, statusPictures, {"Finish"});
    row("restart: no button and the busy bar", &DeviceLayout::restartDevice,
        {SuccessLine,
            "Please unplug and replug your Tarvo <b>Pebble</b> hard drive to power off and power on the "
            "device."},
        {WarningPicture + "@48"}, {}, true);
    row("failure: the model line and the error picture", &DeviceLayout::updateFailure, {model, FailureLine},
        {":/firmwareUpdater/Error.png@48"}, {"Finish"});
}

void tst_DevicePageLooks::eachLookShowsItsWidgets()
{
    QFETCH(StateFunction, stateFunction);
    QFETCH(QStringList, texts);
    QFETCH(QStringList, pictures);
    QFETCH(QStringList, buttons);
    QFETCH(bool, busy);
    DeviceInfo drive = usbDrive();
    drive.configurationStatus = Status::UpToDate;
    const PageFixture fixture(drive);
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
    QList<QImage> expected{scaledPicture(DrivePicture, 48)};
    for (const QString &picture : pictures) {
        expected.append(scaledPicture(picture.section('@', 0, 0), picture.section('@', 1).toInt()));
    }
    QCOMPARE(fixture.pictures(), expected);
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

void tst_DevicePageLooks::looksMakeNoWidgets()
{
    for (const StateFunction stateFunction : StateFunctions) {
        const PageFixture fixture(usbDrive());
        const QList<QWidget *> onScreen = widgetsOf(*fixture.page->contentWidget->layout());
        const auto widgets = QApplication::allWidgets().size();
        (fixture.page->*stateFunction)();
        QCOMPARE(widgetsOf(*fixture.page->contentWidget->layout()), onScreen);
        QCOMPARE(QApplication::allWidgets().size(), widgets);
    }
}

void tst_DevicePageLooks::looksOfAnUnsupportedDriveAreHarmless()
{
    DeviceInfo drive = usbDrive();
    drive.chipsetType = Chipset::NotSupported;
    for (const StateFunction stateFunction : StateFunctions) {
        QVERIFY(!PageFixture(drive, stateFunction).texts().isEmpty());
    }
}

void tst_DevicePageLooks::looksHideAndShowInOrder_data()
{
    QTest::addColumn<StateFunction>("stateFunction");
    QTest::addColumn<QString>("changes");
    QTest::newRow("confirmation")
        << StateFunction(&DeviceLayout::deviceSelected)
        << "hide firmware icon, hide configuration status, hide configuration icon, "
           "hide update, show start, show cancel, hide bar, hide finish";
    QTest::newRow("in progress") << StateFunction(&DeviceLayout::updateInProgess)
                                 << "hide firmware icon, hide configuration status, hide configuration icon, "
                                    "hide update, hide start, hide cancel, show bar, hide finish";
    QTest::newRow("success") << StateFunction(&DeviceLayout::updateSuccess)
                             << "hide version, hide update, hide start, hide cancel, hide bar, show finish";
    QTest::newRow("restart") << StateFunction(&DeviceLayout::restartDevice)
                             << "hide version, hide firmware status, hide configuration icon, show bar, "
                                "hide update, hide start, hide cancel, hide finish";
    QTest::newRow("failure") << StateFunction(&DeviceLayout::updateFailure)
                             << "hide version, hide firmware status, hide configuration icon, hide update, "
                                "hide start, hide cancel, hide bar, show finish";
}

void tst_DevicePageLooks::looksHideAndShowInOrder()
{
    QFETCH(StateFunction, stateFunction);
    QFETCH(QString, changes);
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
    QCOMPARE(log.changes.join(", "), changes);
    for (const QWidget *widget : widgets) {
        QVERIFY(widget->isEnabled());
    }
}

void tst_DevicePageLooks::looksAreDrawnAgain()
{
    for (const StateFunction stateFunction : StateFunctions) {
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
