#include "extension/patch_files.h"

#include "platform/logger.h"
#include "platform/system.h"

namespace zant::kor {

namespace {

constexpr int NONE = -1;

}  // namespace

int PatchFiles::open(const std::string& path) {
    std::string error;
    m_patchFds.push_back(NONE);  // its place first: a descriptor that could not be kept would be lost
    try {
        m_patchFds.back() = system::openForUpdate(path.c_str(), error);
    } catch (...) {
        m_patchFds.pop_back();
        throw;
    }
    const int descriptor = m_patchFds.back();
    if (descriptor < 0) {
        m_patchFds.pop_back();
        ZANT_LOG_ERROR("Failed to open file: %s, error: %s", path.c_str(), error.c_str());
    }
    return descriptor;
}

bool PatchFiles::closeFrom(size_t first) noexcept {
    if (first >= m_patchFds.size()) return true;
    bool result = true;
    for (size_t i = first; i < m_patchFds.size(); ++i) {
        char error[system::ERROR_TEXT_CAPACITY];
        if (m_patchFds[i] <= 0 || system::closeDescriptor(m_patchFds[i], error)) continue;
        ZANT_LOG_ERROR("Failed to close concurrent deserialization patch fd: %d, error: %s", m_patchFds[i], error);
        result = false;
    }
    m_patchFds.resize(first);
    return result;
}

}  // namespace zant::kor
