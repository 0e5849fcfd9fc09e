#include "machine/capability_stage.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

#include <random>
#include <system_error>

#include "machine/paths.h"
#include "machine/platform.h"

namespace fs = std::filesystem;

namespace runhost {

namespace {

constexpr const char* LIBRARIES[] = {"ZantSystemInfo.dll", "CorvaneSoCServiceUtils.dll"};

std::string namedLibrary(const std::string& file) {
    std::string text;
    try {
        text = readFile(file);
    } catch (const std::system_error& error) {
        throw UsageError(fmt::format("{}: {}", file, error.code().message()));
    }
    rapidjson::Document document;
    if (document.Parse<rapidjson::kParseIterativeFlag>(text.data(), text.size()).HasParseError()) {
        throw UsageError(fmt::format("{}: not valid JSON at byte {}", file, document.GetErrorOffset()));
    }
    const auto* library = document.IsObject() && document.HasMember("library") ? &document["library"] : nullptr;
    for (const char* name : LIBRARIES) {
        if (library != nullptr && library->IsString() && std::string(library->GetString()) == name) return name;
    }
    throw UsageError(fmt::format("{}: expected \"library\" with \"{}\" or \"{}\"", file, LIBRARIES[0], LIBRARIES[1]));
}

fs::path makeFolder() {
    std::random_device random;
    fs::path folder;
    do {
        folder = fs::temp_directory_path() / fmt::format("runhost-{:08x}", random());
    } while (!fs::create_directory(folder));
    return folder;
}

}  // namespace

CapabilityStage::CapabilityStage(const std::string& file) {
    if (file.empty()) return;
    const fs::path library = capabilityLibraryPath(namedLibrary(file));
    platform::nameCapabilities(fs::absolute(file));
    m_folder = makeFolder();
    try {
        place(library.string());
    } catch (...) {
        std::error_code error;
        fs::remove_all(m_folder, error);
        throw;
    }
}

CapabilityStage::~CapabilityStage() {
    std::error_code error;
    if (!m_folder.empty()) fs::remove_all(m_folder, error);
}

std::string CapabilityStage::place(const std::string& library) const {
    if (m_folder.empty()) return library;
    const fs::path copy = m_folder / fs::path(library).filename();
    fs::copy_file(library, copy, fs::copy_options::overwrite_existing);
    return copy.string();
}

}  // namespace runhost
