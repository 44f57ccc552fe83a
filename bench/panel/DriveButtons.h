#pragma once

#include "bench/core/Store.h"

#include <QTimer>
#include <QWidget>

#include <functional>
#include <string>

class QPushButton;

namespace bench {

class FaultMenu;

/// The buttons that handle one drive of the bench. None is ever disabled: each keeps the keyboard's focus.
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

    void showDrive(const Drive &drive);
    /// Seconds until the drive is plugged in by itself; 0 when it is not about to be.
    int secondsUntilBack() const;

signals:
    /// A button was pressed; `refusal` says why it had no effect, and is empty when it had one.
    void pressed(const QString &refusal);

private:
    QPushButton *addButton(const QString &text);
    void setText(QPushButton *button, const QString &text);
    void act(
        const std::string &action, const std::function<void(Store &store, const std::string &serial)> &work);
    void switchPlug();
    void plug();
    void restart();
    void comeBackInTime(Store &store);

    const std::string benchDirectory;
    const std::string serial;
    bool isPlugged = false;
    QTimer comeBack; ///< runs while the drive is unplugged and about to be plugged in

    QPushButton *plugButton = nullptr; ///< undoes what it did: "Unplug", "Plug"
    FaultMenu *faultMenu = nullptr;
};

} // namespace bench
