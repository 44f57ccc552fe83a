#include "cli/Power.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusUnixFileDescriptor>

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

/// The machine is kept awake until this is closed.
struct WakeLock::Held
{
    QDBusUnixFileDescriptor lock;
};

WakeLock::WakeLock()
{
    const QDBusReply<QDBusUnixFileDescriptor> reply =
        call("org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "Inhibit",
            {"sleep:shutdown:idle:handle-lid-switch", "tarvo-firmware",
                "The firmware of a drive is being written", "block"});
    if (reply.isValid()) {
        held = std::make_unique<Held>(Held{reply.value()});
    } else {
        problem = reply.error().message();
    }
}

WakeLock::~WakeLock() = default;

std::optional<double> batteryCharge()
{
    if (!powerProperty("", "", "OnBattery").toBool()) {
        return std::nullopt;
    }
    const QVariant charge = powerProperty("/devices/DisplayDevice", ".Device", "Percentage");
    return charge.isValid() ? std::optional(charge.toDouble()) : std::nullopt;
}
