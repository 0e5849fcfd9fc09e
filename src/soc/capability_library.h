// A sibling library that answers for the running chip, and the questions that it takes.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace soc {

inline constexpr const char* ZANT_SYSTEM_INFO = "ZantSystemInfo.dll";
inline constexpr const char* CORVANE_SERVICE_UTILS = "CorvaneSoCServiceUtils.dll";

enum CapabilityCategory : uint32_t { DSP_CATEGORY = 2, GPU_CATEGORY = 3, CPU_CATEGORY = 5 };

// A library's entry points. 0 is success.
using GetApiVersionFn = uint32_t (*)(uint8_t* major, uint8_t* minor);
// size: the buffer's before, the answer's after. With CAPABILITY_TRY_SIZE the answer wants a buffer of that size.
using GetCapabilityFn = uint32_t (*)(uint32_t category, uint32_t capability, void* buffer, uint64_t* size);

constexpr uint32_t CAPABILITY_TRY_SIZE = 5;

// Where a library may lie; the loader's own search finds one without a directory.
struct CapabilityCandidate {
    std::string directory;
    std::string fileName;
};

// In the order in which they are tried. ownPath: this library's file, empty when it is not known.
std::vector<CapabilityCandidate> capabilityCandidates(uint32_t mode, const std::string& ownPath);

// Loaded for as long as it lives. What it answers is never trusted further than its own size.
class CapabilityLibrary {
public:
    static constexpr uint32_t FOR_CHIP = 0;
    static constexpr uint32_t FOR_PROVIDERS = 1;

    // mode: FOR_CHIP or FOR_PROVIDERS; any other one loads nothing.
    explicit CapabilityLibrary(uint32_t mode);
    // Loads the first of them that can be loaded.
    explicit CapabilityLibrary(const std::vector<CapabilityCandidate>& candidates);
    ~CapabilityLibrary();
    CapabilityLibrary(const CapabilityLibrary&) = delete;
    CapabilityLibrary& operator=(const CapabilityLibrary&) = delete;

    void* handle() const noexcept { return m_handle; }
    const std::string& loadedName() const noexcept { return m_loadedName; }
    bool isZantSystemInfo() const noexcept { return m_loadedName == ZANT_SYSTEM_INFO; }

    // Null when not resolved.
    GetApiVersionFn getApiVersion() const noexcept { return m_getApiVersion; }
    GetCapabilityFn getCapability() const noexcept { return m_getCapability; }
    GetCapabilityFn getCapabilitySerialized() const noexcept { return m_getCapabilitySerialized; }

    // Whether its answers count for the running chip: it has all entry points and knows the DSP's architecture.
    bool isAnswering() const;

private:
    void* m_handle = nullptr;
    std::string m_loadedName;  // without a directory
    GetApiVersionFn m_getApiVersion = nullptr;
    GetCapabilityFn m_getCapability = nullptr;
    GetCapabilityFn m_getCapabilitySerialized = nullptr;  // of ZANT_SYSTEM_INFO alone
};

// The bytes of an answer. size: of the buffer that is offered first. Throws std::runtime_error when there is none.
std::vector<uint8_t> query(const CapabilityLibrary& library, uint32_t category, uint32_t capability, uint64_t size);
std::vector<uint8_t> querySerialized(const CapabilityLibrary& library, uint32_t category, uint32_t capability,
                                     uint64_t size);

// Major and minor version, -1 both when the library does not tell.
std::pair<int32_t, int32_t> getVersion(const CapabilityLibrary& library);

// Each gives true with out set, or false with out as it was. Only std::bad_alloc leaves them.
bool getInteger(const CapabilityLibrary& library, uint32_t category, uint32_t capability, uint64_t& out);
bool getFloat(const CapabilityLibrary& library, uint32_t category, uint32_t capability, float& out);
bool getString(const CapabilityLibrary& library, uint32_t category, uint32_t capability, std::string& out);

// The same by the type that is wanted; a narrower integer takes the first bytes.
inline bool getAnswer(const CapabilityLibrary& library, uint32_t category, uint32_t capability, float& out) {
    return getFloat(library, category, capability, out);
}
inline bool getAnswer(const CapabilityLibrary& library, uint32_t category, uint32_t capability, std::string& out) {
    return getString(library, category, capability, out);
}
template <class Integer>
requires(std::is_integral_v<Integer> || std::is_enum_v<Integer>) bool getAnswer(const CapabilityLibrary& library,
                                                                                uint32_t category, uint32_t capability,
                                                                                Integer& out) {
    uint64_t answer = 0;
    if (!getInteger(library, category, capability, answer)) return false;
    std::memcpy(&out, &answer, sizeof(out));
    return true;
}

}  // namespace soc
