#include "buffers/tensor_size.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "platform/logger.h"

namespace zant::kor {

namespace {

constexpr uint64_t LARGEST = std::numeric_limits<uint64_t>::max();

struct DataTypeSize {
    uint32_t dataType;  // the closed API's number
    uint64_t bytes;
};

constexpr DataTypeSize DATA_TYPE_SIZES[] = {
    {0x0008, 1}, {0x0016, 2}, {0x0032, 4}, {0x0064, 8}, {0x0108, 1}, {0x0116, 2}, {0x0132, 4},
    {0x0164, 8}, {0x0216, 2}, {0x0226, 2}, {0x0232, 4}, {0x0264, 8}, {0x0308, 1}, {0x0316, 2},
    {0x0332, 4}, {0x0408, 1}, {0x0416, 2}, {0x0432, 4}, {0x0508, 1},
};

std::optional<uint64_t> elementSize(uint32_t dataType) noexcept {
    const auto* row = std::find_if(std::begin(DATA_TYPE_SIZES), std::end(DATA_TYPE_SIZES),
                                   [dataType](const DataTypeSize& size) { return size.dataType == dataType; });
    if (row == std::end(DATA_TYPE_SIZES)) return std::nullopt;
    return row->bytes;
}

}  // namespace

uint64_t addSaturated(uint64_t a, uint64_t b) noexcept {
    return b > LARGEST - a ? LARGEST : a + b;
}

uint64_t multiplySaturated(uint64_t a, uint64_t b) noexcept {
    return a != 0 && b > LARGEST / a ? LARGEST : a * b;
}

std::optional<uint64_t> tensorSize(const ZantTensor& tensor) {
    uint64_t elements = 1;
    if (tensor.dimensions == nullptr) {
        if (tensor.rank != 0) {
            ZANT_LOG_ERROR("MultiTensorSharedBuffer:Input dimensions is nullptr");
            return std::nullopt;
        }
        ZANT_LOG_DEBUG("MultiTensorSharedBuffer:Handling 0D inputs");
    } else if (tensor.rank == 0) {
        ZANT_LOG_ERROR("dims.size() is zero");
        return std::nullopt;
    }
    for (uint32_t i = 0; i < tensor.rank; ++i) elements = multiplySaturated(elements, tensor.dimensions[i]);
    const std::optional<uint64_t> bytes = elementSize(tensor.dataType);
    if (!bytes) {
        ZANT_LOG_ERROR("Invalid zant data type %d provided", static_cast<int>(tensor.dataType));
        return std::nullopt;
    }
    return multiplySaturated(elements, *bytes);
}

}  // namespace zant::kor
