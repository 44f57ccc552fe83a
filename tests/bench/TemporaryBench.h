#pragma once

#include "bench/core/Bench.h"
#include "bench/core/Files.h"
#include "bench/core/FirmwareImage.h"

#include <QMap>
#include <QTemporaryDir>

#include <memory>

/// A bench in a temporary folder, with a folder of small images for all models beside it.
class TemporaryBench
{
public:
    TemporaryBench();

    bench::Bench *operator->() { return opened.get(); }
    bench::Bench &operator*() { return *opened; }

    QString folder() const { return temporary.path() + QStringLiteral("/bench"); }
    QString imageFolder() const { return temporary.path() + QStringLiteral("/images"); }
    /// The image file of a model, whether it is there or not.
    QString image(const QString &model) const;

    /// Adds a drive with versions older than its image's, at a high flash rate; fails the test when refused.
    void addOutdated(const QString &serial, const QString &model, std::int64_t rate = 1000 * 1000 * 1000);

    /// The drive as its file says; fails the test when there is none.
    bench::Drive drive(const QString &serial) const;

    /// All files of the bench but its lock, by name.
    QMap<QString, QByteArray> content() const;

private:
    QTemporaryDir temporary;
    std::unique_ptr<bench::Bench> opened;
};

/// A fault with a number or with a text.
bench::Fault numberFault(const char *name, qint64 number = 0, bool once = false);
bench::Fault textFault(
    const char *name, const QString &text, const QString &field = QString(), bool once = false);
