#pragma once

#include "bench/core/Drive.h"
#include "devices/DeviceInfo.h"

#include <QFrame>

#include <string>

class QBoxLayout;
class QGridLayout;
class QProgressBar;
class QStackedWidget;

namespace bench {

class DriveButtons;
class ElidedLabel;

/// One drive of the bench: what it is, how it is, and its buttons.
class DriveRow : public QFrame
{
    Q_OBJECT

public:
    /// The row shows no state until showDrive().
    DriveRow(const std::string &benchDirectory, const Drive &drive, QWidget *parent);

    bool isOf(const Drive &drive) const { return drive.serial == serial && drive.model == model; }
    bool hasOpenMenu() const;
    QSize minimumSizeHint() const override;

    /// Shows the drive as it is now and as discovery would report it.
    void showDrive(const Drive &drive, const DeviceInfo &record);
    /// Shows that the drive is no longer on the bench.
    void showGone();

signals:
    /// A button was pressed; `refusal` says why it had no effect, and is empty when it had one.
    void pressed(const QString &refusal);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    QWidget *addFacts(const Model &product);
    QWidget *addState();
    void arrange(bool isWide);

    const std::string serial;
    const std::string model;
    QBoxLayout *parts = nullptr;
    QGridLayout *facts = nullptr;
    int nameWidth = 0; ///< of the longest name; half of that where there is little room
    int wideWidth = 0; ///< from which on the three parts are side by side
    int narrowWidth = 0; ///< needed for one below the other

    ElidedLabel *serialLabel = nullptr;
    ElidedLabel *bridgeLabel = nullptr;
    ElidedLabel *runningLabel = nullptr;
    ElidedLabel *flashLabel = nullptr;
    ElidedLabel *offerLabel = nullptr;

    ElidedLabel *pluggedLabel = nullptr;
    ElidedLabel *statusLabel = nullptr;
    ElidedLabel *updateLabel = nullptr;
    QStackedWidget *lastLine = nullptr; ///< the faults or, while the flash is written, the progress
    ElidedLabel *faultLabel = nullptr;
    QProgressBar *progress = nullptr;

    DriveButtons *buttons = nullptr;
};

} // namespace bench
