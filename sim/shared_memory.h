// Memory that a descriptor names, as drivers and devices share it. shared_memory_posix.cpp and
// shared_memory_windows.cpp answer it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace zant::sim {

// One piece of memory, zeroed at first; it goes, and its descriptor with it, when the object does.
class SharedMemory {
public:
    SharedMemory() = default;
    // address() is null when the system refused.
    explicit SharedMemory(uint64_t size);
    SharedMemory(SharedMemory&& other) noexcept;
    SharedMemory& operator=(SharedMemory&& other) noexcept;
    ~SharedMemory();

    void* address() const { return m_address; }
    uint64_t size() const { return m_size; }
    // -1 without memory.
    int32_t descriptor() const { return m_descriptor; }

private:
    void* m_address = nullptr;
    uint64_t m_size = 0;
    int32_t m_descriptor = -1;
};

// What stands behind a descriptor of this process.
struct MemoryFacts {
    uint64_t size;      // at least what was asked for
    uint64_t identity;  // the same as long as it is the same memory; 0 where the system does not tell
};

// Nothing when the descriptor is closed or names no memory.
std::optional<MemoryFacts> memoryFacts(int32_t descriptor);

// Bytes of the memory by its descriptor alone; false when they lie not all within.
bool readMemory(int32_t descriptor, uint64_t offset, void* bytes, size_t count);
bool writeMemory(int32_t descriptor, uint64_t offset, const void* bytes, size_t count);

// Whether a file descriptor is open for writing and names a regular file.
bool isWritableFile(int32_t fileDescriptor);

}  // namespace zant::sim
