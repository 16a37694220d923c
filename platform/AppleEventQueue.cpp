/*
 * AppleEventQueue.cpp: routing of sent events and the in-process queue. An event
 * addressed to this process's own signature (or serial number) is copied into the queue;
 * any other goes to the bus. Events received from the bus wait in the same queue.
 * AEProcessEvents hands queued events to their handlers on the caller's thread, never
 * inside AESend, and answers the bus sender with the handler's result. AEGetEventFD is
 * one epoll descriptor that is readable while events wait in the queue (an eventfd) or
 * the bus has something to read, so a host can poll a single descriptor.
 */
#include "platform/AppleEventRecords.h"
#include "platform/BusTransport.h"
#include "platform/EventService.h"
#include "platform/ServiceResets.h"

#include <cstring>
#include <deque>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

#define kAEAnswer FOUR_CHAR('a', 'n', 's', 'r')
#define keyErrorNumber FOUR_CHAR('e', 'r', 'r', 'n')

struct QueuedEvent {
    AEDescRecord *event;
    AEReplyProc reply;
    void *token;
};

std::deque<QueuedEvent> gQueue;
int gEpollFD = -1;
int gWaitingFD = -1;       /* eventfd: readable while the queue holds events */
int gWatchedBusFD = -1;

/* The eventfd stays readable from the first event queued until the queue is emptied:
 * one write and one read per batch, not per event. Events that arrive while
 * AEProcessEvents runs are served by it or looked at when it ends, so they need no
 * signal of their own. */
bool gSignalled = false;
int gDispatchDepth = 0;

void SignalWaiting(void)
{
    if (gWaitingFD < 0 || gSignalled) return;
    eventfd_write(gWaitingFD, 1);
    gSignalled = true;
}

void ClearWaiting(void)
{
    eventfd_t value;
    if (gWaitingFD < 0 || !gSignalled) return;
    eventfd_read(gWaitingFD, &value);
    gSignalled = false;
}

bool EnsureEventFDs(void)
{
    if (gEpollFD >= 0) return true;
    gEpollFD = epoll_create1(EPOLL_CLOEXEC);
    gWaitingFD = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (gEpollFD < 0 || gWaitingFD < 0) {
        if (gEpollFD >= 0) close(gEpollFD);
        if (gWaitingFD >= 0) close(gWaitingFD);
        gEpollFD = gWaitingFD = -1;
        return false;
    }
    struct epoll_event watch;
    memset(&watch, 0, sizeof watch);
    watch.events = EPOLLIN;
    epoll_ctl(gEpollFD, EPOLL_CTL_ADD, gWaitingFD, &watch);
    if (!gQueue.empty()) SignalWaiting();
    return true;
}

/* The signature an event goes to, from its 'sign' or 'psn ' address; 0 when it has none. */
OSErr ResolveTarget(const AEDescRecord *record, OSType *signature, bool *toSelf)
{
    *toSelf = false;
    *signature = 0;
    if (record->targetType == typeApplSignature) {
        *signature = AETargetSignature(record);
        *toSelf = *signature != 0 && *signature == PlatformProcessSignature();
        return noErr;
    }
    if (record->targetType == typeProcessSerialNumber && record->target.size() == sizeof(ProcessSerialNumber)) {
        ProcessSerialNumber psn;
        memcpy(&psn, record->target.data(), sizeof psn);
        if (ProcessIsCurrent(&psn)) {
            *toSelf = true;
            return noErr;
        }
        BusProcess process;
        OSErr err = BusCurrent()->xProcessInfo(&psn, &process);
        if (err) return err;
        *signature = process.signature;
        return noErr;
    }
    return procNotFound;
}

void MakeAnswer(AppleEvent *reply, OSErr handlerResult)
{
    if (!reply || !handlerResult) return;
    if (DescCreateAppleEvent(kCoreEventClass, kAEAnswer, nullptr, 0, 0, reply)) return;
    int32_t value = handlerResult;
    DescPutParamPtr(reply, keyErrorNumber, typeSInt32, &value, sizeof value);
}

} // namespace

void AEQueueIncoming(AEDescRecord *event, AEReplyProc reply, void *token)
{
    gQueue.push_back(QueuedEvent{event, reply, token});
    if (gDispatchDepth == 0) SignalWaiting();
}

void AEQueueWatchBusFD(int fd)
{
    if (fd == gWatchedBusFD || !EnsureEventFDs()) return;
    /* A closed descriptor has already left the set; deleting it again is harmless. */
    if (gWatchedBusFD >= 0) epoll_ctl(gEpollFD, EPOLL_CTL_DEL, gWatchedBusFD, nullptr);
    gWatchedBusFD = fd;
    if (fd < 0) return;
    struct epoll_event watch;
    memset(&watch, 0, sizeof watch);
    watch.events = EPOLLIN;
    watch.data.fd = fd;
    epoll_ctl(gEpollFD, EPOLL_CTL_ADD, fd, &watch);
}

void AEQueueClear(void)
{
    while (!gQueue.empty()) {
        QueuedEvent item = gQueue.front();
        gQueue.pop_front();
        if (item.reply) item.reply(item.token, errAEEventNotHandled);
        AEFreeRecord(item.event);
    }
    ClearWaiting();
}

/* The descriptors stay: a host may hold AEGetEventFD's for the life of the process. */
void ResetEventQueue(void)
{
    AEQueueClear();
    gDispatchDepth = 0;
}

OSErr QueueSend(const AppleEvent *event, AppleEvent *reply, int32_t sendMode, int16_t sendPriority,
                int32_t timeOutInTicks)
{
    if (reply) DescInitialize(reply);
    if (!event || event->descriptorType != typeAppleEvent || !AERecordOf(event)) return errAENotAEDesc;
    int32_t replyMode = sendMode & 3;
    if (replyMode == 0) return errAEUnknownSendMode;
    const AEDescRecord *record = AERecordOf(event);
    OSType signature;
    bool toSelf;
    OSErr err = ResolveTarget(record, &signature, &toSelf);
    if (err) return err;
    if (toSelf) {
        AEDescRecord *copy = AECopyRecord(record);
        if (!copy) return memFullErr;
        copy->sender = PlatformProcessSignature();
        AEQueueIncoming(copy, nullptr, nullptr);
        return noErr;
    }
    if (!signature) return procNotFound;
    const Tpx1BusMethods *bus = BusCurrent();
    err = bus->xEnsureOpen(false);
    if (err) return err;
    OSErr handlerResult = noErr;
    err = bus->xSend(record, signature, sendMode, timeOutInTicks, &handlerResult);
    if (err) return err;
    if (replyMode == kAEWaitReply) MakeAnswer(reply, handlerResult);
    return noErr;
}

OSErr QueueInstallHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler,
                          intptr_t refcon, Boolean isSysHandler)
{
    OSErr err = AEHandlerInstall(eventClass, eventID, handler, refcon);
    if (err) return err;
    /* A handler is a reason to listen: open the bus, or open it again if it was lost.
     * Without a bus the handler still serves events sent in-process. */
    BusCurrent()->xEnsureOpen(true);
    return noErr;
}

OSErr QueueRemoveHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler,
                         Boolean isSysHandler)
{
    return AEHandlerRemove(eventClass, eventID, handler);
}

int QueueGetEventFD(void)
{
    if (!EnsureEventFDs()) return BusCurrent()->xGetFD();
    AEQueueWatchBusFD(BusCurrent()->xGetFD());
    return gEpollFD;
}

int32_t QueueProcessEvents(void)
{
    gDispatchDepth++;
    BusCurrent()->xPump();
    int32_t dispatched = 0;
    /* Only the events waiting now: a handler that sends to itself is served next time. */
    size_t waiting = gQueue.size();
    while (waiting-- > 0 && !gQueue.empty()) {
        QueuedEvent item = gQueue.front();
        gQueue.pop_front();
        AppleEvent event;
        AEAttachRecord(&event, typeAppleEvent, item.event);
        AEEventHandlerUPP handler;
        intptr_t refcon;
        OSErr result = errAEEventNotHandled;
        if (AEHandlerFind(item.event->eventClass, item.event->eventID, &handler, &refcon)) {
            AppleEvent reply;
            DescInitialize(&reply);
            result = handler(&event, &reply, refcon);
            DescDispose(&reply);
            dispatched++;
        }
        if (item.reply) item.reply(item.token, result);
        DescDispose(&event);
    }
    gDispatchDepth--;
    /* What is left (sent to itself by a handler, or read from the bus meanwhile) is
     * served next time: the descriptor says so. */
    if (gQueue.empty()) ClearWaiting();
    else if (gDispatchDepth == 0) SignalWaiting();
    AEQueueWatchBusFD(BusCurrent()->xGetFD());
    return dispatched;
}

extern "C" int32_t PlatformEventWait(int32_t timeoutMs)
{
    if (gQueue.empty()) {
        /* The descriptor wakes for whatever is still in the socket; only what the
         * transport has already read needs a pump before sleeping. */
        if (BusCurrent()->xPending()) BusCurrent()->xPump();
        if (gQueue.empty()) {
            /* The bus and the queue's eventfd directly: a wake-up through the epoll
             * descriptor (which is there for hosts that want one descriptor) costs more. */
            struct pollfd wait[2];
            nfds_t n = 0;
            int busFD = BusCurrent()->xGetFD();
            if (busFD >= 0) wait[n++] = {busFD, POLLIN, 0};
            if (EnsureEventFDs()) wait[n++] = {gWaitingFD, POLLIN, 0};
            if (n > 0) poll(wait, n, timeoutMs);
            else if (timeoutMs > 0) usleep((useconds_t)timeoutMs * 1000);
        }
    }
    return QueueProcessEvents();
}
