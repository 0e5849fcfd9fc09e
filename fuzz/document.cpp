// A document along the schema, and all hooks on each road.
#include "document_maker.h"
#include "whole_life.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::ByteSource source(data, size);
    const zant::test::Road road = source.pick(zant::test::ROADS);
    fuzz::live(fuzz::makeDocument(source), road);
    return 0;
}
