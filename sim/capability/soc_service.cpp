#include "soc_service.h"

#include "answers.h"

uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor) {
    const zant_sim::Version version = zant_sim::readVersion();
    *major = version.major;
    *minor = version.minor;
    return version.status;
}

uint32_t Soc_GetCapability(uint32_t category, uint32_t capability, void* buffer, uint64_t* size) {
    return zant_sim::giveAnswer(category, capability, false, buffer, size);
}
