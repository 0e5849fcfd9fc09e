// Records, wrappers and lists of contexts: the document's context section as the host hands it to the backend.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "config/context_config.h"
#include "extension/config_list.h"
#include "extension/patch_files.h"
#include "zelmar_kor/custom_configs.h"

namespace zant::kor {

// The three ways in which a context comes to life.
enum class ContextRoad : uint8_t {
    compose,     // created empty, graphs are composed into it
    binary,      // from one binary
    binaryList,  // with others, from a list of binaries
};

class ContextRecords {
public:
    enum class Result { ok, failed, noPatchFile };
    static constexpr const char* ALLOCATION_FAILED = "contextConfig alloc failed - %s";  // the level 1 line

    // Appends a list with those options of the context that the road takes. failed: some are missing, or the list
    // itself, each told by a level 1 line. noPatchFile, likewise told: the list ends before that option.
    Result build(ContextRoad road, const KORContextConfig& context);
    // The list of the last build; an empty one where there was no memory for it.
    ConfigList& list() noexcept { return m_hasList ? m_contextConfigLists.back() : m_noList; }

    // What all contexts of a list share; an earlier common list goes.
    bool buildCommon(const KORGroupContextConfig& group);
    ConfigList& commonList() noexcept { return m_commonContextConfigs; }

    // The parts of what an "after" hook frees.
    void clearCommonList() noexcept { m_commonContextConfigs.clear(); }
    void clear() noexcept;

    // After noPatchFile. The first leaves all records for clear. The second frees them and closes the patch files
    // opened since there were firstPatch of them; the wrappers stay, and lead nowhere.
    void dropGroups() noexcept { m_loraGroups.clear(); }
    void dropRecords(size_t firstPatch) noexcept;

    PatchFiles& patchFiles() noexcept { return m_patchFiles; }

private:
    // Records of two shapes.
    using Record = std::unique_ptr<void, void (*)(void*)>;

    // Everything that the record of preload groups leads to. It stays where it is until the "after" hook.
    struct LoraGroups {
        std::vector<const char*> names;  // of all groups, one behind the other; the characters are the document's
        std::vector<KORLoraGroup> groups;
        KORLoraGroupList list{};
    };

    template <class Values>
    bool add(ConfigList& list, const Values& values, const char* message);
    bool addGroups(const KORContextConfig& context);
    Result addPatchFile(const KORContextConfig& context);

    std::vector<ConfigList> m_contextConfigLists;  // one for each context that was built
    bool m_hasList = false;
    ConfigList m_noList;
    ConfigList m_commonContextConfigs;
    std::vector<Record> m_contextCustomConfigs;
    std::vector<std::unique_ptr<LoraGroups>> m_loraGroups;
    PatchFiles m_patchFiles;
};

}  // namespace zant::kor
