#include <windows.h>

#include <io.h>

#include <cstring>

#include "shared_memory.h"

namespace zant::sim {

namespace {

// Handles have 32 significant bits.
HANDLE handleOf(int32_t descriptor) {
    return reinterpret_cast<HANDLE>(static_cast<intptr_t>(descriptor));
}

// A view of the whole memory for as long as it lives.
class View {
public:
    explicit View(int32_t descriptor) : m_address(MapViewOfFile(handleOf(descriptor), FILE_MAP_ALL_ACCESS, 0, 0, 0)) {}
    View(const View&) = delete;
    View& operator=(const View&) = delete;
    ~View() {
        if (m_address != nullptr) UnmapViewOfFile(m_address);
    }

    // Whole pages; 0 without memory.
    uint64_t size() const {
        MEMORY_BASIC_INFORMATION facts{};
        return m_address != nullptr && VirtualQuery(m_address, &facts, sizeof(facts)) != 0 ? facts.RegionSize : 0;
    }
    // Null when the bytes lie not all within.
    char* at(uint64_t offset, size_t count) const {
        const uint64_t whole = size();
        return offset <= whole && count <= whole - offset ? static_cast<char*>(m_address) + offset : nullptr;
    }

private:
    void* m_address;
};

}  // namespace

SharedMemory::SharedMemory(uint64_t size) {
    HANDLE mapping = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, static_cast<DWORD>(size >> 32U),
                                        static_cast<DWORD>(size), nullptr);
    if (mapping == nullptr) return;
    m_address = MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, 0);
    if (m_address == nullptr) {
        CloseHandle(mapping);
        return;
    }
    m_size = size;
    m_descriptor = static_cast<int32_t>(reinterpret_cast<intptr_t>(mapping));
}

SharedMemory::~SharedMemory() {
    if (m_address == nullptr) return;
    UnmapViewOfFile(m_address);
    CloseHandle(handleOf(m_descriptor));
}

std::optional<MemoryFacts> memoryFacts(int32_t descriptor) {
    const uint64_t size = View(descriptor).size();
    return size == 0 ? std::nullopt : std::optional<MemoryFacts>({size, 0});
}

bool readMemory(int32_t descriptor, uint64_t offset, void* bytes, size_t count) {
    const View view(descriptor);
    const char* source = view.at(offset, count);
    if (source != nullptr) std::memcpy(bytes, source, count);
    return source != nullptr;
}

bool writeMemory(int32_t descriptor, uint64_t offset, const void* bytes, size_t count) {
    const View view(descriptor);
    char* target = view.at(offset, count);
    if (target != nullptr) std::memcpy(target, bytes, count);
    return target != nullptr;
}

bool isWritableFile(int32_t fileDescriptor) {
    auto* file = reinterpret_cast<HANDLE>(_get_osfhandle(fileDescriptor));
    DWORD written = 0;
    return file != INVALID_HANDLE_VALUE && GetFileType(file) == FILE_TYPE_DISK &&
           WriteFile(file, "", 0, &written, nullptr) != 0;
}

}  // namespace zant::sim
