#pragma once

#include "bench/core/Fault.h"

#include <QMenu>

#include <vector>

namespace bench {

/// The faults of one drive: those that are set are checked. To choose one sets it with a value that shows
/// what it does, once or until it is cleared; to choose it again clears it.
class FaultMenu : public QMenu
{
    Q_OBJECT

public:
    explicit FaultMenu(QWidget *parent);

    /// Checks the faults that are set.
    void showFaults(const std::vector<Fault> &faults);

    /// A fault in a few words.
    static QString title(FaultKind kind);

signals:
    void faultChosen(const bench::Fault &fault);
    void faultDropped(bench::FaultKind kind);
    void allDropped();

private:
    std::vector<QAction *> choices; ///< in the order of the menu's faults
    QAction *untilCleared;
    QAction *clearAll;
};

} // namespace bench
