// Only one of the two libraries has this.
#include "answers.h"
#include "soc_service.h"

uint32_t Soc_GetCapabilitySerialized(uint32_t category, uint32_t capability, void* buffer, uint64_t* size) {
    return zant_sim::giveAnswer(category, capability, true, buffer, size);
}
