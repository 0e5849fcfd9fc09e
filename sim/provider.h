// The provider records and the infrastructure's table behind them.
#pragma once

#include "zelmar_kor/power_records.h"

namespace zant::sim {

const ZantPerfInfrastructure* perfInfrastructure();

}  // namespace zant::sim
