/*
 * test_dbus_events.cpp: launching with a document on a real bus (a private dbus-daemon,
 * vesk as the application), as the plug-in hands a document to a partner: an
 * open-document event with the document's file URL, coerced to launch parameters. The
 * application starts with the document's path as its argument, answers to its
 * signature, and once running takes the same event, addressed by its serial number,
 * over the bus. The rest of the D-Bus transport is tested through fmhost and the
 * plug-in (tests/iac_bus, tests/ipc_faults).
 */
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "PrivateBusTest.h"
#include "platform/AppleEvents.h"
#include "platform/EventService.h"
#include "platform/Processes.h"
#include "platform/Toolbox.h"

namespace {

const OSType kTopolux = FOUR_CHAR('T', 'P', 'X', '1');

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

class DBusEvents : public PrivateBusTest {
protected:
    void SetUp() override
    {
        PrivateBusTest::SetUp();
        PlatformSetProcessSignature(FOUR_CHAR('F', 'M', 'P', '7'));
        ASSERT_TRUE(PlatformBusOwnsSignatureName());
    }
    void TearDown() override
    {
        PlatformSetProcessSignature(0);
        PlatformBusClose();
        PrivateBusTest::TearDown();
    }
};

TEST_F(DBusEvents, LaunchStartsTheApplicationWithItsDocument)
{
    std::string doc = temp + "/City map.map", log = temp + "/partner.log";
    std::string url = "file://" + temp + "/City%20map.map";
    std::string app = Install("TOPOLUX Folder", "TOPOLUX", Partner("TPX1", "TOPOLUX", log));
    HarnessWriteFile(doc, "map\n");

    AEAddressDesc target;
    AppleEvent odoc;
    AEDesc parameters;
    ASSERT_EQ(noErr, AECreateDesc(typeApplSignature, &kTopolux, 4, &target));
    ASSERT_EQ(noErr, AECreateAppleEvent(kCoreEventClass, kAEOpenDocuments, &target, kAutoGenerateReturnID, 0, &odoc));
    ASSERT_EQ(noErr, AEPutParamPtr(&odoc, keyDirectObject, typeFileURL, url.data(), (int32_t)url.size()));
    ASSERT_EQ(noErr, AECoerceDesc(&odoc, typeAppParameters, &parameters));
    FSSpec appSpec;
    ASSERT_EQ(noErr, SpecFor(app, &appSpec));
    LaunchParamBlockRec block;
    memset(&block, 0, sizeof block);
    block.launchBlockID = extendedBlock;
    block.launchEPBLength = extendedBlockLen;
    block.launchControlFlags = launchContinue + launchDontSwitch + launchNoFileFlags;
    block.launchAppSpec = &appSpec;
    block.launchAppParameters = (AppParameters *)parameters.dataHandle;
    ASSERT_EQ(noErr, LaunchApplication(&block));
    ProcessInfoRec info;
    memset(&info, 0, sizeof info);
    info.processInfoLength = 60;
    ASSERT_EQ(noErr, GetProcessInformation(&block.launchProcessSN, &info));
    EXPECT_EQ(kTopolux, info.processSignature);
    EXPECT_EQ(Started(), std::vector<pid_t>{info.processPID});
    auto logged = [&](const std::string &text) {
        return WaitFor([&] { return HarnessReadFile(log).find(text) != std::string::npos; });
    };
    EXPECT_TRUE(logged("document " + doc + "\n")) << HarnessReadFile(log);

    /* Running, it gets the document as an open-document event with the file URL,
     * addressed by its serial number. */
    AEDisposeDesc(&odoc);
    AEDisposeDesc(&target);
    ASSERT_EQ(noErr, AECreateDesc(typeProcessSerialNumber, &block.launchProcessSN, sizeof block.launchProcessSN,
                                  &target));
    ASSERT_EQ(noErr, AECreateAppleEvent(kCoreEventClass, kAEOpenDocuments, &target, kAutoGenerateReturnID, 0, &odoc));
    ASSERT_EQ(noErr, AEPutParamPtr(&odoc, keyDirectObject, typeFileURL, url.data(), (int32_t)url.size()));
    ASSERT_EQ(noErr, AESend(&odoc, nullptr, kAENoReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr));
    EXPECT_TRUE(logged("event aevt/odoc from FMP7\t----=" + url)) << HarnessReadFile(log);
    AEDisposeDesc(&parameters);
    AEDisposeDesc(&odoc);
    AEDisposeDesc(&target);

    FSSpec missing;
    ASSERT_EQ(noErr, SpecFor(temp + "/nothing", &missing));
    LaunchParamBlockRec none;
    memset(&none, 0, sizeof none);
    none.launchAppSpec = &missing;
    EXPECT_EQ(fnfErr, LaunchApplication(&none));
}

} // namespace
