// The tensor allocator: a look-up against a bare hash look-up under one lock; and how allocation and release grow with
// the number of tensors, in one block and in as many blocks as tensors.
#include <cstdlib>
#include <mutex>
#include <numeric>
#include <random>
#include <string>
#include <unordered_map>

#include "bench/harness.h"
#include "buffers/multi_tensor_shared_buffer.h"

namespace {

using zant::kor::MultiTensorSharedBuffer;

constexpr uint32_t ONE = 1;

std::vector<ZantTensor> makeTensors(size_t count) {
    ZantTensor tensor{};
    tensor.dataType = ZANT_DATA_TYPE_BYTE;
    tensor.rank = 1;
    tensor.dimensions = &ONE;
    return std::vector<ZantTensor>(count, tensor);
}

const ZantProviderRecord& backend() {
    static const ZantProviderRecord record = [] {
        ZantProviderRecord provider{};
        provider.memoryRegister = [](void*, const MemRegisterDescriptor*, uint32_t, void**) -> uint64_t { return 0; };
        provider.memoryDeregister = [](void**, uint32_t) -> uint64_t { return 0; };
        return provider;
    }();
    return record;
}

void initialize(MultiTensorSharedBuffer& buffer) {
    if (buffer.initialize(nullptr, &backend().functions40) != 0) std::abort();
}

void allocate(MultiTensorSharedBuffer& buffer, std::vector<ZantTensor>& tensors, size_t perBlock) {
    for (size_t i = 0; i < tensors.size(); i += perBlock) {
        if (buffer.allocate(&tensors[i], static_cast<uint32_t>(perBlock)) != 0) std::abort();
    }
}

void release(MultiTensorSharedBuffer& buffer, std::vector<ZantTensor>& tensors) {
    for (ZantTensor& tensor : tensors) {
        if (buffer.release(&tensor) != 0) std::abort();
    }
}

void measureLookUp(size_t count) {
    MultiTensorSharedBuffer buffer;
    initialize(buffer);
    std::vector<ZantTensor> tensors = makeTensors(count);
    allocate(buffer, tensors, count);
    std::mutex mutex;
    std::unordered_map<const void*, void*> map;
    for (ZantTensor& tensor : tensors) map.emplace(&tensor, &tensor);
    std::vector<ZantTensor*> order(count);
    std::iota(order.begin(), order.end(), tensors.data());
    std::shuffle(order.begin(), order.end(), std::minstd_rand(7));
    size_t next = 0;
    const auto nextTensor = [&] { return order[next = next + 1 == count ? 0 : next + 1]; };
    const auto lookUp = [&] { bench::keep(buffer.getBuffer(nextTensor())); };
    const auto bare = [&] {
        const ZantTensor* tensor = nextTensor();
        const std::lock_guard lock(mutex);
        bench::keep(map.find(tensor)->second);
    };
    const bench::Comparison result = bench::compare(lookUp, bare, 41, 100'000);
    std::printf("among %zu tensors: getBuffer %.1f ns, bare look-up %.1f ns\n", count, result.subject * 1e9,
                result.floor * 1e9);
    bench::figure(("get_buffer/" + std::to_string(count)).c_str(), result.ratio, 1.50);
    release(buffer, tensors);
}

// Ten times as many tensors, in units of the time for the fewer.
void measureGrowth(const char* name, bool oneBlock) {
    MultiTensorSharedBuffer buffer;
    initialize(buffer);
    std::vector<ZantTensor> many = makeTensors(10'000);
    std::vector<ZantTensor> few = makeTensors(1'000);
    const auto cycle = [&](std::vector<ZantTensor>& tensors) {
        allocate(buffer, tensors, oneBlock ? tensors.size() : 1);
        release(buffer, tensors);
    };
    const bench::Comparison result = bench::compare([&] { cycle(many); }, [&] { cycle(few); }, 21, 5);
    std::printf("%s: 10,000 tensors %.0f us, 1,000 tensors %.0f us\n", name, result.subject * 1e6, result.floor * 1e6);
    bench::figure(name, result.ratio, 20.0);
}

}  // namespace

int main() {
    setenv("ZELMAR_PLATFORM_ROOT", BENCH_MACHINE, 1);
    setenv("windir", BENCH_MACHINE "/windows", 1);
    for (const size_t count : {10UL, 1'000UL, 100'000UL}) measureLookUp(count);
    measureGrowth("get_buffer/growth_one_block", true);
    measureGrowth("get_buffer/growth_many_blocks", false);
}
