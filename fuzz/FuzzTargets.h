/*
 * FuzzTargets.h: the body of each fuzz target, callable without libFuzzer, so that the
 * regression tests replay saved inputs through exactly the code the fuzzer ran. Each
 * target's LLVMFuzzerTestOneInput forwards to its body (left out when TPX1_FUZZ_REPLAY
 * is defined). A body aborts, after printing why, when a check fails.
 */
#ifndef TPX1_FUZZ_TARGETS_H
#define TPX1_FUZZ_TARGETS_H

#include <cstddef>
#include <cstdint>

int FuzzEntryOneInput(const uint8_t *data, size_t size);
int FuzzVeskEventOneInput(const uint8_t *data, size_t size);
int FuzzLst2OneInput(const uint8_t *data, size_t size);
int FuzzPathsOneInput(const uint8_t *data, size_t size);
int FuzzRepformOneInput(const uint8_t *data, size_t size);

#endif
