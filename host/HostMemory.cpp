/*
 * HostMemory.cpp: the host's relocatable memory behind the call block's callbacks.
 * A handle is the address of a master pointer. Resizing an unlocked handle always moves
 * its block (new block, copy, old block poisoned and freed) so that a plug-in keeping a
 * stale pointer is caught; growing a locked handle is refused; new bytes carry a non-zero
 * pattern; allocations can be made to fail on purpose; live blocks are reported as leaks.
 * Blocks come from malloc/free so that the address sanitizer sees any misuse.
 */
#include "host/HostCore.h"
#include "host/HostPointerTable.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

const unsigned char kFreshPattern = 0xA5;   /* new blocks and grown tails */
const unsigned char kDeadPattern = 0xDD;    /* blocks just before they are freed */

struct HostBlock {
    char *data;             /* the master pointer: must stay the first member */
    int32_t size;
    int32_t lockCount;
    bool hostOwned;         /* made by the host (arguments, results): not the plug-in's leak */
    bool inCall;            /* the argument or result of the call under way */
    long serial;            /* allocation order, for a stable leak report */
};

struct HostPointer {
    int32_t size;
    long serial;
};

HostPointerTable<HostBlock *> gHostHandles;   /* keyed by the handle */
HostPointerTable<HostPointer> gHostPointers;
long gHostSerial = 0;
long gHostFailNth = 0;
HostFailMode gHostFailMode = kHostFailOff;
long gHostAllocationCount = 0;
long gHostFailuresDelivered = 0;

[[noreturn]] void HostMemoryFatal(const char *what, const void *address)
{
    fprintf(stderr, "fmhost: host memory misuse: %s (%p)\n", what, address);
    fflush(stderr);
    abort();
}

/* Counts one allocation the plug-in asked for and says whether it is to fail. */
bool CountAllocationAndCheckFailure(void)
{
    gHostAllocationCount++;
    bool fail = false;
    if (gHostFailMode == kHostFailOnce)
        fail = gHostAllocationCount == gHostFailNth;
    else if (gHostFailMode == kHostFailFromThenOn)
        fail = gHostAllocationCount >= gHostFailNth;
    if (fail)
        gHostFailuresDelivered++;
    return fail;
}

char *AllocateBlock(int32_t size)
{
    char *p = static_cast<char *>(malloc(size > 0 ? static_cast<size_t>(size) : 1));
    if (p && size > 0)
        memset(p, kFreshPattern, static_cast<size_t>(size));
    return p;
}

void FreeBlock(char *data, int32_t size)
{
    if (!data)
        return;
    if (size > 0)
        memset(data, kDeadPattern, static_cast<size_t>(size));
    free(data);
}

HostBlock *FindBlock(FMX_Handle h, const char *operation)
{
    HostBlock **block = gHostHandles.Find(h);
    if (!block)
        HostMemoryFatal(operation, h);
    return *block;
}

FMX_Handle MakeHandle(int32_t size, bool hostOwned)
{
    if (size < 0)
        return nullptr;
    char *data = AllocateBlock(size);
    if (!data)
        return nullptr;
    HostBlock *block = static_cast<HostBlock *>(malloc(sizeof(HostBlock)));
    if (!block) {
        free(data);
        return nullptr;
    }
    block->data = data;
    block->size = size;
    block->lockCount = 0;
    block->hostOwned = hostOwned;
    block->inCall = false;
    block->serial = ++gHostSerial;
    FMX_Handle h = &block->data;
    gHostHandles.Put(h, block);
    return h;
}

void ReleaseHandle(FMX_Handle h, HostBlock *block)
{
    gHostHandles.Remove(h);
    FreeBlock(block->data, block->size);
    memset(block, kDeadPattern, sizeof(HostBlock));
    free(block);
}

/* ---- The callbacks ---- */

FMX_Handle CallbackNewHandle(int32_t size)
{
    if (size < 0 || CountAllocationAndCheckFailure())
        return nullptr;
    return MakeHandle(size, false);
}

void CallbackSetHandleSize(FMX_Handle h, int32_t size)
{
    HostBlock *block = FindBlock(h, "setHandleSize of an unknown handle");
    if (size < 0)
        return;
    if (block->lockCount > 0) {
        /* A locked block cannot move: it may shrink in place, never grow. */
        if (size <= block->size) {
            if (block->size > size)
                memset(block->data + size, kDeadPattern, static_cast<size_t>(block->size - size));
            block->size = size;
        }
        return;
    }
    if (size > block->size && CountAllocationAndCheckFailure())
        return;
    char *moved = AllocateBlock(size);
    if (!moved)
        return;
    int32_t keep = std::min(size, block->size);
    if (keep > 0)
        memcpy(moved, block->data, static_cast<size_t>(keep));
    FreeBlock(block->data, block->size);
    block->data = moved;
    block->size = size;
}

int32_t CallbackGetHandleSize(FMX_Handle h)
{
    return FindBlock(h, "getHandleSize of an unknown handle")->size;
}

void CallbackDisposeHandle(FMX_Handle h)
{
    if (!h)
        return;
    HostBlock *block = FindBlock(h, "disposeHandle of an unknown handle");
    if (block->inCall)
        HostMemoryFatal("the plug-in disposed the argument or result handle of the call under way", h);
    ReleaseHandle(h, block);
}

void CallbackLockHandle(FMX_Handle h)
{
    FindBlock(h, "lockHandle of an unknown handle")->lockCount++;
}

void CallbackUnlockHandle(FMX_Handle h)
{
    HostBlock *block = FindBlock(h, "unlockHandle of an unknown handle");
    if (block->lockCount > 0)
        block->lockCount--;
}

void *CallbackNewPointer(int32_t size)
{
    if (size < 0 || CountAllocationAndCheckFailure())
        return nullptr;
    char *p = AllocateBlock(size);
    if (p)
        gHostPointers.Put(p, HostPointer{size, ++gHostSerial});
    return p;
}

void CallbackDisposePointer(void *p)
{
    if (!p)
        return;
    HostPointer *known = gHostPointers.Find(p);
    if (!known)
        HostMemoryFatal("disposePointer of an unknown pointer", p);
    int32_t size = known->size;
    gHostPointers.Remove(p);
    FreeBlock(static_cast<char *>(p), size);
}

/* The first bytes of a block, with control characters made visible. */
std::string PreviewBytes(const char *data, int32_t size)
{
    std::string out;
    int32_t n = std::min<int32_t>(size, 24);
    for (int32_t i = 0; i < n; i++) {
        unsigned char c = static_cast<unsigned char>(data[i]);
        char buf[8];
        if (c >= 32 && c < 127 && c != '\\')
            out += static_cast<char>(c);
        else {
            snprintf(buf, sizeof buf, "\\x%02X", c);
            out += buf;
        }
    }
    if (size > n)
        out += "...";
    return out;
}

}  // namespace

void HostMemoryInstall(FMX_ExternCallBlock *block)
{
    block->newHandle = CallbackNewHandle;
    block->setHandleSize = CallbackSetHandleSize;
    block->getHandleSize = CallbackGetHandleSize;
    block->disposeHandle = CallbackDisposeHandle;
    block->lockHandle = CallbackLockHandle;
    block->unlockHandle = CallbackUnlockHandle;
    block->newPointer = CallbackNewPointer;
    block->disposePointer = CallbackDisposePointer;
}

void HostMemorySetFailure(long nth, HostFailMode mode)
{
    gHostFailNth = nth;
    gHostFailMode = nth > 0 ? mode : kHostFailOff;
    gHostAllocationCount = 0;
    gHostFailuresDelivered = 0;
}

long HostMemoryAllocationCount(void)
{
    return gHostAllocationCount;
}

long HostMemoryFailuresDelivered(void)
{
    return gHostFailuresDelivered;
}

long HostMemoryLiveHandles(void)
{
    long n = 0;
    gHostHandles.ForEach([&](const void *, HostBlock *block) {
        if (!block->hostOwned)
            n++;
    });
    return n;
}

long HostMemoryLivePointers(void)
{
    return static_cast<long>(gHostPointers.Count());
}

long HostMemoryLeakReport(FILE *out)
{
    struct Leak {
        long serial;
        std::string line;
    };
    std::vector<Leak> leaks;
    gHostHandles.ForEach([&](const void *, const HostBlock *block) {
        if (block->hostOwned)
            return;
        char head[96];
        snprintf(head, sizeof head, "leak: handle #%ld, %d bytes%s: ", block->serial,
                 static_cast<int>(block->size), block->lockCount > 0 ? ", locked" : "");
        leaks.push_back({block->serial, head + PreviewBytes(block->data, block->size)});
    });
    gHostPointers.ForEach([&](const void *p, const HostPointer &pointer) {
        char head[96];
        snprintf(head, sizeof head, "leak: pointer #%ld, %d bytes: ", pointer.serial, static_cast<int>(pointer.size));
        leaks.push_back({pointer.serial, head + PreviewBytes(static_cast<const char *>(p), pointer.size)});
    });
    std::sort(leaks.begin(), leaks.end(), [](const Leak &a, const Leak &b) { return a.serial < b.serial; });
    if (out)
        for (const Leak &leak : leaks)
            fprintf(out, "%s\n", leak.line.c_str());
    return static_cast<long>(leaks.size());
}

FMX_Handle HostNewTextHandle(const std::string &bytes)
{
    FMX_Handle h = MakeHandle(static_cast<int32_t>(bytes.size()), true);
    if (!h)
        HostMemoryFatal("out of memory for a host text handle", nullptr);
    if (!bytes.empty())
        memcpy(*h, bytes.data(), bytes.size());
    return h;
}

void HostMarkHandleInCall(FMX_Handle h, bool inCall)
{
    HostBlock **block = gHostHandles.Find(h);
    if (block)
        (*block)->inCall = inCall;
}

std::string HostHandleBytes(FMX_Handle h)
{
    if (!h)
        return std::string();
    HostBlock *block = FindBlock(h, "reading an unknown handle");
    return std::string(block->data, static_cast<size_t>(block->size));
}

void HostDisposeHandle(FMX_Handle h)
{
    if (!h)
        return;
    ReleaseHandle(h, FindBlock(h, "disposing an unknown handle"));
}
