// SPDX-License-Identifier: MIT
#include "cli/linux/SystemBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusUnixFileDescriptor>

#include <fcntl.h>

namespace {

constexpr int TimeoutMilliseconds = 5000;

QDBusMessage call(const QString &service, const QString &path, const QString &interface,
    const QString &method, const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    message.setAutoStartService(false);
    return QDBusConnection::systemBus().call(message, QDBus::Block, TimeoutMilliseconds);
}

QVariant powerProperty(const QString &path, const QString &interface, const QString &name)
{
    const QDBusReply<QDBusVariant> reply = call("org.freedesktop.UPower", "/org/freedesktop/UPower" + path,
        "org.freedesktop.DBus.Properties", "Get", {"org.freedesktop.UPower" + interface, name});
    return reply.isValid() ? reply.value().variant() : QVariant();
}

} // namespace

int inhibitSleep(QString *problem)
{
    const QDBusReply<QDBusUnixFileDescriptor> reply =
        call("org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "Inhibit",
            {"sleep:shutdown:idle:handle-lid-switch", "tarvo-firmware",
                "The firmware of a drive is being written", "block"});
    if (!reply.isValid()) {
        *problem = reply.error().message();
        return -1;
    }
    return fcntl(reply.value().fileDescriptor(), F_DUPFD_CLOEXEC, 0);
}

double chargeOfBattery()
{
    if (!powerProperty("", "", "OnBattery").toBool()) {
        return -1;
    }
    const QVariant charge = powerProperty("/devices/DisplayDevice", ".Device", "Percentage");
    return charge.isValid() ? charge.toDouble() : -1;
}
