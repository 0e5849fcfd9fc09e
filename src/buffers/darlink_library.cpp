#include "buffers/darlink_library.h"

#include <limits>

#include "platform/driver_directory.h"
#include "platform/dynamic_loader.h"
#include "platform/logger.h"

namespace zant::kor {

namespace {

constexpr const char* LIBRARY_FILE = "libdarlink.dll";

template <class Function>
bool find(void* library, const char* name, Function& function) noexcept {
    function = reinterpret_cast<Function>(loader::dlSym(library, name));
    return function != nullptr;
}

}  // namespace

std::string DarlinkLibrary::defaultPath() {
    return system::joinPath(system::getDriverDirectory(), LIBRARY_FILE);
}

bool DarlinkLibrary::open(const std::string& path, const Messages& messages) {
    if (isOpen()) return true;
    m_library = loader::dlOpen(path.c_str(), loader::DL_NOW | loader::DL_LOCAL);
    if (m_library == nullptr) {
        ZANT_LOG_ERROR(messages.cannotLoad, loader::dlError());
        return false;
    }
    if (resolve()) return true;
    ZANT_LOG_ERROR(messages.missingSymbol, loader::dlError());
    close();
    return false;
}

bool DarlinkLibrary::resolve() noexcept {
    const bool hasAlloc = find(m_library, "darmem_alloc", m_darmemAlloc);
    const bool hasFree = find(m_library, "darmem_free", m_darmemFree);
    const bool hasToFd = find(m_library, "darmem_to_fd", m_darmemToFd);
    return hasAlloc && hasFree && hasToFd;
}

void* DarlinkLibrary::alloc(uint64_t size) const noexcept {
    if (size > std::numeric_limits<uint32_t>::max()) return nullptr;
    return m_darmemAlloc(DARMEM_HEAP_ID_SYSTEM, DARMEM_FLAG_DEFAULT, static_cast<uint32_t>(size));
}

void DarlinkLibrary::close() noexcept {
    if (m_library != nullptr) loader::dlClose(m_library);
    m_library = nullptr;
}

}  // namespace zant::kor
