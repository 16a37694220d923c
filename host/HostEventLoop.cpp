/*
 * HostEventLoop.cpp: fmhost's event loop. Between plug-in calls the host sends Idle at
 * level 0 on a steady cadence and hands queued Apple Events to their handlers. Its own
 * do-script handler ('misc'/'dosc') only queues the named host script; the scripts run
 * after dispatch returns, never inside a plug-in call. Activation by another process is
 * announced on standard output.
 */
#include "host/HostLanguage.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "platform/AppleEvents.h"
#include "platform/Processes.h"

namespace {

const int kDrainPassLimit = 500;   /* idle passes at most at the end of a script file */
const int kDrainQuietPasses = 3;   /* passes without any event that count as quiet */
const int kDispatchRoundLimit = 100;   /* dispatch rounds at most in one pass */

std::deque<std::string> gHostPendingScripts;

OSErr HandleDoScript(const AppleEvent *event, AppleEvent *reply, intptr_t refcon)
{
    DescType type = 0;
    int32_t size = 0;
    OSErr err = AESizeOfParam(event, keyDirectObject, &type, &size);
    if (err != noErr)
        return err;
    std::vector<char> buffer(static_cast<size_t>(size > 0 ? size : 0) + 1, '\0');
    int32_t actual = 0;
    err = AEGetParamPtr(event, keyDirectObject, typeChar, &type, buffer.data(), size, &actual);
    if (err != noErr)
        return err;
    if (actual > size)
        actual = size;
    HostEventsQueueScript(std::string(buffer.data(), static_cast<size_t>(actual > 0 ? actual : 0)));
    return noErr;
}

void HandleActivation(void)
{
    fprintf(stdout, "fmhost: brought to front\n");
    fflush(stdout);
}

long NowMs(void)
{
    return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                 std::chrono::steady_clock::now().time_since_epoch())
                                 .count());
}

/* Waits up to timeoutMs for the event descriptor or fd; returns the poll result bits. */
int WaitFor(int fd, long timeoutMs, bool *eventReady, bool *fdReady)
{
    struct pollfd fds[2];
    int n = 0;
    int eventFd = AEGetEventFD();
    int eventSlot = -1, fdSlot = -1;
    if (eventFd >= 0) {
        fds[n].fd = eventFd;
        fds[n].events = POLLIN;
        eventSlot = n++;
    }
    if (fd >= 0) {
        fds[n].fd = fd;
        fds[n].events = POLLIN;
        fdSlot = n++;
    }
    int r = poll(fds, static_cast<nfds_t>(n), static_cast<int>(timeoutMs < 0 ? 0 : timeoutMs));
    *eventReady = r > 0 && eventSlot >= 0 && (fds[eventSlot].revents & (POLLIN | POLLHUP | POLLERR));
    *fdReady = r > 0 && fdSlot >= 0 && (fds[fdSlot].revents & (POLLIN | POLLHUP | POLLERR));
    return r;
}

long gNextIdleMs = 0;

}  // namespace

void HostEventsInstall(void)
{
    AEInstallEventHandler(kAEMiscStandards, kAEDoScript, NewAEEventHandlerUPP(HandleDoScript), 0, 0);
    PlatformSetActivateHandler(HandleActivation);
}

void HostEventsQueueScript(const std::string &nameMacRoman)
{
    gHostPendingScripts.push_back(nameMacRoman);
}

bool HostEventsTakeScript(std::string *nameMacRoman)
{
    if (gHostPendingScripts.empty())
        return false;
    *nameMacRoman = gHostPendingScripts.front();
    gHostPendingScripts.pop_front();
    return true;
}

bool HostEventsScriptsPending(void)
{
    return !gHostPendingScripts.empty();
}

int HostDispatchPass(HostSession *session)
{
    /* Scripts run here may send events again; dispatch until the queue is quiet. */
    int count = 0;
    for (int round = 0; round < kDispatchRoundLimit; round++) {
        int n = AEProcessEvents();
        HostDialogsEcho(session);
        n += HostRunPendingScripts(session);
        fflush(session->out);
        if (n <= 0)
            break;
        count += n;
    }
    return count;
}

int HostIdlePass(HostSession *session)
{
    HostIdle(session->plugin, 0);
    HostDialogsEcho(session);
    return HostDispatchPass(session);
}

void HostSleep(HostSession *session, long ms)
{
    long deadline = NowMs() + (ms > 0 ? ms : 0);
    long next = NowMs();
    for (;;) {
        long now = NowMs();
        if (now >= next) {
            HostIdlePass(session);
            next = now + session->idleMs;
        }
        if (now >= deadline)
            return;
        bool eventReady, fdReady;
        WaitFor(-1, std::min(deadline, next) - now, &eventReady, &fdReady);
        if (eventReady)
            HostDispatchPass(session);
    }
}

void HostDrain(HostSession *session)
{
    int quiet = 0;
    for (int pass = 0; pass < kDrainPassLimit && quiet < kDrainQuietPasses; pass++)
        quiet = HostIdlePass(session) > 0 ? 0 : quiet + 1;
}

bool HostWaitForInput(HostSession *session, int fd)
{
    for (;;) {
        long now = NowMs();
        if (now >= gNextIdleMs) {
            HostIdlePass(session);
            gNextIdleMs = now + session->idleMs;
        }
        bool eventReady, fdReady;
        WaitFor(fd, gNextIdleMs - NowMs(), &eventReady, &fdReady);
        if (eventReady)
            HostDispatchPass(session);
        if (fdReady)
            return true;
        if (fd < 0)
            return false;
    }
}
