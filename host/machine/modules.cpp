#include "machine/modules.h"

#include <stdexcept>

#include "machine/platform.h"

namespace runhost {

namespace {

void* load(const std::string& path) {
    std::string error;
    void* library = platform::loadLibrary(path, error);
    if (library == nullptr) throw std::runtime_error(error);
    return library;
}

}  // namespace

void Module::Close::operator()(void* handle) const {
    platform::unloadLibrary(handle);
}

Module::Module(const std::string& path) : m_handle(load(path)) {}

void* Module::symbol(const char* name) const {
    return platform::findSymbol(m_handle.get(), name);
}

ExtensionLibrary::ExtensionLibrary(const std::string& path) : m_module(path) {
    m_module.resolve(m_create, "createBackendInterface");
    m_module.resolve(m_destroy, "destroyBackendInterface");
    if (m_create == nullptr || m_destroy == nullptr) {
        throw std::runtime_error(path + " lacks createBackendInterface or destroyBackendInterface");
    }
}

}  // namespace runhost
