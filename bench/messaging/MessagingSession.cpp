/*
 * MessagingSession.cpp: the measured round trip shared by bench_messaging and
 * bench_soak (see MessagingSession.h).
 */
#include "MessagingSession.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>

#include "platform/EventService.h"
#include "platform/Toolbox.h"

namespace {

const char kRules[] = "on PING send MSSG=PONG ACTN=$ACTN ANSR=$ANSR CODE=$CODE NUM =$NUM\n";

void TakeMessage(MessagingSession *session)
{
    HarnessHost *host = &session->host;
    std::string id = HarnessCall(host, "TPX1GetNextMessage", "");
    if (id.empty()) return;
    std::string num = HarnessCall(host, "TPX1GetParameter", "NUM ");
    std::string code = HarnessCall(host, "TPX1GetParameter", "CODE");
    HarnessCall(host, "TPX1ClearIncomingMessage", "");
    long seq = atol(num.c_str());
    if (id != "PONG" || code != "0123456789abcdef" || seq <= 0 || seq >= (long)session->taken.size()) {
        session->malformed++;
        return;
    }
    if (session->taken[seq]) {
        session->duplicates++;
        return;
    }
    session->taken[seq] = 1;
    session->received++;
    session->lastTaken = seq;
}

} // namespace

bool SessionStart(MessagingSession *session, long capacity, std::string *error)
{
    signal(SIGPIPE, SIG_IGN);
    char tmpl[] = "/tmp/tpx1-bench-messaging-XXXXXX";
    if (!mkdtemp(tmpl)) {
        *error = "no temporary folder";
        return false;
    }
    session->temp = tmpl;
    session->taken.assign((size_t)capacity + 1, 0);
    setenv("HOME", session->temp.c_str(), 1);
    setenv("TPX1_APPLICATIONS_FOLDER", session->temp.c_str(), 1);
    if (!HarnessDaemonStart(session->temp + "/bus", &session->daemon)) {
        *error = "dbus-daemon did not start";
        return false;
    }
    PlatformDialogUseRecorder();
    if (!HarnessHostStart(&session->host, HarnessSiblingPath("tpx1.fmx", FMX_PATH), "FMP7", error)) return false;
    HarnessWriteFile(session->temp + "/rules.txt", kRules);
    session->partner = HarnessSpawn({HarnessSiblingPath("vesk", VESK_PATH), "partner", "--as", "TPX1", "--name",
                                     "TOPOLUX", "--rules", session->temp + "/rules.txt", "--log", "/dev/null"},
                                    "", session->temp + "/partner.err");
    HarnessHost *host = &session->host;
    if (!HarnessRunUntil(host, 10000, [&] { return HarnessCall(host, "TPX1IsAppRunning", "TPX1") == "TRUE"; })) {
        *error = "the vesk partner did not join the bus";
        return false;
    }
    HarnessCall(host, "TPX1SetMessageHandlingScriptTo", "Handle");
    HarnessCall(host, "TPX1SetHandledMessages", "PONG");
    HarnessCall(host, "TPX1InitIAC", "");
    return true;
}

void SessionStop(MessagingSession *session)
{
    HarnessHostStop(&session->host);
    PlatformBusClose();
    HarnessReap(session->partner, SIGTERM, 5000);
    HarnessDaemonStop(&session->daemon, SIGTERM);
    std::error_code ec;
    if (!session->temp.empty()) std::filesystem::remove_all(session->temp, ec);
}

void SessionSendPing(MessagingSession *session, long seq, uint64_t *sendAt)
{
    HarnessHost *host = &session->host;
    char number[24];
    snprintf(number, sizeof number, "%016ld", seq);
    HarnessCall(host, "TPX1SetParameter", "MSSG|PING");
    HarnessCall(host, "TPX1SetParameter", "ACTN|abcdefghijklmnop");
    HarnessCall(host, "TPX1SetParameter", "ANSR|ponmlkjihgfedcba");
    HarnessCall(host, "TPX1SetParameter", "CODE|0123456789abcdef");
    HarnessCall(host, "TPX1SetParameter", std::string("NUM |") + number);
    if (sendAt) *sendAt = HarnessNowUsec();
    if (!HarnessCall(host, "TPX1SendMessageTo", "TPX1").empty() || PlatformDialogRecordedCount() > 0) {
        session->sendErrors++;
        PlatformDialogClearRecord();
    }
}

int SessionTurn(MessagingSession *session, int waitMs, uint64_t *dispatchedAt)
{
    int dispatched = HarnessPump(waitMs);
    if (dispatchedAt) *dispatchedAt = HarnessNowUsec();
    HarnessIdle(&session->host);
    std::string script;
    while (HarnessTakeScript(&script)) {
        if (script != "Handle") continue;
        session->lastScriptAt = HarnessNowUsec();
        TakeMessage(session);
    }
    return dispatched;
}

MessagingRun SessionRunWindowed(MessagingSession *session, long first, long count, long window, int waitMs)
{
    MessagingRun run;
    long receivedBefore = session->received;
    uint64_t start = HarnessNowUsec(), lastProgress = start;
    while (session->received - receivedBefore < count) {
        while (run.sent < count && run.sent - (session->received - receivedBefore) < window) {
            SessionSendPing(session, first + run.sent);
            run.sent++;
        }
        long before = session->received;
        SessionTurn(session, 5);
        uint64_t now = HarnessNowUsec();
        if (session->received != before) lastProgress = now;
        else if (now - lastProgress > (uint64_t)waitMs * 1000u) break;
    }
    run.elapsedUsec = HarnessNowUsec() - start;
    run.received = session->received - receivedBefore;
    return run;
}

std::string SessionMemoryLine(const char *label)
{
    char line[160];
    snprintf(line, sizeof line, "%s: resident %ld KiB, live host blocks %ld", label, HarnessResidentKiB(),
             HarnessLiveBlocks());
    return line;
}
