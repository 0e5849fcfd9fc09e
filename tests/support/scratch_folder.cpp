#include "support/scratch_folder.h"

#include <cstdlib>
#include <filesystem>
#include <random>

#if defined(_WIN32)
#include <io.h>
#else
#include <sys/stat.h>
#endif

namespace zant::test {

namespace fs = std::filesystem;

ScratchFolder::ScratchFolder() {
    std::random_device random;
    fs::path folder;
    do {
        folder = fs::temp_directory_path() / ("zelmar_kor_" + std::to_string(random()));
    } while (!fs::create_directory(folder));
    m_folder = folder.generic_string();
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(m_folder, ignored);
}

std::string ScratchFolder::path(const std::string& name) const {
    return name.empty() ? m_folder : m_folder + "/" + name;
}

#if defined(_WIN32)

std::string ScratchFolder::pipe(const std::string& name) const {
    fs::create_directory(path(name));
    return path(name);
}

size_t openDescriptors() {
    constexpr int most = 2048;  // of the runtime library
    size_t count = 0;
    for (int descriptor = 0; descriptor < most; ++descriptor) count += _get_osfhandle(descriptor) != -1 ? 1U : 0U;
    return count;
}

#else

std::string ScratchFolder::pipe(const std::string& name) const {
    if (mkfifo(path(name).c_str(), 0600) != 0) std::abort();
    return path(name);
}

size_t openDescriptors() {
    size_t count = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator("/proc/self/fd")) ++count;
    return count;
}

#endif

}  // namespace zant::test
