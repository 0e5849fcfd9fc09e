// What a capability library exports. The answers come from the JSON file that ZELMAR_SIM_CAPABILITIES names, which is
// read at each call; without it every call fails.
//
//   {"library": NAME,           for the host: which of the two libraries answers
//    "version": [MAJOR, MINOR], or a number: the status that telling it ends with
//    "dsp": {CAPABILITY: ANSWER}, "gpu": {...}, "cpu": {...}}
//
// An answer is an integer, a float (a number with a point), a text, or a list of records: a number, two numbers, a
// text, or [KEY, TEXT, NUMBER]. For hostile ones there is
//
//   {"status": NUMBER, "size": NUMBER, "bytes": [BYTES], "index": NUMBER, "throw": true}
//
// each part by itself or together: what the call returns, the size that it claims, what it writes, and the DSP that a
// list of records in "records" belongs to.
#pragma once

#include <cstdint>

constexpr uint32_t ZANT_SIM_NOT_SUPPORTED = 1;
constexpr uint32_t ZANT_SIM_TRY_SIZE = 5;

extern "C" {
#pragma GCC visibility push(default)

uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor);
// Status 0 with the answer and its size written, or ZANT_SIM_TRY_SIZE with the size that the buffer must have.
uint32_t Soc_GetCapability(uint32_t category, uint32_t capability, void* buffer, uint64_t* size);
// The same for the capabilities whose answers are lists of records.
uint32_t Soc_GetCapabilitySerialized(uint32_t category, uint32_t capability, void* buffer, uint64_t* size);

#pragma GCC visibility pop
}
