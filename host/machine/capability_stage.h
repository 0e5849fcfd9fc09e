// A folder in which a library finds a simulated capability library beside itself.
#pragma once

#include <filesystem>
#include <string>

namespace runhost {

// Has to outlive the libraries that are loaded from it.
class CapabilityStage {
public:
    // file: what the capability library answers, which also names the one of the two that does; empty for no stage at
    // all. Throws UsageError when the file can't be used.
    explicit CapabilityStage(const std::string& file);
    ~CapabilityStage();
    CapabilityStage(const CapabilityStage&) = delete;
    CapabilityStage& operator=(const CapabilityStage&) = delete;

    // A copy of the library in the stage; the library itself when there is no stage.
    std::string place(const std::string& library) const;

private:
    std::filesystem::path m_folder;
};

}  // namespace runhost
