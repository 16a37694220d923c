// nimbo.cpp: a stand-in for NIMBO (signature NMB5) written with the TPX1 platform library.
// It owns NIMBO's bus name, answers the host's "HOLA" with "OKHI", answers "CALC" with
// "RSLT", logs every message (to the file $NIMBO_LOG, else standard output), and ends
// at "BYE " or SIGTERM.
// Build: make (pkg-config tpx1platform).
#include <tpx1/AppleEvents.h>
#include <tpx1/Processes.h>

#include <poll.h>
#include <signal.h>
#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

static FILE *gLog = stdout;

static OSType Code(const std::string &text)   // "BYE" -> 'BYE '
{
    std::string padded = (text + "    ").substr(0, 4);
    return FOUR_CHAR(padded[0], padded[1], padded[2], padded[3]);
}

static std::string Param(const AppleEvent *event, const char *keyword)
{
    char text[1024];
    DescType type;
    int32_t size = 0;
    if (AEGetParamPtr(event, Code(keyword), typeChar, &type, text, sizeof text, &size) != noErr)
        return "";
    return std::string(text, std::min<int32_t>(size, sizeof text));   // size: the whole value's
}

// One message: MSSG, SIGN, PSIG and XTRA first, then its own parameters, all TEXT.
static OSErr Send(const std::string &to, const std::vector<std::pair<const char *, std::string>> &params)
{
    OSType signature = Code(to);
    AEAddressDesc target;
    AppleEvent event;
    AEInitializeDesc(&event);
    OSErr err = AECreateDesc(typeApplSignature, &signature, sizeof signature, &target);
    if (err == noErr) {
        err = AECreateAppleEvent(Code("VESK"), Code("AEVT"), &target, kAutoGenerateReturnID, kAnyTransactionID, &event);
        AEDisposeDesc(&target);
    }
    for (const auto &param : params)
        if (err == noErr)
            err = AEPutParamPtr(&event, Code(param.first), typeChar, param.second.data(), (int32_t)param.second.size());
    if (err == noErr)
        err = AESend(&event, nullptr, kAENoReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr);
    AEDisposeDesc(&event);
    if (err != noErr)
        fprintf(gLog, "nimbo: cannot send to %s (error %d)\n", to.c_str(), err);
    return err;
}

static volatile sig_atomic_t gQuit = 0;

static OSErr HandleMessage(const AppleEvent *event, AppleEvent *reply, intptr_t refcon)
{
    std::string id = Param(event, "MSSG"), from = Param(event, "SIGN"), xtra = Param(event, "XTRA");
    fprintf(gLog, "nimbo: %s from %s (XTRA \"%s\")\n", id.c_str(), from.c_str(), xtra.c_str());
    if (id == "HOLA")
        Send(from, {{"MSSG", "OKHI"}, {"SIGN", "NMB5"}, {"PSIG", "NMB5"}, {"XTRA", ""}, {"NAME", "NIMBO (C++)"}});
    else if (id == "CALC")
        Send(from, {{"MSSG", "RSLT"}, {"SIGN", "NMB5"}, {"PSIG", "NMB5"}, {"XTRA", xtra}, {"PLUM", "plume of " + xtra}});
    else if (id == "BYE ")
        gQuit = 1;
    fflush(gLog);
    return noErr;
}

int main()
{
    const char *logPath = getenv("NIMBO_LOG");
    if (logPath && *logPath && !(gLog = fopen(logPath, "a")))
        return 1;
    signal(SIGTERM, [](int) { gQuit = 1; });
    PlatformSetProcessSignature(Code("NMB5"));   // our bus name: org.vesk.App.s4e4d4235
    // Installing the handler opens the session bus and takes the name.
    if (AEInstallEventHandler(Code("VESK"), Code("AEVT"), HandleMessage, 0, false) != noErr)
        return 1;
    fprintf(gLog, "nimbo: running as pid %d\n", (int)getpid());
    fflush(gLog);
    while (!gQuit) {
        struct pollfd events = {AEGetEventFD(), POLLIN, 0};
        if (poll(&events, 1, 1000) > 0)
            AEProcessEvents();   // calls HandleMessage for each message that came
    }
    fprintf(gLog, "nimbo: stopped\n");
    return 0;
}
