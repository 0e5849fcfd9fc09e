// A run as text for people or as one JSON document.
#pragma once

#include <string>

#include "report/json_writing.h"
#include "report/run_report.h"
#include "report/style.h"

namespace runhost {

std::string textReport(const RunReport& report, const Style& style);
std::string jsonReport(const RunReport& report);

// Their parts about votes.
std::string votesText(const RunReport& report, const Style& style);
void writeVotes(JsonWriter& writer, const RunReport& report);

// Their parts about shared memory.
std::string memoryText(const RunReport& report, const Style& style);
void writeMemory(JsonWriter& writer, const RunReport& report);

}  // namespace runhost
