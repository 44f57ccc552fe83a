#pragma once

#include "bench/core/Bench.h"

#include <QFrame>
#include <QTimer>

class QLabel;
class QProgressBar;
class QPushButton;
class QStackedWidget;

namespace bench {

class ElidedLabel;
class FaultMenu;

/// One drive of the bench: what it is, how it is, and the buttons of a hand that holds it.
class DriveRow : public QFrame
{
    Q_OBJECT

public:
    /// `bench` outlives the row. The row is empty until showDrive().
    DriveRow(Bench *bench, const Drive &drive, QWidget *parent);
    /// Ends a power-cycle that is under way: the drive is not left unplugged.
    ~DriveRow() override;

    QString serial() const { return serialNumber; }
    bool hasOpenMenu() const;

    /// Shows the drive as it is now.
    void showDrive(const Drive &drive);
    /// Shows that the drive's file is there but cannot be read.
    void showUnreadable();

signals:
    /// A button was pressed; `problem` says why it had no effect, and is empty when it had one.
    void pressed(const QString &problem);

private:
    void addTexts(const Drive &drive);
    void addButtons();
    void tell(bool done, const QString &problem);
    void powerCycle();
    void showStatus(const Drive &drive, const DriveRecord &record, DriveState state);
    void showPlugged(bool plugged);
    void showFaults(const QVector<Fault> &faults);

    Bench *const bench;
    const QString serialNumber;
    QTimer powerOff; ///< runs while the drive is unplugged for a power-cycle

    ElidedLabel *serialLabel = nullptr;
    ElidedLabel *bridgeLabel = nullptr;
    ElidedLabel *runningLabel = nullptr;
    ElidedLabel *flashLabel = nullptr;
    ElidedLabel *offerLabel = nullptr;
    ElidedLabel *pluggedLabel = nullptr;
    ElidedLabel *statusLabel = nullptr;
    QStackedWidget *lastLine = nullptr; ///< the faults or, while the flash is written, the progress
    ElidedLabel *faultLabel = nullptr;
    QProgressBar *progress = nullptr;
    QPushButton *unplugButton = nullptr;
    QPushButton *plugButton = nullptr;
    QPushButton *powerCycleButton = nullptr;
    QPushButton *faultButton = nullptr;
    FaultMenu *faultMenu = nullptr;
};

} // namespace bench
