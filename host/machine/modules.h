// Libraries that the host loads: any of them, and the extensions.
#pragma once

#include <memory>
#include <string>

#include "zelmar_kor/backend_extensions.h"

namespace runhost {

// Loaded for as long as it lives.
class Module {
public:
    // Throws std::runtime_error with the loader's reason.
    explicit Module(const std::string& path);

    void* handle() const { return m_handle.get(); }
    // Null when the module has no such symbol.
    void* symbol(const char* name) const;
    // The same as a function of the type.
    template <typename Function>
    void resolve(Function& function, const char* name) const {
        function = reinterpret_cast<Function>(symbol(name));
    }

private:
    struct Close {
        void operator()(void* handle) const;
    };
    std::unique_ptr<void, Close> m_handle;
};

// The extension library and the objects that it makes.
class ExtensionLibrary {
public:
    using Backend = zant::tools::runhost::IBackend;
    struct Destroy {
        decltype(&destroyBackendInterface) destroy;
        void operator()(Backend* backend) const { destroy(backend); }
    };
    using Object = std::unique_ptr<Backend, Destroy>;

    // Throws std::runtime_error when the library can't be loaded or lacks one of the two functions.
    explicit ExtensionLibrary(const std::string& path);

    // Null when the library could not make one. The library outlives it.
    Object create() const { return Object(m_create(), Destroy{m_destroy}); }

private:
    Module m_module;
    decltype(&createBackendInterface) m_create;
    decltype(&destroyBackendInterface) m_destroy;
};

}  // namespace runhost
