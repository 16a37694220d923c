/*
 * TestHooks.h: ways into the plug-in's state that only tests, fuzz targets and
 * benchmarks have: they link tpx1testhooks (fuzz/Harness.cmake), the shipped plug-in
 * does not.
 */
#ifndef TPX1_FUZZ_TESTHOOKS_H
#define TPX1_FUZZ_TESTHOOKS_H

#include "platform/MacTypes.h"

/* Stores a message of (keyword, value) pairs in the first free archive slot, as a
 * received message would be stored. Returns 0, kArchiveFullErr, or memFullErr. */
OSErr ArchiveMessageForTesting(const char *const *keywordValuePairs, int pairCount);

#endif
