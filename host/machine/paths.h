// Where the host finds what belongs to it, all relative to its own executable: a build tree and an installation alike.
#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace runhost {

// Something is wrong with the arguments that no option parser can see.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The extension library: what the user gave, or the one beside the host. Throws UsageError when there is none.
std::string extensionsPath(const std::string& given);
// The same for the backend.
std::string backendPath(const std::string& given);

// The library beside the extension library that tells what is known of the chip.
std::string inspectionPath(const std::string& givenExtensions);
// A simulated capability library by its file's name.
std::string capabilityLibraryPath(const std::string& fileName);

// The simulated RPC client library.
std::string rpcLibraryPath();
// Makes the folder that holds it the one that the simulated machine's drivers lead to, unless the user has named one.
void useRpcLibrary(const std::string& path);

// The path as loadConfig takes it: one that begins like a JSON text would be taken for one.
std::string configPath(const std::string& path);

// A simulated machine by name, or the directory itself when nameOrDirectory is one. Nothing when neither exists.
std::optional<std::filesystem::path> findMachine(const std::string& nameOrDirectory);
// What findMachine finds, empty for an empty text. Throws UsageError with the known names when it finds nothing.
std::string machinePath(const std::string& given);
// Names that findMachine knows, sorted.
std::vector<std::string> machineNames();

// Makes the machine the one that the library sees. Has to come before the library is loaded.
void useMachine(const std::filesystem::path& directory);

// The whole file; throws std::system_error with the system's reason.
std::string readFile(const std::string& path);

}  // namespace runhost
