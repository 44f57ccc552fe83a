// SPDX-License-Identifier: MIT
#pragma once

#include "devices/DeviceDiscoveryThread.h"
#include "tests/platform/ScriptedPlatform.h"

/// A discovery thread whose lists are received on the test's thread. The object is kept, as it is in the
/// program.
class Discovery
{
public:
    Discovery() : thread(keptThread())
    {
        QObject::connect(&thread, &DeviceDiscoveryThread::updateDeviceList, &receiver,
            [this](const QVector<DeviceInfo> &list) { lists.append(list); });
    }
    /// Asks the thread to end, once what it is doing is through; wait for it.
    void stop()
    {
        ScriptedPlatform::attach({});
        ScriptedPlatform::releaseQueries();
        thread.stopRequested = true;
    }

    DeviceDiscoveryThread &thread;
    QList<QVector<DeviceInfo>> lists;

private:
    static DeviceDiscoveryThread &keptThread()
    {
        static auto &threads = *new QList<DeviceDiscoveryThread *>;
        threads.append(new DeviceDiscoveryThread);
        return *threads.last();
    }

    QObject receiver;
};
