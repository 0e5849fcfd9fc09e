// Questions that the backend answers about a context's buffers.
#pragma once

#include <cstdint>
#include <vector>

#include "zelmar_kor/memory_records.h"
#include "zelmar_kor/provider_record.h"

namespace zant::kor {

// The bytes that a context needs of a working buffer. property: one of the three sizes. 0 after a level 1 line.
uint64_t queryBufferSize(const ZantProviderRecord& backend, void* context, uint32_t property);

// The descriptors of the buffers that a context can give up, of which there may be none. False after a level 1 line,
// also when the backend counts fewer than none or more than 65,536.
bool getDetachableBufferFds(const ZantProviderRecord& backend, void* context, std::vector<int32_t>& fds);

}  // namespace zant::kor
