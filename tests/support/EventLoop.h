// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QTimer>

#include <functional>

/// Runs the application's event loop, and the action in it. Returns the loop's exit code, or -1 when the
/// action had not ended the loop after five seconds.
inline int exitCodeAfter(const std::function<void()> &action)
{
    QTimer guard;
    guard.setSingleShot(true);
    guard.callOnTimeout([] { QCoreApplication::exit(-1); });
    guard.start(5000);
    QTimer start;
    start.setSingleShot(true);
    start.callOnTimeout(action);
    start.start(0);
    return QApplication::exec();
}

/// The same with an application that outlives its last window: what only closes the window ends no loop.
inline int exitCodeAfterQuitting(const std::function<void()> &action)
{
    QApplication::setQuitOnLastWindowClosed(false);
    const int exitCode = exitCodeAfter(action);
    QApplication::setQuitOnLastWindowClosed(true);
    return exitCode;
}
