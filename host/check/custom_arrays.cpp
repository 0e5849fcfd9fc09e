#include "check/custom_arrays.h"

namespace runhost {

namespace {

using Nodes = std::vector<std::unique_ptr<Node>>;

const Nodes& elementsOf(const Node& object, const char* name) {
    static const Nodes none;
    const Node* list = object.member(name);
    return list != nullptr && list->kind == Node::Kind::ARRAY ? list->children : none;
}

}  // namespace

std::vector<Fault> findMeetingArrays(Node& root) {
    std::vector<Fault> faults;
    const Node* first = nullptr;
    for (const auto& device : elementsOf(root, "devices")) {
        for (const auto& core : elementsOf(*device, "cores")) {
            if (elementsOf(*core, "custom").empty()) continue;
            if (first == nullptr) first = device.get();
            if (first == device.get()) continue;
            faults.push_back({Severity::WARNING, core->member("custom"), true,
                              "\"custom\" is an array in an earlier device too: the last item of one device is "
                              "applied to the next, and the very last to the first"});
        }
    }
    return faults;
}

}  // namespace runhost
