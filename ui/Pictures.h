// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>

/// The compiled-in pictures as the pages draw them.
namespace Pictures {

constexpr const char *Ok = ":/firmwareUpdater/Ok.png";
constexpr const char *Update = ":/firmwareUpdater/Update.png";
constexpr const char *Warning = ":/firmwareUpdater/Warning.png";
constexpr const char *Error = ":/firmwareUpdater/Error.png";

/// The picture scaled to fit a square of `size` logical pixels on a screen with that many device pixels for
/// each; null when there is no such picture.
QPixmap scaled(const QString &path, int size, qreal pixelRatio);
/// The icon of a button.
QIcon icon(const QString &path);

} // namespace Pictures
