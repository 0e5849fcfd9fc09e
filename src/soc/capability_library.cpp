#include "soc/capability_library.h"

#include <algorithm>
#include <stdexcept>

#include "platform/driver_directory.h"
#include "platform/dynamic_loader.h"

namespace soc {

namespace {

namespace loader = zant::loader;

constexpr uint32_t ARCH_CAPABILITY = 3;
constexpr uint64_t INTEGER_SIZE = 8;
constexpr uint64_t STRING_SIZE = 32;
// A library that never finds its answer's size must end some time, and must not eat the memory before.
constexpr int MOST_REPEATS = 8;
constexpr uint64_t LARGEST_ANSWER = uint64_t{1} << 20;

// The file that this code lies in, empty when it is not known.
std::string ownFile() {
    std::string path;
    loader::dlAddr(reinterpret_cast<const void*>(&capabilityCandidates), path);
    return path;
}

template <class Function>
Function resolve(void* handle, const char* name) {
    return reinterpret_cast<Function>(loader::dlSym(handle, name));
}

uint32_t ask(GetCapabilityFn function, uint32_t category, uint32_t capability, std::vector<uint8_t>& buffer,
             uint64_t& size, const char* failure) {
    try {
        return function(category, capability, buffer.data(), &size);
    } catch (...) {
        throw std::runtime_error(failure);  // what another's library throws says nothing here
    }
}

std::vector<uint8_t> askUntilItFits(GetCapabilityFn function, uint32_t category, uint32_t capability, uint64_t size,
                                    const char* failure) {
    for (int repeats = 0; repeats <= MOST_REPEATS && size <= LARGEST_ANSWER; ++repeats) {
        std::vector<uint8_t> buffer(size);
        const uint32_t status = ask(function, category, capability, buffer, size, failure);
        if (status == CAPABILITY_TRY_SIZE) continue;
        if (status != 0 || size > LARGEST_ANSWER) break;
        buffer.resize(size);
        return buffer;
    }
    throw std::runtime_error(failure);
}

// Runs a reader; false when it failed in a way of this layer.
template <class Read>
bool isAnswered(Read&& read) {
    try {
        read();
        return true;
    } catch (const std::runtime_error&) {
        return false;
    }
}

std::vector<uint8_t> queryExactly(const CapabilityLibrary& library, uint32_t category, uint32_t capability,
                                  uint64_t size, const char* failure) {
    std::vector<uint8_t> answer = query(library, category, capability, size);
    if (answer.size() != size) throw std::runtime_error(failure);
    return answer;
}

}  // namespace

std::vector<CapabilityCandidate> capabilityCandidates(uint32_t mode, const std::string& ownPath) {
    if (mode != CapabilityLibrary::FOR_CHIP && mode != CapabilityLibrary::FOR_PROVIDERS) return {};
    const bool forChip = mode == CapabilityLibrary::FOR_CHIP;
    std::vector<CapabilityCandidate> candidates;
    if (!ownPath.empty()) {
        const std::string own = ownPath.substr(0, ownPath.find_last_of("/\\")) + "/";
        if (forChip) candidates.push_back({own, ZANT_SYSTEM_INFO});
        candidates.push_back({own, CORVANE_SERVICE_UTILS});
    }
    if (forChip) {
        candidates.push_back({zant::system::joinPath(zant::system::getDriverDirectory(), "KOR"), ZANT_SYSTEM_INFO});
    }
    candidates.push_back({"", CORVANE_SERVICE_UTILS});
    return candidates;
}

CapabilityLibrary::CapabilityLibrary(uint32_t mode) : CapabilityLibrary(capabilityCandidates(mode, ownFile())) {}

CapabilityLibrary::CapabilityLibrary(const std::vector<CapabilityCandidate>& candidates) {
    for (const auto& [directory, fileName] : candidates) {
        const std::string path = zant::system::joinPath(directory, fileName);
        m_loadedName = fileName;  // before there is a handle that a shortage of memory could lose
        m_handle = loader::dlOpen(path.c_str(), loader::DL_NOW | loader::DL_LOCAL);
        if (m_handle != nullptr) break;
    }
    if (m_handle == nullptr) {
        m_loadedName.clear();
        return;
    }
    m_getApiVersion = resolve<GetApiVersionFn>(m_handle, "Soc_GetAPIVersion");
    if (m_getApiVersion == nullptr) return;
    m_getCapability = resolve<GetCapabilityFn>(m_handle, "Soc_GetCapability");
    if (!isZantSystemInfo()) return;
    m_getCapabilitySerialized = resolve<GetCapabilityFn>(m_handle, "Soc_GetCapabilitySerialized");
}

CapabilityLibrary::~CapabilityLibrary() {
    loader::dlClose(m_handle);
}

bool CapabilityLibrary::isAnswering() const {
    if (m_handle == nullptr || m_getApiVersion == nullptr || m_getCapability == nullptr) return false;
    uint64_t arch = 0;
    if (!getInteger(*this, DSP_CATEGORY, ARCH_CAPABILITY, arch)) return false;
    return m_loadedName == CORVANE_SERVICE_UTILS || (isZantSystemInfo() && m_getCapabilitySerialized != nullptr);
}

std::vector<uint8_t> query(const CapabilityLibrary& library, uint32_t category, uint32_t capability, uint64_t size) {
    const GetCapabilityFn function = library.getCapability();
    if (function == nullptr) throw std::runtime_error("SoCServiceUtils/ZantSystemInfo not loaded");
    return askUntilItFits(function, category, capability, size, "GetCapability failed");
}

std::vector<uint8_t> querySerialized(const CapabilityLibrary& library, uint32_t category, uint32_t capability,
                                     uint64_t size) {
    const GetCapabilityFn function = library.getCapabilitySerialized();
    if (function == nullptr) throw std::runtime_error("ZantSystemInfo not loaded");
    return askUntilItFits(function, category, capability, size, "GetCapabilitySerialized failed");
}

std::pair<int32_t, int32_t> getVersion(const CapabilityLibrary& library) {
    uint8_t major = 0;
    uint8_t minor = 0;
    try {
        if (library.getApiVersion() == nullptr || library.getApiVersion()(&major, &minor) != 0) return {-1, -1};
    } catch (...) {  // of another house's code
        return {-1, -1};
    }
    return {major, minor};
}

bool getInteger(const CapabilityLibrary& library, uint32_t category, uint32_t capability, uint64_t& out) {
    return isAnswered([&] {
        const auto answer =
            queryExactly(library, category, capability, INTEGER_SIZE, "Get Capability fail for integer type");
        std::memcpy(&out, answer.data(), sizeof(out));
    });
}

bool getFloat(const CapabilityLibrary& library, uint32_t category, uint32_t capability, float& out) {
    return isAnswered([&] {
        const auto answer =
            queryExactly(library, category, capability, sizeof(out), "Get Capability fail for float type");
        std::memcpy(&out, answer.data(), sizeof(out));
    });
}

bool getString(const CapabilityLibrary& library, uint32_t category, uint32_t capability, std::string& out) {
    return isAnswered([&] {
        const std::vector<uint8_t> answer = query(library, category, capability, STRING_SIZE);
        const auto end = std::find(answer.begin(), answer.end(), uint8_t{0});
        if (end == answer.end()) throw std::runtime_error("Get Capability fail for string type");
        out.assign(answer.begin(), end);
    });
}

}  // namespace soc
