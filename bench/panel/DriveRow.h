#pragma once

#include "bench/core/Drive.h"
#include "devices/DeviceInfo.h"

#include <QFrame>

#include <array>
#include <string>

class QProgressBar;
class QVBoxLayout;

namespace bench {

class DriveButtons;
class TextLabel;

/// One drive of the bench: what it is, how it is, and its buttons. Above the buttons all rows are alike; what
/// is told below them takes no room where there is nothing to tell.
class DriveRow : public QFrame
{
    Q_OBJECT

public:
    /// The row shows no state until showDrive().
    DriveRow(const std::string &benchDirectory, const Drive &drive, QWidget *parent);

    /// Shows the drive as it is now and as discovery would report it.
    void showDrive(const Drive &drive, const DeviceInfo &record);

signals:
    /// A button was pressed; `refusal` says why it had no effect, and is empty when it had one.
    void pressed(const QString &refusal);

private:
    void addFacts(QVBoxLayout *lines, const Model &model);
    void addState(QVBoxLayout *lines, const QString &serial);

    TextLabel *serialLabel = nullptr;
    TextLabel *bridgeLabel = nullptr;
    std::array<TextLabel *, 3> versionLabels = {}; ///< running, in flash, on offer
    TextLabel *stateLabel = nullptr;
    QProgressBar *progress = nullptr; ///< beside the state while the flash is written
    DriveButtons *buttons = nullptr;
    TextLabel *faultLabel = nullptr;
    TextLabel *updateLabel = nullptr;
};

} // namespace bench
