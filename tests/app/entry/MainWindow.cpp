// SPDX-License-Identifier: MIT
#include "ui/MainWindow.h"

#include <QApplication>

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

MainWindow::MainWindow(int argc, char **argv) : task(qEnvironmentVariable("WINDOW"))
{
    say("argc: " + QString::number(argc));
    say("argv: " + list(argv).mid(1).join('|'));
    say("library paths: " + QString::number(QCoreApplication::libraryPaths().size()));
    say(QString("quits on last window closed: ") + (QApplication::quitOnLastWindowClosed() ? "yes" : "no"));

    quitAtStartup = task == "refuse";
    if (task == "throw at once") {
        throw std::runtime_error("from the constructor");
    }
    startTimer(0);
}

MainWindow::~MainWindow()
{
    say(QCoreApplication::instance() != nullptr ? "destroyed" : "destroyed after the application");
}

void MainWindow::onExit()
{
    say("exit hook");
}

void MainWindow::timerEvent(QTimerEvent *)
{
    if (task == "throw") {
        throw std::runtime_error("from the event loop");
    }
    QCoreApplication::exit(task.section(' ', 1).toInt());
}

void MainWindow::showEvent(QShowEvent *)
{
    say("shown");
}

// Hides Qt's own, which does nothing that can be seen before the event loop runs.
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
