// SPDX-License-Identifier: MIT
#include "ui/Pictures.h"

#include <QCoreApplication>
#include <QHash>
#include <QMetaEnum>
#include <QPixmapCache>

namespace {

/// Qt 5 draws icons in device pixels only when it is asked to. Qt 6 always does, and there the attribute has
/// no effect and its enumerator is deprecated, so it is looked up by name.
void drawIconsInDevicePixels()
{
    bool known = false;
    const int attribute =
        QMetaEnum::fromType<Qt::ApplicationAttribute>().keyToValue("AA_UseHighDpiPixmaps", &known);
    if (known) {
        QCoreApplication::setAttribute(Qt::ApplicationAttribute(attribute));
    }
}

} // namespace

// Kept in the pixmap cache, since every refresh of the window asks for it again.
QPixmap Pictures::scaled(const QString &path, int size, qreal pixelRatio)
{
    const int pixels = qRound(size * pixelRatio);
    const QString key = QString("%1@%2/%3").arg(path).arg(pixels).arg(pixelRatio);
    QPixmap picture;
    if (!QPixmapCache::find(key, &picture) && picture.load(path)) {
        picture = picture.scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        picture.setDevicePixelRatio(pixelRatio);
        QPixmapCache::insert(key, picture);
    }
    return picture;
}

// Made once, since every icon object puts scaled copies of its own into the pixmap cache; never freed, since
// that would come after the application object's end.
QIcon Pictures::icon(const QString &path)
{
    static auto &icons = *new QHash<QString, QIcon>;
    auto icon = icons.find(path);
    if (icon == icons.end()) {
        drawIconsInDevicePixels();
        icon = icons.insert(path, QIcon(path));
    }
    return *icon;
}
