/*
 * test_resources.cpp: plain-text resource files: parsing with escapes and bad lines,
 * Mac Roman texts, the current file, missing files and injected faults.
 */
#include "platform/Faults.h"
#include "platform/Services.h"
#include "tests/common/TestFolder.h"

#include <cstring>
#include <gtest/gtest.h>

static const OSType kSTRList = FOUR_CHAR('S', 'T', 'R', '#');
static const OSType kDLOG = FOUR_CHAR('D', 'L', 'O', 'G');

static std::string IndString(int16_t id, int16_t index)
{
    Str255 s;
    memset(s, 0xAA, sizeof s);
    GetIndString(s, id, index);
    return std::string((const char *)s + 1, s[0]);
}

TEST(PlatformResources, ParsesItemsEscapesAndSkipsBadLines)
{
    TestFolder tmp;
    std::string path = tmp.Write("plugin.rsrc",
        "# comment line\n"
        "STR#\t144\t1\tTPX1-Version\n"
        "STR#\t144\t2\tTab\\there, CR\\rLF\\nback\\\\slash\r\n"
        "\n"
        "STR#\t144\t3\tcaf\xC3\xA9 \xE6\x97\xA5\n"
        "STR#\t144\t4\tbad escape \\q\n"
        "STR#\t144\tx\tbad index\n"
        "STR\t144\t5\tshort type\n"
        "STR#\t99999\t1\tid out of range\n"
        "STR#\t144\t6\n"
        "STR#\t144\t7\twith\ttabs\tinside\n"
        "STR#\t144\t1\tTPX1-Version again\n"
        "DLOG\t23005\t0\tdialog\n"
        "STR \t128\t0\tblank in type\n");
    int16_t ref = OpenResFile(path.c_str());
    ASSERT_GT(ref, 0);
    EXPECT_EQ(ResError(), noErr);
    EXPECT_EQ(CurResFile(), ref);   // opening makes the file current

    EXPECT_EQ(IndString(144, 1), "TPX1-Version again");   // the later line wins
    EXPECT_EQ(IndString(144, 2), "Tab\there, CR\rLF\nback\\slash");
    EXPECT_EQ(IndString(144, 3), "caf\x8E ?");
    EXPECT_EQ(IndString(144, 7), "with\ttabs\tinside");
    for (int16_t missing : {4, 5, 6, 8, 0}) {
        EXPECT_EQ(IndString(144, missing), "") << missing;
        EXPECT_EQ(ResError(), resNotFound);
    }
    EXPECT_EQ(IndString(144, 7).size(), 16u);
    EXPECT_EQ(ResError(), noErr);

    char text[8];
    EXPECT_EQ(GetResourceText(kDLOG, 23005, 0, text, sizeof text), noErr);
    EXPECT_STREQ(text, "dialog");
    EXPECT_EQ(GetResourceText(FOUR_CHAR('S', 'T', 'R', ' '), 128, 0, text, sizeof text), noErr);
    EXPECT_EQ(GetResourceText(kSTRList, 144, 0, text, sizeof text), noErr);   // lowest index
    EXPECT_STREQ(text, "TPX1-Ve");                                              // cut to size
    EXPECT_EQ(GetResourceText(kDLOG, 23006, 0, text, sizeof text), resNotFound);
    EXPECT_STREQ(text, "");
    CloseResFile(ref);
    EXPECT_EQ(CurResFile(), 0);
}

TEST(PlatformResources, CurrentFileAndMissingFiles)
{
    TestFolder tmp;
    std::string a = tmp.Write("a.rsrc", "STR#\t1\t1\tfrom a\n");
    std::string b = tmp.Write("b.rsrc", "STR#\t1\t1\tfrom b\n");
    int16_t refA = OpenResFile(a.c_str());
    int16_t refB = OpenResFile(b.c_str());
    ASSERT_GT(refA, 0);
    ASSERT_GT(refB, 0);
    EXPECT_NE(refA, refB);
    EXPECT_EQ(IndString(1, 1), "from b");
    UseResFile(refA);
    EXPECT_EQ(CurResFile(), refA);
    EXPECT_EQ(IndString(1, 1), "from a");   // only the current file is searched
    UseResFile(0);
    EXPECT_EQ(IndString(1, 1), "");
    UseResFile(999);                        // names no file: accepted, finds nothing
    EXPECT_EQ(CurResFile(), 999);
    EXPECT_EQ(IndString(1, 1), "");
    EXPECT_EQ(ResError(), resNotFound);

    CloseResFile(refA);
    int16_t again = OpenResFile(a.c_str());   // the freed number is used again
    EXPECT_EQ(again, refA);
    CloseResFile(again);
    CloseResFile(refB);

    EXPECT_EQ(OpenResFile(tmp.Posix("missing.rsrc").c_str()), -1);
    EXPECT_EQ(ResError(), fnfErr);
    EXPECT_EQ(OpenResFile(tmp.Posix().c_str()), -1);   // a folder is no resource file
    EXPECT_NE(ResError(), noErr);

    PlatformFaultSet(kFaultOpenResFile, 1, memFullErr, false);
    EXPECT_EQ(OpenResFile(a.c_str()), -1);
    EXPECT_EQ(ResError(), memFullErr);
    PlatformFaultSet(kFaultGetIndString, 1, ioErr, false);
    int16_t ref = OpenResFile(a.c_str());
    EXPECT_EQ(IndString(1, 1), "");
    EXPECT_EQ(ResError(), ioErr);
    EXPECT_EQ(IndString(1, 1), "from a");
    CloseResFile(ref);
    PlatformFaultClearAll();
}

// A store installed by a test replaces the files; the wrappers still keep the
// current file and the error.
static int16_t gLastLookup;
static OSErr FakeText(int16_t refNum, OSType type, int16_t id, int16_t index, char *dest, int32_t destSize)
{
    gLastLookup = refNum;
    snprintf(dest, destSize, "fake %d", index);
    return noErr;
}

TEST(PlatformResources, InstalledStore)
{
    static const Tpx1ResourceMethods fake = {[](const char *) -> int16_t { return 7; },
                                             [](int16_t) {}, FakeText};
    const Tpx1ResourceMethods *previous = PlatformInstallResources(&fake);
    EXPECT_EQ(OpenResFile("/nowhere"), 7);
    EXPECT_EQ(IndString(5, 3), "fake 3");
    EXPECT_EQ(gLastLookup, 7);
    CloseResFile(7);
    EXPECT_EQ(PlatformInstallResources(previous), &fake);
}
