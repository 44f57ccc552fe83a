// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

namespace CompanionTexts {

/// What a person is told who wants to update drives on a computer on which the companion product is
/// installed. To be translated in the context "MainWindow".
constexpr const char *Installed = QT_TRANSLATE_NOOP("MainWindow",
    "Tarvo Quaydesk is installed on this computer. Please Uninstall Tarvo Quaydesk before using Tarvo "
    "Firmware Updater.");

} // namespace CompanionTexts
