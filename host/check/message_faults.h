// The library's log lines as faults with a place: most lines name a key or a value, never a line of the file.
#pragma once

#include <string>
#include <vector>

#include "check/findings.h"
#include "records/log_capture.h"

namespace runhost {

// One load's lines, in order, against the document as it was loaded. Lines that only follow from others give nothing;
// a line that cannot be placed becomes a fault of the document as a whole. Lines about the schema are not looked at.
std::vector<Fault> faultsOfMessages(const std::vector<LogLine>& lines, Node& root);

// The flat key that the schema line names, as a JSON pointer; false when no line of the load is about the schema.
bool refusedBySchema(const std::vector<LogLine>& lines, std::string& pointer);

}  // namespace runhost
