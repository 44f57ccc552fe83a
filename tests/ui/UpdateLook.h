#pragma once

#include "tests/ui/WindowFixture.h"

enum class Look { List, Confirmation, InProgress, Success, Restart, Failure, Nothing };

/// The look on screen, told by what a person sees of it.
inline Look lookOf(const WindowFixture &fixture)
{
    const QStringList buttons = fixture.buttons();
    const bool busy = WindowProbe::showsBusyBar(fixture.window);
    if (buttons.contains("Cancel")) {
        return Look::Confirmation;
    }
    if (busy) {
        return fixture.texts().filter("DO NOT disconnect").size() == 1 ? Look::InProgress : Look::Restart;
    }
    if (buttons == QStringList{"Finish"}) {
        return fixture.texts().first().contains("successfully") ? Look::Success : Look::Failure;
    }
    return buttons.isEmpty() ? Look::Nothing : Look::List;
}
