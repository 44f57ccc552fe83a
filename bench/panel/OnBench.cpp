#include "bench/panel/OnBench.h"

#include "bench/core/Refused.h"
#include "bench/core/Text.h"

namespace bench {

QString onBench(const std::string &directory, const std::function<void(Store &store)> &work)
{
    try {
        Store store(directory);
        work(store);
    } catch (const Refused &refused) {
        return QString::fromUtf8(refused.what());
    }
    return {};
}

QString onDrive(const std::string &directory, const std::string &serial, const std::string &action,
    const std::function<void(Store &store, const std::string &serial)> &work)
{
    return onBench(directory, [&](Store &store) {
        attempt("cannot " + action + ' ' + escaped(serial), [&] { work(store, serial); });
    });
}

QString shownText(const std::string &text)
{
    return QString::fromStdString(escaped(text));
}

} // namespace bench
