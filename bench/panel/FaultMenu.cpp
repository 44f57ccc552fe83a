#include "bench/panel/FaultMenu.h"

#include <algorithm>
#include <array>

namespace bench {

namespace {

/// What one entry of the menu sets.
struct Choice
{
    FaultKind kind;
    const char *title;
    const char *section = nullptr; ///< title of the section that it begins; null within one
    std::int64_t number = 0;
    const char *text = "";
    const char *field = "";
};

// Half of a sample drive's image is written after 20,000 bytes; code 9 means nothing to anybody.
constexpr std::array<Choice, 19> Choices = {{
    {FaultKind::SlowProbe, "Slow to answer (3 s)", "While it is looked for", 3000},
    {FaultKind::SettleQueries, "Status after 3 looks", nullptr, 3},
    {FaultKind::SettleTime, "Status after 10 s", nullptr, 10000},
    {FaultKind::NeverSettles, "Status never known"},
    {FaultKind::UnmountReturns, "Unmount refused", "While it is updated", 0},
    {FaultKind::WrongImage, "Image for another bridge"},
    {FaultKind::TruncatedImage, "Image cut short"},
    {FaultKind::FlashError, "Flash error half-way", nullptr, 20000},
    {FaultKind::PulledOut, "Pulled out half-way", nullptr, 20000},
    {FaultKind::VerifyError, "Verify error"},
    {FaultKind::NoReturn, "Does not come back", "When it is plugged in again"},
    {FaultKind::NewSerial, "Another serial number", nullptr, 0, "TV9999OTHER"},
    {FaultKind::DuplicateSerial, "Listed twice", "What it reports"},
    {FaultKind::FirmwareStatus, "Unknown firmware status", nullptr, 9},
    {FaultKind::ConfigurationStatus, "Unknown configuration status", nullptr, 9},
    {FaultKind::Chipset, "Bridge without updater", nullptr, Chipset::NotSupported},
    {FaultKind::VendorId, "Unknown vendor", nullptr, 0xFFFF},
    {FaultKind::ProductId, "Unknown product", nullptr, 0xFFFF},
    {FaultKind::Text, "Odd model name", nullptr, 0, "<b>caf\xE9</b>", "modelName"},
}};

} // namespace

FaultMenu::FaultMenu(QWidget *parent) : QMenu(parent)
{
    // Also a menu is legible on a dark desktop.
    setAttribute(Qt::WA_WindowPropagation);
    for (const Choice &choice : Choices) {
        if (choice.section != nullptr) {
            addSection(QString::fromLatin1(choice.section));
        }
        QAction *const action = addAction(QString::fromLatin1(choice.title));
        action->setCheckable(true);
        choices.push_back(action);
        connect(action, &QAction::triggered, this, [this, &choice](bool checked) {
            if (!checked) {
                emit faultDropped(choice.kind);
                return;
            }
            Fault fault{choice.kind};
            fault.number = choice.number;
            fault.text = choice.text;
            fault.field = findRecordField(choice.field);
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

void FaultMenu::showFaults(const std::vector<Fault> &faults)
{
    for (std::size_t i = 0; i < choices.size(); ++i) {
        choices[i]->setChecked(findFault(faults, Choices[i].kind) != nullptr);
    }
    clearAll->setEnabled(!faults.empty());
}

QString FaultMenu::title(FaultKind kind)
{
    const auto choice = std::find_if(
        Choices.begin(), Choices.end(), [kind](const Choice &candidate) { return candidate.kind == kind; });
    return QString::fromLatin1(choice == Choices.end() ? describe(kind).name : choice->title);
}

} // namespace bench
