#include "shared_memory.h"

#include <utility>

namespace zant::sim {

SharedMemory::SharedMemory(SharedMemory&& other) noexcept {
    *this = std::move(other);
}

SharedMemory& SharedMemory::operator=(SharedMemory&& other) noexcept {
    std::swap(m_address, other.m_address);
    std::swap(m_size, other.m_size);
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

}  // namespace zant::sim
