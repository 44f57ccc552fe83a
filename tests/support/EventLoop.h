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
    QObject::connect(&guard, &QTimer::timeout, &guard, [] { QCoreApplication::exit(-1); });
    guard.start(5000);
    QTimer::singleShot(0, &guard, action);
    return QApplication::exec();
}
