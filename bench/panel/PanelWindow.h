// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Drive.h"
#include "devices/DeviceInfo.h"

#include <QTimer>
#include <QWidget>

#include <map>
#include <string>
#include <utility>
#include <vector>

class QCheckBox;
class QPushButton;
class QScrollArea;
class QVBoxLayout;

namespace bench {

class DriveRow;
class TextLabel;

/**
 * The bench in a window: its drives, one a row, the companion's switch, and a line for what was refused.
 *
 * It reads the bench four times a second and after each of its own changes. A row stays the same object as
 * long as its drive is on the bench; a new drive comes last.
 */
class PanelWindow : public QWidget
{
    Q_OBJECT

public:
    /// `imageDirectory`: where the firmware images lie that decide what is up to date.
    PanelWindow(std::string benchDirectory, std::string imageDirectory);

    /// Places the window, before it is shown, at the right edge of that part of a screen, as large as its
    /// rows. An updater in the upper left corner stays free: where there is no room beside it, the window is
    /// as low as one row, at the bottom. Its title bar is on the screen whatever the size of the texts.
    void placeBesideUpdater(const QRect &available);

private:
    void addHead(QVBoxLayout *column);
    void refresh();
    void showDrives(const std::vector<Drive> &drives, const std::vector<DeviceInfo> &records);
    void addOutdated(const Model &model);
    void actionEnded(const QString &refusal);

    const std::string benchDirectory;
    const std::string imageDirectory;
    QTimer poll;
    QString actionRefusal; ///< why the last press of a button had no effect

    QPushButton *addButton = nullptr;
    QCheckBox *companionSwitch = nullptr;
    QScrollArea *scrollArea = nullptr;
    QVBoxLayout *rowColumn = nullptr;
    std::map<std::pair<std::string, std::string>, DriveRow *> rows; ///< by serial number and model
    TextLabel *message = nullptr; ///< the whole window's where it shows no row
};

} // namespace bench
