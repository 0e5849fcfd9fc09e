// The provider's operations on contexts and memory. prefix: what stands before the ledger's line, see provider.cpp.
#pragma once

#include <cstdint>
#include <string>

#include "zelmar_kor/provider_record.h"

namespace zant::sim {

uint64_t contextSetConfig(const std::string& prefix, void* context, const ZantConfigWrapper** configs);
uint64_t contextGetProperty(const std::string& prefix, void* context, void** properties);
uint64_t contextFinalize(const std::string& prefix, void* context, void* reserved);
uint64_t memoryRegister(const std::string& prefix, void* context, const MemRegisterDescriptor* descriptors,
                        uint32_t count, void** handles);
uint64_t memoryDeregister(const std::string& prefix, void** handles, uint32_t count);

}  // namespace zant::sim
