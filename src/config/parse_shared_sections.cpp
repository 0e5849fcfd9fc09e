// The sections of one record each: their keys are compared whole.
#include <string>

#include "config/config_parser.h"
#include "config/section_walk.h"

namespace zant::kor {

namespace {

struct GroupContextWalk {
    KORGroupContextConfig& record;

    KORGroupContextConfig& inForce() const { return record; }
};

using Group = KORGroupContextConfig;

constexpr auto GROUP_ROWS = std::to_array<ChainRow<GroupContextWalk>>({
    row<GroupContextWalk, BoolWordTo<&Group::shareResources>>(word("groupContext/share_resources"),
                                                              "Key: share_resources, value: %s"),
    row<GroupContextWalk, UnsignedTo<&Group::shareResourcesOptimizationType>>(
        word("groupContext/share_resources_optimization_type"), "Key: share_resources_optimization_type, value %u"),
    row<GroupContextWalk, LongTo<&Group::reusedIoLimitMb>>(word("groupContext/reused_io_limit_mb"),
                                                           "Key: reused_io_limit_mb, value: %lu"),
});

const ChainRow<GroupContextWalk>* groupRow(const FlatKey& key) {
    for (const auto& row : GROUP_ROWS) {
        if (key.equals(row.word)) return &row;
    }
    return nullptr;
}

}  // namespace

bool parseGroupContext(const FlatKeyList& keys, KORGroupContextConfig& groupContext) {
    GroupContextWalk walk{groupContext};
    return walkKeys(keys, KeySection::groupContext, [&walk](const FlatKey& key) {
        const ChainRow<GroupContextWalk>* row = groupRow(key);
        return row == nullptr || row->apply(walk, key, row->line);
    });
}

bool parseMemory(const FlatKeyList& keys, KORMemoryConfig& memory) {
    return walkKeys(keys, KeySection::memory, [&memory](const FlatKey& key) {
        const std::string type = getString(key);
        ZANT_LOG_INFO("Key: memory type, Value: %s ", type.c_str());
        if (type == "shared_buffer") {
            memory.memType = ZANT_KOR_MEM_SHARED_BUFFER;
        } else {
            ZANT_LOG_ERROR("Invalid memory type %s passed, Setting memory_type to ZANT_KOR_MEM_UNDEFINED",
                           type.c_str());
        }
        return true;
    });
}

}  // namespace zant::kor
