// SPDX-License-Identifier: MIT
#include "tests/devices/Pauses.h"

#include <QThread>

#include <condition_variable>
#include <mutex>
#include <vector>

namespace {

std::mutex mutex;
std::condition_variable ended;
std::vector<qulonglong> pauses; // not Qt's vector: its copies share one buffer beyond the lock
int endings = 0; // not used up by a pause yet
bool none = false;

void pause(qulonglong microseconds)
{
    std::unique_lock<std::mutex> lock(mutex);
    pauses.push_back(microseconds);
    ended.wait(lock, [] { return none || endings > 0; });
    if (!none) {
        --endings;
    }
}

} // namespace

void Pauses::reset()
{
    const std::lock_guard<std::mutex> lock(mutex);
    pauses.clear();
    endings = 0;
    none = false;
}

QVector<qulonglong> Pauses::begun()
{
    const std::lock_guard<std::mutex> lock(mutex);
    return QVector<qulonglong>(pauses.begin(), pauses.end());
}

void Pauses::end(int count)
{
    const std::lock_guard<std::mutex> lock(mutex);
    endings += count;
    ended.notify_all();
}

void Pauses::endAll()
{
    const std::lock_guard<std::mutex> lock(mutex);
    none = true;
    ended.notify_all();
}

// The program's own calls are bound to these, which hide Qt's own.

void QThread::sleep(unsigned long seconds)
{
    pause(seconds * 1000000ull);
}

void QThread::msleep(unsigned long milliseconds)
{
    pause(milliseconds * 1000ull);
}

void QThread::usleep(unsigned long microseconds)
{
    pause(microseconds);
}
