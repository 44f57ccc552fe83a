// SPDX-License-Identifier: MIT
#include "tests/platform/ScriptedPlatform.h"

#include <Asmedia105X.h>
#include <DeviceDiscovery.h>
#include <MacDevice.h>
#include <OxSemiFireWire.h>

#include <QElapsedTimer>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <utility>
#include <vector>

namespace {

struct Script
{
    std::mutex mutex;
    int generation = 0; ///< counts the resets
    std::condition_variable released;
    std::vector<ScriptedPlatform::DeviceList> answers = {{}};
    bool queriesHeld = false;
    bool flashesHeld = false;
    bool queriesThrow = false;
    bool flashesThrow = false;
    bool flashResult = true;
    int unmountResult = 1;
    // Not Qt's lists: their copies share one buffer beyond the lock.
    std::vector<QString> calls;
    QElapsedTimer sinceLastQuery;
    std::vector<qint64> queryIntervals;
};

/// Never freed: threads that outlive a test still call the platform while the process ends.
Script &script()
{
    static auto *const theScript = new Script;
    return *theScript;
}

/// The reset since which the calling thread's library object exists. What a thread of an earlier test still
/// does is not remembered, and it is not held.
thread_local int callersGeneration = 0;

void enter()
{
    const std::lock_guard<std::mutex> lock(script().mutex);
    callersGeneration = script().generation;
}

void remember(const QString &call)
{
    const std::lock_guard<std::mutex> lock(script().mutex);
    if (callersGeneration == script().generation) {
        script().calls.push_back(call);
    }
}

void waitWhile(const bool &held, std::unique_lock<std::mutex> &lock)
{
    script().released.wait(lock, [&held] { return !held || callersGeneration != script().generation; });
}

void throwIf(bool throws)
{
    if (throws) {
        throw std::runtime_error("from the scripted platform");
    }
}

QString text(const std::string &bytes)
{
    return QString::fromLatin1(bytes.data(), static_cast<int>(bytes.size()));
}

bool flash(const std::string &imagePath)
{
    remember("updateDevice(" + text(imagePath) + ")");
    std::unique_lock<std::mutex> lock(script().mutex);
    waitWhile(script().flashesHeld, lock);
    throwIf(script().flashesThrow);
    return script().flashResult;
}

QString updaterName(int chipset)
{
    switch (chipset) {
    case Chipset::Asm1051:
        return "Asm1051";
    case Chipset::Asm1051E:
        return "Asm1051E";
    case Chipset::Asm1053:
        return "Asm1053";
    case Chipset::OxSemiFireWire934:
        return "OxSemiFireWire934";
    default:
        return "OxSemiFireWire944";
    }
}

} // namespace

void ScriptedPlatform::reset()
{
    Script &s = script();
    {
        const std::lock_guard<std::mutex> lock(s.mutex);
        ++s.generation;
        s.answers = {{}};
        s.queriesHeld = false;
        s.flashesHeld = false;
        s.queriesThrow = false;
        s.flashesThrow = false;
        s.flashResult = true;
        s.unmountResult = 1;
        s.calls.clear();
        s.sinceLastQuery.invalidate();
        s.queryIntervals.clear();
    }
    s.released.notify_all();
}

void ScriptedPlatform::attach(const DeviceList &devices)
{
    attachInTurn({devices});
}

void ScriptedPlatform::attachInTurn(const std::vector<DeviceList> &answers)
{
    const std::lock_guard<std::mutex> lock(script().mutex);
    script().answers = answers;
}

void ScriptedPlatform::holdQueries()
{
    const std::lock_guard<std::mutex> lock(script().mutex);
    script().queriesHeld = true;
}

void ScriptedPlatform::releaseQueries()
{
    {
        const std::lock_guard<std::mutex> lock(script().mutex);
        script().queriesHeld = false;
    }
    script().released.notify_all();
}

void ScriptedPlatform::throwFromQueries()
{
    const std::lock_guard<std::mutex> lock(script().mutex);
    script().queriesThrow = true;
}

void ScriptedPlatform::setFlashResult(bool result)
{
    const std::lock_guard<std::mutex> lock(script().mutex);
    script().flashResult = result;
}

void ScriptedPlatform::setUnmountResult(int result)
{
    const std::lock_guard<std::mutex> lock(script().mutex);
    script().unmountResult = result;
}

void ScriptedPlatform::holdFlashes()
{
    const std::lock_guard<std::mutex> lock(script().mutex);
    script().flashesHeld = true;
}

void ScriptedPlatform::releaseFlashes()
{
    {
        const std::lock_guard<std::mutex> lock(script().mutex);
        script().flashesHeld = false;
    }
    script().released.notify_all();
}

void ScriptedPlatform::throwFromFlashes()
{
    const std::lock_guard<std::mutex> lock(script().mutex);
    script().flashesThrow = true;
}

QStringList ScriptedPlatform::calls()
{
    const std::lock_guard<std::mutex> lock(script().mutex);
    return QStringList(script().calls.begin(), script().calls.end());
}

int ScriptedPlatform::count(const QString &beginning)
{
    const std::lock_guard<std::mutex> lock(script().mutex);
    return int(std::count_if(script().calls.begin(), script().calls.end(),
        [&beginning](const QString &call) { return call.startsWith(beginning); }));
}

QList<qint64> ScriptedPlatform::queryIntervals()
{
    const std::lock_guard<std::mutex> lock(script().mutex);
    return QList<qint64>(script().queryIntervals.begin(), script().queryIntervals.end());
}

DeviceDiscovery::DeviceDiscovery()
{
    enter();
    remember("DeviceDiscovery()");
}

DeviceDiscovery::~DeviceDiscovery()
{
    remember("~DeviceDiscovery()");
}

void DeviceDiscovery::getTarvoDevice(std::vector<DeviceInfo> &devices)
{
    Script &s = script();
    remember(QString("getTarvoDevice(%1)").arg(devices.size()));
    std::unique_lock<std::mutex> lock(s.mutex);
    if (s.sinceLastQuery.isValid()) {
        s.queryIntervals.push_back(s.sinceLastQuery.elapsed());
    }
    s.sinceLastQuery.start();
    waitWhile(s.queriesHeld, lock);
    throwIf(s.queriesThrow);
    devices = s.answers.front();
    if (s.answers.size() > 1) {
        s.answers.erase(s.answers.begin());
    }
}

struct MacDevice::Volumes
{
    std::string serialNumber;
};

MacDevice::MacDevice(std::string serialNumber) : volumes(new Volumes{std::move(serialNumber)}) { }

MacDevice::~MacDevice() = default;

int MacDevice::unmountDisk()
{
    remember("unmountDisk(" + text(volumes->serialNumber) + ")");
    const std::lock_guard<std::mutex> lock(script().mutex);
    return script().unmountResult;
}

struct Asmedia105X::Session
{
    std::string serialNumber;
    int chipset;

    static std::unique_ptr<Session> open(std::string serialNumber, int chipset)
    {
        enter();
        remember(updaterName(chipset) + "(" + text(serialNumber) + ")");
        return std::make_unique<Session>(Session{std::move(serialNumber), chipset});
    }
};

Asmedia105X::Asmedia105X(std::unique_ptr<Session> openedSession)
    : macDevice(new MacDevice(openedSession->serialNumber)), session(std::move(openedSession))
{
}

Asmedia105X::~Asmedia105X()
{
    remember("~" + updaterName(session->chipset) + "()");
    delete macDevice;
}

bool Asmedia105X::updateDevice(std::string imagePath)
{
    return flash(imagePath);
}

Asm1051::Asm1051(std::string serialNumber)
    : Asmedia105X(Session::open(std::move(serialNumber), Chipset::Asm1051))
{
}

Asm1051::~Asm1051() = default;

Asm1051E::Asm1051E(std::string serialNumber)
    : Asmedia105X(Session::open(std::move(serialNumber), Chipset::Asm1051E))
{
}

Asm1051E::~Asm1051E() = default;

Asm1053::Asm1053(std::string serialNumber)
    : Asmedia105X(Session::open(std::move(serialNumber), Chipset::Asm1053))
{
}

Asm1053::~Asm1053() = default;

struct OxSemiFireWire::Session
{
    std::string serialNumber;
    int chipset;

    static std::unique_ptr<Session> open(std::string serialNumber, int chipset)
    {
        enter();
        remember(updaterName(chipset) + "(" + text(serialNumber) + ")");
        return std::make_unique<Session>(Session{std::move(serialNumber), chipset});
    }
};

OxSemiFireWire::OxSemiFireWire(std::unique_ptr<Session> openedSession) : session(std::move(openedSession)) { }

OxSemiFireWire::~OxSemiFireWire()
{
    remember("~" + updaterName(session->chipset) + "()");
}

bool OxSemiFireWire::updateDevice(std::string imagePath)
{
    return flash(imagePath);
}

OxSemiFireWire934::OxSemiFireWire934(std::string serialNumber)
    : OxSemiFireWire(Session::open(std::move(serialNumber), Chipset::OxSemiFireWire934))
{
}

OxSemiFireWire934::~OxSemiFireWire934() = default;

OxSemiFireWire944::OxSemiFireWire944(std::string serialNumber)
    : OxSemiFireWire(Session::open(std::move(serialNumber), Chipset::OxSemiFireWire944))
{
}

OxSemiFireWire944::~OxSemiFireWire944() = default;
