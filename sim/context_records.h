// Custom config records of contexts: what is wrong with them, and what the ledger says of them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zelmar_kor/memory_records.h"
#include "zelmar_kor/provider_record.h"

namespace zant::sim {

struct ContextRecords {
    std::string text;
    std::string misuse;       // empty for a list that a context may be made with
    bool detachable = false;  // the list asks for detachable buffers
};

// A list with a count, as contexts are made with.
ContextRecords readContextRecords(const ZantConfigWrapper* const* configs, uint32_t count);

struct BufferStates {
    std::string text;
    std::string misuse;
    std::vector<ContextBufferStateRecord> records;
};

// A list that ends in a null pointer, as contextSetConfig takes it.
BufferStates readBufferStates(const ZantConfigWrapper* const* configs);

}  // namespace zant::sim
