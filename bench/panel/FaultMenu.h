// SPDX-License-Identifier: MIT
#pragma once

#include "bench/core/Faults.h"

#include <QMenu>

#include <string>

namespace bench {

/// The faults of one drive: sets one of any kind, for which it asks for a value where the kind takes one, and
/// clears those that are set.
class FaultMenu : public QMenu
{
    Q_OBJECT

public:
    FaultMenu(std::string benchDirectory, std::string serial, QWidget *parent);

signals:
    /// An entry was chosen; `refusal` says why it had no effect, and is empty when it had one.
    void chosen(const QString &refusal);

private:
    void fill();
    void askFor(const FaultDescription &kind);
    void setFault(FaultKind kind, const QString &value);

    const std::string benchDirectory;
    const std::string serial;
    Faults faults;
    bool isOnce = true; ///< what is set is cleared as soon as it is used up
};

} // namespace bench
