// SPDX-License-Identifier: MIT
#pragma once

#include "devices/DeviceInfo.h"

#include <QJsonObject>
#include <QString>

/**
 * What an update tells on standard output: one JSON event a line, or lines for a person.
 *
 * On a terminal a person also has a line that lives, which tell() and the end of the object erase. Main
 * thread only.
 */
class Progress
{
public:
    explicit Progress(bool json);
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    /// Prints the event with its details, or the sentence after the drive's serial number.
    void tell(
        const QString &event, const DeviceInfo &device, const QString &sentence, QJsonObject details = {});
    /// Prints the last event, which has the exit status; returns that.
    int finish(int exitStatus);
    /// Prints a line for a person on standard error, whatever standard output is for.
    void warn(const QString &line);

    /// Shows "12 s" and what is done since then, cut to the terminal's width, in the place of the last.
    void showLive(qint64 milliseconds, const QString &what);
    bool isLive() const;

private:
    void eraseLive();

    bool json;
    QString live;
};
