// The host calls hooks by their position in the table. On this ABI a pointer to a virtual function holds one more
// than the offset of its slot; the destructor takes the first two.
#include <gtest/gtest.h>

#include <cstring>

#include "zelmar_kor/backend_extensions.h"

namespace zant::test {
namespace {

using tools::iotensor::IBufferAlloc;
using tools::runhost::IBackend;

template <class Member>
size_t slotOf(Member member) {
    size_t words[2] = {};
    static_assert(sizeof(member) == sizeof(words));
    std::memcpy(words, &member, sizeof(words));
    return (words[0] - 1) / sizeof(void*);
}

template <class... Members>
void expectSlotsInOrder(Members... members) {
    const size_t slots[] = {slotOf(members)...};
    for (size_t i = 0; i < sizeof...(members); ++i) EXPECT_EQ(slots[i], i + 2);
}

#if defined(__x86_64__)
TEST(HookOrder, BackendHooksStandInTheContractsOrder) {
    using B = IBackend;
    expectSlotsInOrder(&B::setupLogging, &B::bindBackendLibrary, &B::bindInterfaceProviders, &B::setPerfProfile,
                       &B::getProfilingLevel, &B::loadConfig, &B::acceptSharedReference, &B::reservedTrueHook1,
                       &B::reservedTrueHook2, &B::beforeContextCreate, &B::afterContextCreate, &B::beforeGraphsCompose,
                       &B::afterGraphsCompose, &B::reservedTrueHook3, &B::beforeGraphFinalize, &B::afterGraphFinalize,
                       &B::reservedTrueHook4, &B::reservedTrueHook5, &B::beforeGraphExecute, &B::afterGraphExecute,
                       &B::beforeContextFree, &B::afterContextFree, &B::reservedTrueHook6, &B::reservedTrueHook7,
                       &B::beforeContextCreateFromBinary, &B::afterContextCreateFromBinary, &B::setContextName,
                       &B::beforeContextCreateFromBinaryList, &B::afterContextCreateFromBinaryList,
                       &B::beforeDeviceCreate, &B::afterDeviceCreate, &B::beforeDeviceFree, &B::reservedTrueHook8,
                       &B::reservedFalseHook1, &B::reservedFalseHook2, &B::reservedFalseHook3, &B::reservedFalseHook4,
                       &B::getDefaultAllocator, &B::releaseBlock, &B::getBufferAllocator, &B::setAppType,
                       &B::beforeContextApplyBinarySection, &B::afterContextApplyBinarySection, &B::reservedFalseHook5,
                       &B::setGraphOptions, &B::allocateExternalBuffers, &B::finalizeExternalBufferPools,
                       &B::reservedVoidHook1, &B::detachableBuffersEnabled, &B::detachBuffers, &B::attachBuffers,
                       &B::enableKorExtension, &B::runExtensionTestClient, &B::reservedFalseHook6,
                       &B::reservedVoidHook2, &B::getDefaultTimeout, &B::getCoreId);
}

TEST(HookOrder, AllocatorHooksStandInTheContractsOrder) {
    using A = IBufferAlloc;
    expectSlotsInOrder(&A::initialize, &A::getBuffer, &A::allocate, &A::release, &A::reservedAllocatorHook1,
                       &A::reservedAllocatorHook2, &A::reservedAllocatorHook3, &A::reservedAllocatorHook4);
}
#endif

}  // namespace
}  // namespace zant::test
