#include "run/session.h"

#include <fmt/format.h>

#include "machine/ledgers.h"
#include "records/log_capture.h"
#include "records/value_tables.h"
#include "run/record_lists.h"

namespace runhost {

Session::Session(const SessionParts& parts, std::string config, DocumentFacts facts, RunPlan plan, RunReport& report)
    : m_library(parts.library),
      m_backend(parts.backend),
      m_memory(parts.memory),
      m_config(std::move(config)),
      m_facts(std::move(facts)),
      m_plan(std::move(plan)),
      m_report(report),
      m_steps(report, parts.backend),
      m_object(nullptr, ExtensionLibrary::Destroy{nullptr}) {}

bool Session::loadAndBind() {
    m_steps.stage("Load and bind", "make the object, give it a log, the backend and the document");
    m_steps
        .hook("createBackendInterface",
              [&] {
                  m_object = m_library.create();
                  return m_object != nullptr;
              })
        .note = "the object that answers the hooks";
    if (m_object == nullptr) return false;
    m_steps
        .hook("setupLogging",
              [&] { return m_object->setupLogging(captureLog, static_cast<ZantLogLevel>(m_report.logLevel)); })
        .note = fmt::format("log lines up to level {} ({})", m_report.logLevel, levelName(m_report.logLevel));
    const CallReport& bind =
        m_steps.hook("bindBackendLibrary", [&] { return m_object->bindBackendLibrary(m_backend.handle()); });
    if (bind.outcome == Outcome::FAILED) return false;
    m_steps.calls().back().note = "the backend's provider was found, its API version fits";
    CallReport& load = m_steps.hook("loadConfig", [&] { return m_object->loadConfig(m_config); });
    load.note = load.outcome == Outcome::OK ? "the document was accepted" : "see \"runhost check\" for each fault";
    if (load.outcome == Outcome::FAILED) return false;
    if (m_plan.profile) {
        m_steps.hook("setPerfProfile", [&] { return m_object->setPerfProfile(*m_plan.profile); }).note =
            fmt::format("{} ({}), instead of the document's", nameOf(perfProfiles(), *m_plan.profile), *m_plan.profile);
    }
    return true;
}

bool Session::createDevice() {
    m_steps.stage("Device", "open the device with the first device's options");
    ZantConfigWrapper** list = nullptr;
    uint32_t count = 0;
    CallReport& before =
        m_steps.hook("beforeDeviceCreate", [&] { return m_object->beforeDeviceCreate(&list, &count); });
    if (before.outcome == Outcome::FAILED) return false;
    before.note = counted(count, "record") + " to open the device with";
    before.recordGroups.push_back(decodeList("device", list, count, decodeDeviceRecord));
    m_steps.hostStep("createDevice", [&] { return m_backend.createDevice(list, count, &m_device) == 0; });
    m_steps.hook("afterDeviceCreate", [&] { return m_object->afterDeviceCreate(); });
    if (m_facts.asksForExtension) {
        m_steps.hook("enableKorExtension", [&] { return m_object->enableKorExtension(m_device); }).note =
            "sends the extension switch to the device";
    } else {
        m_steps.skip("enableKorExtension", "no device of the document asks for it");
    }
    return m_device != nullptr;
}

void Session::runModel() {
    if (!createContexts()) return;
    if (m_plan.road == Road::COMPOSE) {
        composeGraphs();
        finalizeGraphs();
    } else {
        retrieveGraphs();
    }
    if (m_plan.pools) poolBuffers();
    allocateTensors();
    takeMemoryMap();
    executeGraphs();
    releaseTensors();
    freeContexts();
}

void Session::freeDevice() {
    m_steps.stage("Free the device", "and the object after it");
    if (m_device != nullptr) {
        m_steps.hook("beforeDeviceFree", [&] { return m_object->beforeDeviceFree(); });
        m_steps.hostStep("freeDevice", [&] { return m_backend.freeDevice(m_device) == 0; });
    }
    m_steps.hook("destroyBackendInterface", [&] {
        m_object.reset();
        return true;
    });
}

void Session::collectAccounts() {
    m_report.votes = m_steps.timeLine().lines();
    m_report.levels = levels(m_report.votes, m_backend.elapsedNs());
    m_report.ledger = m_backend.ledger();
    m_report.backendKeepsLedger = m_backend.isSimulated();
    m_report.misuse = misuseIn(m_report.ledger);
    if (m_memory != nullptr) {
        m_report.memoryLedger = m_memory->ledger();
        const size_t left = m_memory->blockCount();
        if (left > 0) m_report.memoryLedger.push_back(fmt::format("misuse: {} left over", counted(left, "block")));
        const std::vector<std::string> misuse = misuseIn(m_report.memoryLedger);
        m_report.misuse.insert(m_report.misuse.end(), misuse.begin(), misuse.end());
    }
    if (!m_report.misuse.empty()) m_report.succeeded = false;
}

void Session::run() {
    if (loadAndBind() && createDevice()) runModel();
    if (m_object != nullptr) freeDevice();
    collectAccounts();
}

}  // namespace runhost
