/*
 * FuzzTargets.h: the body of each fuzz target and the table of them by name. The bodies
 * run without libFuzzer, so that the regression tests replay saved inputs through
 * exactly the code the fuzzer ran; FuzzMain.cpp is the one LLVMFuzzerTestOneInput, which
 * hands each input to its executable's body. A body aborts, after printing why, when a
 * check fails.
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

struct FuzzTarget {
    const char *name;   /* fuzz_<name>, fuzz/corpus/<name>, fuzz/regressions/<name> */
    int (*body)(const uint8_t *data, size_t size);
};

inline constexpr FuzzTarget kFuzzTargets[] = {{"entry", FuzzEntryOneInput},
                                              {"vesk_event", FuzzVeskEventOneInput},
                                              {"lst2", FuzzLst2OneInput},
                                              {"paths", FuzzPathsOneInput},
                                              {"repform", FuzzRepformOneInput}};

#endif
