// SPDX-License-Identifier: MIT
#pragma once

#include "bench/panel/DriveRow.h"
#include "bench/panel/PanelWindow.h"
#include "tests/bench/TemporaryBench.h"

#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QPushButton>

#include <functional>

/// Changes made elsewhere are shown within this time; without the margin that other programs may cost.
constexpr int SoonEnough = 500;

/// Takes the text size of a screen of 96 dots per inch, which not every version of Qt does without a display.
inline void useTextSize(int pixels = 12)
{
    QFont font = QApplication::font();
    font.setPixelSize(pixels);
    QApplication::setFont(font);
}

inline void addSample(TemporaryBench &bench)
{
    for (const bench::Drive &drive : bench::sampleDrives()) {
        addDrive(bench.store(), drive);
    }
}

/// The panel on a temporary bench, looked at and pressed as a person does.
struct Panel
{
    explicit Panel(const TemporaryBench &bench) : window(bench.directory(), bench.imageDirectory())
    {
        window.placeBesideUpdater(QRect(0, 0, 1920, 1080));
        window.show();
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window)) {
            qFatal("the panel does not come up");
        }
    }

    /// The button that a screen reader calls by this name; fails the test when there is none.
    QPushButton *button(const QString &name) const
    {
        for (QPushButton *button : window.findChildren<QPushButton *>()) {
            if ((button->accessibleName() == name || button->text() == name) && button->isVisible()) {
                return button;
            }
        }
        qFatal("no button \"%s\" beside:\n%s", qPrintable(name), qPrintable(text()));
    }
    void press(const QString &name) const { QTest::mouseClick(button(name), Qt::LeftButton); }

    /// Opens the menu of a button and does something with it; a pressed menu button waits until it is closed.
    void open(const QString &name, const std::function<void(QMenu *menu)> &action) const
    {
        const QPointer<QMenu> menu = button(name)->menu(); // it goes with its drive
        QTimer::singleShot(0, menu, [menu, &action] {
            if (!menu->isVisible()) {
                qFatal("no menu is opened");
            }
            action(menu);
            if (menu != nullptr) {
                menu->close();
            }
        });
        QTest::mousePress(button(name), Qt::LeftButton);
    }
    /// Chooses an entry of the menu of a button with the mouse.
    void choose(const QString &name, const QString &title) const
    {
        bool chosen = false;
        open(name, [&chosen, &title](QMenu *menu) {
            for (QAction *action : menu->actions()) {
                if (QString(action->text()).remove('&') == title && action->isEnabled()) {
                    QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
                    chosen = true;
                    return;
                }
            }
        });
        QVERIFY2(chosen, qPrintable(title));
    }
    /// Answers the question for a value; with what it proposes where `value` is null.
    void answer(const QString &value = {}) const
    {
        auto *const question = window.findChild<QInputDialog *>();
        QVERIFY(question != nullptr && question->isVisible());
        if (!value.isNull()) {
            question->setTextValue(value);
        }
        QTest::keyClick(question->findChild<QLineEdit *>(), Qt::Key_Return);
        QTRY_VERIFY(window.findChild<QInputDialog *>() == nullptr);
    }

    int rows() const { return static_cast<int>(window.findChildren<bench::DriveRow *>().size()); }
    /// All visible texts, one a line.
    QString text() const
    {
        QStringList lines;
        for (const QLabel *label : window.findChildren<QLabel *>()) {
            if (label->isVisible() && !label->text().isEmpty()) {
                lines.append(label->text());
            }
        }
        return lines.join('\n') + '\n';
    }
    bool shows(const QString &part) const { return text().contains(part); }

    bench::PanelWindow window;
};
