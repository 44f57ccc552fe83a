// SPDX-License-Identifier: MIT
#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QWidget>

#include <chrono>
#include <cstdio>
#include <cstdlib>

/// Ends the process at the first paint of a window and prints "MICROSECONDS KIBIBYTES": the time of the
/// steady clock by then, and the resident memory.
class FirstWindow : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *receiver, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && receiver->isWidgetType()) {
            const auto now = std::chrono::steady_clock::now().time_since_epoch();
            std::printf("%lld %ld\n",
                static_cast<long long>(std::chrono::duration_cast<std::chrono::microseconds>(now).count()),
                residentKibibytes());
            std::fflush(stdout);
            std::_Exit(0);
        }
        return false;
    }

private:
    static long residentKibibytes()
    {
        QFile status("/proc/self/status");
        if (status.open(QIODevice::ReadOnly)) {
            for (const QByteArray &line : status.readAll().split('\n')) {
                if (line.startsWith("VmRSS:")) {
                    return line.mid(6).trimmed().split(' ').first().toLong();
                }
            }
        }
        return 0;
    }
};

static void watchForFirstWindow()
{
    auto *application = QCoreApplication::instance();
    application->installEventFilter(new FirstWindow(application));
}

Q_COREAPP_STARTUP_FUNCTION(watchForFirstWindow)
