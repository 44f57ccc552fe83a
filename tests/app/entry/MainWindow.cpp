#include "ui/MainWindow.h"

#include <QApplication>
#include <QTimer>

#include <cstdio>
#include <stdexcept>

namespace {

void say(const QString &line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

QStringList list(char **arguments)
{
    QStringList texts;
    for (; *arguments != nullptr; ++arguments) {
        texts.append(*arguments);
    }
    return texts;
}

} // namespace

MainWindow::MainWindow(int argc, char **argv)
{
    say("argc: " + QString::number(argc));
    say("argv: " + list(argv).mid(1).join('|'));
    say("library paths: " + QString::number(QCoreApplication::libraryPaths().size()));
    say(QString("quits on last window closed: ") + (QApplication::quitOnLastWindowClosed() ? "yes" : "no"));

    const QString task = qEnvironmentVariable("WINDOW");
    quitAtStartup = task == "refuse";
    if (task.startsWith("exit ")) {
        QTimer::singleShot(0, this, [task] { QCoreApplication::exit(task.section(' ', 1).toInt()); });
    } else if (task == "throw") {
        QTimer::singleShot(0, this, [] { throw std::runtime_error("from the event loop"); });
    } else if (task == "throw at once") {
        throw std::runtime_error("from the constructor");
    }
}

MainWindow::~MainWindow()
{
    say(QCoreApplication::instance() != nullptr ? "destroyed" : "destroyed after the application");
}

void MainWindow::onExit()
{
    say("exit hook");
}

void MainWindow::showEvent(QShowEvent *)
{
    say("shown");
}

// Hides the toolkit's, which does nothing that can be seen before the event loop runs.
void QCoreApplication::quit()
{
    say("quit");
}

static void closingDoesNotQuit()
{
    QApplication::setQuitOnLastWindowClosed(false);
}

// Once the application object has been made: what the entry point must not rely on.
Q_COREAPP_STARTUP_FUNCTION(closingDoesNotQuit)
