// The calling thread's own name. thread_name_posix.cpp and thread_name_windows.cpp answer it.
#pragma once

#include <string>

namespace zant::sim {

// Empty when it has none.
std::string threadName();

}  // namespace zant::sim
