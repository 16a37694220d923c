/*
 * bench_soak.cpp: the soak run (not part of CI). COUNT messages (default 1 000 000) make
 * the round trip between this process, hosting the plug-in through the host core, and a
 * vesk partner posing as TOPOLUX: the solution sends "PING" with TPX1SendMessageTo, the
 * partner answers "PONG", the handler archives it and the handling script, run from
 * idle, takes it. At most WINDOW messages are unanswered at a time, so the 20-slot
 * archive never overflows and any missing answer is a lost message. Reports memory
 * (resident size, the plug-in's live host blocks) at the start, every tenth and at the
 * end, and every message lost, duplicated or damaged. Exit status 0 when none was.
 *
 * Usage: bench_soak [COUNT] [WINDOW]     (defaults 1000000 and 8)
 */
#include <cstdio>
#include <cstdlib>

#include "MessagingSession.h"

int main(int argc, char **argv)
{
    long count = argc > 1 ? atol(argv[1]) : 1000000;
    long window = argc > 2 ? atol(argv[2]) : 8;
    if (count < 1 || window < 1 || window > 16) {
        fprintf(stderr, "usage: bench_soak [COUNT] [WINDOW (1..16)]\n");
        return 2;
    }
    MessagingSession session;
    std::string error;
    if (!SessionStart(&session, count + 1, &error)) {
        fprintf(stderr, "bench_soak: %s\n", error.c_str());
        SessionStop(&session);
        return 1;
    }
    printf("soak: %ld messages round trip, %ld in flight at most\n", count, window);
    printf("  %s; the partner: resident %ld KiB\n", SessionMemoryLine("memory at the start").c_str(),
           HarnessResidentKiB(session.partner));
    /* The first tenth (at least one message) warms the caches; memory is compared from there. */
    long step = count >= 10 ? count / 10 : count;
    long done = 0, lost = 0;
    long blocksStart = 0, residentStart = 0;
    uint64_t start = HarnessNowUsec();
    while (done < count) {
        long n = step < count - done ? step : count - done;
        MessagingRun run = SessionRunWindowed(&session, done + 1, n, window, 10000);
        lost += run.sent - run.received;
        done += run.sent;
        if (done == n) {
            blocksStart = HarnessLiveBlocks();
            residentStart = HarnessResidentKiB();
        }
        printf("  %9ld sent, %9ld taken, %5.1f s, %s\n", done, session.received,
               (double)(HarnessNowUsec() - start) / 1e6, SessionMemoryLine("memory").c_str());
        fflush(stdout);
        if (run.sent != run.received) break;
    }
    double seconds = (double)(HarnessNowUsec() - start) / 1e6;
    long blocksEnd = HarnessLiveBlocks(), residentEnd = HarnessResidentKiB();
    long partnerEnd = HarnessResidentKiB(session.partner);
    printf("soak result: %ld sent, %ld taken, %ld lost, %ld duplicated, %ld damaged, %ld send errors in %.1f s "
           "(%.0f messages/s)\n",
           done, session.received, lost, session.duplicates, session.malformed, session.sendErrors, seconds,
           (double)session.received / seconds);
    printf("memory after the first tenth: resident %ld KiB, live host blocks %ld; at the end: resident %ld KiB, "
           "live host blocks %ld; the partner at the end: resident %ld KiB\n",
           residentStart, blocksStart, residentEnd, blocksEnd, partnerEnd);
    SessionStop(&session);
    bool clean = lost == 0 && session.duplicates == 0 && session.malformed == 0 && session.sendErrors == 0 &&
                 blocksEnd == blocksStart;
    return clean ? 0 : 1;
}
