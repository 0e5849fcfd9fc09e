// The tensors of one graph, in memory of an allocator of the extensions.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "run/simulated_memory.h"
#include "zelmar_kor/backend_extensions.h"
#include "zelmar_kor/memory_records.h"

namespace runhost {

// A small graph's: two inputs and an output.
class GraphTensors {
public:
    using Allocator = zant::tools::iotensor::IBufferAlloc;

    explicit GraphTensors(std::string graph);

    const std::string& graph() const { return m_graph; }
    // "3 tensors, 2088 bytes".
    std::string text() const;

    // Whether every tensor got its memory.
    bool allocate(Allocator& allocator);
    // Whether every tensor that got memory has given it back.
    bool release(Allocator& allocator);
    // Whether the device reads what the host writes into the inputs, and the host what the device writes into the
    // output.
    bool exchange(Allocator& allocator, const SimulatedMemory& memory);

private:
    std::string m_graph;
    std::vector<ZantTensor> m_tensors;  // which allocators know by address
};

}  // namespace runhost
