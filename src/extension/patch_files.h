// The files that contexts from binaries patch themselves with, open from a context's creation to its end.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zant::kor {

class PatchFiles {
public:
    PatchFiles() = default;
    ~PatchFiles() { closeFrom(0); }
    PatchFiles(const PatchFiles&) = delete;
    PatchFiles& operator=(const PatchFiles&) = delete;

    // Opens the file for reading and writing, and makes it if it is absent. The descriptor stays with the object; -1
    // after a level 1 line.
    int open(const std::string& path);
    size_t count() const noexcept { return m_patchFds.size(); }
    // Closes the descriptors opened since there were first of them. False after a level 1 line for each failed close;
    // none is closed twice.
    bool closeFrom(size_t first) noexcept;

private:
    std::vector<int> m_patchFds;
};

}  // namespace zant::kor
