/*
 * SweepSupport.cpp: the representative calls of the sweeps, their set-up, one run
 * through the entry function with fmhost's host core, and the checks after it.
 */
#include "SweepSupport.h"

#include <cstring>

#include "fuzz/Harness.h"
#include "fuzz/TestHooks.h"
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
        out += c == '~' ? HarnessFolder().Classic() : std::string(1, c);
    return out;
}

void Call(int id, const std::string &argument)
{
    HostCallExternal(HarnessPlugin(), id, Expand(argument));
}

void SetUpFiles()
{
    const TestFolder &root = HarnessFolder();
    root.Write("Apps/BaseDirectoryList.txt", root.Classic("Data1") + "\r" + root.Classic("Data2") + "\r");
    root.Write("Data1/Ref1.txt", "reference");
    root.Write("Apps/Sheet.RPF", "header CMTR2005 fdtR2007 PHTR2000 trailer bytes\r");
    root.Write("Apps/Other.zip", "zip");
}

void SetUp(unsigned setup)
{
    SetUpFiles();
    if (setup & kSetupGlobals) {
        Call(kTPX1SetGlobal, "Count|3");
        Call(kTPX1AppendToGlobal, "Log|NODUPES|a\r");
        Call(kTPX1AttachScriptToGlobal, "Count|Recount");
        Call(kTPX1EnableGlobalScript, "Count");
    }
    if (setup & kSetupTrigger)
        Call(kTPX1SetGlobal, "Count|5");
    if (setup & kSetupPartners) {
        PlatformMemoryBusAddApp(FOUR_CHAR('T', 'P', 'X', '1'), "TOPOLUX", "/opt/TOPOLUX/TOPOLUX");
        PlatformMemoryBusAddApp(FOUR_CHAR('N', 'M', 'B', '5'), "NIMBO", "/opt/NIMBO/NIMBO");
        Call(kTPX1SetKnownFriend, "TPX1|Linux:opt:TOPOLUX:TOPOLUX");
        Call(kTPX1SetKnownFriend, "NMB5|Linux:opt:NIMBO:NIMBO");
        Call(kTPX1SetHandledMessages, "INFO|HOLA|MHIT|OBID");
    }
    if (setup & kSetupNimbo) {
        PlatformMemoryBusAddApp(FOUR_CHAR('N', 'M', 'B', '5'), "NIMBO", "/opt/NIMBO/NIMBO");
        Call(kTPX1SetKnownFriend, "NMB5|Linux:opt:NIMBO:NIMBO");
        Call(kTPX1SetNimboSharingMenu, "Nimbo|Show");
    }
    if (setup & kSetupLaunchable)
        PlatformMemoryBusSetLaunchSignature(FOUR_CHAR('N', 'M', 'B', '5'));
    if (setup & kSetupMessaging)
        Call(kTPX1InitIAC, "");
    if (setup & kSetupMenus) {
        Call(kTPX1SetTopoluxSharingMenu, "Solution|Info;Link;Unlink");
        Call(kTPX1SetTopoluxSharingMenuActions, "GETINFO|LINK|UNLINK");
        Call(kTPX1SetNimboSharingMenu, "Nimbo|Show");
        Call(kTPX1SetNimboSharingMenuActions, "GOTOME|GETRIDSINFO");
        Call(kTPX1SetTopoluxNoneSelectedGetInfoAlert, "Select an object first.");
        Call(kTPX1SetTopoluxMapInfo, "~:Data1|DRAW YESZOOM|");
        Call(kTPX1SetTopoluxFirstView, "-90,40,-80,30");
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
        Call(kTPX1GetNextMessage, "");
    if (setup & kSetupOutgoing) {
        Call(kTPX1SetParameter, "MSSG|INFO");
        Call(kTPX1SetParameter, std::string("LST2|") + kLst2);
        Call(kTPX1SetParameter, "TEXT|hello");
        Call(kTPX1SetParameter, "NAME|abcde");
    }
    PlatformClockAdvance(700);   /* past the grace period of a waiting message */
    HarnessTakeDialogs();
}

/* The event a partner sends: an "INFO" with a map list. */
void DeliverIncomingMessage()
{
    HarnessDeliverMessage({{"MSSG", "INFO"}, {"SIGN", "TPX1"}, {"LST2", kLst2}, {"TEXT", "m3"}},
                          FOUR_CHAR('T', 'P', 'X', '1'));
}

/* What a host does with the built plug-in: load it, start it, call one function by its
 * name, shut it down and unload it. */
std::string LoadCallUnload()
{
    HostPlugin loaded;
    std::string error;
    if (HostLoadPlugin(TPX1_FMX_PATH, &loaded, &error) != 0)
        return "Error: " + error;
    HostInit(&loaded, 60);
    int id = HostFunctionId(&loaded, "TPX1Version");
    std::string result = id < 0 ? "Error: no function TPX1Version" : HostCallExternal(&loaded, id, "");
    HostShutdown(&loaded);
    HostUnloadPlugin(&loaded);
    return result;
}

using GlobalValues = std::vector<std::pair<std::string, std::string>>;

/* Every global's name and value, in list order. */
GlobalValues TakeGlobals()
{
    GlobalValues globals;
    HarnessUseStandingBlock();
    for (DataNode *node = gUserGlobalsDataNodeList; node; node = node->next) {
        std::string value;
        if (node->data) {
            long size = gFMX_ExternCallPtr->getHandleSize(node->data);
            value.assign(*node->data, size > 0 ? size - 1 : 0);
        }
        globals.emplace_back(node->name, value);
    }
    return globals;
}

/* Every global reads back through TPX1GetGlobal exactly as stored. */
std::string GlobalsReadBack(const GlobalValues &globals)
{
    for (const auto &global : globals) {
        std::string read = HostCallExternal(HarnessPlugin(), kTPX1GetGlobal, global.first);
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
        {kTPX1Version, "", kSetupNone, {}},
        {kTPX1TabChar, "", kSetupNone, {}},
        {kTPX1ReturnChar, "", kSetupNone, {}},
        {kTPX1DoubleQuoteChar, "", kSetupNone, {}},
        {kTPX1Ascii2Char, "65", kSetupNone, {}},
        {kTPX1CallScript, "Recount", kSetupNone, {}},
        {kTPX1ShowMessage, "Hello there", kSetupNone, {"Hello there"}},
        {kTPX1ResolveRelativePath, "::Data1:Sub:File|:Ref1.txt", kSetupNone, {}},
        {kTPX1FileExists, ":Maps:Sheet|:Ref1.txt", kSetupNone, {}},
        {kTPX1FileExists, ":Sheet.RPF", kSetupNone, {}},
        {kTPX1CopyFile, ":Sheet.RPF|:Copy.RPF", kSetupNone, {"Error: -1"}},
        {kTPX1DeleteFile, ":Sheet.RPF", kSetupNone, {}},
        {kTPX1ZipFiles, "", kSetupNone, {"TPX1ZipFiles is not supported on the MAC."}},
        {kTPX1UnzipFiles, "", kSetupNone, {"TPX1UnzipFiles is not supported on the MAC."}},
        {kTPX1UnzipFilesBatchMode, "", kSetupNone, {"TPX1UnzipFilesBatchMode is not supported on the MAC."}},
        {kTPX1AskUserForFileNameToRead, "", kSetupNone, {}},
        {kTPX1AskUserForFileNameToWrite, "Name.txt", kSetupNone, {}},
        {kTPX1SetKnownFriend, "XYZW|Linux:opt:Other", kSetupNone, {}},
        {kTPX1SetHandledMessages, "INFO|HOLA|MHIT", kSetupNone, {}},
        {kTPX1SetMessageHandlingScriptTo, "Handler", kSetupNone, {}},
        {kTPX1SetScriptMenuName, "Menu", kSetupNone, {}},
        {kTPX1SetSIGNPSIG, "ABCD|EFGH", kSetupNone, {}},
        {kTPX1SetStartupDocument, "Doc.fp5", kSetupNone, {}},
        {kTPX1InitIAC, "", kSetupPartners | kSetupMenus, {}},
        /* The NIMBO menu following the greeting fails to go: a beep. */
        {kTPX1InitIAC, "", kSetupNimbo, {}, kFaultAESend, 2},
        {kTPX1SetGlobal, "Count|4", kSetupGlobals, {}},
        {kTPX1SetGlobal, "Fresh|a long value for a new global", kSetupGlobals, {}},
        {kTPX1AppendToGlobal, "Log|NODUPES|b\rc\r", kSetupGlobals, {}},
        {kTPX1AppendToGlobal, "Fresh|NODUPES|b\rc\r", kSetupGlobals, {}},
        {kTPX1AppendToGlobal, "Count|9", kSetupGlobals, {}},
        {kTPX1UnsetGlobal, "Count", kSetupGlobals, {}},
        {kTPX1UnsetGlobal, "*", kSetupGlobals, {}},
        {kTPX1GetGlobal, "Count", kSetupGlobals, {}},
        {kTPX1GetGlobalList, "SYSENV DETAIL", kSetupGlobals, {}},
        {kTPX1AttachScriptToGlobal, "Count|Other", kSetupGlobals, {}},
        {kTPX1EnableGlobalScript, "Count", kSetupGlobals, {}},
        {kTPX1DisableGlobalScript, "Count", kSetupGlobals, {}},
        {kTPX1ClearOutgoingMessage, "", kSetupOutgoing, {}},
        {kTPX1SendMessageTo, "TPX1", kSetupOutgoing | kSetupPartners | kSetupMenus, {}},
        {kTPX1SetParameter, "TEXT|a new value", kSetupOutgoing, {}},
        {kTPX1AppendToParameter, "TEXT|NODUPES|a\rb", kSetupOutgoing, {}},
        {kTPX1ClearIncomingMessage, "", kSetupIncoming, {}},
        {kTPX1GetNextMessage, "", kSetupArchive, {}},
        {kTPX1GetParameter, "LST2", kSetupIncoming, {}},
        {kTPX1GetParameterLST2, "TOPOLUXID TAB MAPNAME RETURN", kSetupIncoming, {}},
        {kTPX1GetParameterLST2Line, "1", kSetupIncoming, {}},
        {kTPX1GetParameterLatLong, "", kSetupIncoming, {}},
        {kTPX1IsAppRunning, "TPX1", kSetupPartners, {}},
        {kTPX1GoToApp, "TPX1", kSetupPartners, {}},
        {kTPX1GoToApp, "NMB5", kSetupLaunchable, {"Unable to locate NIMBO"}},
        {kTPX1GoToApp, "NMB5", kSetupNone, {"Unable to locate NIMBO"}},
        {kTPX1ShowOnMap, "0123456789ABCDEF\tRoads\tCity", kSetupPartners | kSetupMenus, {}},
        {kTPX1ProcessLST2ParameterForTopolux, "", kSetupOutgoing, {}},
        {kTPX1SetTopoluxSharingMenu, "Solution|Info;Link", kSetupNone, {}},
        {kTPX1SetTopoluxSharingMenuActions, "GETINFO|LINK", kSetupNone, {}},
        {kTPX1SetTopoluxNoneSelectedGetInfoAlert, "None selected", kSetupNone, {}},
        {kTPX1SetTopoluxNoneSelectedUnlinkAlert, "None selected", kSetupNone, {}},
        {kTPX1SetTopoluxNoneSelectedLinkAlert, "None selected", kSetupNone, {}},
        {kTPX1SetTopoluxMoreThanOneSelectedLinkAlert, "Too many", kSetupNone, {}},
        {kTPX1SetTopoluxMapInfo, "~:Data1|DRAW YESZOOM|", kSetupNone, {}},
        {kTPX1SetTopoluxFirstView, "-90,40,-80,30", kSetupNone, {}},
        {kTPX1RenameIncomingLSTAtoLST2, "", kSetupIncoming | kSetupLstaOnly, {}},
        {kTPX1CopyIncomingLST2ToOutgoingLST2, "", kSetupIncoming, {}},
        {kTPX1SetNimboSharingMenu, "Nimbo|A;B", kSetupNone, {}},
        {kTPX1SetNimboSharingMenuActions, "GOTOME|GETRIDSINFO", kSetupNone, {}},
        {kTPX1SetNimboNoneSelectedGetInfoAlert, "None selected", kSetupNone, {}},
        {kTPX1GetRepformYearsFromIDs, ":Sheet.RPF", kSetupNone, {"Error: Unable to allocate buffer. (Out of memory)"}},
        {kTPX1ChangeRepformIDsInFile, "2004|:Sheet.RPF", kSetupNone, {"Error: -1"}},
        {kTPX1GetCharsFromFile, "8|20|:Sheet.RPF", kSetupNone, {"Error: -1"}},
        {kTPX1GetListOfFilesInFolder, ":Other.zip", kSetupNone, {}},
        {kTPX1GetNthLine, "2|first\rsecond\rthird", kSetupNone, {}},
        {kTPX1FileSystemRepresentationFromClassicPath, ":New.txt", kSetupNone, {}},
        {kTPX1WaitOneSecond, "", kSetupNone, {}},
        {kTPX1GetNameOfGlobalThatTriggeredScript, "", kSetupGlobals | kSetupTrigger, {}},
        {kSweepIdle, "", kSetupGlobals | kSetupTrigger | kSetupArchive | kSetupPartners, {}},
        {kSweepReceive, "", kSetupPartners | kSetupMessaging | kSetupMenus, {}},
        {kSweepShutdown, "", kSetupPartners | kSetupMessaging | kSetupGlobals | kSetupArchive | kSetupOutgoing, {}},
        {kSweepLoad, "", kSetupNone, {}},
    };
    return kCases;
}

std::string SweepCaseName(const SweepCase &c)
{
    switch (c.id) {
    case kSweepIdle: return "idle";
    case kSweepReceive: return "incoming message";
    case kSweepShutdown: return "shutdown";
    case kSweepLoad: return "loading the plug-in";
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
    GlobalValues before = TakeGlobals();
    arm(context);
    if (c.alsoFailing != kFaultPointCount)
        PlatformFaultSet(c.alsoFailing, c.alsoFailingCall, connectionInvalid, false);
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
        DeliverIncomingMessage();   /* must not reach the freed lists */
        HarnessDrainEvents();
        break;
    case kSweepLoad:
        run.result = LoadCallUnload();
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
    PlatformFaultClearAll();

    run.dialogs = HarnessTakeDialogs();
    run.openFiles = HarnessOpenFileCount();
    HarnessCloseOpenFiles();
    if (c.id != kSweepShutdown) {
        run.storeProblem = HarnessStoreProblems(true);
        if (run.storeProblem.empty())
            run.storeProblem = ArchiveOrder();
        GlobalValues after = TakeGlobals();
        run.globalsChanged = after != before;
        if (run.storeProblem.empty())
            run.storeProblem = GlobalsReadBack(after);
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
