#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "shared_memory.h"

namespace zant::sim {

SharedMemory::SharedMemory(uint64_t size) {
    const int descriptor = memfd_create("zant_sim", MFD_CLOEXEC);
    if (descriptor == -1) return;
    void* address = MAP_FAILED;
    if (ftruncate(descriptor, static_cast<off_t>(size)) == 0) {
        address = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    }
    if (address == MAP_FAILED) {
        close(descriptor);
        return;
    }
    m_address = address;
    m_size = size;
    m_descriptor = descriptor;
}

SharedMemory::~SharedMemory() {
    if (m_address == nullptr) return;
    munmap(m_address, m_size);
    close(m_descriptor);
}

std::optional<MemoryFacts> memoryFacts(int32_t descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return MemoryFacts{static_cast<uint64_t>(status.st_size), static_cast<uint64_t>(status.st_ino)};
}

bool readMemory(int32_t descriptor, uint64_t offset, void* bytes, size_t count) {
    return pread(descriptor, bytes, count, static_cast<off_t>(offset)) == static_cast<ssize_t>(count);
}

bool writeMemory(int32_t descriptor, uint64_t offset, const void* bytes, size_t count) {
    const auto facts = memoryFacts(descriptor);
    // A write beyond its end would make it longer.
    if (!facts || offset > facts->size || count > facts->size - offset) return false;
    return pwrite(descriptor, bytes, count, static_cast<off_t>(offset)) == static_cast<ssize_t>(count);
}

bool isWritableFile(int32_t fileDescriptor) {
    struct stat status {};
    const int flags = fcntl(fileDescriptor, F_GETFL);
    return flags != -1 && (flags & O_ACCMODE) != O_RDONLY && fstat(fileDescriptor, &status) == 0 &&
           S_ISREG(status.st_mode);
}

}  // namespace zant::sim
