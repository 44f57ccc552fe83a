// SPDX-License-Identifier: MIT
#include "app/WindowingSystem.h"
#include "ui/MainWindow.h"

#include <QApplication>
#include <QStringList>

int main(int argc, char **argv)
{
    chooseWindowingSystem(argc, argv);
    QApplication application(argc, argv);
    qInstallMessageHandler(nullptr);
    // From here on no plug-in is looked for anywhere; the pictures are compiled in and need none.
    QCoreApplication::setLibraryPaths(QStringList());
    QApplication::setQuitOnLastWindowClosed(true);

    MainWindow window(argc, argv);
    if (window.quitAtStartup) {
        QCoreApplication::quit();
        return 0;
    }

    QObject::connect(&application, SIGNAL(aboutToQuit()), &window, SLOT(onExit()));
    return QApplication::exec();
}
