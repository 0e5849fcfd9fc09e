// Config records as option names and values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "zelmar_kor/custom_configs.h"

namespace runhost {

struct DecodedRecord {
    uint32_t number;     // the record's option
    std::string option;  // its name; empty when it is not known here
    std::string value;
    std::vector<uint8_t> bytes;  // the record, or its first bytes when its size is not known here
};

DecodedRecord decodeDeviceRecord(const ZantConfigWrapper& wrapper);

DecodedRecord decodeGraphRecord(const ZantConfigWrapper& wrapper);

DecodedRecord decodeContextRecord(const ZantConfigWrapper& wrapper);

// For decoders: whether there is a custom record, what to say when there is none, and a copy of some bytes.
bool holdsCustomRecord(const ZantConfigWrapper& wrapper);
DecodedRecord notCustom(const ZantConfigWrapper& wrapper);
std::vector<uint8_t> bytesOf(const void* record, size_t size);

std::string hexText(const std::vector<uint8_t>& bytes);

}  // namespace runhost
