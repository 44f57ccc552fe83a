#pragma once

#include "bench/core/Drive.h"
#include "devices/DeviceInfo.h"

#include <QFrame>

#include <string>

class QProgressBar;
class QVBoxLayout;

namespace bench {

class DriveButtons;
class ElidedLabel;

/// One drive of the bench: what it is, how it is, and its buttons. All rows have the same height and columns,
/// whatever is told of the drive.
class DriveRow : public QFrame
{
    Q_OBJECT

public:
    /// The row shows no state until showDrive().
    DriveRow(const std::string &benchDirectory, const Drive &drive, QWidget *parent);

    bool hasOpenMenu() const;
    /// Shows the drive as it is now and as discovery would report it.
    void showDrive(const Drive &drive, const DeviceInfo &record);
    /// Shows that the drive is no longer on the bench.
    void showGone();

signals:
    /// A button was pressed; `refusal` says why it had no effect, and is empty when it had one.
    void pressed(const QString &refusal);

private:
    void addFacts(QVBoxLayout *lines, const Model &model);

    ElidedLabel *serialLabel = nullptr;
    ElidedLabel *bridgeLabel = nullptr;
    ElidedLabel *runningLabel = nullptr;
    ElidedLabel *flashLabel = nullptr;
    ElidedLabel *offerLabel = nullptr;
    ElidedLabel *pluggedLabel = nullptr;
    ElidedLabel *stateLabel = nullptr;
    ElidedLabel *updateLabel = nullptr;
    ElidedLabel *faultLabel = nullptr;
    QProgressBar *progress = nullptr; ///< in the place of the faults while the flash is written
    DriveButtons *buttons = nullptr;
};

} // namespace bench
