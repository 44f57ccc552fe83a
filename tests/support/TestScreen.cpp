// SPDX-License-Identifier: MIT
#include "tests/support/TestScreen.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QRect>
#include <QScreen>

/// How a platform plug-in tells Qt of a screen. Qt exports it, but installs no header for it.
class QWindowSystemInterface
{
public:
    static void handleScreenGeometryChange(QScreen *screen, const QRect &geometry, const QRect &available);
};

void setScreenSize(const QSize &size)
{
    QScreen *screen = QGuiApplication::primaryScreen();
    const QRect pixels(QPoint(), size * screen->devicePixelRatio());
    QWindowSystemInterface::handleScreenGeometryChange(screen, pixels, pixels);
    QCoreApplication::processEvents();
}
