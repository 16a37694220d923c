/*
 * FuzzMain.cpp: the entry libFuzzer calls for every input, shared by all the fuzz
 * executables. Each is built with TPX1_FUZZ_TARGET naming its target, whose body in
 * kFuzzTargets takes the input.
 */
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fuzz/FuzzTargets.h"

static const FuzzTarget *ThisTarget(void)
{
    for (const FuzzTarget &target : kFuzzTargets)
        if (strcmp(target.name, TPX1_FUZZ_TARGET) == 0)
            return &target;
    fprintf(stderr, "no fuzz target named %s\n", TPX1_FUZZ_TARGET);
    abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const FuzzTarget *target = ThisTarget();
    return target->body(data, size);
}
