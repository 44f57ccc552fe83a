// SPDX-License-Identifier: MIT
#pragma once

#include <string>

/**
 * Inspects and controls, by shell commands, the companion product Tarvo Quaydesk (its application, its
 * status-bar application and its background service) and the kernel extension Korrin.
 *
 * Each query appends a listing to "temp.txt" in the working directory, reads the file back and removes it.
 * What an earlier run left in that file is read first. A file that cannot be opened reads as a negative
 * answer; the functions report nothing. Every function blocks until its commands have ended and is to be
 * called on the main thread only, one at a time.
 */
class QDKUtilities
{
public:
    /// Submits the background service again. Always 1.
    static int startService();
    /// Removes the background service when it is listed. Always 1.
    static int stopService();
    /// Opens the status-bar application. The status of the shell command.
    static int launchQDKStatusItem();
    /// Opens the application. The status of the shell command.
    static int launchQDK();
    /// Kills the first process whose listing names the application. 1 when there was one, else 0.
    static int killQDK();
    /// Kills the first process whose listing names the status-bar application. 1 when there was one, else 0.
    static int killQDKStatusItem();
    /// True when the background service is listed among the loaded ones.
    static bool isQDKInstalledAndRunning();
    /// True when a process of the application is listed.
    static bool isQDKRunning();
    /// True when a name in the directory of the system's daemons holds that of the service's property list.
    static bool isQDKInstalled();
    /// True when the kernel extension is loaded.
    static bool isTarvoKorrinLoaded();
    /// True when the kernel extension lies in the directory of the system's extensions.
    static bool isTarvoKorrinInstalled();
    /// The version of the kernel extension, which is loaded first where it is installed but not loaded.
    /// Empty when there is none.
    static std::string getTarvoKorrinVersion();
};
