/*
 * test_host_memory.cpp: the host memory rules a plug-in is held to: handles move when
 * resized, locked handles refuse to grow, fresh bytes carry a pattern, allocation
 * failures can be injected, and live blocks show up in the leak report.
 */
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <unordered_map>

#include "host/HostCore.h"
#include "host/HostPointerTable.h"

namespace {

FMX_ExternCallBlock MakeBlock()
{
    FMX_ExternCallBlock b{};
    HostMemoryInstall(&b);
    HostMemorySetFailure(0, kHostFailOff);
    return b;
}

TEST(HostMemory, ResizeMovesUnlockedHandleAndKeepsBytes)
{
    FMX_ExternCallBlock b = MakeBlock();
    FMX_Handle h = b.newHandle(4);
    ASSERT_NE(h, nullptr);
    for (int i = 0; i < 4; i++)
        EXPECT_EQ(static_cast<unsigned char>((*h)[i]), 0xA5) << "new bytes are patterned";
    memcpy(*h, "abcd", 4);

    char *before = *h;
    b.setHandleSize(h, 8);
    EXPECT_EQ(b.getHandleSize(h), 8);
    EXPECT_NE(*h, before) << "an unlocked handle moves when it grows";
    EXPECT_EQ(memcmp(*h, "abcd", 4), 0);
    for (int i = 4; i < 8; i++)
        EXPECT_EQ(static_cast<unsigned char>((*h)[i]), 0xA5) << "the grown tail is patterned";

    before = *h;
    b.setHandleSize(h, 2);
    EXPECT_EQ(b.getHandleSize(h), 2);
    EXPECT_NE(*h, before) << "an unlocked handle moves when it shrinks too";
    EXPECT_EQ(memcmp(*h, "ab", 2), 0);

    b.setHandleSize(h, 0);
    EXPECT_EQ(b.getHandleSize(h), 0);
    b.disposeHandle(h);
    b.disposeHandle(nullptr);
}

TEST(HostMemory, LockedHandleStaysPutAndRefusesToGrow)
{
    FMX_ExternCallBlock b = MakeBlock();
    FMX_Handle h = b.newHandle(6);
    memcpy(*h, "hello!", 6);
    b.lockHandle(h);
    b.lockHandle(h);   /* locks nest */
    char *where = *h;

    b.setHandleSize(h, 10);
    EXPECT_EQ(b.getHandleSize(h), 6) << "growing a locked handle fails";
    EXPECT_EQ(*h, where);
    b.setHandleSize(h, 3);
    EXPECT_EQ(b.getHandleSize(h), 3) << "a locked handle may shrink in place";
    EXPECT_EQ(*h, where);
    EXPECT_EQ(memcmp(*h, "hel", 3), 0);

    b.unlockHandle(h);
    b.setHandleSize(h, 10);
    EXPECT_EQ(b.getHandleSize(h), 3) << "still locked once after two locks and one unlock";
    b.unlockHandle(h);
    b.setHandleSize(h, 10);
    EXPECT_EQ(b.getHandleSize(h), 10);
    EXPECT_EQ(memcmp(*h, "hel", 3), 0);
    b.unlockHandle(h);  /* unlocking an unlocked handle is harmless */
    b.disposeHandle(h);
}

TEST(HostMemory, InjectedFailuresOnceAndFromThenOn)
{
    FMX_ExternCallBlock b = MakeBlock();
    HostMemorySetFailure(2, kHostFailOnce);
    FMX_Handle a = b.newHandle(1);               /* 1 */
    ASSERT_NE(a, nullptr);
    b.setHandleSize(a, 5);                       /* 2: growth fails, size kept */
    EXPECT_EQ(b.getHandleSize(a), 1);
    void *p = b.newPointer(16);                  /* 3 */
    EXPECT_NE(p, nullptr);
    b.setHandleSize(a, 0);                       /* shrinking is no allocation */
    EXPECT_EQ(HostMemoryAllocationCount(), 3);
    EXPECT_EQ(HostMemoryFailuresDelivered(), 1);

    HostMemorySetFailure(2, kHostFailFromThenOn);
    FMX_Handle c = b.newHandle(3);               /* 1 */
    EXPECT_NE(c, nullptr);
    EXPECT_EQ(b.newHandle(3), nullptr);          /* 2 */
    EXPECT_EQ(b.newPointer(3), nullptr);         /* 3 */
    b.setHandleSize(c, 30);                      /* 4 */
    EXPECT_EQ(b.getHandleSize(c), 3);
    EXPECT_EQ(HostMemoryFailuresDelivered(), 3);

    HostMemorySetFailure(0, kHostFailOff);
    FMX_Handle hostMade = HostNewTextHandle("host handles never fail");
    EXPECT_EQ(HostMemoryAllocationCount(), 0);
    HostDisposeHandle(hostMade);
    b.setHandleSize(c, 30);
    EXPECT_EQ(b.getHandleSize(c), 30);
    b.disposeHandle(a);
    b.disposeHandle(c);
    b.disposePointer(p);
    EXPECT_EQ(b.newHandle(-1), nullptr);
}

TEST(HostMemory, LeakReportCountsPluginBlocksOnly)
{
    FMX_ExternCallBlock b = MakeBlock();
    long handlesBefore = HostMemoryLiveHandles();
    long pointersBefore = HostMemoryLivePointers();

    FMX_Handle arg = HostNewTextHandle("argument");
    EXPECT_EQ(HostHandleBytes(arg), "argument");
    FMX_Handle kept = b.newHandle(5);
    memcpy(*kept, "ke\tpt", 5);
    void *p = b.newPointer(2);
    EXPECT_EQ(HostMemoryLiveHandles(), handlesBefore + 1) << "host handles are not the plug-in's";
    EXPECT_EQ(HostMemoryLivePointers(), pointersBefore + 1);

    char *text = nullptr;
    size_t length = 0;
    FILE *out = open_memstream(&text, &length);
    long n = HostMemoryLeakReport(out);
    fclose(out);
    EXPECT_EQ(n, handlesBefore + pointersBefore + 2);
    std::string report(text, length);
    free(text);
    EXPECT_NE(report.find("handle #"), std::string::npos);
    EXPECT_NE(report.find("5 bytes"), std::string::npos);
    EXPECT_NE(report.find("ke\\x09pt"), std::string::npos) << report;
    EXPECT_NE(report.find("pointer #"), std::string::npos);
    EXPECT_EQ(report.find("argument"), std::string::npos);

    b.disposeHandle(kept);
    b.disposePointer(p);
    HostDisposeHandle(arg);
    EXPECT_EQ(HostMemoryLiveHandles(), handlesBefore);
    EXPECT_EQ(HostMemoryLivePointers(), pointersBefore);
}

TEST(HostMemoryDeathTest, MisuseIsFatal)
{
    FMX_ExternCallBlock b = MakeBlock();
    FMX_Handle arg = HostNewTextHandle("x");
    HostMarkHandleInCall(arg, true);
    EXPECT_DEATH(b.disposeHandle(arg), "argument or result handle");
    HostMarkHandleInCall(arg, false);
    FMX_Handle h = b.newHandle(1);
    b.disposeHandle(h);
    EXPECT_DEATH(b.getHandleSize(h), "unknown handle");
    int local = 0;
    EXPECT_DEATH(b.disposePointer(&local), "unknown pointer");
    HostDisposeHandle(arg);
}

TEST(HostMemory, HostHandlesMayBeDisposedOutsideACall)
{
    FMX_ExternCallBlock b = MakeBlock();
    long before = HostMemoryLiveHandles();
    FMX_Handle value = HostNewTextHandle("given to the plug-in");
    EXPECT_EQ(HostMemoryLiveHandles(), before);
    b.disposeHandle(value);
    EXPECT_EQ(HostMemoryLiveHandles(), before);
}

/* The table behind the live blocks, against a standard map: thousands of blocks made and
 * disposed of in random order (the table grows several times and its runs of probes wrap
 * around the end), every look-up answering as the map does. */
TEST(HostMemory, PointerTableAgreesWithAMapThroughGrowthAndRemoval)
{
    HostPointerTable<long> table;
    std::unordered_map<const void *, long> expected;
    std::vector<char> arena(1 << 16);
    std::mt19937 random(7);
    for (long step = 0; step < 200000; step++) {
        const void *key = &arena[(random() % 4096) * 16];
        switch (random() % 3) {
        case 0:
            table.Put(key, step);
            expected[key] = step;
            break;
        case 1:
            ASSERT_EQ(table.Remove(key), expected.erase(key) == 1) << "step " << step;
            break;
        default: {
            long *found = table.Find(key);
            auto it = expected.find(key);
            ASSERT_EQ(found != nullptr, it != expected.end()) << "step " << step;
            if (found) {
                ASSERT_EQ(*found, it->second) << "step " << step;
            }
        }
        }
        ASSERT_EQ(table.Count(), expected.size());
    }
    size_t visited = 0;
    table.ForEach([&](const void *key, long value) {
        visited++;
        EXPECT_EQ(expected.at(key), value);
    });
    EXPECT_EQ(visited, expected.size());
    EXPECT_EQ(table.Find(nullptr), nullptr);
    EXPECT_FALSE(table.Remove(&arena[8]));
}

}  // namespace
