// What happened in a run, as facts; how they look is the reports' business.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "records/decode.h"
#include "records/log_capture.h"
#include "records/memory_map.h"
#include "records/time_line.h"

namespace runhost {

enum class Outcome { OK, FAILED, SKIPPED };

struct RecordGroup {
    std::string subject;  // "device", "context", "graph encoder"
    std::vector<DecodedRecord> records;
};

struct CallReport {
    std::string name;
    bool byHost;  // the host's own step, with the backend; not a hook
    Outcome outcome;
    std::string note;  // what it means, in words
    std::vector<RecordGroup> recordGroups;
    std::vector<LogLine> log;  // what the library logged meanwhile
};

struct StageReport {
    std::string title;
    std::string explanation;
    std::vector<CallReport> calls;
};

struct RunReport {
    std::string library;
    std::string backend;
    std::string document;
    std::string machine;
    std::string plan;  // how often the graphs run, in words
    int32_t logLevel;
    std::vector<StageReport> stages;
    std::vector<VoteLine> votes;  // empty when the backend keeps no time line
    std::vector<Level> levels;
    uint32_t quietRuns;               // during which no vote came
    uint32_t votingRuns;              // all others
    MemoryMap memory;                 // empty without shared memory
    std::vector<std::string> ledger;  // the backend's account of all calls; empty when it keeps none
    bool backendKeepsLedger;
    std::vector<std::string> memoryLedger;  // the RPC client library's; empty when it was not called
    std::vector<std::string> misuse;        // lines of both about wrong use
    bool succeeded;                         // every hook and every step of the host, and nothing was used wrongly
};

}  // namespace runhost
