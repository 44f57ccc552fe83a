#include "tests/support/DeviceRecords.h"
#include "tests/support/EventLoop.h"
#include "tests/support/PageFixture.h"

#include <QtTest>

using DeviceRecords::usbDrive;

namespace {

using StateFunction = void (DeviceLayout::*)();

const QString DrivePicture = ":/firmwareUpdater/device/0x0E7A/1A20.png";
const QString SuccessLine = "Your Tarvo <b>Pebble</b> has been successfully updated.";

DeviceInfo updatedDrive()
{
    DeviceInfo drive = usbDrive();
    drive.firmwareStatus = Status::UpToDate;
    drive.configurationStatus = Status::UpdateRequired;
    return drive;
}

} // namespace

Q_DECLARE_METATYPE(StateFunction)

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
    void successKeepsTheIconsOfTheConstructionOnScreen();
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
    const PageFixture fixture(usbDrive(), stateFunction);
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
    QCOMPARE(exitCodeAfter([&fixture] { fixture.click("Finish"); }), 0);
    QVERIFY(fixture.receiver.received.isEmpty());
}

void tst_DevicePageLooks::successKeepsTheIconsOfTheConstructionOnScreen()
{
    PageReceiver receiver;
    QPointer<DeviceLayout> page = new DeviceLayout(&receiver, usbDrive());
    const QList<QLabel *> onScreen = page->contentWidget->findChildren<QLabel *>();
    const auto widgets = QApplication::allWidgets().size();
    page->updateSuccess();
    QCOMPARE(page->contentWidget->findChildren<QLabel *>(), onScreen);
    // The two new icons are on no screen, and they go with the page.
    QCOMPARE(QApplication::allWidgets().size(), widgets + 2);
    delete page->contentWidget;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(page.isNull());
    QVERIFY(QApplication::allWidgets().isEmpty());
}

QTEST_MAIN(tst_DevicePageLooks)
#include "tst_DevicePageLooks.moc"
