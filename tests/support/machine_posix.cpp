#include <fstream>

#include "support/machine.h"

namespace zant::test {

Machine::Machine() : m_root("ZELMAR_PLATFORM_ROOT", m_folder.path("").c_str()) {}

Machine::~Machine() = default;

bool Machine::become(const std::string& platform) {
    std::ofstream(m_folder.path("platform.json")) << platform;
    return true;
}

}  // namespace zant::test
