// Writes the seeds of the fuzz targets: makeSeeds FOLDER makes FOLDER/image and FOLDER/drive.

#include "bench/core/Drive.h"
#include "bench/core/Files.h"
#include "bench/core/FirmwareImage.h"

#include <cstdio>

int main(int argc, char **argv)
{
    const QString folder = QString::fromUtf8(argc > 1 ? argv[1] : ".");
    bench::FirmwareImage image = bench::FirmwareImage::forModel(
        *bench::findModel(QStringLiteral("Pebble")), QStringLiteral("2.14"), QStringLiteral("5"));
    image.firmware.truncate(300);
    image.configuration.truncate(40);

    bench::Drive drive;
    drive.serial = drive.reportedSerial = QStringLiteral("TV0001PEBBLE");
    drive.model = QStringLiteral("Pebble");
    bench::Drive withFaults = drive;
    for (const bench::FaultKind &kind : bench::faultKinds()) {
        bench::Fault fault;
        fault.name = QString::fromLatin1(kind.name);
        fault.number = kind.minimum;
        fault.text = QStringLiteral("x\u00ff");
        fault.field = kind.value == bench::FaultValue::Field ? bench::faultFields().first() : QString();
        withFaults.faults.append(fault);
    }

    QString reason;
    const bool written = bench::makeFolder(folder + QStringLiteral("/image"), &reason)
        && bench::makeFolder(folder + QStringLiteral("/drive"), &reason)
        && bench::writeFile(folder + QStringLiteral("/image/sound"), image.encode(), &reason)
        && bench::writeFile(folder + QStringLiteral("/image/header"), image.encode().left(152), &reason)
        && bench::writeFile(folder + QStringLiteral("/drive/plain"), drive.encode(), &reason)
        && bench::writeFile(folder + QStringLiteral("/drive/faults"), withFaults.encode(), &reason);
    if (!written) {
        std::fprintf(stderr, "%s\n", reason.toUtf8().constData());
    }
    return written ? 0 : 1;
}
