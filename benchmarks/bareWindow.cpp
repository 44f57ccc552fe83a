// SPDX-License-Identifier: MIT
#include <QApplication>
#include <QLabel>
#include <QVBoxLayout>

/// As little as a window with a text can be.
int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    layout->addWidget(new QLabel("<b>No drive</b>"));
    window.resize(850, 300);
    window.show();
    return QApplication::exec();
}
