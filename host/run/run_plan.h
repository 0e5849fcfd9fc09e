// What a run is to do.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace runhost {

// How contexts and their graphs come to life.
enum class Road { COMPOSE, BINARY, BINARY_LIST };

struct RunPlan {
    std::vector<std::string> graphs;  // the document's when empty
    Road road = Road::COMPOSE;
    std::optional<uint32_t> contexts;         // on the road of several binaries; the document's keys when not given
    bool pools = false;                       // external buffers, shared by all contexts
    bool detach = false;                      // detach and attach each context's buffers between the first two runs
    std::optional<uint32_t> profile;          // overrides the document's
    uint32_t iterations = 1;                  // each runs every graph once
    std::chrono::milliseconds interval{0};    // between iterations
    std::chrono::milliseconds finalPause{0};  // after the last one
};

}  // namespace runhost
