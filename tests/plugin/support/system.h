// What these tests need from an operating system beside what the host needs. system_posix.cpp and system_windows.cpp
// answer it.
#pragma once

#include <string>

namespace testing_support {

bool isLoaded(const std::string& path);

struct ProcessResult;

// Runs a program in the system's shell, with standard error in its output unless the arguments send it elsewhere. Words
// are in single quotes; "2>/dev/null" means the same everywhere.
ProcessResult runProgram(const std::string& program, const std::string& arguments);

}  // namespace testing_support
