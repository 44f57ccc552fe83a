#include "bench/panel/OnBench.h"

#include "bench/core/Refused.h"

namespace bench {

QString onBench(const std::string &directory, const std::function<void(BenchStore &store)> &work)
{
    try {
        BenchStore store(directory);
        work(store);
    } catch (const Refused &refused) {
        return QString::fromUtf8(refused.what());
    }
    return {};
}

} // namespace bench
