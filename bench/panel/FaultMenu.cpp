#include "bench/panel/FaultMenu.h"

#include <algorithm>

namespace bench {

namespace {

/// What one entry of the menu sets.
struct Choice
{
    const char *section; ///< begins a section with this title; null within one
    const char *title;
    const char *name;
    qint64 number = 0;
    const char *text = "";
    const char *field = "";
};

// Half of a sample drive's image is written after 20,000 bytes; code 9 means nothing to anybody.
constexpr Choice Choices[] = {
    {"While it is looked for", "Slow to answer (3 s)", "slow-probe", 3000},
    {nullptr, "Status after 3 looks", "settle-queries", 3},
    {nullptr, "Status after 10 s", "settle-time", 10000},
    {nullptr, "Status never known", "never-settles"},
    {"While it is updated", "Unmount refused", "unmount-returns", 0},
    {nullptr, "Image for another bridge", "wrong-image"},
    {nullptr, "Image cut short", "truncated-image"},
    {nullptr, "Flash error half-way", "flash-error", 20000},
    {nullptr, "Pulled out half-way", "pulled-out", 20000},
    {nullptr, "Verify error", "verify-error"},
    {"When it is plugged in again", "Does not come back", "no-return"},
    {nullptr, "Another serial number", "new-serial", 0, "TV9999OTHER"},
    {"What it reports", "Listed twice", "duplicate-serial"},
    {nullptr, "Unknown firmware status", "firmware-status", 9},
    {nullptr, "Unknown configuration status", "configuration-status", 9},
    {nullptr, "Bridge without updater", "chipset", 0},
    {nullptr, "Unknown vendor", "vendor-id", 0xFFFF},
    {nullptr, "Unknown product", "product-id", 0xFFFF},
    {nullptr, "Odd model name", "text", 0, "<b>caf\xE9</b>", "modelName"},
};

bool isSet(const QVector<Fault> &faults, const char *name)
{
    return std::any_of(faults.begin(), faults.end(),
        [name](const Fault &fault) { return fault.name == QLatin1String(name); });
}

} // namespace

FaultMenu::FaultMenu(QWidget *parent) : QMenu(parent)
{
    for (const Choice &choice : Choices) {
        if (choice.section != nullptr) {
            addSection(QString::fromLatin1(choice.section));
        }
        QAction *const action = addAction(QString::fromLatin1(choice.title));
        action->setCheckable(true);
        choices.append(action);
        connect(action, &QAction::triggered, this, [this, &choice](bool checked) {
            const QString name = QString::fromLatin1(choice.name);
            if (!checked) {
                emit faultDropped(name);
                return;
            }
            Fault fault;
            fault.name = name;
            fault.number = choice.number;
            fault.text = QString::fromLatin1(choice.text);
            fault.field = QString::fromLatin1(choice.field);
            fault.once = !untilCleared->isChecked();
            emit faultChosen(fault);
        });
    }
    addSeparator();
    untilCleared = addAction(tr("Faults stay until cleared"));
    untilCleared->setCheckable(true);
    clearAll = addAction(tr("Clear faults"));
    connect(clearAll, &QAction::triggered, this, &FaultMenu::allDropped);
}

void FaultMenu::showFaults(const QVector<Fault> &faults)
{
    for (int i = 0; i < choices.size(); ++i) {
        choices.at(i)->setChecked(isSet(faults, Choices[i].name));
    }
    clearAll->setEnabled(!faults.isEmpty());
}

QString FaultMenu::title(const Fault &fault)
{
    for (const Choice &choice : Choices) {
        if (fault.name == QLatin1String(choice.name)) {
            return QString::fromLatin1(choice.title);
        }
    }
    return fault.name;
}

} // namespace bench
