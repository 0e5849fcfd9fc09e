// The way to the backend's perf infrastructure. Its table is fetched anew for every call and never kept.
#pragma once

#include <cstdint>

#include "platform/mutex.h"
#include "zelmar_kor/power_records.h"
#include "zelmar_kor/provider_record.h"

namespace zant::kor {

// Stands for the status of an operation that the infrastructure's table lacks.
constexpr uint64_t MISSING_OPERATION = ~uint64_t{0};

// Held for each infrastructure call, so that the calls of all drivers of the process come one after the other. Taken
// inside a driver's own lock, never the other way round.
extern Mutex g_infraMutex;

// The infrastructure's table, null after a level 1 line.
const ZantPerfInfrastructure* fetchInfrastructure(const ZantProviderRecord& backendInterface) REQUIRES(g_infraMutex);

}  // namespace zant::kor
