// The simulated capability libraries, and the file that they answer from.
#pragma once

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "soc/capability_library.h"
#include "support/environment.h"
#include "support/scratch_folder.h"

namespace soc {

class CapabilityTest : public testing::Test {
protected:
    // The folder of the simulated libraries in the build tree, a separator at its end.
    static std::string simFolder() {
        return (std::filesystem::path(TEST_MODULE_PATH).parent_path() / "../sim/capability/").string();
    }
    static CapabilityLibrary load(const std::vector<CapabilityCandidate>& from) { return CapabilityLibrary(from); }
    static CapabilityLibrary zant() { return load({{simFolder(), ZANT_SYSTEM_INFO}}); }
    static CapabilityLibrary corvane() { return load({{simFolder(), CORVANE_SERVICE_UTILS}}); }

    void answer(const std::string& dsp, const std::string& others = R"(,"version":[3,7])") {
        std::ofstream(m_file) << R"({"dsp":{)" << dsp << "}" << others << "}";
    }

    const zant::test::ScratchFolder m_folder;

private:
    const std::string m_file = m_folder.path("answers.json");
    const zant::test::ScopedVariable m_variable{"ZELMAR_SIM_CAPABILITIES", m_file.c_str()};
};

}  // namespace soc
