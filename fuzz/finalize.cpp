// finalize_config: an object of any members, made from the bytes or standing in them as text.
#include "document_maker.h"
#include "whole_life.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::ByteSource source(data, size);
    const bool isText = source.below(2) == 0 && size > 1;
    const std::string finalize =
        isText ? std::string(reinterpret_cast<const char*>(data) + 1, size - 1) : fuzz::makeValue(source, 6);
    fuzz::live(R"({"graphs":[{"graph_names":["g"],"finalize_config":)" + finalize + "}]}", zant::test::Road::compose);
    return 0;
}
