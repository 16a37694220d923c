/*
 * VeskPartner.cpp: "vesk partner --as SIG": a stand-in partner application. It answers
 * "HOLA" with "OKHI", follows the rules of its rule file, records activations and the
 * document it was started with, and logs every event it receives as one line, until
 * SIGTERM. It can be launched by the plug-in (the document path is its first argument).
 */
#include "Vesk.h"

#include "platform/Toolbox.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace {

const OSType kMSSG = FOUR_CHAR('M', 'S', 'S', 'G');
const OSType kSIGN = FOUR_CHAR('S', 'I', 'G', 'N');
const OSType kPSIG = FOUR_CHAR('P', 'S', 'I', 'G');
const OSType kXTRA = FOUR_CHAR('X', 'T', 'R', 'A');

OSType gSelf = 0;
std::string gName = "vesk partner";
std::string gDocument;
std::vector<VeskRule> gRules;
FILE *gLog = nullptr;

/* The log is written once the events that were waiting have been handled, so that no
 * answer waits for it: an event waits here as it came (its line is formatted only
 * then), any other line as text. */
struct LogEntry {
    bool isEvent;
    AEEventClass eventClass;
    AEEventID eventID;
    OSType sender;
    std::vector<VeskParam> params;
    std::string text;
};
std::vector<LogEntry> gPendingLog;

void Log(const std::string &line)
{
    gPendingLog.push_back(LogEntry{false, 0, 0, 0, {}, line});
}

void WriteLog(void)
{
    if (gPendingLog.empty()) return;
    for (const LogEntry &entry : gPendingLog) {
        std::string line =
            entry.isEvent ? EventLine(entry.eventClass, entry.eventID, entry.sender, entry.params) : entry.text;
        fputs(line.c_str(), gLog);
        fputc('\n', gLog);
    }
    fflush(gLog);
    gPendingLog.clear();
}

VeskParam Text(OSType keyword, const std::string &value)
{
    return VeskParam{keyword, typeChar, value};
}

/* MSSG first, then SIGN, PSIG and XTRA (this partner's own unless given), then the rest. */
std::vector<VeskParam> Message(const std::vector<VeskParam> &given)
{
    const char selfBytes[4] = {(char)(gSelf >> 24), (char)(gSelf >> 16), (char)(gSelf >> 8), (char)gSelf};
    std::string self(selfBytes, 4);
    std::vector<VeskParam> message;
    const OSType standard[4] = {kMSSG, kSIGN, kPSIG, kXTRA};
    const std::string fallback[4] = {"", self, self, ""};
    for (int i = 0; i < 4; i++) {
        bool found;
        std::string value = ParamText(given, standard[i], &found);
        if (found || i > 0) message.push_back(Text(standard[i], found ? value : fallback[i]));
    }
    for (const VeskParam &param : given) {
        bool isStandard = false;
        for (OSType code : standard) isStandard |= param.keyword == code;
        if (!isStandard) message.push_back(param);
    }
    return message;
}

/* This partner's own application file as a classic path, read once: it does not
 * change while the partner runs, and every "HOLA" asks for it. */
std::string OwnClassicPath(void)
{
    static std::string path;
    static bool known = false;
    if (known) return path;
    ProcessSerialNumber self{0, kCurrentProcess};
    FSSpec theSpec;
    ProcessInfoRec info;
    memset(&info, 0, sizeof info);
    info.processInfoLength = 60;
    info.processAppSpec = &theSpec;
    char posix[4096], classic[4096];
    if (GetProcessInformation(&self, &info) || FSpGetPOSIXPath(&theSpec, posix, sizeof posix) ||
        PlatformPOSIXPathToClassic(posix, classic, sizeof classic))
        return "";
    path = classic;
    known = true;
    return path;
}

void Send(OSType to, const std::vector<VeskParam> &params)
{
    OSErr err = SendEvent(to, kVeskClass, kVeskEvent, params);
    std::string line = "sent " + VisibleText(ParamText(params, kMSSG)) + " to " + CodeText(to);
    if (err) line += " failed: " + ErrorText(err);
    Log(line);
}

void AnswerHola(OSType to)
{
    std::string document = gDocument.substr(gDocument.rfind('/') + 1);
    Send(to, Message({Text(kMSSG, "OKHI"), Text(FOUR_CHAR('N', 'A', 'M', 'E'), ToMacRoman(gName)),
                      Text(FOUR_CHAR('P', 'A', 'T', 'H'), OwnClassicPath()),
                      Text(FOUR_CHAR('V', 'E', 'R', 'S'), VESK_VERSION),
                      Text(FOUR_CHAR('D', 'O', 'C', ' '), ToMacRoman(document))}));
}

void FollowRules(OSType messageId, OSType sender, const std::vector<VeskParam> &incoming)
{
    for (const VeskRule &rule : gRules) {
        if (rule.onMessage != typeWildCard && rule.onMessage != messageId) continue;
        std::vector<VeskParam> params;
        for (const VeskParam &param : rule.send) {
            VeskParam out = param;
            OSType copied;
            if (param.data.size() > 1 && param.data[0] == '$' && ParseCode(ToUTF8(param.data.substr(1)), &copied))
                out.data = ParamText(incoming, copied);
            params.push_back(out);
        }
        Send(rule.to ? rule.to : sender, Message(params));
    }
}

/* Answers "HOLA" and follows the rules. */
void Answer(const AppleEvent *event, const std::vector<VeskParam> &params)
{
    if (EventClass(event) == kCoreEventClass && EventID(event) == kAEOpenDocuments) {
        bool found;
        std::string url = ParamText(params, keyDirectObject, &found);
        if (found) Log("document " + VisibleText(url));
        return;
    }
    if (EventClass(event) != kVeskClass) return;
    std::string mssg = ParamText(params, kMSSG);
    if (mssg.size() < 4) return;
    OSType messageId = FOUR_CHAR(mssg[0], mssg[1], mssg[2], mssg[3]);
    OSType sender = EventSender(event);
    std::string sign = ParamText(params, kSIGN);
    if (!sender && sign.size() >= 4) sender = FOUR_CHAR(sign[0], sign[1], sign[2], sign[3]);
    if (messageId == FOUR_CHAR('H', 'O', 'L', 'A') && sender) AnswerHola(sender);
    if (sender) FollowRules(messageId, sender, params);
}

OSErr HandleEvent(const AppleEvent *event, AppleEvent *, intptr_t)
{
    /* The event's entry goes first, so that it stands before what answering it logs. */
    size_t entry = gPendingLog.size();
    gPendingLog.push_back(LogEntry{true, EventClass(event), EventID(event), EventSender(event), {}, ""});
    std::vector<VeskParam> params = EventParams(event);
    Answer(event, params);
    gPendingLog[entry].params = std::move(params);
    return noErr;
}

void RecordActivate(void)
{
    Log("activate");
}

int RunPartner(int argc, char **argv)
{
    const char *rulesPath = nullptr, *logPath = nullptr;
    enum { kAs = 256, kRules, kLog, kName };
    static const struct option options[] = {
        {"as", required_argument, nullptr, kAs},
        {"rules", required_argument, nullptr, kRules},
        {"log", required_argument, nullptr, kLog},
        {"name", required_argument, nullptr, kName},
        {nullptr, 0, nullptr, 0},
    };
    int operands;
    int status = ParseCommandOptions(kVeskPartner, argc, argv, options, [&](int code, const char *value) {
        if (code == kAs && !ParseCode(value, &gSelf)) return std::string("\"") + value + "\" is not a signature";
        if (code == kRules) rulesPath = value;
        if (code == kLog) logPath = value;
        if (code == kName) gName = value;
        return std::string();
    }, &operands);
    if (status >= 0) return status;
    if (operands < argc) gDocument = argv[operands++];
    if (operands < argc)
        return CommandUsageError(kVeskPartner, std::string("only one document, not also \"") + argv[operands] + "\"");
    if (!gSelf) return CommandUsageError(kVeskPartner, "--as SIG is required");
    std::string error;
    if (rulesPath && !ReadRules(rulesPath, &gRules, &error)) {
        fprintf(stderr, "vesk partner: %s: %s\n", rulesPath, error.c_str());
        return 2;
    }
    gLog = logPath ? fopen(logPath, "a") : stdout;
    if (!gLog) {
        fprintf(stderr, "vesk partner: cannot write %s: %s\n", logPath, strerror(errno));
        return 2;
    }
    if (!ConnectToBus(kVeskPartner)) return 1;
    AEInstallEventHandler(typeWildCard, typeWildCard, HandleEvent, 0, false);
    PlatformSetActivateHandler(RecordActivate);
    if (!OwnSignature(gSelf)) return 1;
    Log("start " + CodeText(gSelf) + " pid " + std::to_string(getpid()));
    if (!gDocument.empty()) Log("document " + gDocument);
    WriteLog();
    RunUntilSignalled(WriteLog);
    Log("stop");
    WriteLog();
    if (gLog != stdout) fclose(gLog);
    return 0;
}

} // namespace

const VeskCommand kVeskPartner = {
    "partner",
    "usage: vesk partner --as=SIG [--rules=FILE] [--log=FILE] [--name=NAME] [DOCUMENT]\n"
    "A stand-in partner application. It owns the bus name of SIG, answers every \"HOLA\"\n"
    "with an \"OKHI\", follows the rules of FILE, records activations and the document it\n"
    "was started with, and logs every event it receives, one line each, until SIGTERM or\n"
    "SIGINT. The plug-in launches it with the document's path as the only argument.\n"
    "\n"
    "  --as=SIG      the partner's signature (required)\n"
    "  --rules=FILE  rules, one a line: on ID send [to SIG] KEY=VALUE ...\n"
    "  --log=FILE    append the log to FILE (default: standard output)\n"
    "  --name=NAME   the NAME its \"OKHI\" carries (default \"vesk partner\")\n"
    "\n"
    "Exit status: 0 when stopped, 1 without a bus or when SIG's name is taken, 2 a usage\n"
    "mistake or a rule file with a mistake.\n",
    RunPartner,
};
