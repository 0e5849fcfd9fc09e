// A run's two hooks with the votes on the voting thread and nothing left to hand over, against what they cannot do
// without: twice take a lock, set a flag, release the lock and notify a parked thread.
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>

#include "bench/counted_allocations.h"
#include "bench/fake_infrastructure.h"
#include "bench/harness.h"
#include "extension/kor_backend.h"

namespace {

uint64_t getApiVersion(ZantApiVersion* version) {
    *version = {{2, 0, 0}, {5, 51, 0}};
    return 0;
}

uint32_t getProviders(const ZantProviderRecord*** providers, uint32_t* count) {
    static ZantProviderRecord record{};
    static const ZantProviderRecord* list[] = {&record};
    record.backendId = ZANT_BACKEND_ID_KOR;
    record.getApiVersion = getApiVersion;
    record.deviceGetInfrastructure = bench::getInfrastructure;
    *providers = list;
    *count = 1;
    return 0;
}

// A thread that waits for its flag, as the voting thread does.
class ParkedThread {
public:
    ~ParkedThread() {
        {
            const std::lock_guard lock(m_mutex);
            m_exit = true;
        }
        m_signal.notify_one();
        m_thread.join();
    }
    void signal() {
        {
            const std::lock_guard lock(m_mutex);
            m_flag = true;
        }
        m_signal.notify_one();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_signal;
    bool m_flag = false;
    bool m_exit = false;
    std::thread m_thread{[this] {
        std::unique_lock lock(m_mutex);
        while (!m_exit) {
            m_signal.wait(lock, [this] { return m_flag || m_exit; });
            m_flag = false;
        }
    }};
};

}  // namespace

int main() {
    zant::kor::KORBackend backend;
    const char* const document =
        R"({"devices":[{"device_id":0,"async_voting":true,"cores":[{"perf_profile":"burst"}]}],)"
        R"("graphs":[{"graph_names":["encoder"],"spad_mb":8},{"graph_names":["decoder"],"spad_mb":8}]})";
    ZantConfigWrapper** list = nullptr;
    uint32_t count = 0;
    if (!backend.bindInterfaceProviders(getProviders) || !backend.loadConfig(document) ||
        !backend.beforeDeviceCreate(&list, &count) || !backend.afterDeviceCreate()) {
        return EXIT_FAILURE;
    }
    const auto run = [&] {
        backend.beforeGraphExecute("decoder", &list, &count);
        backend.afterGraphExecute();
    };
    ParkedThread parked;
    const auto floor = [&parked] {
        parked.signal();
        parked.signal();
    };
    const bench::Comparison result = bench::compare(run, floor, 41, 20000);
    const size_t before = bench::t_allocations;
    for (int i = 0; i < 1000; ++i) run();
    const size_t allocations = bench::t_allocations - before;
    std::printf("both hooks %.0f ns, floor %.0f ns\n", result.subject * 1e9, result.floor * 1e9);
    bench::figure("execute_hooks/both", result.ratio, 1.20);
    bench::figure("execute_hooks/allocations", static_cast<double>(allocations), 0.0);
    backend.beforeDeviceFree();
}
