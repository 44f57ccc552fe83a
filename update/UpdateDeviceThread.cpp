// SPDX-License-Identifier: MIT
#include "update/UpdateDeviceThread.h"

#include "update/DeviceUpdate.h"

#include <utility>

UpdateDeviceThread::UpdateDeviceThread(DeviceInfo deviceInfo, std::string executablePath)
    : deviceInfo(std::move(deviceInfo)), executablePath(std::move(executablePath))
{
}

void UpdateDeviceThread::run()
{
    emit updateResult(updateDevice(deviceInfo, executablePath));
}
