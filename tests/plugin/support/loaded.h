// What ships, loaded as a host loads it, and the simulated backend beside it.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform.h"
#include "zant_sim/sim_backend.h"
#include "zelmar_kor/backend_extensions.h"

namespace testing_support {

namespace platform = runhost::platform;

class Library {
public:
    explicit Library(const char* path) {
        std::string error;
        m_handle = platform::loadLibrary(path, error);
        if (m_handle == nullptr) throw std::runtime_error(error);
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() { platform::unloadLibrary(m_handle); }

    void* handle() const { return m_handle; }
    template <typename Function>
    Function find(const char* name) const {
        void* symbol = platform::findSymbol(m_handle, name);
        if (symbol == nullptr) throw std::runtime_error(std::string("no symbol ") + name);
        return reinterpret_cast<Function>(symbol);
    }

private:
    void* m_handle = nullptr;
};

// A simulated library, put back to its start.
class Simulated : public Library {
public:
    explicit Simulated(const char* path) : Library(path) { find<ZantSimClearFn>("ZantSim_clear")(); }

    std::vector<std::string> ledger() const {
        const auto size = find<ZantSimLedgerSizeFn>("ZantSim_ledgerSize");
        const auto entry = find<ZantSimLedgerEntryFn>("ZantSim_ledgerEntry");
        std::vector<std::string> lines(size());
        for (size_t i = 0; i < lines.size(); ++i) {
            char text[512];
            entry(i, text, sizeof(text));
            lines[i] = text;
        }
        return lines;
    }
    void failNthCall(const char* operation, uint32_t n, uint64_t status) const {
        find<ZantSimFailNthCallFn>("ZantSim_failNthCall")(operation, n, status);
    }
};

class Sim : public Simulated {
public:
    Sim() : Simulated(SIM_BACKEND_LIBRARY) {}

    void setVersion(uint32_t major, uint32_t minor) const {
        find<ZantSimSetApiVersionFn>("ZantSim_setApiVersion")(major, minor, 0);
    }
    void setProviders(std::vector<uint32_t> ids) const {
        find<ZantSimSetProvidersFn>("ZantSim_setProviders")(ids.data(), ids.size());
    }
    ZantInterfaceGetProviders getProviders() const {
        return find<ZantInterfaceGetProviders>("ZantInterface_getProviders");
    }
};

inline const ZantProviderRecord& ourProvider(const Sim& sim) {
    const ZantProviderRecord** list = nullptr;
    uint32_t count = 0;
    sim.getProviders()(&list, &count);
    for (uint32_t i = 0; i < count; ++i) {
        if (list[i]->backendId == ZANT_BACKEND_ID_KOR) return *list[i];
    }
    throw std::runtime_error("no provider of ours");
}

inline const ZantPerfInfrastructure& infrastructure(const ZantProviderRecord& provider) {
    const ZantPerfInfrastructure* table = nullptr;
    if (provider.deviceGetInfrastructure(&table) != 0) throw std::runtime_error("no infrastructure");
    return *table;
}

// An object of the extension library that logs into errors(); the library is unloaded with it.
class Extension {
public:
    Extension()
        : m_library(EXTENSIONS_LIBRARY),
          m_destroy(m_library.find<decltype(m_destroy)>("destroyBackendInterface")),
          m_object(m_library.find<decltype(&createBackendInterface)>("createBackendInterface")()) {
        errors().clear();
        m_object->setupLogging(capture, ZANT_LOG_LEVEL_ERROR);
    }
    Extension(const Extension&) = delete;
    Extension& operator=(const Extension&) = delete;
    ~Extension() { m_destroy(m_object); }

    zant::tools::runhost::IBackend* operator->() const { return m_object; }

    // The level 1 lines since the newest object was made, expanded.
    static std::vector<std::string>& errors() {
        static std::vector<std::string> lines;
        return lines;
    }

private:
    static void capture(const char* format, ZantLogLevel, uint64_t, va_list arguments) {
        char text[512];
        std::vsnprintf(text, sizeof(text), format, arguments);
        errors().emplace_back(text);
    }

    Library m_library;
    decltype(&destroyBackendInterface) m_destroy;
    zant::tools::runhost::IBackend* m_object;
};

}  // namespace testing_support
