/*
 * test_dbus_events.cpp: the event and process services on a real bus: a private
 * dbus-daemon per test, vesk as the other application. Covers name ownership and the
 * process list kept from NameOwnerChanged, an event round trip between two processes,
 * launching with a document, Activate, refusing oversized events, and a bus that goes
 * away and comes back.
 */
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "platform/AppleEvents.h"
#include "platform/EventService.h"
#include "platform/Processes.h"
#include "platform/TestBus.h"
#include "ProcessHarness.h"
#include "platform/Toolbox.h"

namespace {

/* The launch the plug-in makes of an application with a document: an open-document event
 * for the application's signature, coerced to launch parameters, in an extended block. */
struct DocumentLaunch {
    AEAddressDesc target;
    AppleEvent odoc;         /* also sendable to the running application */
    AEDesc parameters;
    LaunchParamBlockRec block;
};

OSErr PrepareDocumentLaunch(OSType signature, FSSpec *app, const FSSpec *document, uint16_t controlFlags,
                                   DocumentLaunch *launch)
{
    AECreateDesc(typeApplSignature, &signature, 4, &launch->target);
    AECreateAppleEvent(kCoreEventClass, kAEOpenDocuments, &launch->target, kAutoGenerateReturnID, 0, &launch->odoc);
    AEPutParamPtr(&launch->odoc, keyDirectObject, typeFSS, document, sizeof *document);
    OSErr err = AECoerceDesc(&launch->odoc, typeAppParameters, &launch->parameters);
    memset(&launch->block, 0, sizeof launch->block);
    launch->block.launchBlockID = extendedBlock;
    launch->block.launchEPBLength = extendedBlockLen;
    launch->block.launchControlFlags = controlFlags;
    launch->block.launchAppSpec = app;
    launch->block.launchAppParameters = err ? nullptr : (AppParameters *)launch->parameters.dataHandle;
    return err;
}

void DisposeDocumentLaunch(DocumentLaunch *launch)
{
    AEDisposeDesc(&launch->parameters);
    AEDisposeDesc(&launch->odoc);
    AEDisposeDesc(&launch->target);
}

const OSType kSelf = FOUR_CHAR('F', 'M', 'P', '7');
const OSType kTopolux = FOUR_CHAR('T', 'P', 'X', '1');
const OSType kVesk = FOUR_CHAR('V', 'E', 'S', 'K');
const OSType kAevt = FOUR_CHAR('A', 'E', 'V', 'T');
const OSType kKeyMSSG = FOUR_CHAR('M', 'S', 'S', 'G');

struct Param {
    OSType keyword;
    std::string data;
};
struct Got {
    OSType sender;
    std::vector<Param> params;
};
std::vector<Got> gGot;

OSErr Collect(const AppleEvent *event, AppleEvent *, intptr_t)
{
    Got got{0, {}};
    DescType type;
    int32_t size;
    AEGetAttributePtr(event, keyOriginalAddressAttr, typeWildCard, &type, &got.sender, 4, &size);
    for (int32_t i = 1;; i++) {
        Param p;
        if (PlatformEventGetNthParam(event, i, &p.keyword, &type, nullptr, 0, &size)) break;
        p.data.resize(size);
        PlatformEventGetNthParam(event, i, &p.keyword, &type, size ? &p.data[0] : nullptr, size, &size);
        got.params.push_back(p);
    }
    gGot.push_back(got);
    return noErr;
}

std::string Text(const Got &got, OSType keyword)
{
    for (const Param &p : got.params)
        if (p.keyword == keyword) return p.data;
    return "<missing>";
}

/* Runs the event loop until done() holds; gives up after many rounds (the bound only
 * keeps a broken build from hanging; nothing is measured). */
bool PumpUntil(const std::function<bool()> &done)
{
    for (int round = 0; round < 400; round++) {
        if (done()) return true;
        PlatformEventWait(50);
    }
    return done();
}

bool FindProcess(OSType signature, ProcessSerialNumber *found, ProcessInfoRec *info, FSSpec *theSpec)
{
    ProcessSerialNumber psn{0, kNoProcess};
    while (GetNextProcess(&psn) == noErr) {
        memset(info, 0, sizeof *info);
        info->processInfoLength = 60;
        info->processAppSpec = theSpec;
        if (GetProcessInformation(&psn, info) == noErr && info->processSignature == signature) {
            *found = psn;
            return true;
        }
    }
    return false;
}

bool Running(OSType signature)
{
    ProcessSerialNumber psn;
    ProcessInfoRec info;
    FSSpec theSpec;
    return FindProcess(signature, &psn, &info, &theSpec);
}

OSErr SendText(OSType to, std::vector<Param> params, int32_t mode = kAENoReply)
{
    AEAddressDesc target;
    AECreateDesc(typeApplSignature, &to, 4, &target);
    AppleEvent event, reply;
    AECreateAppleEvent(kVesk, kAevt, &target, kAutoGenerateReturnID, kAnyTransactionID, &event);
    for (const Param &p : params) AEPutParamPtr(&event, p.keyword, typeChar, p.data.data(), (int32_t)p.data.size());
    OSErr err = AESend(&event, &reply, mode, kAENormalPriority, kNoTimeOut, nullptr, nullptr);
    AEDisposeDesc(&reply);
    AEDisposeDesc(&event);
    AEDisposeDesc(&target);
    return err;
}

OSErr SpecFor(const std::string &posix, FSSpec *theSpec)
{
    char classic[1024];
    OSErr err = PlatformPOSIXPathToClassic(posix.c_str(), classic, sizeof classic);
    if (err) return err;
    Str255 name;
    name[0] = (unsigned char)strlen(classic);
    memcpy(name + 1, classic, name[0]);
    err = FSMakeFSSpec(0, 0, name, theSpec);
    return err == fnfErr ? (OSErr)noErr : err;
}

class DBusEvents : public ::testing::Test {
protected:
    std::string dir;
    HarnessDaemon daemon;
    std::vector<pid_t> children;

    void StartDaemon(const std::string &socket) { ASSERT_TRUE(HarnessDaemonStart(dir + "/" + socket, &daemon)); }
    void StopDaemon() { HarnessDaemonStop(&daemon, SIGTERM); }
    void SetUp() override
    {
        char templ[] = "/tmp/platbus-dbusXXXXXX";
        ASSERT_NE(nullptr, mkdtemp(templ));
        dir = templ;
        StartDaemon("bus");
        PlatformBusUseDBus();
        gGot.clear();
        ASSERT_EQ(noErr, AEInstallEventHandler(kVesk, kAevt, Collect, 0, false));
        PlatformSetProcessSignature(kSelf);
        ASSERT_TRUE(PlatformBusOwnsSignatureName());
    }
    void TearDown() override
    {
        for (pid_t child : children) {
            kill(child, SIGTERM);
            waitpid(child, nullptr, 0);
        }
        AERemoveEventHandler(kVesk, kAevt, nullptr, false);
        PlatformSetProcessSignature(0);
        PlatformBusClose();
        StopDaemon();
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        std::string rm = "rm -rf '" + dir + "'";
        (void)system(rm.c_str());
    }
    pid_t StartVesk(const std::vector<std::string> &args)
    {
        std::vector<std::string> all = {VESK_PATH};
        all.insert(all.end(), args.begin(), args.end());
        pid_t pid = HarnessSpawn(all, "", "");
        if (pid > 0) children.push_back(pid);
        return pid;
    }
};

TEST_F(DBusEvents, NamesMakeTheProcessListAndARoundTripWorks)
{
    std::string log = dir + "/partner.log";
    pid_t partner = StartVesk({"partner", "--as", "TPX1", "--name", "TOPOLUX", "--log", log});
    ASSERT_GT(partner, 0);
    ASSERT_TRUE(PumpUntil([] { return Running(kTopolux); }));

    ProcessSerialNumber psn;
    ProcessInfoRec info;
    FSSpec theSpec;
    ASSERT_TRUE(FindProcess(kTopolux, &psn, &info, &theSpec));
    EXPECT_EQ(partner, info.processPID);
    char path[1024];
    ASSERT_EQ(noErr, FSpGetPOSIXPath(&theSpec, path, sizeof path));
    char real[1024];
    ASSERT_NE(nullptr, realpath(VESK_PATH, real));
    EXPECT_STREQ(real, path);
    /* This process is listed too, as itself. */
    ProcessSerialNumber self, first{0, kNoProcess};
    ASSERT_EQ(noErr, GetNextProcess(&first));
    GetCurrentProcess(&self);
    Boolean same = false;
    SameProcess(&first, &self, &same);
    EXPECT_TRUE(same);

    /* HOLA out, OKHI back: a message event each way, parameters in order. */
    ASSERT_EQ(noErr, SendText(kTopolux, {{kKeyMSSG, "HOLA"}, {FOUR_CHAR('S', 'I', 'G', 'N'), "FMP7"},
                                         {FOUR_CHAR('L', 'S', 'T', '2'), "a\tb\rc\xA5"}}));
    ASSERT_TRUE(PumpUntil([] { return !gGot.empty(); }));
    ASSERT_EQ(1u, gGot.size());
    EXPECT_EQ(kTopolux, gGot[0].sender);
    ASSERT_GE(gGot[0].params.size(), 8u);
    const char *order[] = {"MSSG", "SIGN", "PSIG", "XTRA", "NAME", "PATH", "VERS", "DOC "};
    for (int i = 0; i < 8; i++)
        EXPECT_EQ(FOUR_CHAR(order[i][0], order[i][1], order[i][2], order[i][3]), gGot[0].params[i].keyword);
    EXPECT_EQ("OKHI", Text(gGot[0], kKeyMSSG));
    EXPECT_EQ("TPX1", Text(gGot[0], FOUR_CHAR('S', 'I', 'G', 'N')));
    EXPECT_EQ("TOPOLUX", Text(gGot[0], FOUR_CHAR('N', 'A', 'M', 'E')));
    EXPECT_EQ("", Text(gGot[0], FOUR_CHAR('X', 'T', 'R', 'A')));
    /* The partner saw our text exactly (bullet 0xA5 in Mac Roman is U+2022). */
    ASSERT_TRUE(PumpUntil([&] { return HarnessReadFile(log).find("sent OKHI") != std::string::npos; }));
    std::string logged = HarnessReadFile(log);
    EXPECT_NE(std::string::npos,
              logged.find("event VESK/AEVT from FMP7\tMSSG=HOLA\tSIGN=FMP7\tLST2=a\\tb\\rc\xE2\x80\xA2\n"));

    /* Too large an event is refused before sending; the connection stays. */
    std::string huge(65u * 1024u * 1024u, 'x');
    EXPECT_EQ(paramErr, SendText(kTopolux, {{kKeyMSSG, "BIG!"}, {FOUR_CHAR('T', 'E', 'X', 'T'), huge}}));
    huge.clear();
    huge.shrink_to_fit();
    EXPECT_TRUE(PlatformBusOwnsSignatureName());
    /* Waiting for an answer gets the partner handler's result (noErr: no error number). */
    EXPECT_EQ(noErr, SendText(kTopolux, {{kKeyMSSG, "BYE "}}, kAEWaitReply));
    ASSERT_TRUE(PumpUntil([&] { return HarnessReadFile(log).find("MSSG=BYE ") != std::string::npos; }));

    /* SetFrontProcess of another application calls its Activate. */
    ASSERT_EQ(noErr, SetFrontProcess(&psn));
    ASSERT_TRUE(PumpUntil([&] { return HarnessReadFile(log).find("\nactivate\n") != std::string::npos; }));

    /* The partner ends: the table follows NameOwnerChanged and sends fail. */
    kill(partner, SIGTERM);
    waitpid(partner, nullptr, 0);
    children.clear();
    ASSERT_TRUE(PumpUntil([] { return !Running(kTopolux); }));
    EXPECT_EQ(procNotFound, SendText(kTopolux, {{kKeyMSSG, "HOLA"}}));
}

TEST_F(DBusEvents, LaunchStartsTheApplicationWithItsDocument)
{
    std::string app = dir + "/TOPOLUX", doc = dir + "/City map.map", log = dir + "/partner.log";
    HarnessWriteFile(app, "#!/bin/sh\nexec '" VESK_PATH "' partner --as TPX1 --log '" + log + "' \"$@\"\n", true);
    HarnessWriteFile(doc, "map\n");

    FSSpec appSpec, docSpec;
    ASSERT_EQ(noErr, SpecFor(app, &appSpec));
    ASSERT_EQ(noErr, SpecFor(doc, &docSpec));
    DocumentLaunch launch;
    ASSERT_EQ(noErr, PrepareDocumentLaunch(kTopolux, &appSpec, &docSpec,
                                           launchContinue + launchDontSwitch + launchNoFileFlags, &launch));
    LaunchParamBlockRec &block = launch.block;
    AppleEvent &odoc = launch.odoc;
    ASSERT_EQ(noErr, LaunchApplication(&block));
    ProcessInfoRec info;
    memset(&info, 0, sizeof info);
    info.processInfoLength = 60;
    ASSERT_EQ(noErr, GetProcessInformation(&block.launchProcessSN, &info));
    EXPECT_EQ(kTopolux, info.processSignature);
    children.push_back(info.processPID);
    ASSERT_TRUE(PumpUntil([&] { return HarnessReadFile(log).find("document " + doc + "\n") != std::string::npos; }));

    /* A running application gets the document as an open-document event with a file URL. */
    ASSERT_EQ(noErr, AESend(&odoc, nullptr, 0x31, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr));
    ASSERT_TRUE(PumpUntil([&] {
        return HarnessReadFile(log).find("event aevt/odoc from FMP7\t----=file://" + dir + "/City%20map.map") !=
               std::string::npos;
    }));
    DisposeDocumentLaunch(&launch);

    FSSpec missing;
    ASSERT_EQ(noErr, SpecFor(dir + "/nothing", &missing));
    LaunchParamBlockRec none;
    memset(&none, 0, sizeof none);
    none.launchAppSpec = &missing;
    EXPECT_EQ(fnfErr, LaunchApplication(&none));
}

TEST_F(DBusEvents, ALostBusFailsSendsAndAHandlerInstallReconnects)
{
    pid_t listener = StartVesk({"listen", "--as", "TPX1"});
    ASSERT_GT(listener, 0);
    ASSERT_TRUE(PumpUntil([] { return Running(kTopolux); }));
    StopDaemon();
    AEProcessEvents();
    EXPECT_EQ(connectionInvalid, SendText(kTopolux, {{kKeyMSSG, "HOLA"}}));
    /* In-process events still work without a bus, and the event descriptor says so. */
    struct pollfd ready = {AEGetEventFD(), POLLIN, 0};
    EXPECT_EQ(0, poll(&ready, 1, 0));
    EXPECT_EQ(noErr, SendText(kSelf, {{kKeyMSSG, "SELF"}}));
    EXPECT_EQ(1, poll(&ready, 1, 0));
    EXPECT_EQ(1, AEProcessEvents());
    ASSERT_EQ(1u, gGot.size());

    StartDaemon("bus2");
    EXPECT_EQ(connectionInvalid, SendText(kTopolux, {{kKeyMSSG, "HOLA"}}));
    ASSERT_EQ(noErr, AEInstallEventHandler(kVesk, kAevt, Collect, 0, false));
    EXPECT_TRUE(PlatformBusOwnsSignatureName());
    EXPECT_EQ(procNotFound, SendText(kTopolux, {{kKeyMSSG, "HOLA"}}));

    /* The same descriptor now wakes for events from the new bus. */
    EXPECT_EQ(ready.fd, AEGetEventFD());
    pid_t sender = StartVesk({"send", "--to", "FMP7", "--from", "NMB5", "MSSG=HOLA", "SIGN=NMB5"});
    ASSERT_GT(sender, 0);
    EXPECT_EQ(1, poll(&ready, 1, 20000));
    ASSERT_TRUE(PumpUntil([] { return gGot.size() == 2; }));
    EXPECT_EQ(FOUR_CHAR('N', 'M', 'B', '5'), gGot[1].sender);
    EXPECT_EQ("HOLA", Text(gGot[1], kKeyMSSG));
}

TEST_F(DBusEvents, APrivateDaemonServesAProcessWithoutASessionBus)
{
    PlatformSetProcessSignature(0);
    PlatformBusClose();
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    ASSERT_EQ(noErr, PlatformBusStartPrivateDaemon());
    const char *address = getenv("DBUS_SESSION_BUS_ADDRESS");
    ASSERT_NE(nullptr, address);
    std::string own = address;
    PlatformSetProcessSignature(kSelf);
    EXPECT_TRUE(PlatformBusOwnsSignatureName());
    EXPECT_EQ(own, std::string(PlatformBusAddress()));
    PlatformSetProcessSignature(0);
    PlatformBusClose();
    PlatformBusStopPrivateDaemon();
    EXPECT_EQ(nullptr, getenv("DBUS_SESSION_BUS_ADDRESS"));
}

} // namespace
