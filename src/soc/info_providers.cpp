#include "soc/info_providers.h"

#include "soc/firmware_identifier.h"
#include "soc/soc_table.h"

namespace soc {

const SocFacts& providerFacts() {
    static const SocTable table = makeProviderTable();
    static const uint32_t id = getSocModelFromFirmware();
    const SocInfo* row = id == 0 ? nullptr : findById(table, id);
    // The default row stands for every other chip.
    return row == nullptr ? table.at(0).facts() : row->facts();
}

}  // namespace soc
