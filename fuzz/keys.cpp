// The fast walk over a document's keys against the plain reading of each.
#include <cstdio>
#include <cstdlib>

#include "document_maker.h"
#include "life/plain_keys.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::ByteSource source(data, size);
    std::string document;
    switch (source.below(3)) {
        case 0:
            document.assign(reinterpret_cast<const char*>(data) + (size > 0 ? 1 : 0), size > 0 ? size - 1 : 0);
            break;
        case 1:
            document = fuzz::makeDocument(source);
            break;
        default:
            document = R"({"a":)" + fuzz::makeValue(source, 8) + R"(,"devices":)" + fuzz::makeValue(source, 8) + "}";
            break;
    }
    const std::string difference = zant::test::keyDifference(document);
    if (!difference.empty()) {
        std::fprintf(stderr, "%s\nin %s\n", difference.c_str(), document.c_str());
        std::abort();
    }
    return 0;
}
