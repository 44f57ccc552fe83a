// SPDX-License-Identifier: MIT
#include "bench/panel/FaultMenu.h"

#include "bench/core/LifeCycle.h"
#include "bench/core/Text.h"
#include "bench/panel/OnBench.h"

#include <QInputDialog>

#include <utility>

namespace bench {

FaultMenu::FaultMenu(std::string benchDirectory, std::string serial, QWidget *parent)
    : QMenu(parent), benchDirectory(std::move(benchDirectory)), serial(std::move(serial))
{
    // Also a menu is legible on a dark desktop.
    setAttribute(Qt::WA_WindowPropagation);
    setToolTipsVisible(true);
    connect(this, &QMenu::aboutToShow, this, &FaultMenu::fill);
}

void FaultMenu::fill()
{
    onBench(benchDirectory, [this](Store &store) { faults = driveNamed(store, serial).faults; });
    clear();
    // A letter goes to the next entry that begins with it.
    for (const FaultDescription &kind : faultDescriptions()) {
        const bool takesValue = kind.value != FaultValue::None;
        QAction *const action =
            addAction((takesValue ? tr("&%1…") : tr("&%1")).arg(QLatin1String(kind.name)));
        action->setToolTip(QString::fromUtf8(kind.description));
        connect(action, &QAction::triggered, this,
            [=, &kind] { takesValue ? askFor(kind) : setFault(kind.kind, {}); });
    }
    addSeparator();
    QAction *const once = addAction(tr("Set &once"));
    once->setCheckable(true);
    once->setChecked(isOnce);
    connect(once, &QAction::toggled, this, [this](bool checked) { isOnce = checked; });
    addSeparator();
    for (const FaultDescription &kind : faultDescriptions()) {
        if (bench::find(faults, kind.kind) != nullptr) {
            connect(addAction(tr("&Clear %1").arg(QLatin1String(kind.name))), &QAction::triggered, this,
                [this, kind = kind.kind] {
                    emit chosen(onDrive(benchDirectory, serial, "clear a fault of",
                        [kind](Store &store, const std::string &drive) { clearFault(store, drive, kind); }));
                });
        }
    }
    QAction *const all = addAction(tr("Clear &all faults"));
    all->setEnabled(!faults.empty());
    connect(all, &QAction::triggered, this,
        [this] { emit chosen(onDrive(benchDirectory, serial, "clear the faults of", clearFaults)); });
}

void FaultMenu::askFor(const FaultDescription &kind)
{
    const Fault *const former = bench::find(faults, kind.kind);
    // A dialog of the button, and gone with it: the drive may be removed meanwhile.
    auto *const dialog = new QInputDialog(parentWidget());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAttribute(Qt::WA_WindowPropagation);
    dialog->setWindowTitle(tr("%1 on %2").arg(QLatin1String(kind.name), shownText(serial)));
    dialog->setLabelText(
        tr("%1: %2").arg(QLatin1String(kind.valueName), QString::fromUtf8(kind.description)));
    dialog->setTextValue(shownText(former == nullptr ? kind.example : former->value));
    connect(dialog, &QInputDialog::textValueSelected, this,
        [this, kind = kind.kind](const QString &value) { setFault(kind, value); });
    dialog->open();
}

void FaultMenu::setFault(FaultKind kind, const QString &value)
{
    emit chosen(
        onDrive(benchDirectory, serial, "set a fault on", [&](Store &store, const std::string &drive) {
            const auto text = unescaped(value.toStdString());
            require(text.has_value(), "a value has characters up to U+00FF, and \\xNN for any byte");
            bench::setFault(store, drive, {kind, *text, isOnce});
        }));
}

} // namespace bench
