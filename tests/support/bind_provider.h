// A backend object bound to a provider whose power infrastructure is a fake, which has to outlive it.
#pragma once

#include "extension/kor_backend.h"
#include "support/fake_infrastructure.h"

namespace zant::test {

inline bool bindProvider(kor::KORBackend& backend, const FakeInfrastructure& infrastructure) {
    static ZantProviderRecord record;
    record = infrastructure.provider();
    record.backendId = ZANT_BACKEND_ID_KOR;
    record.getApiVersion = [](ZantApiVersion* version) -> uint64_t { return *version = {{2, 0, 0}, {5, 51, 0}}, 0; };
    return backend.bindInterfaceProviders([](const ZantProviderRecord*** providers, uint32_t* count) -> uint32_t {
        static const ZantProviderRecord* list[] = {&record};
        *providers = list;
        return *count = 1, 0;
    });
}

}  // namespace zant::test
