/*
 * test_repform.cpp: the identifier test and its fast search, the years of a Repform
 * file, and rewriting its identifiers in place, and their failures.
 */
#include "tests/common/PluginTest.h"

#include <cstring>
#include <random>

#include "files/Repform.h"
#include "host/HostCore.h"
#include "plugin/Plugin.h"
#include "platform/Faults.h"

using FilesTest = InitedPluginTest;

namespace {

int Year(const char *eight)
{
    return RepformYearOfIdentifier(reinterpret_cast<const unsigned char *>(eight));
}

std::string Filler(size_t size)
{
    std::string bytes(size, 0);
    for (size_t i = 0; i < size; i++)
        bytes[i] = "abcdefgh RTR200 \r\n"[i % 18];   /* near misses everywhere */
    return bytes;
}

} // namespace

TEST(RepformIdentifier, AcceptsTheEightPrefixesInAnyCase)
{
    for (const char *prefix : {"CK", "CL", "CM", "CT", "CV", "FA", "FD", "PH", "ck", "cL", "Fd", "pH"}) {
        std::string id = std::string(prefix) + "TR2004";
        EXPECT_EQ(Year(id.c_str()), 2004) << id;
        id[2] = 't';
        EXPECT_EQ(Year(id.c_str()), 2004) << id;
    }
    EXPECT_EQ(Year("CMTR2005"), 2005);
    EXPECT_EQ(Year("fdtR2007"), 2007);
    EXPECT_EQ(Year("PHTR2000"), 2000);
    EXPECT_EQ(Year("CMTR2009"), 2009);
    EXPECT_EQ(Year("CMtr2005"), 0) << "the R must be upper case";
    EXPECT_EQ(Year("CMTr2005"), 0);
    EXPECT_EQ(Year("CATR2005"), 0);
    EXPECT_EQ(Year("FHTR2005"), 0);
    EXPECT_EQ(Year("PATR2005"), 0);
    EXPECT_EQ(Year("CMXR2005"), 0);
    EXPECT_EQ(Year("CMTR2105"), 0);
    EXPECT_EQ(Year("CMTR200a"), 0);
    EXPECT_EQ(Year("\x83MTR2005"), 0);   /* bit 0x20 set on a non-letter */
}

TEST(RepformIdentifier, FastSearchFindsWhatTheTestFindsAtEveryOffset)
{
    std::mt19937 random(4);
    const char alphabet[] = "CKLMTVFADPHckmtvfadphTtRr2009x";
    for (int round = 0; round < 200; round++) {
        size_t length = 8 + random() % 700;   /* past two 256-byte blocks */
        std::vector<unsigned char> data(length + 1);
        for (size_t i = 0; i < length; i++)
            data[i] = (unsigned char)alphabet[random() % (sizeof alphabet - 1)];
        if (round % 2 == 0 && length >= 16) {   /* plant a few whole identifiers */
            for (int k = 0; k < 3; k++)
                memcpy(&data[random() % (length - 7)], "cdTR2003", 8);
        }
        long last = (long)length - 8;
        std::vector<long> expected, found;
        for (long j = 0; j <= last; j++) {
            if (RepformYearOfIdentifier(&data[j]))
                expected.push_back(j);
        }
        int year = 0;
        for (long at = FindNextRepformIdentifier(data.data(), 0, last, &year); at >= 0;
             at = FindNextRepformIdentifier(data.data(), at + 1, last, &year)) {
            EXPECT_EQ(year, RepformYearOfIdentifier(&data[at]));
            found.push_back(at);
        }
        EXPECT_EQ(found, expected) << "round " << round;
    }
}

class RepformTest : public FilesTest {
protected:
    std::string Years(const std::string &arg) { return Call(kTPX1GetRepformYearsFromIDs, arg); }
    std::string Change(const std::string &arg) { return Call(kTPX1ChangeRepformIDsInFile, arg); }
};

TEST_F(RepformTest, YearsOfTheIdentifiers)
{
    folder.Write("Apps/a.rpf", "head CMTR2005 mid fdtR2007 and CMTR2005 again");
    EXPECT_EQ(Years(":a.rpf"), "2005 2007");
    folder.Write("Apps/b.rpf", "only CMtr2005 here, nothing else");
    EXPECT_EQ(Years(":b.rpf"), "");
    folder.Write("Apps/c.rpf", "PHTR2000 at the very start");
    EXPECT_EQ(Years(":c.rpf"), "") << "2000 is never reported";
    folder.Write("Apps/d.rpf", "012345678901CKTR2009");   /* last eight bytes */
    EXPECT_EQ(Years(":d.rpf"), "2009");
    EXPECT_EQ(Years(":missing.rpf"), "");
    EXPECT_TRUE(TakeDialogs().empty());
}

TEST_F(RepformTest, ChangeRewritesEveryIdentifierInPlace)
{
    folder.Write("Apps/c.rpf", "PHTR2000 at the very start, ckTR2008 inside, fdTR2001");
    EXPECT_EQ(Change("2003|:c.rpf"), "");
    EXPECT_EQ(folder.Read("Apps/c.rpf"), "PHTR2003 at the very start, ckTR2003 inside, fdTR2003");
    EXPECT_EQ(Years(":c.rpf"), "2003");
    EXPECT_EQ(Change("2000|" + folder.Classic("Apps:c.rpf")), "");
    EXPECT_EQ(folder.Read("Apps/c.rpf"), "PHTR2000 at the very start, ckTR2000 inside, fdTR2000");
    PlatformFaultSet(kFaultFSWrite, 1000000, ioErr, false);   /* counts the calls */
    EXPECT_EQ(Change("2000|:c.rpf"), "");
    EXPECT_EQ(PlatformFaultCalls(kFaultFSWrite), 0) << "nothing changed, nothing written";
    PlatformFaultClearAll();

    EXPECT_EQ(Change("2003"), "Error: TPX1ChangeRepformIDsInFile requires two parameters (vertical bar not found)");
    EXPECT_EQ(Change("1999|:c.rpf"), "Programmer Error: TPX1ChangeRepformIDsInFile year must be between 2000 and 2009");
    EXPECT_EQ(Change("2010|:c.rpf"), "Programmer Error: TPX1ChangeRepformIDsInFile year must be between 2000 and 2009");
    EXPECT_EQ(folder.Read("Apps/c.rpf"), "PHTR2000 at the very start, ckTR2000 inside, fdTR2000");
    EXPECT_EQ(Change("2004|:missing.rpf"), "");
    EXPECT_FALSE(folder.Exists("Apps/missing.rpf"));
    EXPECT_TRUE(TakeDialogs().empty());
}

TEST_F(RepformTest, NineteenBytesAreLeftAlone)
{
    folder.Write("Apps/s.rpf", "xxCMTR2005xxxxxxxxx");
    EXPECT_EQ(Years(":s.rpf"), "");
    EXPECT_EQ(Change("2001|:s.rpf"), "");
    EXPECT_EQ(folder.Read("Apps/s.rpf"), "xxCMTR2005xxxxxxxxx");
}

/* Three chunks (the first covers file bytes 8 to 300007, the second 300008 to 600007)
 * with identifiers inside them and across both borders; the second write fails. Across
 * the borders the rewrite is the fuzz target's to judge against its model (the replays
 * of its first_border, second_border, repeated and smaller_buffer seeds). */
TEST_F(RepformTest, AFailedWriteLeavesTheEarlierChunksChanged)
{
    std::string bytes = Filler(750000);
    for (size_t at : {100, 299994, 300004, 450000, 600003, 749992})
        memcpy(&bytes[at], "CLTR2002", 8);
    folder.Write("Apps/big.rpf", bytes);
    PlatformFaultSet(kFaultFSWrite, 2, ioErr, false);
    EXPECT_EQ(Change("2007|:big.rpf"), "");
    auto dialogs = TakeDialogs();
    ASSERT_EQ(dialogs.size(), 1u);
    EXPECT_NE(dialogs[0].find("Error: -36"), std::string::npos);
    /* The first write covers file bytes 0 to 299999: only the first identifier changed. */
    std::string expected = bytes;
    expected[100 + 7] = '7';
    EXPECT_TRUE(folder.Read("Apps/big.rpf") == expected);
}

TEST_F(RepformTest, FailuresAreReported)
{
    folder.Write("Apps/a.rpf", "head CMTR2005 mid fdtR2007 tail");
    PlatformFaultSet(kFaultHGetFInfo, 1, ioErr, false);
    EXPECT_EQ(Years(":a.rpf"), "");
    auto dialogs = TakeDialogs();
    ASSERT_EQ(dialogs.size(), 2u);
    EXPECT_EQ(dialogs[0], "Error: hgetfinfo failed.");
    EXPECT_NE(dialogs[1].find("Error: -36"), std::string::npos);

    PlatformFaultSet(kFaultHOpenDF, 1, permErr, false);
    EXPECT_EQ(Change("2001|:a.rpf"), "");
    dialogs = TakeDialogs();
    ASSERT_EQ(dialogs.size(), 2u);
    EXPECT_EQ(dialogs[0], "Error: hopendf failed.");

    PlatformFaultSet(kFaultGetEOF, 1, ioErr, false);
    EXPECT_EQ(Years(":a.rpf"), "");
    EXPECT_TRUE(Contains(TakeDialogs(), "Error: GetEOF failed."));

    /* No memory: the scan says so and reports -108, the rewrite reports -1. */
    FMX_Handle arg = HostNewTextHandle(std::string(":a.rpf", 7));
    FMX_Handle changeArg = HostNewTextHandle(std::string("2001|:a.rpf", 12));
    FMX_Handle result = HostNewTextHandle("");
    HostMemorySetFailure(1, kHostFailFromThenOn);
    Plugin_External(kTPX1GetRepformYearsFromIDs, arg, result);
    EXPECT_EQ(HostMemoryAllocationCount(), 15) << "300000 down to 20000 in steps of 20000";
    Plugin_External(kTPX1ChangeRepformIDsInFile, changeArg, result);
    HostMemorySetFailure(0, kHostFailOff);
    EXPECT_EQ(HostHandleBytes(result), "");
    dialogs = TakeDialogs();
    ASSERT_GE(dialogs.size(), 3u);
    EXPECT_EQ(dialogs[0], "Error: Unable to allocate buffer. (Out of memory)");
    EXPECT_TRUE(Contains(dialogs, "Not enough memory"));
    EXPECT_TRUE(Contains(dialogs, "Error: -1"));
    HostDisposeHandle(arg);
    HostDisposeHandle(changeArg);
    HostDisposeHandle(result);
    EXPECT_EQ(folder.Read("Apps/a.rpf"), "head CMTR2005 mid fdtR2007 tail");
}
