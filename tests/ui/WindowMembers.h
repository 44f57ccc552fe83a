// SPDX-License-Identifier: MIT
#pragma once

#include "ui/MainWindow.h"

/// Members of the window that no person sees and nothing in the program hands out.
namespace WindowMembers {

// A template's explicit instantiation may name what is private: here each defines the function that the
// structure before it declares.
template <typename Name, typename Type, Type MainWindow::*member>
struct Opened
{
    friend Type &open(Name, MainWindow &window) { return window.*member; }
};

// NOLINTBEGIN(bugprone-macro-parentheses): a type cannot stand in parentheses
#define OPEN_WINDOW_MEMBER(Type, member)                                                                     \
    struct Open_##member                                                                                     \
    {                                                                                                        \
        friend Type &open(Open_##member, MainWindow &window);                                                \
    };                                                                                                       \
    template struct Opened<Open_##member, Type, &MainWindow::member>;                                        \
    inline Type &member(MainWindow &window)                                                                  \
    {                                                                                                        \
        return open(Open_##member(), window);                                                                \
    }
// NOLINTEND(bugprone-macro-parentheses)

OPEN_WINDOW_MEMBER(DeviceDiscoveryThread *, discoveryThread)
OPEN_WINDOW_MEMBER(UpdateDeviceThread *, updateThread)
OPEN_WINDOW_MEMBER(QString, selectedSerialNumber)
OPEN_WINDOW_MEMBER(bool, updatedDeviceUnplugged)
OPEN_WINDOW_MEMBER(bool, restartSecondFlag)
OPEN_WINDOW_MEMBER(bool, relaunchQuaydeskOnExit)
OPEN_WINDOW_MEMBER(bool, relaunchStatusItemOnExit)

#undef OPEN_WINDOW_MEMBER

} // namespace WindowMembers
