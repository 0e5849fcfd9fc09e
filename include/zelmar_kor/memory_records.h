// Records of memory that the NPU can reach: a tensor as the host keeps it, what memory register is given, what a
// context is asked about its buffers, and the RPC client library that the memory comes from.
#pragma once

#include <cstddef>
#include <cstdint>

// --- Tensors. The record is the host's and the backend's; the named fields are those that an allocator uses. An array
// of tensors is an array of these, one behind the other.
struct ZantTensor {
    uint64_t header[4];
    uint32_t dataType;  // the closed API's number of an element type
    uint32_t padding0;
    uint64_t body[5];
    uint32_t rank;
    uint32_t padding1;
    const uint32_t* dimensions;  // rank numbers, or null
    uint32_t memoryType;         // ZANT_TENSOR_MEMORY_HANDLE once memoryHandle counts
    uint32_t padding2;
    void* memoryHandle;  // from memory register
    uint64_t tail[4];
};

static_assert(sizeof(ZantTensor) == 144);
static_assert(offsetof(ZantTensor, dataType) == 32);
static_assert(offsetof(ZantTensor, rank) == 80);
static_assert(offsetof(ZantTensor, dimensions) == 88);
static_assert(offsetof(ZantTensor, memoryType) == 96);
static_assert(offsetof(ZantTensor, memoryHandle) == 104);

constexpr uint32_t ZANT_TENSOR_MEMORY_HANDLE = 1;

// --- Memory register.

// The uses of a registered region.
enum ZantSharedBufferType : uint32_t {
    ZANT_SHARED_BUFFER_TENSOR = 1,
    ZANT_SHARED_BUFFER_WEIGHTS = 2,
    ZANT_SHARED_BUFFER_SPILL_FILL = 3,
    ZANT_SHARED_BUFFER_SPAD_BACKUP = 4,
};

// The region: where it lies in which block.
struct SharedBufferInfo {
    uint32_t bufferType;  // ZantSharedBufferType
    uint32_t padding0;
    uint64_t size;           // bytes of the whole block
    int32_t fileDescriptor;  // the block's, of this process
    uint32_t padding1;
    uint64_t offset;  // bytes from the block's start to the region's
};

static_assert(sizeof(SharedBufferInfo) == 32);
static_assert(offsetof(SharedBufferInfo, bufferType) == 0);
static_assert(offsetof(SharedBufferInfo, size) == 8);
static_assert(offsetof(SharedBufferInfo, fileDescriptor) == 16);
static_assert(offsetof(SharedBufferInfo, offset) == 24);

constexpr uint32_t ZANT_MEMORY_KIND_SHARED_BUFFER = 2;
constexpr uint32_t ZANT_DATA_TYPE_BYTE = 0x0108;

// The elements in it. The backend borrows the record during the call.
struct MemRegisterDescriptor {
    uint32_t rank;
    uint32_t padding0;
    const uint32_t* dimensions;  // rank numbers
    void* shapeConfig;           // null
    uint32_t dataType;
    uint32_t memoryKind;  // ZANT_MEMORY_KIND_SHARED_BUFFER
    const SharedBufferInfo* extendedInfo;
};

static_assert(sizeof(MemRegisterDescriptor) == 40);
static_assert(offsetof(MemRegisterDescriptor, rank) == 0);
static_assert(offsetof(MemRegisterDescriptor, dimensions) == 8);
static_assert(offsetof(MemRegisterDescriptor, shapeConfig) == 16);
static_assert(offsetof(MemRegisterDescriptor, dataType) == 24);
static_assert(offsetof(MemRegisterDescriptor, memoryKind) == 28);
static_assert(offsetof(MemRegisterDescriptor, extendedInfo) == 32);

// --- Context properties. Each is asked for by a wrapper of option 0 around one of these records.

enum ZantContextProperty : uint32_t {
    ZANT_CONTEXT_PROPERTY_SPILL_FILL_SIZE = 2,
    ZANT_CONTEXT_PROPERTY_WEIGHTS_SIZE = 3,
    ZANT_CONTEXT_PROPERTY_DETACHABLE_COUNT = 4,
    ZANT_CONTEXT_PROPERTY_DETACHABLE_FDS = 5,
    ZANT_CONTEXT_PROPERTY_SPAD_BACKUP_SIZE = 6,
};

// Sizes: the answer is a number of bytes. The count of detachable buffers: a signed number.
struct ContextNumberProperty {
    uint32_t option;  // ZantContextProperty
    uint32_t padding0;
    int64_t answer;
};

static_assert(sizeof(ContextNumberProperty) == 16);
static_assert(offsetof(ContextNumberProperty, option) == 0);
static_assert(offsetof(ContextNumberProperty, answer) == 8);

// The descriptors of the detachable buffers: the backend fills in as many as it told before.
struct ContextFdsProperty {
    uint32_t option;  // ZANT_CONTEXT_PROPERTY_DETACHABLE_FDS
    uint32_t padding0;
    int32_t* fileDescriptors;
};

static_assert(sizeof(ContextFdsProperty) == 16);
static_assert(offsetof(ContextFdsProperty, option) == 0);
static_assert(offsetof(ContextFdsProperty, fileDescriptors) == 8);

// --- Context config of one detachable buffer.

constexpr uint32_t KOR_CONTEXT_OPTION_BUFFER_STATE = 15;

enum KORBufferState : uint32_t { KOR_BUFFER_ATTACHED = 0, KOR_BUFFER_DETACHED = 1 };

struct ContextBufferStateRecord {
    uint32_t option;  // KOR_CONTEXT_OPTION_BUFFER_STATE
    int32_t fileDescriptor;
    uint32_t wantedState;  // KORBufferState
};

static_assert(sizeof(ContextBufferStateRecord) == 12);
static_assert(offsetof(ContextBufferStateRecord, option) == 0);
static_assert(offsetof(ContextBufferStateRecord, fileDescriptor) == 4);
static_assert(offsetof(ContextBufferStateRecord, wantedState) == 8);

// --- The RPC client library, "libdarlink.dll", by its exported names.

// An address of size bytes, or null.
using DarmemAllocFn = void* (*)(int heapId, uint32_t flags, uint32_t size);  // "darmem_alloc"
using DarmemFreeFn = void (*)(void* address);                                // "darmem_free"
// A descriptor that lives as long as the block, or -1.
using DarmemToFdFn = int (*)(void* address);  // "darmem_to_fd"

constexpr int DARMEM_HEAP_ID_SYSTEM = 25;
constexpr uint32_t DARMEM_FLAG_DEFAULT = 1;
