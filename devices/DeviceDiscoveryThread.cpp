#include "devices/DeviceDiscoveryThread.h"

#include <DeviceDiscovery.h>

#include <vector>

namespace {
constexpr unsigned long PauseSeconds = 2;
constexpr unsigned long SettlingMicroseconds = 500000;
} // namespace

DeviceDiscoveryThread::DeviceDiscoveryThread() : discoveryEnabled(true), stopRequested(false) { }

void DeviceDiscoveryThread::run()
{
    if (stopRequested.load(std::memory_order_relaxed)) {
        return;
    }
    do {
        if (discoveryEnabled.load(std::memory_order_relaxed)) {
            runPass();
        }
        QThread::sleep(PauseSeconds);
    } while (!stopRequested.load(std::memory_order_relaxed));
}

void DeviceDiscoveryThread::runPass()
{
    std::vector<DeviceInfo> found;
    DeviceDiscovery discovery;
    discovery.getTarvoDevice(found);

    // A list is published only once every drive in it is fully known, however long the library takes;
    // neither flag cuts the wait short.
    std::size_t index = 0;
    while (index < found.size()) {
        if (found[index].firmwareStatus != Status::NotYetDetermined
            && found[index].configurationStatus != Status::NotYetDetermined) {
            ++index;
        } else {
            QThread::usleep(SettlingMicroseconds);
            discovery.getTarvoDevice(found);
            index = 0;
        }
    }

    QVector<DeviceInfo> deviceList;
    for (const DeviceInfo &device : found) {
        deviceList.append(device);
    }
    emit updateDeviceList(deviceList);
}
