// The RPC client library, which gives memory that the NPU can reach. It lies in the driver's directory.
#pragma once

#include <string>

#include "zelmar_kor/memory_records.h"

namespace zant::kor {

// One reference to the library, given back when the object ends. One thread at a time.
class DarlinkLibrary {
public:
    // The user's own level 1 lines; each takes the loader's error text.
    struct Messages {
        const char* cannotLoad;
        const char* missingSymbol;
    };

    DarlinkLibrary() = default;
    ~DarlinkLibrary() { close(); }
    DarlinkLibrary(const DarlinkLibrary&) = delete;
    DarlinkLibrary& operator=(const DarlinkLibrary&) = delete;

    // In the driver's directory, or by its bare name when that is not known.
    static std::string defaultPath();
    // Loads the library and finds its functions; one that is open stays. On failure it is closed.
    bool open(const std::string& path, const Messages& messages);
    bool isOpen() const noexcept { return m_library != nullptr; }

    // Only while open. alloc: null when the library has no such block; a size that its 32 bits do not hold is never
    // asked for.
    void* alloc(uint64_t size) const noexcept;
    void free(void* block) const noexcept { m_darmemFree(block); }
    // The block's descriptor, which ends with the block; -1 on failure.
    int toFd(void* block) const noexcept { return m_darmemToFd(block); }

private:
    bool resolve() noexcept;
    void close() noexcept;

    void* m_library = nullptr;
    DarmemAllocFn m_darmemAlloc = nullptr;
    DarmemFreeFn m_darmemFree = nullptr;
    DarmemToFdFn m_darmemToFd = nullptr;
};

}  // namespace zant::kor
