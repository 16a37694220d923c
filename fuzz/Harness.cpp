/*
 * Harness.cpp: the plug-in under test for fuzzing, the sweeps and the replays (see
 * Harness.h): the private folder, the reset of process-wide state, the checks, path
 * confinement and the incoming-event builder.
 */
#include "fuzz/Harness.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <set>

#include "files/Paths.h"
#include "iac/Iac.h"
#include "platform/Faults.h"
#include "platform/Files.h"
#include "platform/Processes.h"
#include "platform/Services.h"
#include "platform/TestBus.h"
#include "platform/Toolbox.h"
#include "plugin/CoreState.h"
#include "store/DataNode.h"
#include "store/Globals.h"
#include "store/MessageLists.h"
#include "text/TextHandles.h"

/* ---- FuzzInput ---- */

uint8_t FuzzInput::Byte()
{
    return pos_ < size_ ? data_[pos_++] : 0;
}

uint32_t FuzzInput::Quad()
{
    uint32_t value = 0;
    for (int i = 0; i < 4; i++)
        value = (value << 8) | Byte();
    return value;
}

std::string FuzzInput::Bytes(size_t count)
{
    size_t available = pos_ < size_ ? size_ - pos_ : 0;
    if (count > available)
        count = available;
    std::string bytes(reinterpret_cast<const char *>(data_ + pos_), count);
    pos_ += count;
    return bytes;
}

std::string FuzzInput::Text()
{
    size_t length = Byte();
    if (length >= 0xF0)
        length = ((length & 0x0F) << 8) | Byte();
    return Bytes(length);
}

std::string FuzzInput::Rest()
{
    return Bytes(size_ > pos_ ? size_ - pos_ : 0);
}

/* ---- The private folder ---- */

namespace {

const char *const kStandardEntries[] = {"Apps", "Applications", "Data1", "Data2"};

TestFolder *gRoot;
FMX_ExternCallBlock gStandingBlock;
HostPlugin gPlugin;
bool gPluginReady = false;

/* At exit: events still kept by the in-memory bus or queued are given back, and the
 * private folder goes. */
void RemoveRootAtExit()
{
    AERemoveEventHandler(kVeskEventClass, kVeskEventID, HandleVESKEvent, false);
    HarnessDrainEvents();
    PlatformBusUseMemory();
    delete gRoot;
    gRoot = nullptr;
}

void MakeStandardLayout()
{
    for (const char *entry : kStandardEntries)
        gRoot->MakeFolder(entry);
    if (!gRoot->Exists("Apps/FakeHost"))
        gRoot->Write("Apps/FakeHost");
    /* The partners in their default places, so that launching finds them. */
    gRoot->Write("Applications/TOPOLUX Folder/TOPOLUX");
    gRoot->Write("Applications/NIMBO Folder/NIMBO");
}

/* Removes whatever earlier runs left in the private folder: everything but the standard
 * folders at the top, and everything inside Apps but the host application. */
void TidyRoot()
{
    std::error_code ignored;
    for (const auto &entry : std::filesystem::directory_iterator(gRoot->Posix(), ignored)) {
        std::string name = entry.path().filename().string();
        bool standard = false;
        for (const char *keep : kStandardEntries)
            standard = standard || name == keep;
        if (!standard)
            std::filesystem::remove_all(entry.path(), ignored);
    }
    for (const char *folder : kStandardEntries) {
        for (const auto &entry : std::filesystem::directory_iterator(gRoot->Posix(folder), ignored)) {
            if (std::string(folder) == "Apps" && entry.path().filename() == "FakeHost")
                continue;
            std::filesystem::remove_all(entry.path(), ignored);
        }
    }
    MakeStandardLayout();
}

}  // namespace

const TestFolder &HarnessFolder()
{
    if (!gRoot) {
        gRoot = new TestFolder;
        if (gRoot->Classic().empty())
            HarnessFail("cannot name the private folder as a classic path", gRoot->Posix());
        atexit(RemoveRootAtExit);
        MakeStandardLayout();
    }
    return *gRoot;
}

/* ---- Process state ---- */

void HarnessUseStandingBlock()
{
    HostMemoryInstall(&gStandingBlock);
    gFMX_ExternCallPtr = &gStandingBlock;
}

HostPlugin *HarnessPlugin()
{
    if (!gPluginReady) {
        gPlugin.entry = RunHostCall;
        gPlugin.library = nullptr;
        gPlugin.resFileRef = -1;
        gPlugin.path = "(linked in)";
        gPluginReady = true;
    }
    return &gPlugin;
}

int HarnessDrainEvents()
{
    HarnessUseStandingBlock();
    int total = 0;
    for (int round = 0; round < 64; round++) {
        int32_t n = AEProcessEvents();
        if (n <= 0)
            break;
        total += n;
    }
    return total;
}

int HarnessOpenFileCount()
{
    int count = 0;
    for (int16_t refNum = 1; refNum <= 348; refNum++) {
        int32_t length;
        if (GetEOF(refNum, &length) == noErr)
            count++;
    }
    return count;
}

void HarnessCloseOpenFiles()
{
    for (int16_t refNum = 1; refNum <= 348; refNum++)
        FSClose(refNum);
}

std::vector<std::string> HarnessTakeDialogs()
{
    return HostTakeRecordedDialogs();
}

void HarnessResetProcess(uint32_t clockStep)
{
    HarnessFolder();
    HostMemorySetFailure(0, kHostFailOff);
    PlatformResetAll();
    ResetCoreState();
    PlatformDialogUseRecorder();
    PlatformBusUseMemory();
    PlatformSetProcessSignature(kHarnessHostSignature);
    PlatformClockUseManual(1000, clockStep);
    setenv("TPX1_APP_PATH", gRoot->Posix("Apps/FakeHost").c_str(), 1);
    setenv("TPX1_APPLICATIONS_FOLDER", gRoot->Posix("Applications").c_str(), 1);
    TidyRoot();
    HarnessUseStandingBlock();
}

/* ---- Checks ---- */

const char *const kReservedGlobalNames[10] = {
    kAppNameGlobal,       kAppPathGlobal,        kAppFolderGlobal,    kErrorDialogsGlobal, kHandleMessageScriptGlobal,
    kPluginVersionGlobal, kScriptMenuNameGlobal, kAppSignatureGlobal, kAppPsigGlobal,      kAppDocGlobal};

namespace {

std::string ListProblems(const DataNode *head, const std::string &listName)
{
    std::set<std::string> names;
    long count = 0;
    for (const DataNode *node = head; node; node = node->next) {
        std::string where = listName + " node " + std::to_string(count);
        if (++count > 100000)
            return listName + ": the list does not end";
        if (!memchr(node->name, 0, sizeof node->name))
            return where + ": name not terminated";
        if (!memchr(node->scriptName, 0, sizeof node->scriptName))
            return where + ": script name not terminated";
        if (!names.insert(node->name).second)
            return where + ": name \"" + node->name + "\" twice";
        if (node->data) {
            int32_t size = gStandingBlock.getHandleSize(node->data);
            if (size < 1)
                return where + " (\"" + node->name + "\"): value handle of size " + std::to_string(size);
            if ((*node->data)[size - 1] != 0)
                return where + " (\"" + node->name + "\"): value without its terminator";
        }
    }
    return "";
}

}  // namespace

std::string HarnessStoreProblems(bool reservedGlobalsExpected)
{
    HarnessUseStandingBlock();
    std::string problem = ListProblems(gUserGlobalsDataNodeList, "globals");
    if (problem.empty())
        problem = ListProblems(gOutgoingUserMessageParameterDataNodeList, "outgoing list 1");
    if (problem.empty())
        problem = ListProblems(gOutgoingStdBevaviorMessageParameterDataNodeList, "outgoing list 2");
    if (problem.empty())
        problem = ListProblems(gIncomingMessageParameterDataNodeList, "incoming message");
    bool gap = false;
    for (int slot = 0; slot < kArchiveSlotCount && problem.empty(); slot++) {
        DataNode *message = gArchivedIncomingMessageParameterDataNodeList[slot];
        if (!message) {
            gap = true;
            continue;
        }
        if (gap)
            return "archive slot " + std::to_string(slot) + " taken after a free slot";
        problem = ListProblems(message, "archive slot " + std::to_string(slot));
    }
    if (!problem.empty() || !reservedGlobalsExpected)
        return problem;
    const DataNode *node = gUserGlobalsDataNodeList;
    for (const char *name : kReservedGlobalNames) {
        if (!node || strcmp(node->name, name) != 0)
            return std::string("reserved global \"") + name + "\" missing or out of order";
        if (node->isSystem != 1)
            return std::string("reserved global \"") + name + "\" is not a system global";
        node = node->next;
    }
    return "";
}

long HarnessLiveHostBlocks()
{
    return HostMemoryLiveHandles() + HostMemoryLivePointers();
}

void HarnessShutdownAndCheck(HostPlugin *plugin)
{
    HostShutdown(plugin);
    HarnessDrainEvents();
    HarnessTakeDialogs();
    if (HarnessLiveHostBlocks() != 0)
        HarnessFail("host memory not given back after Shutdown", HarnessLeakReport());
}

std::string HarnessLeakReport()
{
    char *text = nullptr;
    size_t length = 0;
    FILE *out = open_memstream(&text, &length);
    if (!out)
        return "(no report)";
    HostMemoryLeakReport(out);
    fclose(out);
    std::string report(text ? text : "", length);
    free(text);
    return report;
}

void HarnessFail(const char *what, const std::string &detail)
{
    fprintf(stderr, "\n==tpx1 harness== %s\n%s\n", what, detail.c_str());
    fflush(stderr);
    abort();
}

/* ---- Building inputs ---- */

namespace {

/* Index of the first path field of a file function's argument, -1 for other ids. */
int FirstPathField(long funcId)
{
    switch (funcId) {
    case kTPX1ResolveRelativePath: case kTPX1FileExists: case kTPX1CopyFile: case kTPX1DeleteFile:
    case kTPX1SetTopoluxMapInfo: case kTPX1GetRepformYearsFromIDs: case kTPX1GetListOfFilesInFolder:
    case kTPX1FileSystemRepresentationFromClassicPath:
        return 0;
    case kTPX1ChangeRepformIDsInFile:
        return 1;
    case kTPX1GetCharsFromFile:
        return 2;
    default:
        return -1;
    }
}

std::string ConfinePath(std::string field)
{
    if (field.empty())
        return field;
    size_t lead = 0;
    while (lead < field.size() && (field[lead] == ':' || field[lead] == '\\'))
        lead++;
    std::string rest = field.substr(lead);
    /* Components: '\' and ':' both separate, runs collapse, "." and ".." are renamed. */
    std::string cleaned;
    std::string component;
    auto flush = [&](bool separator) {
        if (component == "." || component == "..")
            component = "_";
        cleaned += component;
        component.clear();
        if (separator && !cleaned.empty() && cleaned.back() != ':')
            cleaned += ':';
    };
    for (char c : rest) {
        if (c == ':' || c == '\\')
            flush(true);
        else
            component += c == '/' ? '_' : c;
    }
    flush(false);
    if (lead == 0)
        return HarnessFolder().Classic(cleaned);
    return std::string(lead >= 2 ? 2 : 1, ':') + cleaned;
}

}  // namespace

std::string HarnessConfineArgument(long funcId, const std::string &argument)
{
    if (funcId == kTPX1SetGlobal || funcId == kTPX1AppendToGlobal) {
        /* The application folder is where relative paths start: it must stay ours. */
        static const std::string kAppFolder = std::string(kAppFolderGlobal) + "|";
        return argument.compare(0, kAppFolder.size(), kAppFolder) == 0 ? "Ignored|" : argument;
    }
    int first = FirstPathField(funcId);
    if (first < 0)
        return argument;
    std::string text = argument.substr(0, argument.find('\0'));
    std::vector<std::string> fields;
    size_t start = 0;
    for (;;) {
        size_t bar = text.find('|', start);
        fields.push_back(text.substr(start, bar == std::string::npos ? std::string::npos : bar - start));
        if (bar == std::string::npos)
            break;
        start = bar + 1;
    }
    if (funcId == kTPX1GetCharsFromFile && fields.size() > 1 && atol(fields[1].c_str()) > (1L << 20))
        fields[1] = std::to_string(1L << 20);   /* the host fills every block it gives */
    std::string confined;
    for (size_t i = 0; i < fields.size(); i++) {
        if (i)
            confined += '|';
        confined += (int)i >= first ? ConfinePath(fields[i]) : fields[i];
    }
    return confined;
}

std::string HarnessCodeText(uint32_t code)
{
    std::string text(4, ' ');
    for (int i = 0; i < 4; i++)
        text[i] = static_cast<char>(code >> (24 - 8 * i));
    return text;
}

namespace {

const char *const kKeywords[] = {
    "MSSG", "SIGN", "PSIG", "XTRA", "ACTN", "ANSR", "ATBS", "CAS ", "CODE", "DOC ", "HLAT", "HLNG",
    "IDS ", "ITEM", "LAT ", "LLAT", "LLNG", "LONG", "LSTA", "LSTB", "LST2", "NAME", "VESK", "NUM ",
    "OBJ2", "OVID", "PATH", "PERM", "STAT", "TEXT", "TYPE", "VERS", "VNUM", "YRPS", "ITMS", "ICON",
    "OPTN", "WHO ", "MSSG", "SIGN", "MSSG", "SIGN", "ITEM", "NUM ", "XTRA", "LST2"};
const char *const kMessageIds[] = {"HOLA", "OKHI", "BYE ", "MHIT", "YROD", "OBID", "INFO", "NBH!",
                                   "USR!", "VEW!", "VER!", "OVL!", "IMP!", "CPT!", "CTL!", "CHM!",
                                   "RIDS", "MENU", "SHOW", "ALRT", "    ", "MHIT", "YROD", "HOLA"};
const char *const kSignatures[] = {"TPX1", "NMB5", "FMP7", "REPF", "    ", "TPX1", "NMB5", "XY"};
const char *const kXtraWords[] = {"GETINFO", "GETINFOFILE", "LINK", "UNLINK", "", "xGETINFOx"};
const uint32_t kOtherTypes[] = {typeSInt32, typeWildCard, typeNull, typeFSS, typeApplSignature,
                                FOUR_CHAR('b', 'o', 'o', 'l'), FOUR_CHAR('u', 't', 'f', '8')};

uint32_t CodeOf(const char *text)
{
    return FOUR_CHAR(text[0], text[1], text[2], text[3]);
}

}  // namespace

void HarnessMakeMessage(const HarnessParams &pairs, AppleEvent *event)
{
    AEAddressDesc address;
    AEInitializeDesc(event);
    AEInitializeDesc(&address);
    OSType me = kHarnessHostSignature;
    AECreateDesc(typeApplSignature, &me, sizeof me, &address);
    AECreateAppleEvent(kVeskEventClass, kVeskEventID, &address, kAutoGenerateReturnID, kAnyTransactionID, event);
    for (const auto &pair : pairs)
        AEPutParamPtr(event, CodeOf(pair.first.c_str()), typeChar, pair.second.data(), (int32_t)pair.second.size());
    AEDisposeDesc(&address);
}

void HarnessDeliverMessage(const HarnessParams &pairs, uint32_t sender)
{
    AppleEvent event;
    HarnessMakeMessage(pairs, &event);
    PlatformMemoryBusDeliver(&event, sender);
    AEDisposeDesc(&event);
}

void HarnessBuildIncomingEvent(FuzzInput &in, AppleEvent *event)
{
    AEInitializeDesc(event);
    uint8_t head = in.Byte();
    uint32_t eventClass = kVeskEventClass, eventID = kVeskEventID;
    if ((head & 0xF0) == 0xF0) {
        eventClass = in.Quad();
        eventID = in.Quad();
    }
    OSType me = kHarnessHostSignature;
    AEAddressDesc address;
    AEInitializeDesc(&address);
    if (AECreateDesc(typeApplSignature, &me, sizeof me, &address) != noErr)
        return;
    OSErr err = AECreateAppleEvent(eventClass, eventID, &address, kAutoGenerateReturnID, kAnyTransactionID, event);
    AEDisposeDesc(&address);
    if (err != noErr)
        return;
    int count = head % 48;
    for (int i = 0; i < count && !in.Empty(); i++) {
        uint8_t pick = in.Byte();
        uint32_t keyword = pick < 0xE0 ? CodeOf(kKeywords[pick % (sizeof kKeywords / sizeof *kKeywords)]) : in.Quad();
        uint8_t typePick = in.Byte();
        uint32_t type = typeChar;
        if (typePick >= 0xF8)
            type = in.Quad();
        else if (typePick >= 0xE0)
            type = kOtherTypes[typePick % (sizeof kOtherTypes / sizeof *kOtherTypes)];
        std::string data = in.Text();
        /* A one-byte value below 32 stands for a well-known value of its keyword. */
        if (data.size() == 1 && static_cast<uint8_t>(data[0]) < 32) {
            uint8_t k = static_cast<uint8_t>(data[0]);
            if (keyword == CodeOf("MSSG"))
                data = kMessageIds[k % (sizeof kMessageIds / sizeof *kMessageIds)];
            else if (keyword == CodeOf("SIGN") || keyword == CodeOf("PSIG"))
                data = kSignatures[k % (sizeof kSignatures / sizeof *kSignatures)];
            else if (keyword == CodeOf("XTRA"))
                data = kXtraWords[k % (sizeof kXtraWords / sizeof *kXtraWords)];
            else if (keyword == CodeOf("ITEM") || keyword == CodeOf("NUM "))
                data = std::to_string(static_cast<int>(k) - 4);
        }
        AEPutParamPtr(event, keyword, type, data.data(), static_cast<int32_t>(data.size()));
    }
}
