/*
 * MessagingSession.h: a message round trip set up for measuring, shared by the messaging
 * benchmark and the soak run. This process is the host (FMP7) with the real plug-in; a
 * vesk partner posing as TOPOLUX answers every "PING" with a "PONG" carrying the same
 * parameters; the solution's handling script ("Handle") takes each "PONG" from the
 * archive. All on a private dbus-daemon in a temporary folder.
 */
#ifndef TPX1_MESSAGINGSESSION_H
#define TPX1_MESSAGINGSESSION_H

#include <cstdint>
#include <string>
#include <vector>

#include "BusHarness.h"

struct MessagingSession {
    std::string temp;
    HarnessDaemon daemon;
    HarnessHost host;
    pid_t partner = -1;
    /* What the handling script took: one flag per sequence number, and counts. */
    std::vector<uint8_t> taken;
    long received = 0, duplicates = 0, malformed = 0;
    long lastTaken = 0;
    uint64_t lastScriptAt = 0;      /* when the handling script last started */
    long sendErrors = 0;
};

struct MessagingRun {
    long sent = 0, received = 0;
    uint64_t elapsedUsec = 0;
};

/* Starts the daemon, the host and the partner and waits until the partner runs. */
bool SessionStart(MessagingSession *session, long capacity, std::string *error);
void SessionStop(MessagingSession *session);
/* The solution composes "PING" number seq in outgoing list 1 and sends it to TOPOLUX;
 * *sendAt (if given) is the time TPX1SendMessageTo was called, once the list was full. */
void SessionSendPing(MessagingSession *session, long seq, uint64_t *sendAt = nullptr);
/* One turn of the host's loop: wait at most waitMs for events, dispatch, idle, run the
 * handling script as often as asked (lastScriptAt is when it last started). Returns the
 * events the first dispatch handed out; *dispatchedAt (if given) is the time that
 * dispatch ended, before the idle call. */
int SessionTurn(MessagingSession *session, int waitMs, uint64_t *dispatchedAt = nullptr);
/* Sends count pings numbered from first on, at most window unanswered at a time, and
 * turns the loop until each was taken or waitMs passed without progress. */
MessagingRun SessionRunWindowed(MessagingSession *session, long first, long count, long window, int waitMs);
/* The plug-in's live host blocks and this process's resident size, as one line. */
std::string SessionMemoryLine(const char *label);

#endif
