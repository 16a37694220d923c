/*
 * Faults.cpp: fault injection for the toolbox wrappers. A small table of named
 * operations, each with its call counter and optional fault. Calls are counted only for
 * operations that have an entry (a fault was set, or PlatformFaultClear named them), so
 * that a process without faults pays one atomic load per toolbox call.
 */
#include "platform/Faults.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

namespace {

enum { kMaxFaultOps = 64, kMaxOpName = 48 };

struct FaultEntry {
    char name[kMaxOpName];
    int32_t nth;          /* 0: no fault armed, only counting */
    OSErr err;
    bool persistent;
    int32_t calls;
    int32_t hits;
};

std::mutex gFaultLock;
FaultEntry gFaultTable[kMaxFaultOps];
int gFaultEntryCount = 0;
std::atomic<int> gFaultActive{0};   /* mirrors gFaultEntryCount for the fast path */

FaultEntry *FindFaultEntry(const char *op)
{
    for (int i = 0; i < gFaultEntryCount; i++)
        if (strcmp(gFaultTable[i].name, op) == 0) return &gFaultTable[i];
    return nullptr;
}

/* Finds or adds the entry of op; NULL when the name is too long or the table is full. */
FaultEntry *MakeFaultEntry(const char *op)
{
    FaultEntry *e = FindFaultEntry(op);
    if (e) return e;
    if (strlen(op) >= kMaxOpName || gFaultEntryCount == kMaxFaultOps) return nullptr;
    e = &gFaultTable[gFaultEntryCount++];
    memset(e, 0, sizeof *e);
    strcpy(e->name, op);
    gFaultActive.store(gFaultEntryCount, std::memory_order_release);
    return e;
}

/* Parses a decimal integer that fills [p, end) exactly. */
bool ParseFaultNumber(const char *p, const char *end, long *out)
{
    if (p == end) return false;
    char buf[24];
    if (end - p >= (long)sizeof buf) return false;
    memcpy(buf, p, end - p);
    buf[end - p] = 0;
    char *stop;
    errno = 0;
    *out = strtol(buf, &stop, 10);
    return errno == 0 && *stop == 0;
}

/* One item NAME:N:ERROR[:always] in [p, end); false when malformed. */
bool ParseFaultItem(const char *p, const char *end)
{
    const char *field[5];
    const char *fieldEnd[5];
    int n = 0;
    const char *s = p;
    while (n < 5) {
        const char *c = static_cast<const char *>(memchr(s, ':', end - s));
        field[n] = s;
        fieldEnd[n] = c ? c : end;
        n++;
        if (!c) break;
        s = c + 1;
    }
    if (n < 3 || n > 4) return false;
    long nth, err;
    size_t nameLen = fieldEnd[0] - field[0];
    if (nameLen == 0 || nameLen >= kMaxOpName) return false;
    if (!ParseFaultNumber(field[1], fieldEnd[1], &nth) || nth < 1 || nth > INT32_MAX) return false;
    if (!ParseFaultNumber(field[2], fieldEnd[2], &err) || err < INT16_MIN || err > INT16_MAX) return false;
    bool persistent = false;
    if (n == 4) {
        if (fieldEnd[3] - field[3] != 6 || strncmp(field[3], "always", 6) != 0) return false;
        persistent = true;
    }
    char name[kMaxOpName];
    memcpy(name, field[0], nameLen);
    name[nameLen] = 0;
    PlatformFaultSet(name, (int32_t)nth, (OSErr)err, persistent);
    return true;
}

} // namespace

extern "C" {

void PlatformFaultSet(const char *op, int32_t nth, OSErr err, Boolean persistent)
{
    if (!op) return;
    std::lock_guard<std::mutex> hold(gFaultLock);
    FaultEntry *e = MakeFaultEntry(op);
    if (!e) return;
    e->nth = nth > 0 ? nth : 1;
    e->err = err;
    e->persistent = persistent != 0;
    e->calls = 0;
    e->hits = 0;
}

void PlatformFaultClear(const char *op)
{
    std::lock_guard<std::mutex> hold(gFaultLock);
    if (!op) {
        gFaultEntryCount = 0;
        gFaultActive.store(0, std::memory_order_release);
        return;
    }
    /* The entry stays, unarmed, so that the calls of op are counted from now on. */
    FaultEntry *e = MakeFaultEntry(op);
    if (!e) return;
    e->nth = 0;
    e->calls = 0;
    e->hits = 0;
}

int32_t PlatformFaultCalls(const char *op)
{
    if (!op) return 0;
    std::lock_guard<std::mutex> hold(gFaultLock);
    FaultEntry *e = FindFaultEntry(op);
    return e ? e->calls : 0;
}

int32_t PlatformFaultHits(const char *op)
{
    if (!op) return 0;
    std::lock_guard<std::mutex> hold(gFaultLock);
    FaultEntry *e = FindFaultEntry(op);
    return e ? e->hits : 0;
}

OSErr PlatformFaultCheck(const char *op)
{
    if (gFaultActive.load(std::memory_order_acquire) == 0 || !op) return noErr;
    std::lock_guard<std::mutex> hold(gFaultLock);
    FaultEntry *e = FindFaultEntry(op);
    if (!e) return noErr;
    e->calls++;
    if (e->nth == 0) return noErr;
    bool fail = e->persistent ? e->calls >= e->nth : e->calls == e->nth;
    if (!fail) return noErr;
    e->hits++;
    if (!e->persistent) e->nth = 0;
    return e->err;
}

int PlatformFaultParse(const char *theSpec, const char **bad)
{
    if (bad) *bad = nullptr;
    if (!theSpec) return 0;
    int result = 0;
    const char *p = theSpec;
    while (*p) {
        const char *end = strchr(p, ',');
        if (!end) end = p + strlen(p);
        if (end > p && !ParseFaultItem(p, end) && result == 0) {
            result = -1;
            if (bad) *bad = p;
        }
        p = *end ? end + 1 : end;
    }
    return result;
}

} // extern "C"

/* TPX1_FAULTS is read once, when the library loads. */
__attribute__((constructor)) static void LoadFaultsFromEnvironment(void)
{
    const char *theSpec = getenv("TPX1_FAULTS");
    const char *bad = nullptr;
    if (theSpec && PlatformFaultParse(theSpec, &bad) != 0) {
        size_t len = strcspn(bad, ",");
        fprintf(stderr, "tpx1: TPX1_FAULTS: bad item \"%.*s\" (want NAME:N:ERROR[:always])\n", (int)len, bad);
    }
}
