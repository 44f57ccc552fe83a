#pragma once

#include "bench/core/DriveLifeCycle.h"

#include <QTimer>
#include <QWidget>

#include <functional>
#include <string>

class QBoxLayout;
class QPushButton;

namespace bench {

class FaultMenu;

/// The buttons that handle one drive of the bench.
///
/// The program must notice that a drive was away, so one that is plugged in early waits for the rest of the
/// time.
class DriveButtons : public QWidget
{
    Q_OBJECT

public:
    DriveButtons(std::string benchDirectory, const Drive &drive, QWidget *parent);
    /// Plugs in a drive that is about to come back: it is not left unplugged.
    ~DriveButtons() override;

    /// Enables what can be done to the drive now.
    void showDrive(const Drive &drive);
    /// Seconds until the drive is plugged in by itself; 0 when it is not about to be.
    int secondsUntilBack() const;
    bool hasOpenMenu() const;

signals:
    /// A button was pressed; `refusal` says why it had no effect, and is empty when it had one.
    void pressed(const QString &refusal);

private:
    QPushButton *addButton(QBoxLayout *line, const QString &text, const QString &accessibleName);
    void addFaultMenu();
    void act(const std::function<void(DriveLifeCycle &drives)> &action);
    void plug();
    void unplug();
    void restart();

    const std::string benchDirectory;
    const std::string serial;
    QTimer comeBack; ///< runs while the drive is unplugged and about to be plugged in

    QPushButton *unplugButton = nullptr;
    QPushButton *plugButton = nullptr;
    QPushButton *restartButton = nullptr;
    QPushButton *faultButton = nullptr;
    FaultMenu *faultMenu = nullptr;
};

} // namespace bench
