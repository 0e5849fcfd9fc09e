// A session's contexts, on each of the three roads.
#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "run/record_lists.h"
#include "run/session.h"

namespace runhost {

bool Session::createContexts() {
    switch (m_plan.road) {
        case Road::COMPOSE:
            createOneContext();
            break;
        case Road::BINARY:
            createFromBinary();
            break;
        case Road::BINARY_LIST:
            createFromBinaryList();
            nameContexts();
            break;
    }
    return std::all_of(m_contexts.begin(), m_contexts.end(),
                       [](const Context& context) { return context.handle != nullptr; });
}

Session::Context& Session::addOnlyContext(CallReport& before, ZantConfigWrapper** list, uint32_t count) {
    before.note = counted(count, "record") + " for the context";
    before.recordGroups.push_back(decodeList("context", list, count, decodeContextRecord));
    Context& context = m_contexts.emplace_back();
    context.name = "context";
    return context;
}

void Session::createOneContext() {
    m_steps.stage("Context", "create the context that holds the graphs");
    ZantConfigWrapper** list = nullptr;
    uint32_t count = 0;
    CallReport& before =
        m_steps.hook("beforeContextCreate", [&] { return m_object->beforeContextCreate(&list, &count); });
    Context& context = addOnlyContext(before, list, count);
    m_steps.hostStep("createContext",
                     [&] { return m_backend.createContext(m_device, list, count, &context.handle) == 0; });
    m_steps.hook("afterContextCreate", [&] { return m_object->afterContextCreate(); });
}

void Session::createFromBinary() {
    m_steps.stage("Context", "create the context and its graphs from one binary");
    ZantConfigWrapper** list = nullptr;
    uint32_t count = 0;
    CallReport& before = m_steps.hook("beforeContextCreateFromBinary",
                                      [&] { return m_object->beforeContextCreateFromBinary(&list, &count); });
    Context& context = addOnlyContext(before, list, count);
    if (before.outcome == Outcome::OK) {
        m_steps.hostStep("createContextFromBinary", [&] {
            return m_backend.createContextFromBinary(m_device, list, count, &context.handle) == 0;
        });
    }
    m_steps.hook("afterContextCreateFromBinary", [&] { return m_object->afterContextCreateFromBinary(); });
}

void Session::createFromBinaryList() {
    m_steps.stage("Contexts", "create contexts and their graphs from several binaries at once");
    const std::vector<std::string>& keys = m_facts.contextKeys;
    const size_t contexts = m_plan.contexts.value_or(static_cast<uint32_t>(std::max<size_t>(keys.size(), 1)));
    for (size_t i = 0; i < contexts; ++i) {
        m_contexts.emplace_back().name = i < keys.size() ? keys[i] : fmt::format("made_up_{}.bin", i + 1);
    }
    std::map<std::string, std::pair<uint32_t, ZantConfigWrapper**>> perContext;
    ZantConfigWrapper** common = nullptr;
    uint32_t commonCount = 0;
    CallReport& before = m_steps.hook("beforeContextCreateFromBinaryList", [&] {
        return m_object->beforeContextCreateFromBinaryList(&perContext, &common, &commonCount);
    });
    before.note =
        fmt::format("lists for {}, {} for all", counted(perContext.size(), "context"), counted(commonCount, "record"));
    before.recordGroups.push_back(decodeList("all contexts", common, commonCount, decodeContextRecord));
    for (const auto& [key, list] : perContext) {
        before.recordGroups.push_back(decodeList(key, list.second, list.first, decodeContextRecord));
    }
    if (before.outcome == Outcome::OK) {
        std::vector<ZantSimContextRequest> requests;
        for (const Context& context : m_contexts) {
            const auto& [count, list] = perContext[context.name];
            requests.push_back({context.name.c_str(), list, count, nullptr});
        }
        const size_t madeUp = contexts - std::min(contexts, keys.size());
        CallReport& create = m_steps.hostStep("createContextsFromBinaryList", [&] {
            return m_backend.createContextsFromBinaryList(m_device, requests, common, commonCount) == 0;
        });
        create.note = counted(contexts, "context");
        if (madeUp > 0) create.note += fmt::format(", {} with a made-up name: the document has no key for it", madeUp);
        if (contexts < keys.size()) create.note += fmt::format("; the document has {} keys", keys.size());
        for (size_t i = 0; i < contexts; ++i) m_contexts[i].handle = requests[i].context;
    }
    m_steps.hook("afterContextCreateFromBinaryList", [&] { return m_object->afterContextCreateFromBinaryList(); });
}

void Session::nameContexts() {
    for (const Context& context : m_contexts) {
        if (context.handle == nullptr) continue;
        m_steps.hook("setContextName", [&] { return m_object->setContextName(context.handle, context.name); }).note =
            context.name;
    }
}

void Session::freeContexts() {
    const bool isOne = m_contexts.size() == 1;
    m_steps.stage(isOne ? "Free the context" : "Free the contexts",
                  isOne ? "the graphs go with it" : "the graphs go with them");
    std::vector<void*> handles;
    for (const Context& context : m_contexts) handles.push_back(context.handle);
    m_steps.hook("beforeContextFree", [&] { return m_object->beforeContextFree(handles); });
    for (const Context& context : m_contexts) {
        m_steps.hostStep("freeContext", [&] { return m_backend.freeContext(context.handle) == 0; }).note = context.name;
    }
    m_steps.hook("afterContextFree", [&] { return m_object->afterContextFree(); });
}

}  // namespace runhost
