#pragma once

#include "bench/panel/FaultMenu.h"
#include "bench/panel/PanelWindow.h"
#include "tests/bench/TemporaryBench.h"

#include <QLabel>
#include <QPushButton>
#include <QtTest>

#include <functional>

/// Changes made elsewhere are shown within this time; without the margin that other programs may cost.
constexpr int SoonEnough = 500;

/// Takes the text size of a screen of 96 dots per inch, which not every version of Qt does without a display.
inline void useUsualTextSize()
{
    QFont font = QApplication::font();
    font.setPixelSize(12);
    QApplication::setFont(font);
}

/// The panel on a temporary bench, looked at and pressed as a person does.
struct Panel
{
    explicit Panel(const TemporaryBench &bench) : window(bench.directory(), bench.imageDirectory())
    {
        window.show();
        if (!QTest::qWaitForWindowExposed(&window)) {
            qFatal("the panel does not come up");
        }
    }

    /// The button that a screen reader calls by this name; fails the test when there is none.
    QPushButton *button(const QString &name) const
    {
        for (QPushButton *button : window.findChildren<QPushButton *>()) {
            if (button->accessibleName() == name && button->isVisible()) {
                return button;
            }
        }
        qFatal("no button \"%s\" beside:\n%s", qPrintable(name), qPrintable(text()));
    }

    void press(const QString &name) const { QTest::mouseClick(button(name), Qt::LeftButton); }

    /// Chooses an entry of a drive's fault menu with the mouse.
    void choose(const QString &serial, const QString &title) const
    {
        // A pressed menu button waits until its menu is closed again.
        bool chosen = false;
        whenOpen(serial, [&](bench::FaultMenu *menu) {
            QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(entry(serial, title)).center());
            chosen = !menu->isVisible();
            menu->close();
        });
        press("Faults of " + serial);
        QVERIFY2(chosen, qPrintable(title));
    }

    /// Does something as soon as a drive's fault menu, which is pressed next, is open.
    void whenOpen(const QString &serial, const std::function<void(bench::FaultMenu *)> &action) const
    {
        auto *const menu = button("Faults of " + serial)->findChild<bench::FaultMenu *>();
        auto *const once = new QTimer(menu);
        once->setInterval(20);
        QObject::connect(once, &QTimer::timeout, menu, [once, menu, action] {
            if (menu->isVisible()) {
                once->stop();
                action(menu);
            }
        });
        once->start();
    }

    QAction *entry(const QString &serial, const QString &title) const
    {
        for (QAction *action : button("Faults of " + serial)->findChild<bench::FaultMenu *>()->actions()) {
            if (action->text() == title) {
                return action;
            }
        }
        qFatal("no fault \"%s\"", qPrintable(title));
    }

    /// All visible texts, one a line.
    QString text() const
    {
        QStringList lines;
        for (const QLabel *label : window.findChildren<QLabel *>()) {
            if (label->isVisible() && !label->text().isEmpty()) {
                lines.append(label->text());
            }
        }
        return lines.join('\n');
    }

    bool shows(const QString &part) const { return text().contains(part); }

    bench::PanelWindow window;
};
