// Pool ids: three texts cut out of the bytes, and a pool that several contexts join by them.
#include <cstdlib>
#include <string>

#include "buffers/shared_buffer_pool.h"
#include "byte_source.h"

namespace {

std::string makeId(fuzz::ByteSource& source) {
    std::string id;
    for (size_t length = source.below(16); length > 0; --length) {
        constexpr const char COMMON[] = "ab::0129";
        const uint8_t byte = source.byte();
        id.push_back(byte < 200 ? COMMON[byte % (sizeof(COMMON) - 1)] : static_cast<char>(byte));
    }
    return id;
}

// The id's own rules, in other words: "name:N" with N from 1 to the largest 32-bit number.
bool isValid(const std::string& id, std::string& name, uint64_t& count) {
    const size_t colon = id.find_last_of(':');
    if (colon == std::string::npos || colon == 0 || colon == id.size() - 1) return false;
    name = id.substr(0, colon);
    count = 0;
    for (const char digit : id.substr(colon + 1)) {
        if (digit < '0' || digit > '9') return false;
        count = count * 10 + static_cast<uint64_t>(digit - '0');
        if (count > UINT32_MAX) return false;
    }
    return count != 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::ByteSource source(data, size);
    zant::kor::SharedBufferPool pools;
    for (uintptr_t context = 1; context < 5; ++context) {
        const zant::kor::SharedBufferPool::Ids ids{makeId(source), makeId(source), makeId(source)};
        for (const std::string& id : {ids.spillFill, ids.spadBackup, ids.weights}) {
            std::string name;
            std::string expectedName;
            uint32_t count = 0;
            uint64_t expectedCount = 0;
            const bool accepted = zant::kor::SharedBufferPool::parsePoolId(id, name, count);
            if (accepted != isValid(id, expectedName, expectedCount)) std::abort();
            if (accepted && (name != expectedName || count != expectedCount)) std::abort();
        }
        pools.registerContext(ids, reinterpret_cast<void*>(context), {1, 2, 3}, nullptr);
    }
    pools.finalizeAllPools();
    return 0;
}
