// A message that the logger's level filters out, against one uncontended lock and unlock.
#include <mutex>

#include "bench/harness.h"
#include "platform/logger.h"

namespace {

void dropMessage(const char*, ZantLogLevel, uint64_t, va_list) {}

}  // namespace

int main() {
    zant::log::setupLogging(dropMessage, ZANT_LOG_LEVEL_ERROR);
    std::mutex mutex;
    int value = 0;
    const auto filtered = [&value] {
        bench::keep(value);
        ZANT_LOG_INFO("Key: device_id, Value: %d", value);
    };
    const auto lock = [&mutex] {
        mutex.lock();
        bench::keep(mutex);
        mutex.unlock();
    };
    const bench::Comparison result = bench::compare(filtered, lock, 25, 2'000'000);
    std::printf("filtered message %.2f ns, lock and unlock %.2f ns\n", result.subject * 1e9, result.floor * 1e9);
    bench::figure("log_site/filtered", result.ratio, 0.20);
}
