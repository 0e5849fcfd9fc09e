// A folder of the test's own, and what it leaves open.
#pragma once

#include <cstddef>
#include <string>

namespace zant::test {

class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    // Forward slashes on every system; the folder itself for an empty name.
    std::string path(const std::string& name) const;
    // Makes something that opens and is no regular file: a pipe, or a folder where the system has no pipes in folders.
    std::string pipe(const std::string& name) const;

private:
    std::string m_folder;
};

// How many descriptors the process has open.
size_t openDescriptors();

}  // namespace zant::test
