#include <DeviceDiscovery.h>

#include "devices/DeviceInfo.h"
#include "bench/core/Bench.h"
#include "bench/core/Files.h"
#include "platform/bench/Report.h"

namespace {

DeviceInfo toDeviceInfo(const bench::DriveRecord &record)
{
    DeviceInfo device;
    device.auxiliaryText1 = record.auxiliaryText1.toLatin1().toStdString();
    device.productId = record.productId;
    device.modelName = record.modelName.toLatin1().toStdString();
    device.serialNumber = record.serialNumber.toLatin1().toStdString();
    device.vendorId = record.vendorId;
    device.auxiliaryText2 = record.auxiliaryText2.toLatin1().toStdString();
    device.firmwareVersion = record.firmwareVersion.toLatin1().toStdString();
    device.firmwareFileName = record.firmwareFileName.toLatin1().toStdString();
    device.newFirmwareVersion = record.newFirmwareVersion.toLatin1().toStdString();
    device.chipsetType = record.chipsetType;
    device.firmwareStatus = record.firmwareStatus;
    device.configurationStatus = record.configurationStatus;
    return device;
}

} // namespace

DeviceDiscovery::DeviceDiscovery() = default;

DeviceDiscovery::~DeviceDiscovery() = default;

void DeviceDiscovery::getTarvoDevice(std::vector<DeviceInfo> &devices)
{
    bench::Bench bench(bench::Bench::defaultFolder(), bench::executableFolder());
    QStringList problems;
    devices.clear();
    for (const bench::DriveRecord &record : bench.query(&problems)) {
        devices.push_back(toDeviceInfo(record));
    }
    bench::reportOnce(problems);
}
