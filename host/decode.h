// Config records as option names and values.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zelmar_kor/custom_configs.h"

namespace runhost {

struct DecodedRecord {
    uint32_t number;     // the record's option
    std::string option;  // its name; empty when the host has no decoder for the record
    std::string value;
    std::vector<uint8_t> bytes;  // the record, or its first bytes when its size is not known here
};

DecodedRecord decodeDeviceRecord(const ZantConfigWrapper& wrapper);

// A record of a kind that the host has no decoder for.
DecodedRecord dumpRecord(const ZantConfigWrapper& wrapper);

std::string hexText(const std::vector<uint8_t>& bytes);

}  // namespace runhost
