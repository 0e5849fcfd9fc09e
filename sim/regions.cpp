#include "regions.h"

#include <algorithm>
#include <optional>

#include "decode.h"
#include "shared_memory.h"

namespace zant::sim {

namespace {

constexpr uint32_t RANK_LIMIT = 32;
constexpr uint64_t TOO_LARGE = uint64_t{1} << 40U;

// Data type numbers end in the element's width in bits, written in decimal.
std::optional<uint64_t> elementSize(uint32_t dataType) {
    const uint32_t bits = (dataType >> 4U & 0xFU) * 10 + (dataType & 0xFU);
    const bool isWidth = bits == 8 || bits == 16 || bits == 32 || bits == 64;
    return isWidth ? std::optional<uint64_t>(bits / 8) : std::nullopt;
}

std::optional<uint64_t> dataSize(const MemRegisterDescriptor& descriptor) {
    std::optional<uint64_t> size = elementSize(descriptor.dataType);
    if (descriptor.rank > RANK_LIMIT || (descriptor.rank > 0 && descriptor.dimensions == nullptr)) return std::nullopt;
    for (uint32_t i = 0; size && i < descriptor.rank; ++i) {
        size = *size < TOO_LARGE ? std::optional<uint64_t>(*size * descriptor.dimensions[i]) : std::nullopt;
    }
    return size;
}

// What is wrong with the records themselves, whatever memory they name.
std::string recordMisuse(const MemRegisterDescriptor& descriptor) {
    if (descriptor.memoryKind != ZANT_MEMORY_KIND_SHARED_BUFFER) {
        return "unknown memory kind " + std::to_string(descriptor.memoryKind);
    }
    if (descriptor.shapeConfig != nullptr) return "a shape config, where none is expected";
    if (descriptor.extendedInfo == nullptr) return "no shared buffer info";
    const uint32_t type = descriptor.extendedInfo->bufferType;
    if (type < ZANT_SHARED_BUFFER_TENSOR || type > ZANT_SHARED_BUFFER_SPAD_BACKUP) {
        return "unknown buffer type " + std::to_string(type);
    }
    if (!dataSize(descriptor)) return "a shape or a data type that can't be";
    return {};
}

// What is wrong with where the region lies. needed: bytes from its offset on.
std::string placeMisuse(const SharedBufferInfo& info, uint64_t needed, const std::optional<MemoryFacts>& memory) {
    const std::string name = "descriptor " + std::to_string(info.fileDescriptor);
    if (!memory) return name + " names no memory";
    if (info.size == 0 || info.size > memory->size) {
        return name + " names " + std::to_string(memory->size) + " bytes, not " + std::to_string(info.size);
    }
    if (info.offset > info.size || needed > info.size - info.offset) {
        return std::to_string(needed) + " bytes at " + std::to_string(info.offset) + " lie not within " +
               std::to_string(info.size);
    }
    return {};
}

auto findRegion(auto& list, const void* handle) {
    return std::find_if(list.begin(), list.end(), [&](const auto& region) { return region.facts.handle == handle; });
}

}  // namespace

std::string bufferTypeName(uint32_t bufferType) {
    constexpr const char* names[] = {"tensor", "weights", "spill-fill", "scratch backup"};
    const uint32_t index = bufferType - ZANT_SHARED_BUFFER_TENSOR;
    return index < std::size(names) ? names[index] : "buffer type " + std::to_string(bufferType);
}

std::string Regions::add(void* context, const MemRegisterDescriptor& descriptor, void*& handle) {
    std::string misuse = recordMisuse(descriptor);
    if (!misuse.empty()) return misuse;
    const SharedBufferInfo& info = *descriptor.extendedInfo;
    const bool isTensor = info.bufferType == ZANT_SHARED_BUFFER_TENSOR;
    const uint64_t size = isTensor ? *dataSize(descriptor) : info.size;
    const std::optional<MemoryFacts> memory = memoryFacts(info.fileDescriptor);
    misuse = placeMisuse(info, size, memory);
    if (!misuse.empty()) return misuse;
    handle = makeHandle(HandleKind::MEMORY);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_regions.push_back({{handle, context, info.bufferType, info.fileDescriptor, info.offset, size}, memory->identity});
    return {};
}

std::string Regions::remove(const void* handle) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto region = findRegion(m_regions, handle);
    if (region == m_regions.end()) return describeHandle(handle) + " was never registered or is deregistered";
    m_regions.erase(region);
    return {};
}

size_t Regions::removeAll(const void* context) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto isItsTensor = [&](const Region& region) {
        return region.facts.context == context && region.facts.bufferType == ZANT_SHARED_BUFFER_TENSOR;
    };
    const auto tensors = std::count_if(m_regions.begin(), m_regions.end(), isItsTensor);
    std::erase_if(m_regions, [&](const Region& region) { return region.facts.context == context; });
    return static_cast<size_t>(tensors);
}

std::string Regions::checkMemory(const void* context) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const Region& region : m_regions) {
        if (region.facts.context != context) continue;
        const auto memory = memoryFacts(region.facts.fileDescriptor);
        if (memory && memory->identity == region.identity) continue;
        return "the memory of " + describeHandle(region.facts.handle) + " (" + bufferTypeName(region.facts.bufferType) +
               ") is gone";
    }
    return {};
}

size_t Regions::count() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_regions.size();
}

bool Regions::entry(size_t index, ZantSimRegion& region) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (index >= m_regions.size()) return false;
    region = m_regions[index].facts;
    return true;
}

bool Regions::find(const void* handle, ZantSimRegion& region) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = findRegion(m_regions, handle);
    if (found == m_regions.end()) return false;
    region = found->facts;
    return true;
}

Regions& regions() {
    static Regions instance;
    return instance;
}

}  // namespace zant::sim

size_t ZantSim_regionCount() {
    return zant::sim::regions().count();
}

uint32_t ZantSim_region(size_t index, ZantSimRegion* region) {
    return region != nullptr && zant::sim::regions().entry(index, *region) ? 1 : 0;
}

uint64_t ZantSim_readRegion(const void* handle, void* bytes, size_t count) {
    ZantSimRegion region{};
    const bool fits = zant::sim::regions().find(handle, region) && count <= region.size;
    return fits && zant::sim::readMemory(region.fileDescriptor, region.offset, bytes, count) ? 0 : 1;
}

uint64_t ZantSim_writeRegion(const void* handle, const void* bytes, size_t count) {
    ZantSimRegion region{};
    const bool fits = zant::sim::regions().find(handle, region) && count <= region.size;
    return fits && zant::sim::writeMemory(region.fileDescriptor, region.offset, bytes, count) ? 0 : 1;
}
