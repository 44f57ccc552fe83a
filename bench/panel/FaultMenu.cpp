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
    const char *value = ""; ///< as a person gives it; empty for none
    const char *section = nullptr; ///< title of the section that it begins; null within one
};

// Half of a sample drive's image is written after 20,000 bytes; code 9 means nothing to anybody.
constexpr std::array<Choice, 19> Choices = {{
    {FaultKind::SlowProbe, "Slow to answer (3 s)", "3000", "While it is looked for"},
    {FaultKind::SettleQueries, "Status after 3 looks", "3"},
    {FaultKind::SettleTime, "Status after 10 s", "10000"},
    {FaultKind::NeverSettles, "Status never known"},
    {FaultKind::UnmountReturns, "Unmount refused", "0", "While it is updated"},
    {FaultKind::WrongImage, "Image for another bridge"},
    {FaultKind::TruncatedImage, "Image cut short"},
    {FaultKind::FlashError, "Flash error half-way", "20000"},
    {FaultKind::PulledOut, "Pulled out half-way", "20000"},
    {FaultKind::VerifyError, "Verify error"},
    {FaultKind::NoReturn, "Does not come back", "", "When it is plugged in again"},
    {FaultKind::NewSerial, "Another serial number", "TV9999OTHER"},
    {FaultKind::DuplicateSerial, "Listed twice", "", "What it reports"},
    {FaultKind::FirmwareStatus, "Unknown firmware status", "9"},
    {FaultKind::ConfigurationStatus, "Unknown configuration status", "9"},
    {FaultKind::Chipset, "Bridge without updater", "0"},
    {FaultKind::VendorId, "Unknown vendor", "0xFFFF"},
    {FaultKind::ProductId, "Unknown product", "0xFFFF"},
    {FaultKind::Text, "Odd model name", "modelName=<b>caf\\xE9</b>"},
}};

Fault faultOf(const Choice &choice)
{
    const std::string value = choice.value;
    return parseFault(describe(choice.kind), value.empty() ? std::nullopt : std::optional(value));
}

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
            if (checked) {
                Fault fault = faultOf(choice);
                fault.once = !untilCleared->isChecked();
                emit faultChosen(fault);
            } else {
                emit faultDropped(choice.kind);
            }
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
