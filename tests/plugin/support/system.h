// What these tests need from an operating system beside what the host needs. system_posix.cpp and system_windows.cpp
// answer it.
#pragma once

#include <set>
#include <string>

namespace testing_support {

// The names that a library's file defines for others.
std::set<std::string> exportedNames(const std::string& path);

bool isLoaded(const std::string& path);

// Whether the simulated machine notices memory that took the place of other memory under the same descriptor.
bool seesMemoryReplaced();

// Names the calling thread.
void nameThread(const char* name);

struct ProcessResult;

// Runs a program in the system's shell, with standard error in its output unless the arguments send it elsewhere. Words
// are in single quotes; "2>/dev/null" means the same everywhere.
ProcessResult runProgram(const std::string& program, const std::string& arguments);

}  // namespace testing_support
