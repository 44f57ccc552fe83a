// SPDX-License-Identifier: MIT
#pragma once

#include "tests/ui/WindowFixture.h"

/// The look on screen, told by what a person sees of it: one of Looks, or "nothing". The number of drives
/// follows where it is not one: "list of 3".
inline QString lookOf(const WindowFixture &fixture)
{
    // Also while a refresh is under way, when the page before is still in the window.
    const QWidget &page = *fixture.page();
    int drives = 0;
    for (const QWidget *widget : page.findChildren<QWidget *>()) {
        drives += widget->objectName().startsWith("drive ") ? 1 : 0;
    }
    const QString count = drives > 1 ? QString(" of %1").arg(drives) : QString();
    const QStringList buttons = WindowProbe::buttons(page);
    const QStringList texts = WindowProbe::texts(page);
    const bool updated = !texts.filter("has been successfully updated.").isEmpty();
    if (!texts.filter("No compatible Tarvo device").isEmpty()) {
        return "no drive";
    }
    if (buttons.contains("Cancel")) {
        return "confirmation" + count;
    }
    if (buttons.contains("Finish")) {
        return (updated ? "success" : "failure") + count;
    }
    if (updated) {
        return "restart" + count;
    }
    if (!texts.filter("DO NOT disconnect").isEmpty()) {
        return "in progress" + count;
    }
    return buttons.isEmpty() ? "nothing" : "list" + count;
}
