// What ships, loaded as a host loads it, and the simulated libraries beside it.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "machine/platform.h"
#include "zant_sim/sim_backend.h"
#include "zelmar_kor/backend_extensions.h"

namespace testing_support {

namespace platform = runhost::platform;

class Library {
public:
    explicit Library(const std::string& path) {
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

// A simulated library, put back to its start; the backend unless told otherwise.
class Sim : public Library {
public:
    explicit Sim(const std::string& path = SIM_BACKEND_LIBRARY) : Library(path) {
        find<ZantSimClearFn>("ZantSim_clear")();
    }

    std::vector<std::string> ledger() const {
        const auto entry = find<ZantSimLedgerEntryFn>("ZantSim_ledgerEntry");
        std::vector<std::string> lines(find<ZantSimLedgerSizeFn>("ZantSim_ledgerSize")());
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
    ZantInterfaceGetProviders getProviders() const {
        return find<ZantInterfaceGetProviders>("ZantInterface_getProviders");
    }
    const ZantProviderRecord& provider() const {
        const ZantProviderRecord** list = nullptr;
        uint32_t count = 0;
        getProviders()(&list, &count);
        return *list[1];  // behind the decoy
    }
};

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
