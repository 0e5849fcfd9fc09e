// Arguments as the ledger's text. The backend's view of the records: it reads bytes, it shares nothing with the host.
#pragma once

#include <cstdint>
#include <string>

#include "text.h"
#include "zelmar_kor/power_records.h"
#include "zelmar_kor/provider_record.h"

namespace zant::sim {

enum class HandleKind : uint32_t { DEVICE = 1, CONTEXT, GRAPH, MEMORY };

// A new handle of the kind: a number, never a pointer to anything.
void* makeHandle(HandleKind kind);
// "device 1"; a handle that makeHandle did not make shows as its number.
std::string describeHandle(const void* handle);

// The device records of a list with a count.
std::string describeDeviceConfigs(ZantConfigWrapper* const* configs, uint32_t count);
// Records whose layout the backend keeps to itself: wrapper options and record options only. A count of UINT32_MAX
// means that a null pointer ends the list.
std::string describeConfigs(const ZantConfigWrapper* const* configs, uint32_t count);
// What deviceSetConfig is given: each wrapper's option record and, for the extension option, the switch behind it.
std::string describeDeviceSettings(const ZantConfigWrapper* const* configs);
std::string describePowerRecords(const PowerConfigRecord* const* records);
std::string describeMemoryRecords(const PowerMemoryRecord* const* records);

}  // namespace zant::sim
