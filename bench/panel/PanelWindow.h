#pragma once

#include "bench/core/Bench.h"

#include <QFileSystemWatcher>
#include <QTimer>
#include <QVector>
#include <QWidget>

class QCheckBox;
class QLabel;
class QScrollArea;
class QVBoxLayout;

namespace bench {

class DriveRow;
class ElidedLabel;

/**
 * The bench in a window: its drives, one a row, the companion's switch, and one line for what went wrong.
 *
 * It looks at the bench when the folder changes and four times a second: neither a file that is rewritten in
 * place nor the end of a process that was writing changes a folder. A row stays the same object, at the same
 * place, as long as its drive is on the bench; a new drive comes last.
 */
class PanelWindow : public QWidget
{
    Q_OBJECT

public:
    explicit PanelWindow(const Bench &bench);
    ~PanelWindow() override;

private:
    void addHead(QVBoxLayout *column);
    void addDrives(QVBoxLayout *column);
    void watchFolders();
    void refresh();
    void showDrives(const QVector<Drive> &drives);
    void showMessage(const QStringList &problems);
    void switchCompanion(bool install);
    void actionEnded(const QString &problem);

    Bench bench;
    QFileSystemWatcher watcher;
    QTimer soon; ///< gathers the many changes of a flash into one look
    QTimer regularly;
    QString actionProblem; ///< why the last press of a button had no effect

    QCheckBox *companionSwitch = nullptr;
    QLabel *emptyLabel = nullptr;
    QScrollArea *scrollArea = nullptr;
    QVBoxLayout *rowColumn = nullptr;
    QVector<DriveRow *> rows;
    ElidedLabel *messageLine = nullptr;
};

} // namespace bench
