// Answers of a capability library, whatever they are: numbers, texts and serialized records.
#include <cstdlib>

#include "platform/dynamic_loader.h"
#include "soc/capability_records.h"

namespace {

const soc::CapabilityLibrary& library() {
    static const soc::CapabilityLibrary loaded(
        std::vector<soc::CapabilityCandidate>{{FUZZ_CAPABILITY_DIRECTORY, soc::ZANT_SYSTEM_INFO}});
    return loaded;
}

template <class Answer>
void ask(uint32_t capability) {
    Answer answer{};
    soc::getAnswer(library(), soc::DSP_CATEGORY, capability, answer);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using SetBytes = void (*)(const uint8_t* data, size_t size);
    static const auto setBytes =
        reinterpret_cast<SetBytes>(zant::loader::dlSym(library().handle(), "fuzzCapabilityBytes"));
    if (setBytes == nullptr || library().getCapabilitySerialized() == nullptr) std::abort();
    setBytes(data, size);
    library().isAnswering();
    soc::getVersion(library());
    ask<uint64_t>(1);
    ask<uint32_t>(2);
    ask<float>(3);
    ask<std::string>(4);
    ask<std::vector<uint32_t>>(5);
    ask<std::vector<std::string>>(6);
    ask<std::set<std::pair<uint32_t, uint32_t>>>(7);
    ask<std::map<uint32_t, std::pair<std::string, uint32_t>>>(8);
    return 0;
}
