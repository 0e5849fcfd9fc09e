// What each command gives the program: it adds its own options to the application and says what to do when it was
// chosen.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace runhost {

constexpr int EXIT_CLEAN = 0;
constexpr int EXIT_FAULTS = 1;
constexpr int EXIT_USAGE = 2;

// Returns the exit status.
using Command = std::function<int()>;

}  // namespace runhost
