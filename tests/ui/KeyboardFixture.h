// SPDX-License-Identifier: MIT
#pragma once

#include "tests/ui/Looks.h"

#include <QApplication>
#include <QPushButton>
#include <QScrollArea>
#include <QTest>

inline QVector<DeviceInfo> drives(const std::vector<std::string> &serialNumbers)
{
    QVector<DeviceInfo> list;
    for (const std::string &serialNumber : serialNumbers) {
        list.append(DeviceRecords::usbDrive(serialNumber));
        list.last().modelName = "Model " + serialNumber;
    }
    return list;
}

inline QVector<DeviceInfo> drives(int count)
{
    std::vector<std::string> serialNumbers;
    for (int number = 1; number <= count; ++number) {
        serialNumbers.push_back("SN-" + std::to_string(number));
    }
    return drives(serialNumbers);
}

/// The page of one drive.
inline QWidget *driveOf(QWidget *button)
{
    return button->parentWidget();
}

/// The button that has the focus and the drive that it belongs to, as "model: text"; "none" for no button.
inline QString focused(const WindowFixture &fixture)
{
    auto *button = qobject_cast<QPushButton *>(fixture.window.focusWidget());
    if (button == nullptr || !button->isVisible()) {
        return "none";
    }
    return WindowProbe::texts(*driveOf(button)).first().section(' ', -1) + ": " + button->text();
}

/// Wholly within the scroll area, or filling its width where it is wider.
inline bool isInSight(const QWidget *widget, const QScrollArea *area)
{
    const QRect place(widget->mapTo(area->viewport(), QPoint()), widget->size());
    const QRect sight = area->viewport()->rect();
    const QSize seen = place.intersected(sight).size();
    return seen == QSize(qMin(place.width(), sight.width()), place.height());
}

/// A window in front, which the keys go to.
class KeyboardFixture : public WindowFixture
{
public:
    KeyboardFixture()
    {
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window)) {
            qFatal("the window does not come to the front");
        }
    }
    void press(Qt::Key key) { QTest::keyClick(window.focusWidget(), key); }
    QScrollArea *area() const { return page()->findChild<QScrollArea *>(); }
    void tabTo(const QString &button)
    {
        for (int turn = 0; turn < 100 && focused(*this) != button; ++turn) {
            press(Qt::Key_Tab);
        }
        QCOMPARE(focused(*this), button);
    }
};

/// The button of a drive that needs both, as focused() writes it.
const QString Both = ": Update Firmware and Configuration";
