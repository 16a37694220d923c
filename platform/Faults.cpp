/*
 * Faults.cpp: fault injection for the toolbox wrappers. One slot per fault point, with
 * its call counter and optional fault. While no fault is armed a check costs one atomic
 * load and one atomic increment; the lock is taken only while some fault is armed.
 * Also the parsing of TPX1_FAULTS, read once when the library loads.
 */
#include "platform/Faults.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>

namespace {

struct FaultSlot {
    std::atomic<int32_t> calls;
    int32_t nth;          /* 0: no fault armed, only counting */
    OSErr err;
    bool persistent;
    int32_t hits;
};

const char *const kFaultPointNames[kFaultPointCount] = {
#define TPX1_FAULT_POINT(Name, Manager) #Name,
#include "platform/FaultPoints.def"
#undef TPX1_FAULT_POINT
};

const PlatformFaultManager kFaultPointManagers[kFaultPointCount] = {
#define TPX1_FAULT_POINT(Name, Manager) kFaultManager##Manager,
#include "platform/FaultPoints.def"
#undef TPX1_FAULT_POINT
};

std::mutex gFaultLock;
FaultSlot gFaultSlots[kFaultPointCount];
std::atomic<int> gFaultsArmed{0};   /* slots whose nth is not 0 */

bool IsPoint(int point)
{
    return point >= 0 && point < kFaultPointCount;
}

/* Under the lock: puts a slot's fault (nth 0: none) and restarts its counts. */
void ResetSlot(FaultSlot *slot, int32_t nth, OSErr err, bool persistent)
{
    if ((slot->nth != 0) != (nth != 0)) gFaultsArmed.fetch_add(nth != 0 ? 1 : -1, std::memory_order_acq_rel);
    slot->nth = nth;
    slot->err = err;
    slot->persistent = persistent;
    slot->calls.store(0, std::memory_order_relaxed);
    slot->hits = 0;
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

struct FaultItem {
    int point;
    long nth;
    long err;
    bool persistent;
};

/* One item NAME:N:ERROR[:always] in [p, end); NULL when it is good, else why not. */
const char *ParseFaultItem(const char *p, const char *end, FaultItem *item)
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
    if (n < 3 || n > 4) return "want NAME:N:ERROR[:always]";
    std::string name(field[0], fieldEnd[0]);
    item->point = PlatformFaultPointNamed(name.c_str());
    if (item->point < 0) return "no such fault point";
    if (!ParseFaultNumber(field[1], fieldEnd[1], &item->nth) || item->nth < 1 || item->nth > INT32_MAX)
        return "N must be a call number from 1";
    if (!ParseFaultNumber(field[2], fieldEnd[2], &item->err) || item->err < INT16_MIN || item->err > INT16_MAX)
        return "ERROR must be a Mac OS error number";
    item->persistent = n == 4;
    if (n == 4 && (fieldEnd[3] - field[3] != 6 || strncmp(field[3], "always", 6) != 0))
        return "the fourth field can only be \"always\"";
    return nullptr;
}

} // namespace

extern "C" {

const char *PlatformFaultPointName(int point)
{
    return IsPoint(point) ? kFaultPointNames[point] : nullptr;
}

PlatformFaultManager PlatformFaultPointManager(PlatformFaultPoint point)
{
    return IsPoint(point) ? kFaultPointManagers[point] : kFaultManagerFile;
}

int PlatformFaultPointNamed(const char *name)
{
    for (int i = 0; name && i < kFaultPointCount; i++)
        if (strcmp(kFaultPointNames[i], name) == 0) return i;
    return -1;
}

void PlatformFaultSet(PlatformFaultPoint point, int32_t nth, OSErr err, Boolean persistent)
{
    if (!IsPoint(point)) return;
    std::lock_guard<std::mutex> hold(gFaultLock);
    ResetSlot(&gFaultSlots[point], nth > 0 ? nth : 1, err, persistent != 0);
}

void PlatformFaultClear(PlatformFaultPoint point)
{
    if (!IsPoint(point)) return;
    std::lock_guard<std::mutex> hold(gFaultLock);
    ResetSlot(&gFaultSlots[point], 0, noErr, false);
}

void PlatformFaultClearAll(void)
{
    std::lock_guard<std::mutex> hold(gFaultLock);
    for (FaultSlot &slot : gFaultSlots) ResetSlot(&slot, 0, noErr, false);
}

int32_t PlatformFaultCalls(PlatformFaultPoint point)
{
    return IsPoint(point) ? gFaultSlots[point].calls.load(std::memory_order_relaxed) : 0;
}

int32_t PlatformFaultHits(PlatformFaultPoint point)
{
    if (!IsPoint(point)) return 0;
    std::lock_guard<std::mutex> hold(gFaultLock);
    return gFaultSlots[point].hits;
}

OSErr PlatformFaultCheck(PlatformFaultPoint point)
{
    if (!IsPoint(point)) return noErr;
    FaultSlot *slot = &gFaultSlots[point];
    if (gFaultsArmed.load(std::memory_order_acquire) == 0) {
        slot->calls.fetch_add(1, std::memory_order_relaxed);
        return noErr;
    }
    std::lock_guard<std::mutex> hold(gFaultLock);
    int32_t calls = slot->calls.fetch_add(1, std::memory_order_relaxed) + 1;
    if (slot->nth == 0) return noErr;
    bool fail = slot->persistent ? calls >= slot->nth : calls == slot->nth;
    if (!fail) return noErr;
    slot->hits++;
    OSErr err = slot->err;
    if (!slot->persistent) {   /* once only: disarm, keep counting */
        slot->nth = 0;
        gFaultsArmed.fetch_sub(1, std::memory_order_acq_rel);
    }
    return err;
}

int PlatformFaultParse(const char *list, char *report, int32_t reportSize)
{
    if (!list) return 0;
    std::string text;
    int notApplied = 0;
    const char *chosen[kFaultPointCount] = {};   /* the item that set each point */
    for (const char *p = list; *p;) {
        const char *end = strchr(p, ',');
        if (!end) end = p + strlen(p);
        std::string quoted = "\"" + std::string(p, end) + "\"";
        FaultItem item;
        if (end > p) {
            if (const char *why = ParseFaultItem(p, end, &item)) {
                notApplied++;
                text += "  bad item " + quoted + ": " + why + "\n";
            } else {
                if (const char *earlier = chosen[item.point]) {
                    notApplied++;
                    text += "  item \"" + std::string(earlier, strcspn(earlier, ",")) + "\" dropped: " +
                            kFaultPointNames[item.point] + " holds one fault, and the later " + quoted +
                            " replaces it\n";
                }
                chosen[item.point] = p;
                PlatformFaultSet((PlatformFaultPoint)item.point, (int32_t)item.nth, (OSErr)item.err,
                                 item.persistent);
            }
        }
        p = *end ? end + 1 : end;
    }
    if (report && reportSize > 0) {
        if ((int32_t)text.size() >= reportSize) {
            text.resize(reportSize - 1);
            if (reportSize > 4) text.replace(reportSize - 4, 3, "...");
        }
        memcpy(report, text.c_str(), text.size() + 1);
    }
    return notApplied;
}

} // extern "C"

/* TPX1_FAULTS is read once, when the library loads. */
__attribute__((constructor)) static void LoadFaultsFromEnvironment(void)
{
    const char *list = getenv("TPX1_FAULTS");
    char report[2048];
    int notApplied = list ? PlatformFaultParse(list, report, sizeof report) : 0;
    if (notApplied != 0)
        fprintf(stderr, "tpx1: TPX1_FAULTS: %d item%s not applied:\n%s%s", notApplied, notApplied == 1 ? "" : "s",
                report, report[0] && report[strlen(report) - 1] == '\n' ? "" : "\n");
}
