// What a host knows of a model without the extensions, taken here from the document that configures them.
#pragma once

#include <string>
#include <vector>

namespace runhost {

struct DocumentFacts {
    std::vector<std::string> graphNames;   // as the hooks know them; one stand-in name when the document names none
    std::vector<std::string> contextKeys;  // of the context entries, each once, in their order
    bool asksForExtension = false;         // some device sets enable_kor_extension
    bool asksForSharedMemory = false;      // the memory section says shared_buffer
};

// A text that is no document gives the facts of an empty one: judging it is the library's part.
DocumentFacts documentFacts(const std::string& text);

}  // namespace runhost
