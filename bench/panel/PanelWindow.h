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
class QLabel;
class QScrollArea;
class QVBoxLayout;

namespace bench {

class DriveRow;
class ElidedLabel;

/**
 * The bench in a window: its drives, one a row, the companion's switch, and one line for what was refused.
 *
 * It reads the bench four times a second and after each of its own changes. A row stays the same object, at
 * the same place, as long as its drive is on the bench; a new drive comes last.
 */
class PanelWindow : public QWidget
{
    Q_OBJECT

public:
    /// `imageDirectory`: where the firmware images lie that decide what is up to date.
    PanelWindow(std::string benchDirectory, std::string imageDirectory);

    /// Moves the window, before it is shown, to where it hides no button of the updater, which is in the
    /// upper left corner of that part of the screen: to its right where there is room, else below it.
    void placeBesideUpdater(const QRect &available);

private:
    void addHead(QVBoxLayout *column);
    void addDrives(QVBoxLayout *column);
    void refresh();
    void showDrives(const std::vector<Drive> &drives, const std::vector<DeviceInfo> &records);
    DriveRow *addRow(const Drive &drive);
    QString withoutDirectory(QString message) const;
    void switchCompanion(bool install);
    void actionEnded(const QString &refusal);

    const std::string benchDirectory;
    const std::string imageDirectory;
    QTimer poll;
    QString actionRefusal; ///< why the last press of a button had no effect

    QCheckBox *companionSwitch = nullptr;
    QLabel *emptyLabel = nullptr;
    QScrollArea *scrollArea = nullptr;
    QVBoxLayout *rowColumn = nullptr;
    std::map<std::pair<std::string, std::string>, DriveRow *> rows; ///< by serial number and model
    ElidedLabel *messageLine = nullptr;
};

} // namespace bench
