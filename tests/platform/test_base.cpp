/*
 * test_base.cpp: fault injection (calls, once, persistent, TPX1_FAULTS at load),
 * settings, the Mac Roman conversions, the tick clocks and the reset of every service.
 */
#include "platform/AppleEvents.h"
#include "platform/Faults.h"
#include "platform/Files.h"
#include "platform/Processes.h"
#include "platform/Services.h"
#include "platform/TestBus.h"
#include "tests/common/TestFolder.h"

#include <cstring>
#include <fcntl.h>
#include <vector>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>

extern char **environ;

TEST(PlatformFaults, OnceAndPersistentAndCounters)
{
    PlatformFaultClearAll();
    EXPECT_EQ(PlatformFaultCheck(kFaultFSRead), noErr);
    EXPECT_EQ(PlatformFaultCalls(kFaultFSRead), 1);   // counted without a fault too

    PlatformFaultSet(kFaultFSRead, 3, ioErr, false);
    EXPECT_EQ(PlatformFaultCheck(kFaultFSRead), noErr);
    EXPECT_EQ(PlatformFaultCheck(kFaultFSWrite), noErr);   // other points unaffected
    EXPECT_EQ(PlatformFaultCheck(kFaultFSRead), noErr);
    EXPECT_EQ(PlatformFaultCheck(kFaultFSRead), ioErr);
    EXPECT_EQ(PlatformFaultCheck(kFaultFSRead), noErr);    // once only
    EXPECT_EQ(PlatformFaultCalls(kFaultFSRead), 4);
    EXPECT_EQ(PlatformFaultHits(kFaultFSRead), 1);

    PlatformFaultSet(kFaultFSRead, 2, dskFulErr, true);    // replaces, counting restarts
    EXPECT_EQ(PlatformFaultCalls(kFaultFSRead), 0);
    EXPECT_EQ(PlatformFaultCheck(kFaultFSRead), noErr);
    for (int i = 0; i < 3; i++) EXPECT_EQ(PlatformFaultCheck(kFaultFSRead), dskFulErr);
    EXPECT_EQ(PlatformFaultHits(kFaultFSRead), 3);

    PlatformFaultClear(kFaultFSRead);
    EXPECT_EQ(PlatformFaultCheck(kFaultFSRead), noErr);
    EXPECT_EQ(PlatformFaultCalls(kFaultFSRead), 1);
    EXPECT_EQ(PlatformFaultHits(kFaultFSRead), 0);
    PlatformFaultClearAll();
    EXPECT_EQ(PlatformFaultCalls(kFaultFSRead), 0);
    for (int point = 0; point < kFaultPointCount; point++)   // names and look-up agree
        EXPECT_EQ(PlatformFaultPointNamed(PlatformFaultPointName(point)), point);
}

TEST(PlatformFaults, ParseListNamesEveryItemNotApplied)
{
    PlatformFaultClearAll();
    char report[512];
    EXPECT_EQ(PlatformFaultParse("HOpenDF:1:-43,AESend:2:-1712:always", report, sizeof report), 0);
    EXPECT_STREQ(report, "");
    EXPECT_EQ(PlatformFaultCheck(kFaultHOpenDF), fnfErr);
    EXPECT_EQ(PlatformFaultCheck(kFaultAESend), noErr);
    EXPECT_EQ(PlatformFaultCheck(kFaultAESend), errAETimeout);
    EXPECT_EQ(PlatformFaultCheck(kFaultAESend), errAETimeout);

    const char *list = "FSRead:1:-36,FSRead:0:-36,FSWrite:1,GetEOF:x:-1,FSClose:1:-36:sometimes,"
                       "FSReed:1:-36,SetFPos:1:-50,SetFPos:2:-39";
    EXPECT_EQ(PlatformFaultParse(list, report, sizeof report), 6) << report;
    for (const char *item : {"\"FSRead:0:-36\"", "\"FSWrite:1\"", "\"GetEOF:x:-1\"", "\"FSClose:1:-36:sometimes\"",
                             "\"FSReed:1:-36\"", "\"SetFPos:1:-50\" dropped"})
        EXPECT_NE(strstr(report, item), nullptr) << item << " in\n" << report;
    EXPECT_EQ(PlatformFaultCheck(kFaultFSRead), ioErr);   // good items around them still apply
    EXPECT_EQ(PlatformFaultCheck(kFaultSetFPos), noErr);
    EXPECT_EQ(PlatformFaultCheck(kFaultSetFPos), eofErr);
    EXPECT_EQ(PlatformFaultCheck(kFaultFSClose), noErr);
    EXPECT_EQ(PlatformFaultParse(list, report, 40), 6);   // a short report is cut, marked
    EXPECT_EQ(strlen(report), 39u);
    EXPECT_STREQ(report + 36, "...");
    PlatformFaultClearAll();
}

// Runs this test binary again with TPX1_FAULTS set; the child side checks what the
// library read at load, the parent what it reported on stderr.
TEST(PlatformFaults, EnvironmentAtLoad)
{
    if (getenv("TPX1_TEST_FAULTS_CHILD")) {
        EXPECT_EQ(PlatformFaultCheck(kFaultFSRead), noErr);
        EXPECT_EQ(PlatformFaultCheck(kFaultFSRead), ioErr);
        EXPECT_EQ(PlatformFaultCheck(kFaultPBGetCatInfoSync), fnfErr);
        EXPECT_EQ(PlatformFaultCheck(kFaultPBGetCatInfoSync), fnfErr);
        return;
    }
    TestFolder tmp;
    std::string errPath = tmp.Posix("stderr");
    std::string filter = "--gtest_filter=PlatformFaults.EnvironmentAtLoad";
    char self[4096];
    ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    ASSERT_GT(n, 0);
    self[n] = 0;
    std::vector<std::string> env = {"TPX1_TEST_FAULTS_CHILD=1",
                                    "TPX1_FAULTS=FSRead:2:-36,nonsense,PBGetCatInfoSync:1:-43:always,Bogus:1:-1"};
    for (char **e = environ; *e; e++)
        if (strncmp(*e, "TPX1_", 5) != 0) env.push_back(*e);
    std::vector<char *> envp;
    for (auto &e : env) envp.push_back(e.data());
    envp.push_back(nullptr);
    char *argv[] = {self, filter.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t pid;
    ASSERT_EQ(posix_spawn(&pid, self, &actions, nullptr, argv, envp.data()), 0);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    std::string err = tmp.Read("stderr");
    size_t at = err.find("\"nonsense\"");
    EXPECT_NE(at, std::string::npos) << err;
    EXPECT_EQ(err.find("\"nonsense\"", at + 1), std::string::npos);   // reported once
    EXPECT_NE(err.find("\"Bogus:1:-1\""), std::string::npos) << err;     // and so is every other
}

TEST(PlatformSettings, WithAndWithoutPrefix)
{
    setenv("TPX1_TEST_SETTING", "value", 1);
    EXPECT_STREQ(PlatformSetting("TPX1_TEST_SETTING"), "value");
    EXPECT_STREQ(PlatformSetting("TEST_SETTING"), "value");
    unsetenv("TPX1_TEST_SETTING");
    EXPECT_EQ(PlatformSetting("TEST_SETTING"), nullptr);
    EXPECT_EQ(PlatformSetting(nullptr), nullptr);
}

TEST(PlatformMacRoman, AllBytesRoundTrip)
{
    char mac[256], utf8[1024], back[257];
    for (int i = 0; i < 256; i++) mac[i] = (char)i;
    int32_t n = PlatformMacRomanToUTF8(mac, 256, utf8, sizeof utf8);
    ASSERT_GT(n, 256);
    EXPECT_EQ(utf8[n], 0);
    int32_t bad = 0;
    ASSERT_EQ(PlatformUTF8ToMacRoman(utf8, n, back, sizeof back, &bad), 256);
    EXPECT_EQ(bad, -1);
    EXPECT_EQ(memcmp(mac, back, 256), 0);

    char e[8];   // e acute is 0x8E in Mac Roman
    EXPECT_EQ(PlatformMacRomanToUTF8("\x8E", -1, e, sizeof e), 2);
    EXPECT_STREQ(e, "\xC3\xA9");
    EXPECT_EQ(PlatformMacRomanToUTF8("\x8E", -1, e, 2), -1);   // no room for the NUL
}

TEST(PlatformMacRoman, UnmappableBecomesQuestionMark)
{
    char out[32];
    int32_t bad = 0;
    // "ab", a CJK character (3 bytes), "c", a stray 0xFF byte, an e acute, a cut-off sequence
    const char *src = "ab\xE6\x97\xA5" "c\xFF\xC3\xA9\xE6\x97";
    EXPECT_EQ(PlatformUTF8ToMacRoman(src, -1, out, sizeof out, &bad), 7);
    EXPECT_STREQ(out, "ab?c?\x8E?");
    EXPECT_EQ(bad, 2);
    EXPECT_EQ(PlatformUTF8ToMacRoman("plain", -1, out, sizeof out, &bad), 5);
    EXPECT_EQ(bad, -1);
    EXPECT_EQ(PlatformUTF8ToMacRoman("plain", -1, out, 5, &bad), -1);
    EXPECT_EQ(PlatformUTF8ToMacRoman("", 0, out, 1, nullptr), 0);
}

TEST(PlatformClock, ManualClockWrapsAndAdvances)
{
    PlatformClockUseManual(0xFFFFFFF0u, 10);
    EXPECT_EQ(TickCount(), 0xFFFFFFF0u);
    EXPECT_EQ(TickCount(), 0xFFFFFFFAu);
    EXPECT_EQ(TickCount(), 4u);                 // wrapped
    PlatformClockUseManual(100, 0);
    EXPECT_EQ(TickCount(), 100u);
    EXPECT_EQ(TickCount(), 100u);
    PlatformClockAdvance(600);
    EXPECT_EQ(TickCount(), 700u);
    EXPECT_EQ((uint32_t)(TickCount() - 0xFFFFFF00u), 700u + 0x100u);   // wrap-safe difference

    static const Tpx1ClockMethods fixed = {[]() -> uint32_t { return 42; }};
    const Tpx1ClockMethods *previous = PlatformInstallClock(&fixed);
    EXPECT_EQ(TickCount(), 42u);
    EXPECT_EQ(PlatformInstallClock(previous), &fixed);
    EXPECT_EQ(TickCount(), 700u);

    PlatformClockUseReal();
    uint32_t a = TickCount(), b = TickCount();
    EXPECT_LT(b - a, 0x80000000u);   // the real clock does not run backwards
}

static OSErr IgnoreEvent(const AppleEvent *, AppleEvent *, intptr_t)
{
    return noErr;
}

TEST(PlatformReset, EveryServiceAsTheProcessStarted)
{
    TestFolder tmp;
    tmp.Write("open.txt", "x");
    std::string classic = tmp.Classic("open.txt");
    Str255 name = {(unsigned char)classic.size()};
    memcpy(name + 1, classic.data(), classic.size());
    int16_t refNum = 0;
    ASSERT_EQ(HOpenDF(0, 0, name, fsRdPerm, &refNum), noErr);
    ASSERT_GT(OpenResFile(tmp.Write("a.rsrc", "STR#\t1\t1\tx\n").c_str()), 0);
    PlatformFaultSet(kFaultFSRead, 1, ioErr, true);
    PlatformClockUseManual(5, 0);
    PlatformDialogUseRecorder();
    SysBeep(1);
    PlatformBusUseMemory();
    PlatformSetProcessSignature(FOUR_CHAR('A', 'B', 'C', 'D'));
    ASSERT_EQ(AEInstallEventHandler(FOUR_CHAR('T', 'E', 'S', 'T'), typeWildCard, IgnoreEvent, 0, false), noErr);

    PlatformResetAll();
    int32_t length;
    EXPECT_NE(GetEOF(refNum, &length), noErr) << "the file is still open";
    EXPECT_EQ(CurResFile(), 0);
    EXPECT_EQ(PlatformFaultCalls(kFaultFSRead), 0);
    EXPECT_NE(TickCount(), 5u) << "still the manual clock";
    EXPECT_EQ(PlatformBeepCount(), 0);
    EXPECT_EQ(PlatformProcessSignature(), 0u);
    EXPECT_EQ(AERemoveEventHandler(FOUR_CHAR('T', 'E', 'S', 'T'), typeWildCard, IgnoreEvent, false),
              errAEEventNotHandled);
}

