// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

/**
 * In place of the program's window: says on standard output, one line each, what the entry point hands it and
 * does with it, and does what the environment variable WINDOW says.
 *
 *     refuse          has been told at start that the program may not run
 *     exit CODE       ends the event loop with that code
 *     throw           throws from the event loop
 *     throw at once   throws from its constructor
 */
class MainWindow : public QWidget
{
    Q_OBJECT

public:
    MainWindow(int argc, char **argv);
    ~MainWindow() override;

    bool quitAtStartup = false;

public slots:
    void onExit();

protected:
    void timerEvent(QTimerEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    const QString task;
};
