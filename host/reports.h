// A run as text for people or as one JSON document.
#pragma once

#include <string>

#include "run_report.h"
#include "style.h"

namespace runhost {

std::string textReport(const RunReport& report, const Style& style);
std::string jsonReport(const RunReport& report);

}  // namespace runhost
