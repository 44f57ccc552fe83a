// SPDX-License-Identifier: MIT
#pragma once

#include "devices/DeviceInfo.h"

#include <QCoreApplication>
#include <QString>

/**
 * What a person reads about a drive: the sentences of its page, for whoever shows them.
 *
 * Values of the record stand in a sentence as they are; "<b>" and "</b>" mark what is bold. A text is empty
 * where there is nothing to say. The translation context is that of the page. Any thread may call.
 */
class DeviceTexts
{
    Q_DECLARE_TR_FUNCTIONS(DeviceLayout)

public:
    /// A text of a record: Latin-1 up to the first zero byte.
    static QString textFrom(const std::string &bytes);
    /// The same, with what cannot be printed, and each backslash, as its code: "\x1b".
    static QString printable(const std::string &bytes);
    /// What tells the drive from others of its model, in printable characters.
    static QString driveName(const DeviceInfo &device);

    static QString modelName(const DeviceInfo &device);
    static QString firmwareVersion(const DeviceInfo &device);
    static QString firmwareStatus(const DeviceInfo &device);
    static QString configurationStatus(const DeviceInfo &device);

    /// How the update is begun or left.
    static QString instructions();
    /// What is about to be updated.
    static QString warning(const DeviceInfo &device);
    static QString doNotDisconnect();
    static QString harmOfDisconnecting();
    /// That the update is done.
    static QString updated(const DeviceInfo &device);
    /// What to do after that: how the drive is restarted.
    static QString success(const DeviceInfo &device);
    static QString failure(const DeviceInfo &device);
};
