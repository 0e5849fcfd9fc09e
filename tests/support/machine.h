// The services and the registry that a test gives to the machine that it runs on.
#pragma once

#include <string>
#include <vector>

#include "support/environment.h"
#include "support/scratch_folder.h"

namespace zant::test {

// One at a time. Gone with the object. On Windows the real ones are changed, where the test has the right to do that.
class Machine {
public:
    Machine();
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    // Takes the place of what was there. platform: the text of a platform.json. False when the machine may not be
    // changed.
    bool become(const std::string& platform);

private:
    const ScratchFolder m_folder;
    const ScopedVariable m_root;
    std::vector<std::string> m_services;
    std::vector<std::string> m_keys;  // with the root's name in front
};

}  // namespace zant::test
