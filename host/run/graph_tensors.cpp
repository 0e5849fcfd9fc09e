#include "run/graph_tensors.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

namespace runhost {

namespace {

constexpr uint32_t INT32 = 0x0032;
constexpr uint32_t FLOAT32 = 0x0232;
constexpr uint32_t ELEMENT_SIZE = 4;
constexpr uint32_t RANK = 2;

struct TensorRow {
    bool isInput;
    uint32_t dataType;
    uint32_t dimensions[RANK];
};

constexpr TensorRow TENSORS[] = {
    {true, INT32, {1, 16}},
    {true, FLOAT32, {16, 16}},
    {false, FLOAT32, {1, 250}},
};

uint32_t sizeOf(const TensorRow& row) {
    return row.dimensions[0] * row.dimensions[1] * ELEMENT_SIZE;
}

// Bytes that differ from tensor to tensor.
std::vector<char> pattern(const TensorRow& row, size_t index) {
    std::vector<char> bytes(sizeOf(row));
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7 + index + 1);
    return bytes;
}

}  // namespace

GraphTensors::GraphTensors(std::string graph) : m_graph(std::move(graph)), m_tensors(std::size(TENSORS)) {
    for (size_t i = 0; i < m_tensors.size(); ++i) {
        m_tensors[i].dataType = TENSORS[i].dataType;
        m_tensors[i].rank = RANK;
        m_tensors[i].dimensions = TENSORS[i].dimensions;
    }
}

std::string GraphTensors::text() const {
    uint32_t bytes = 0;
    for (const TensorRow& row : TENSORS) bytes += sizeOf(row);
    return fmt::format("{} tensors, {} bytes", m_tensors.size(), bytes);
}

bool GraphTensors::allocate(Allocator& allocator) {
    return allocator.allocate(m_tensors.data(), static_cast<uint32_t>(m_tensors.size())) == 0;
}

bool GraphTensors::release(Allocator& allocator) {
    const auto isKept = [&](ZantTensor& tensor) {
        return tensor.memoryHandle != nullptr && allocator.release(&tensor) != 0;
    };
    return std::count_if(m_tensors.begin(), m_tensors.end(), isKept) == 0;
}

bool GraphTensors::exchange(Allocator& allocator, const SimulatedMemory& memory) {
    for (size_t i = 0; i < m_tensors.size(); ++i) {
        const std::vector<char> written = pattern(TENSORS[i], i);
        std::vector<char> seen(written.size());
        void* data = allocator.getBuffer(&m_tensors[i]);
        if (data == nullptr) return false;
        if (TENSORS[i].isInput) {
            std::memcpy(data, written.data(), written.size());
            if (!memory.deviceReads(m_tensors[i].memoryHandle, seen)) return false;
        } else {
            if (!memory.deviceWrites(m_tensors[i].memoryHandle, written)) return false;
            std::memcpy(seen.data(), data, seen.size());
        }
        if (seen != written) return false;
    }
    return true;
}

}  // namespace runhost
