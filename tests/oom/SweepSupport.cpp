/*
 * SweepSupport.cpp: the representative calls of the sweeps, their set-up, one run
 * through the entry function with fmhost's host core, and the checks after it.
 */
#include "SweepSupport.h"

#include <cstring>

#include "fuzz/Harness.h"
#include "platform/Faults.h"
#include "platform/TestBus.h"
#include "platform/Toolbox.h"
#include "store/DataNode.h"
#include "store/MessageLists.h"
#include "text/TextHandles.h"

const char kMemorySentence[] = "Not enough memory to complete this operation.";

namespace {

const char kLst2[] = "0123456789ABCDEF\tRoads\tCity\r"
                     "FEDCBA9876543210\tRivers\tCity\r"
                     "0123456789ABCDEF\troads\tcity\r"
                     "0123456789abcdef\tRoads\tCity\r";

std::string Expand(const std::string &text)
{
    std::string out;
    for (char c : text)
        out += c == '~' ? HarnessRootClassic() : std::string(1, c);
    return out;
}

void Call(int id, const std::string &argument)
{
    HostCallExternal(HarnessPlugin(), id, Expand(argument));
}

void SetUpFiles()
{
    HarnessWriteFile("Apps/BaseDirectoryList.txt", HarnessClassic("Data1") + "\r" + HarnessClassic("Data2") + "\r");
    HarnessWriteFile("Data1/Ref1.txt", "reference");
    HarnessWriteFile("Apps/Sheet.RPF", "header CMTR2005 fdtR2007 PHTR2000 trailer bytes\r");
    HarnessWriteFile("Apps/Other.zip", "zip");
}

void SetUp(unsigned setup)
{
    SetUpFiles();
    if (setup & kSetupGlobals) {
        Call(23, "Count|3");
        Call(24, "Log|NODUPES|a\r");
        Call(28, "Count|Recount");
        Call(29, "Count");
    }
    if (setup & kSetupTrigger)
        Call(23, "Count|5");
    if (setup & kSetupPartners) {
        PlatformMemoryBusAddApp(FOUR_CHAR('T', 'P', 'X', '1'), "TOPOLUX", "/opt/TOPOLUX/TOPOLUX");
        PlatformMemoryBusAddApp(FOUR_CHAR('N', 'M', 'B', '5'), "NIMBO", "/opt/NIMBO/NIMBO");
        Call(16, "TPX1|Linux:opt:TOPOLUX:TOPOLUX");
        Call(16, "NMB5|Linux:opt:NIMBO:NIMBO");
        Call(17, "INFO|HOLA|MHIT|OBID");
    }
    if (setup & kSetupMessaging)
        Call(22, "");
    if (setup & kSetupMenus) {
        Call(45, "Solution|Info;Link;Unlink");
        Call(46, "GETINFO|LINK|UNLINK");
        Call(55, "Nimbo|Show");
        Call(56, "GOTOME|GETRIDSINFO");
        Call(47, "Select an object first.");
        Call(51, "~:Data1|DRAW YESZOOM|");
        Call(52, "-90,40,-80,30");
    }
    if (setup & (kSetupArchive | kSetupIncoming)) {
        HarnessUseStandingBlock();
        const char *first[] = {"MSSG", "INFO", "SIGN", "TPX1", "LSTA", kLst2, "LAT ", "38.5",
                               "LONG", "-77.0", "TEXT", "m1", "LST2", kLst2};
        const char *second[] = {"MSSG", "OBID", "SIGN", "TPX1", "IDS ", "1 2 3", "TEXT", "m2"};
        ArchiveMessageForTesting(first, (setup & kSetupLstaOnly) ? 6 : 7);
        ArchiveMessageForTesting(second, 4);
    }
    if (setup & kSetupIncoming)
        Call(36, "");
    if (setup & kSetupOutgoing) {
        Call(33, "MSSG|INFO");
        Call(33, std::string("LST2|") + kLst2);
        Call(33, "TEXT|hello");
        Call(33, "NAME|abcde");
    }
    PlatformClockAdvance(700);   /* past the grace period of a waiting message */
    HarnessTakeDialogs();
}

/* The event a partner sends: an "INFO" with a map list. */
void DeliverIncomingMessage()
{
    AppleEvent event;
    AEAddressDesc address;
    AEInitializeDesc(&event);
    AEInitializeDesc(&address);
    OSType me = kHarnessHostSignature;
    AECreateDesc(typeApplSignature, &me, sizeof me, &address);
    AECreateAppleEvent(FOUR_CHAR('V', 'E', 'S', 'K'), FOUR_CHAR('A', 'E', 'V', 'T'), &address, kAutoGenerateReturnID,
                       kAnyTransactionID, &event);
    const char *pairs[][2] = {{"MSSG", "INFO"}, {"SIGN", "TPX1"}, {"LST2", kLst2}, {"TEXT", "m3"}};
    for (const auto &pair : pairs)
        AEPutParamPtr(&event, FOUR_CHAR(pair[0][0], pair[0][1], pair[0][2], pair[0][3]), typeChar, pair[1],
                      (int32_t)strlen(pair[1]));
    PlatformMemoryBusDeliver(&event, FOUR_CHAR('T', 'P', 'X', '1'));
    AEDisposeDesc(&event);
    AEDisposeDesc(&address);
}

/* Every global reads back through TPX1GetGlobal exactly as stored. */
std::string GlobalsReadBack()
{
    std::vector<std::pair<std::string, std::string>> globals;
    HarnessUseStandingBlock();
    for (DataNode *node = gUserGlobalsDataNodeList; node; node = node->next) {
        std::string value;
        if (node->data) {
            long size = gFMX_ExternCallPtr->getHandleSize(node->data);
            value.assign(*node->data, size > 0 ? size - 1 : 0);
        }
        globals.emplace_back(node->name, value);
    }
    for (const auto &global : globals) {
        std::string read = HostCallExternal(HarnessPlugin(), 26, global.first);
        if (read != global.second)
            return "global \"" + global.first + "\" reads back as \"" + read + "\"";
    }
    return "";
}

/* The archive's messages keep their order: their TEXT markers ascend. */
std::string ArchiveOrder()
{
    std::string last;
    for (DataNode *message : gArchivedIncomingMessageParameterDataNodeList) {
        if (!message)
            break;
        char marker[64];
        GetDataFromListAsStr("TEXT", marker, sizeof marker, message);
        if (marker[0] && std::string(marker) <= last)
            return "archive out of order at \"" + std::string(marker) + "\"";
        if (marker[0])
            last = marker;
    }
    return "";
}

}  // namespace

const std::vector<SweepCase> &SweepCases()
{
    static const std::vector<SweepCase> kCases = {
        {0, "", kSetupNone, {}},
        {1, "", kSetupNone, {}},
        {2, "", kSetupNone, {}},
        {3, "", kSetupNone, {}},
        {4, "65", kSetupNone, {}},
        {5, "Recount", kSetupNone, {}},
        {6, "Hello there", kSetupNone, {"Hello there"}},
        {7, "::Data1:Sub:File|:Ref1.txt", kSetupNone, {}},
        {8, ":Maps:Sheet|:Ref1.txt", kSetupNone, {}},
        {8, ":Sheet.RPF", kSetupNone, {}},
        {9, ":Sheet.RPF|:Copy.RPF", kSetupNone, {"Error: -1"}},
        {10, ":Sheet.RPF", kSetupNone, {}},
        {11, "", kSetupNone, {"TPX1ZipFiles is not supported on the MAC."}},
        {12, "", kSetupNone, {"TPX1UnzipFiles is not supported on the MAC."}},
        {13, "", kSetupNone, {"TPX1UnzipFilesBatchMode is not supported on the MAC."}},
        {14, "", kSetupNone, {}},
        {15, "Name.txt", kSetupNone, {}},
        {16, "XYZW|Linux:opt:Other", kSetupNone, {}},
        {17, "INFO|HOLA|MHIT", kSetupNone, {}},
        {18, "Handler", kSetupNone, {}},
        {19, "Menu", kSetupNone, {}},
        {20, "ABCD|EFGH", kSetupNone, {}},
        {21, "Doc.fp5", kSetupNone, {}},
        {22, "", kSetupPartners | kSetupMenus, {}},
        {23, "Count|4", kSetupGlobals, {}},
        {23, "Fresh|a long value for a new global", kSetupGlobals, {}},
        {24, "Log|NODUPES|b\rc\r", kSetupGlobals, {}},
        {24, "Count|9", kSetupGlobals, {}},
        {25, "Count", kSetupGlobals, {}},
        {25, "*", kSetupGlobals, {}},
        {26, "Count", kSetupGlobals, {}},
        {27, "SYSENV DETAIL", kSetupGlobals, {}},
        {28, "Count|Other", kSetupGlobals, {}},
        {29, "Count", kSetupGlobals, {}},
        {30, "Count", kSetupGlobals, {}},
        {31, "", kSetupOutgoing, {}},
        {32, "TPX1", kSetupOutgoing | kSetupPartners | kSetupMenus, {}},
        {33, "TEXT|a new value", kSetupOutgoing, {}},
        {34, "TEXT|NODUPES|a\rb", kSetupOutgoing, {}},
        {35, "", kSetupIncoming, {}},
        {36, "", kSetupArchive, {}},
        {37, "LST2", kSetupIncoming, {}},
        {38, "TOPOLUXID TAB MAPNAME RETURN", kSetupIncoming, {}},
        {39, "1", kSetupIncoming, {}},
        {40, "", kSetupIncoming, {}},
        {41, "TPX1", kSetupPartners, {}},
        {42, "TPX1", kSetupPartners, {}},
        {43, "0123456789ABCDEF\tRoads\tCity", kSetupPartners | kSetupMenus, {}},
        {44, "", kSetupOutgoing, {}},
        {45, "Solution|Info;Link", kSetupNone, {}},
        {46, "GETINFO|LINK", kSetupNone, {}},
        {47, "None selected", kSetupNone, {}},
        {48, "None selected", kSetupNone, {}},
        {49, "None selected", kSetupNone, {}},
        {50, "Too many", kSetupNone, {}},
        {51, "~:Data1|DRAW YESZOOM|", kSetupNone, {}},
        {52, "-90,40,-80,30", kSetupNone, {}},
        {53, "", kSetupIncoming | kSetupLstaOnly, {}},
        {54, "", kSetupIncoming, {}},
        {55, "Nimbo|A;B", kSetupNone, {}},
        {56, "GOTOME|GETRIDSINFO", kSetupNone, {}},
        {57, "None selected", kSetupNone, {}},
        {58, ":Sheet.RPF", kSetupNone, {"Error: Unable to allocate buffer. (Out of memory)"}},
        {59, "2004|:Sheet.RPF", kSetupNone, {"Error: -1"}},
        {60, "8|20|:Sheet.RPF", kSetupNone, {"Error: -1"}},
        {61, ":Other.zip", kSetupNone, {}},
        {62, "2|first\rsecond\rthird", kSetupNone, {}},
        {63, ":New.txt", kSetupNone, {}},
        {64, "", kSetupNone, {}},
        {65, "", kSetupGlobals | kSetupTrigger, {}},
        {kSweepIdle, "", kSetupGlobals | kSetupTrigger | kSetupArchive | kSetupPartners, {}},
        {kSweepReceive, "", kSetupPartners | kSetupMessaging | kSetupMenus, {}},
        {kSweepShutdown, "", kSetupPartners | kSetupMessaging | kSetupGlobals | kSetupArchive | kSetupOutgoing, {}},
    };
    return kCases;
}

std::string SweepCaseName(const SweepCase &c)
{
    switch (c.id) {
    case kSweepIdle: return "idle";
    case kSweepReceive: return "incoming message";
    case kSweepShutdown: return "shutdown";
    default: return "id " + std::to_string(c.id) + " (\"" + c.argument + "\")";
    }
}

SweepRun RunSweepCase(const SweepCase &c, void (*arm)(void *), void (*disarm)(void *), void *context)
{
    SweepRun run;
    HarnessResetProcess(1);
    long baseline = HarnessLiveHostBlocks();
    HostPlugin *plugin = HarnessPlugin();
    HostInit(plugin, 60);
    SetUp(c.setup);

    if (c.id == kSweepReceive)
        DeliverIncomingMessage();   /* queued now, handled once the failure is armed */
    arm(context);
    switch (c.id) {
    case kSweepIdle:
        HostIdle(plugin, 0);
        HarnessDrainEvents();
        break;
    case kSweepReceive:
        HarnessDrainEvents();
        break;
    case kSweepShutdown:
        HostShutdown(plugin);
        break;
    default:
        run.result = HostCallExternal(plugin, c.id, Expand(c.argument));
        HarnessDrainEvents();
        break;
    }
    run.allocations = HostMemoryAllocationCount();
    run.hostFailures = HostMemoryFailuresDelivered();
    disarm(context);
    HostMemorySetFailure(0, kHostFailOff);
    PlatformFaultClear(nullptr);

    run.dialogs = HarnessTakeDialogs();
    run.openFiles = HarnessOpenFileCount();
    HarnessCloseOpenFiles();
    if (c.id != kSweepShutdown) {
        run.storeProblem = HarnessStoreProblems(true);
        if (run.storeProblem.empty())
            run.storeProblem = ArchiveOrder();
        if (run.storeProblem.empty())
            run.storeProblem = GlobalsReadBack();
        HarnessTakeDialogs();
        HostShutdown(plugin);
    }
    HarnessDrainEvents();
    run.leakedBlocks = HarnessLiveHostBlocks() - baseline;
    if (run.leakedBlocks != 0)
        run.leakReport = HarnessLeakReport();
    return run;
}

bool DialogsAreAllowed(const SweepRun &run, const SweepCase &c, const std::vector<std::string> &alsoAllowed,
                       std::string *offending)
{
    for (const std::string &text : run.dialogs) {
        bool allowed = text.find(kMemorySentence) != std::string::npos;
        for (const std::string &expected : c.expectedTexts)
            allowed = allowed || text.find(expected) != std::string::npos;
        for (const std::string &expected : alsoAllowed)
            allowed = allowed || text.find(expected) != std::string::npos;
        if (!allowed) {
            *offending = text;
            return false;
        }
    }
    return true;
}
