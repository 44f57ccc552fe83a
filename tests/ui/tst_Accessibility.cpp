// SPDX-License-Identifier: MIT
#include "tests/support/TestProgram.h"
#include "tests/support/WindowTexts.h"
#include "tests/ui/BoxAnswerer.h"
#include "tests/ui/Looks.h"

#include <QAccessible>
#include <QPushButton>
#include <QScrollArea>
#include <QtTest>

using DeviceRecords::usbDrive;

namespace {

/// Everything that is on screen, from the outside in and from the top to the bottom.
QList<QAccessibleInterface *> tree(QAccessibleInterface *root)
{
    QList<QAccessibleInterface *> all{root};
    for (int index = 0; index < root->childCount(); ++index) {
        QAccessibleInterface *child = root->child(index);
        if (child != nullptr && !child->state().invisible) {
            all.append(tree(child));
        }
    }
    return all;
}

QList<QAccessibleInterface *> tree(QWidget &window)
{
    return tree(QAccessible::queryAccessibleInterface(&window));
}

QStringList namesOf(QWidget &window, const QList<QAccessible::Role> &roles)
{
    QStringList names;
    for (QAccessibleInterface *node : tree(window)) {
        if (roles.contains(node->role())) {
            names.append(node->text(QAccessible::Name));
        }
    }
    return names;
}

DeviceInfo named(const std::string &modelName, const std::string &serialNumber)
{
    DeviceInfo drive = usbDrive(serialNumber);
    drive.modelName = modelName;
    return drive;
}

} // namespace

class tst_Accessibility : public QObject
{
    Q_OBJECT

private slots:
    void everyLookIsReadOut_data();
    void everyLookIsReadOut();
    void listReadsDriveByDrive();
    void missingPictureHasNoName();
    void drivePageAndButtonsNameTheDrive_data();
    void drivePageAndButtonsNameTheDrive();
    void pictureOfTheCompanionBoxHasItsName();
};

void tst_Accessibility::everyLookIsReadOut_data()
{
    QTest::addColumn<QString>("look");
    QTest::addColumn<QStringList>("pictures"); // and bars
    QTest::addColumn<QString>("name"); // of the look
    QTest::addColumn<QString>("focus"); // the name and the description of what has it
    const auto row = [](const char *look, const QStringList &pictures, const QString &name,
                         const QString &focus) {
        QTest::newRow(look) << QString(look) << pictures << name << focus;
    };
    const QString pebble = "Picture of the Tarvo Pebble";
    const QString harbour = "Picture of the Tarvo Harbour FireWire";
    const QString drive = "Tarvo Pebble, serial number A. ";
    const QString none = "No compatible Tarvo device were found. Please plug a compatible Tarvo device.";
    const QString confirmation =
        "Tarvo Pebble You are about to update your Tarvo Pebble firmware and configuration. (\"1.2\" => "
        "\"1.3\") To update your device, press \"Update\" button. To update later, press \"Cancel\" button.";
    const QString inProgress =
        "Tarvo Pebble DO NOT disconnect the device during the firmware update. Doing so "
        "may cause irreparable harm to your data and/or disk.";
    const QString restart = "Your Tarvo Pebble has been successfully updated. Please unplug and replug your "
                            "Tarvo Pebble hard drive to power off and power on the device.";
    const QString success = "Your Tarvo Harbour FireWire has been successfully updated. Firmware: Update "
                            "required! Configuration: Update required!";
    const QString failure = "Tarvo Pebble Error while updating your Tarvo Pebble device. Please retry.";
    const QString required = "Update required";
    row("no drive", {}, none, none + ": ");
    row("list",
        {pebble, required, required, harbour, "Up to date", "Up to date", pebble, "Unknown status",
            "Unknown status", pebble, "Not supported"},
        "Devices: 4", "Update Firmware and Configuration: Tarvo Pebble, serial number A");
    row("confirmation", {pebble}, confirmation, "Cancel: " + drive + confirmation);
    row("in progress", {pebble, "Updating the device"}, inProgress, inProgress + ": ");
    row("restart", {pebble, "Warning", "Waiting for the device to be powered off and on"}, restart,
        restart + ": ");
    row("success", {harbour, required, required}, success,
        "Finish: Tarvo Harbour FireWire, serial number A. " + success);
    row("failure", {pebble, "Error"}, failure, "Finish: " + drive + failure);
}

void tst_Accessibility::everyLookIsReadOut()
{
    QFETCH(QString, look);
    QFETCH(QStringList, pictures);
    QFETCH(QString, name);
    QFETCH(QString, focus);
    WindowFixture fixture;
    bringTo(fixture, look);
    QCOMPARE(namesOf(fixture.window, {QAccessible::Graphic, QAccessible::ProgressBar}), pictures);
    QCOMPARE(namesOf(fixture.window, {QAccessible::PushButton}).size(), fixture.buttons().size());
    auto *area = fixture.window.findChild<QScrollArea *>();
    QCOMPARE(QAccessible::queryAccessibleInterface(area)->text(QAccessible::Name), name);
    const auto *focused = QAccessible::queryAccessibleInterface(fixture.window.focusWidget());
    QCOMPARE(focused->text(QAccessible::Name) + ": " + focused->text(QAccessible::Description), focus);
    if (look != "list") {
        QStringList texts = namesOf(fixture.window, {QAccessible::StaticText});
        texts.removeAll("");
        QCOMPARE(texts.join(' ').simplified(), name + ' ' + VersionText);
    }
}

void tst_Accessibility::listReadsDriveByDrive()
{
    WindowFixture fixture;
    fixture.deliver({named("One", "1"), named("Two", "2"), named("Three", "3"), named("Four", "4")});
    QStringList models = namesOf(fixture.window, {QAccessible::StaticText, QAccessible::PushButton});
    models.removeAll("Firmware: Update required!");
    models.removeAll("Configuration: Update required!");
    models.removeAll("(firmware version: 1.2 => 1.3 )");
    const QString button = "Update Firmware and Configuration";
    QCOMPARE(models,
        (QStringList{"Tarvo One", button, "Tarvo Two", button, "Tarvo Three", button, "Tarvo Four", button,
            VersionText}));
}

void tst_Accessibility::missingPictureHasNoName()
{
    DeviceInfo withoutPicture = usbDrive("A");
    withoutPicture.productId = 0x9999;
    DeviceInfo anotherBus = usbDrive("B");
    anotherBus.vendorId = 1234;
    WindowFixture fixture;
    fixture.deliver({withoutPicture, anotherBus});
    const QString status = "Update required";
    QCOMPARE(namesOf(fixture.window, {QAccessible::Graphic}),
        (QStringList{status, status, "Warning", status, status}));
    QVERIFY(!namesOf(fixture.window, {QAccessible::StaticText}).contains("Picture of the Tarvo Pebble"));
}

void tst_Accessibility::drivePageAndButtonsNameTheDrive_data()
{
    QTest::addColumn<QByteArray>("modelName");
    QTest::addColumn<QByteArray>("serialNumber");
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << QByteArray("Pebble") << QByteArray("SN-1")
                           << "Tarvo Pebble, serial number SN-1";
    QTest::newRow("Latin-1") << QByteArray("P\xE9") << QByteArray("\xDF")
                             << QString("Tarvo P%1, serial number %2").arg(QChar(0xE9)).arg(QChar(0xDF));
    QTest::newRow("not printable") << QByteArray("A\nB") << QByteArray("\x01\x1F\x85")
                                   << "Tarvo A\\x0aB, serial number \\x01\\x1f\\x85";
    QTest::newRow("markup and placeholders")
        << QByteArray("<b>%2</b>") << QByteArray("%1&amp;") << "Tarvo <b>%2</b>, serial number %1&amp;";
    QTest::newRow("empty") << QByteArray() << QByteArray() << "Tarvo , serial number ";
}

void tst_Accessibility::drivePageAndButtonsNameTheDrive()
{
    QFETCH(QByteArray, modelName);
    QFETCH(QByteArray, serialNumber);
    QFETCH(QString, name);
    WindowFixture fixture;
    ScriptedPlatform::holdFlashes();
    fixture.deliver({named(modelName.toStdString(), serialNumber.toStdString())});
    int buttons = 0;
    const auto verifyButtons = [&] {
        for (QAccessibleInterface *node : tree(fixture.window)) {
            if (node->role() == QAccessible::PushButton) {
                ++buttons;
                QCOMPARE(node->text(QAccessible::Description).left(name.size()), name);
                QCOMPARE(node->parent()->text(QAccessible::Name), name);
            }
        }
    };
    verifyButtons();
    QVERIFY(fixture.click("Update Firmware and Configuration"));
    verifyButtons();
    QVERIFY(fixture.click("Update Firmware"));
    fixture.finish(false);
    verifyButtons();
    QCOMPARE(buttons, 4);
}

void tst_Accessibility::pictureOfTheCompanionBoxHasItsName()
{
    QStringList names;
    const WarnedWindow warned([&names](QMessageBox &box) {
        names = namesOf(box, {QAccessible::Graphic, QAccessible::StaticText});
    });
    QCOMPARE(names.size(), 2);
    QVERIFY(names.contains("Warning"));
}

static const TestClass<tst_Accessibility, QApplication> accessibilityTests;
#include "tst_Accessibility.moc"
