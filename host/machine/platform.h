// What the host needs from an operating system. platform_posix.cpp and platform_windows.cpp answer it.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>

namespace runhost::platform {

// Null on failure, with the loader's reason in error. A path with a directory also governs the search for what the
// library itself needs.
void* loadLibrary(const std::string& path, std::string& error);
// Null when the library itself has no such symbol.
void* findSymbol(void* library, const char* name);
void unloadLibrary(void* library);

// The folder of this program's file, "." when it is not known.
std::filesystem::path executableDirectory();

// Whether a directory can stand for another machine here; where not, the library sees the real one only.
bool canStandIn();
// Makes the directory the machine that the library sees from then on.
void standIn(const std::filesystem::path& directory);
// Names the file that the simulated capability libraries answer from.
void nameCapabilities(const std::filesystem::path& file);

// Sets "windir", from which drivers' directories are told, where it is not set.
void nameWindowsDirectory(const std::filesystem::path& directory);

bool isTerminal(std::FILE* stream);

}  // namespace runhost::platform
