// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/WindowProbe.h"
#include "ui/DeviceLayout.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLabel>
#include <QPixmap>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWidget>

/// What builds a label of a page, and what brings a page to one of its looks.
using Builder = QLabel *(DeviceLayout::*)();
using StateFunction = void (DeviceLayout::*)();
Q_DECLARE_METATYPE(Builder)
Q_DECLARE_METATYPE(StateFunction)

/// Receives what a page relays, as the main window does.
class PageReceiver : public QObject
{
    Q_OBJECT

public:
    QStringList received;

public slots:
    void updateDevice(QString serialNumber) { received.append("updateDevice " + serialNumber); }
    void startUpdate(QString serialNumber) { received.append("startUpdate " + serialNumber); }
    void cancelUpdate() { received.append("cancelUpdate"); }
};

/// A page whose content is on screen in a window of its own.
class PageFixture
{
public:
    explicit PageFixture(const DeviceInfo &device, StateFunction stateFunction = nullptr)
        : page(new DeviceLayout(&receiver, device))
    {
        if (stateFunction != nullptr) {
            (page->*stateFunction)();
        }
        auto *layout = new QVBoxLayout(&window);
        layout->addWidget(page->contentWidget, 0, Qt::AlignHCenter);
        window.resize(600, 300);
        window.show();
        QCoreApplication::processEvents();
    }
    ~PageFixture()
    {
        if (!page.isNull()) {
            delete page->contentWidget;
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    QStringList texts() const { return WindowProbe::texts(window); }
    QStringList buttons() const { return WindowProbe::buttons(window); }
    bool click(const QString &button) { return WindowProbe::click(window, button); }
    /// The pictures on screen, from top to bottom: first the drive's, then those of the status rows.
    QList<QImage> pictures() const
    {
        QList<QImage> images;
        for (const QLabel *label : WindowProbe::pictures(window)) {
            images.append(label->pixmap(Qt::ReturnByValue).toImage());
        }
        return images;
    }

    QWidget window;
    PageReceiver receiver;
    QPointer<DeviceLayout> page;
};

/// The picture as a page shows it at that size.
inline QImage scaledPicture(const QString &path, int size)
{
    return QPixmap(path).scaled(size, size, Qt::KeepAspectRatio, Qt::SmoothTransformation).toImage();
}
