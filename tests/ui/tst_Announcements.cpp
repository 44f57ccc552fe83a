// SPDX-License-Identifier: MIT
#include "tests/support/TestProgram.h"
#include "tests/ui/Looks.h"

#include <QAccessible>
#include <QScrollArea>
#include <QtTest>

namespace {

QStringList announced;

QStringList announcementOf(const QString &name)
{
    return {"name: " + name, "alert: " + name};
}

} // namespace

// In the place of Qt's own, which does nothing while no screen reader runs.
void QAccessible::updateAccessibility(QAccessibleEvent *event)
{
    const auto *area = qobject_cast<QScrollArea *>(event->object());
    if (area == nullptr || !area->isVisible()) {
        return;
    }
    if (event->type() == QAccessible::NameChanged) {
        announced.append("name: " + area->accessibleName());
    } else if (event->type() == QAccessible::Alert) {
        announced.append("alert: " + area->accessibleName());
    }
}

class tst_Announcements : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void newLookIsAnnouncedOnce_data();
    void newLookIsAnnouncedOnce();
    void anotherNumberOfDrivesIsAnnounced();
    void sameLookIsNotAnnouncedAgain();
};

void tst_Announcements::init()
{
    announced.clear();
}

void tst_Announcements::newLookIsAnnouncedOnce_data()
{
    QTest::addColumn<QString>("look");
    for (const QString &look : Looks) {
        if (look != "no drive") { // which the window starts with
            QTest::newRow(qPrintable(look)) << look;
        }
    }
}

void tst_Announcements::newLookIsAnnouncedOnce()
{
    QFETCH(QString, look);
    WindowFixture fixture;
    bringTo(fixture, look);
    const QString name = fixture.page()->findChild<QScrollArea *>()->accessibleName();
    QVERIFY(!name.isEmpty());
    QCOMPARE(announced.filter(": " + name), announcementOf(name));
    QCOMPARE(announced.mid(announced.size() - 2), announcementOf(name));
}

void tst_Announcements::anotherNumberOfDrivesIsAnnounced()
{
    WindowFixture fixture;
    fixture.deliver(numberedDrives(2));
    announced.clear();
    fixture.deliver(numberedDrives(3));
    QCOMPARE(announced, announcementOf("Devices: 3"));
}

void tst_Announcements::sameLookIsNotAnnouncedAgain()
{
    WindowFixture fixture;
    QVector<DeviceInfo> list = numberedDrives(2);
    fixture.deliver(list);
    QCOMPARE(announced, announcementOf("Devices: 2"));
    announced.clear();
    list[1].firmwareStatus = Status::UpToDate;
    fixture.deliver(list);
    QCOMPARE(announced, QStringList());
}

static const TestClass<tst_Announcements, QApplication> announcementsTests;
#include "tst_Announcements.moc"
