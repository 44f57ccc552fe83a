#pragma once

#include "tests/ui/WindowFixture.h"

enum class Look { List, Confirmation, InProgress, Success, Restart, Failure, Nothing };

/// The look on screen, told by what a person sees of it.
inline Look lookOf(const WindowFixture &fixture)
{
    // Also while a refresh is under way, when the page before is still in the window.
    const QStringList buttons = WindowProbe::buttons(*fixture.page());
    const QStringList texts = WindowProbe::texts(*fixture.page());
    const bool updated = !texts.filter("has been successfully updated.").isEmpty();
    if (buttons.contains("Cancel")) {
        return Look::Confirmation;
    }
    if (buttons.contains("Finish")) {
        return updated ? Look::Success : Look::Failure;
    }
    if (updated) {
        return Look::Restart;
    }
    if (!texts.filter("DO NOT disconnect").isEmpty()) {
        return Look::InProgress;
    }
    return buttons.isEmpty() ? Look::Nothing : Look::List;
}
