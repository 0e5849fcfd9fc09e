// What the extension library knows of the running chip. No hook tells it, so a small library beside it does: made of
// the same objects, and lying in the same folder, it reads the same firmware, has the same table and finds the same
// capability library.
#pragma once

#include <cstdint>

#include "zelmar_kor/backend_extensions.h"

namespace runhost {

struct ChipFact {
    const char* list;  // "chip", "dsp", "cpu", "gpu", "pair" or "aux"
    uint32_t record;   // of the list
    const char* name;
    const char* value;
    const char* origin;  // "firmware", "row", "provider row", "library" or "default"
};

// The texts live for the call.
using TellChipFact = void (*)(void* context, const ChipFact* fact);
using InspectChipFn = bool (*)(TellChipFact tell, void* context);

}  // namespace runhost

// Tells each fact, list by list. False when memory was short.
extern "C" ZELMAR_KOR_EXPORT bool zelmar_kor_inspectChip(runhost::TellChipFact tell, void* context);
