#include "support/scratch_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

namespace zant::test {

ScratchFolder::ScratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "zelmar_kor_XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    m_folder = pattern;
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

std::string ScratchFolder::path(const std::string& name) const {
    return name.empty() ? m_folder : m_folder + "/" + name;
}

std::string ScratchFolder::pipe(const std::string& name) const {
    if (mkfifo(path(name).c_str(), 0600) != 0) std::filesystem::create_directory(path(name));
    return path(name);
}

size_t openDescriptors() {
    size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) ++count;
    return count;
}

}  // namespace zant::test
