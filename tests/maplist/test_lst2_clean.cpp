/*
 * test_lst2_clean.cpp: cleaning the outgoing map object list (invalid identifiers and
 * repeated lines go, first occurrences stay in place, letter case ignored), checked case
 * by case and against a direct model on random lists; the stir's draws; no memory for
 * the sort records; copying the incoming list out and renaming 'LSTA'.
 */
#include <cstdlib>
#include <random>

#include "Lst2TestHost.h"
#include "maplist/Lst2.h"
#include "text/TextUtils.h"

namespace {

const std::string kA = "0123456789ABCDEF\tRoads\tCounty\r";
const std::string kB = "FEDCBA9876543210\tRivers\tCounty\r";
const std::string kC = "00000000FFFFFFFF\tWells\tCounty\r";

class Lst2Clean : public Lst2Test {
protected:
    /* Sets the outgoing list, cleans it and returns what is left (with its NUL). */
    std::string Clean(const std::string &list)
    {
        Call(kTPX1SetParameter, "LST2|" + list);
        Call(kTPX1ProcessLST2ParameterForTopolux, "");
        return Outgoing("LST2");
    }
};

std::string Z(const std::string &text)
{
    return text + std::string(1, '\0');
}

TEST_F(Lst2Clean, InvalidAndRepeatedLinesGoFirstOccurrencesStay)
{
    EXPECT_EQ(Z("not a list line"), Clean("not a list line")) << "one line stays, even malformed";
    EXPECT_EQ(Z("bad\r"), Clean("bad\r")) << "a final break adds no line";
    EXPECT_EQ(Z(kA + kB + kC), Clean(kA + kB + kA + kC + kB));
    EXPECT_EQ(Z(kA + kB), Clean(kA + kB + kA)) << "the break before a deleted last line stays";
    EXPECT_EQ(Z(kA + kB), Clean(kA + kB + kA.substr(0, kA.size() - 1))) << "equal up to the end of the text";
    EXPECT_EQ(Z("0123456789ABCDEF\tRoads\tCounty\r" + kB),
              Clean("0123456789ABCDEF\tRoads\tCounty\r" + kB + "0123456789ABCDEF\tROADS\tcounty\r"))
        << "lines equal but for letter case: the later one goes, the first keeps its case";
    EXPECT_EQ(Z("0123456789ABCDEF\tr\xe9sum\xe9\r"), Clean("0123456789ABCDEF\tr\xe9sum\xe9\r"
                                                           "0123456789ABCDEF\tR\xe9SUM\xe9\r"))
        << "accents fold as mytoupper folds them";
    EXPECT_EQ(Z("0123456789ABCDEF\tr\x8esum\x8f\r0123456789ABCDEF\tR\x83SUM\x83\r"),
              Clean("0123456789ABCDEF\tr\x8esum\x8f\r0123456789ABCDEF\tR\x83SUM\x83\r"))
        << "small e acute (142) does not fold";
    EXPECT_EQ(Z(kA + "0123456789ABCDEF\tRivers\tCounty\r"),
              Clean(kA + "0123456789ABCDEF\tRivers\tCounty\r")) << "same identifier, other layer: kept";
    EXPECT_EQ(Z(kA + kC), Clean("0123456789abcdef\tRoads\tCounty\r" + kA + "0123456789ABCDE\tRoads\tCounty\r" +
                                "0123456789ABCDEF Roads\r" + "0123456789ABCDEFA\tRoads\r" + kC + "\r" +
                                "0123456789ABCDEG\tx\r"))
        << "lower-case hex, 15 characters, no TAB after 16, empty and non-hex lines go";
    EXPECT_EQ(Z(kA + "FEDCBA9876543210\tRiv" "ers\tCounty\r"),
              Clean(kA + "\x01\x01\r" + "FEDCBA9876543210\tRiv\x01" "ers\tCounty\r"))
        << "stray 0x01 bytes are removed with the deleted lines";
    EXPECT_EQ(Z(kB + "0123456789ABCDEF\t\tRoads\r" + "0123456789ABCDEF\tRoads\r"),
              Clean(kB + "0123456789ABCDEF\t\tRoads\r" + "0123456789ABCDEF\tRoads\r"))
        << "lines differing in their TABs are different lines";
    /* CR LF and LF end lines too; the cleaned list ends its lines in CR. */
    EXPECT_EQ(Z(kA + kB + kC), Clean(WithLineEnds(kA + kB + kA + kC, "\r\n")));
    EXPECT_EQ(Z(kA + kB + kC), Clean(WithLineEnds(kA + kB + kA + kC, "\n")));
    EXPECT_EQ(Z(kA + kB + kC), Clean(WithLineEnds(kA, "\n") + WithLineEnds(kB, "\r\n") + kA + WithLineEnds(kC, "\n"))) << "mixed ends";
    EXPECT_EQ(Z(kA + kB), Clean(WithLineEnds(kA, "\n") + WithLineEnds(kB, "\n\r") + "\n"))
        << "LF then CR is two breaks: the empty line between them goes";
    EXPECT_EQ(Z("bad\r\n"), Clean("bad\r\n")) << "one line stays as it is, its break too";
    EXPECT_EQ(0, DialogCount());
}

TEST_F(Lst2Clean, NothingToCleanAndNoMemory)
{
    Call(kTPX1ProcessLST2ParameterForTopolux, "");
    EXPECT_EQ("<none>", Outgoing("LST2"));
    EXPECT_EQ(0, DialogCount()) << "no outgoing list: silence";

    std::string list = kA + kB + kA;
    Call(kTPX1SetParameter, "LST2|" + list);
    HostMemorySetFailure(2, kHostFailFromThenOn);   /* 1: the argument's terminator; 2: the records */
    Call(kTPX1ProcessLST2ParameterForTopolux, "");
    HostMemorySetFailure(0, kHostFailOff);
    EXPECT_EQ(Z(list), Outgoing("LST2")) << "list unchanged";
    ASSERT_EQ(1, DialogCount());
    EXPECT_NE(std::string::npos, DialogText(0).find("Not enough memory")) << DialogText(0);
}

TEST_F(Lst2Clean, StirDrawsTwoNumbersPerRoundAndChangesNothing)
{
    std::string list;
    for (int i = 0; i < 45; i++)
        list += (i % 3 ? kA : kB);
    srand(7);
    std::vector<int> draws;
    for (int i = 0; i < 7; i++)
        draws.push_back(rand());
    srand(7);
    EXPECT_EQ(Z(kB + kA), Clean(list));
    EXPECT_EQ(draws[6], rand()) << "45 lines: 45/20+1 = 3 rounds of two draws";
    for (unsigned seed : {1u, 99u, 12345u}) {
        srand(seed);
        EXPECT_EQ(Z(kB + kA), Clean(list));
    }
}

/* The cleaning stated directly: a line stays when it is valid and no earlier valid line
 * equals it after upper-casing, and ends in CR when it had a break (CR, LF or CR LF);
 * lists of fewer than two lines stay as they are. */
std::string ModelClean(const std::string &text)
{
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find_first_of("\r\n", start);
        if (end == std::string::npos) {
            lines.push_back(text.substr(start));
            break;
        }
        lines.push_back(text.substr(start, end - start) + "\r");
        start = end + (text.compare(end, 2, "\r\n") == 0 ? 2 : 1);
    }
    if (lines.size() < 2)
        return text;
    std::vector<std::string> keptUpper;
    std::string out;
    for (const std::string &line : lines) {
        bool valid = line.size() > 16 && line[16] == '\t';
        for (int i = 0; valid && i < 16; i++)
            valid = (line[i] >= '0' && line[i] <= '9') || (line[i] >= 'A' && line[i] <= 'F');
        if (!valid)
            continue;
        std::string upper = line.back() == '\r' ? line.substr(0, line.size() - 1) : line;
        for (char &c : upper)
            c = mytoupper(c);
        bool repeat = false;
        for (const std::string &k : keptUpper)
            repeat = repeat || k == upper;
        if (repeat)
            continue;
        keptUpper.push_back(upper);
        out += line;
    }
    std::string squeezed;
    for (char c : out)
        if (c != '\x01')
            squeezed += c;
    return squeezed;
}

TEST_F(Lst2Clean, RandomListsMatchTheModelInSmallAndLargeGroups)
{
    const char *ids[] = {"0123456789ABCDEF", "0123456789abcdef", "0123456789ABCDE", "FFFFFFFFFFFFFFFF",
                         "0123456789ABCDEF0", "AAAAAAAAAAAAAAAA"};
    const char *names[] = {"Roads", "ROADS", "roads", "R\x01oads", "", "Wells", "w\x8e" "lls", "W\x83LLS"};
    std::mt19937 random(20240611);
    for (int round = 0; round < 60; round++) {
        int lineCount = round < 50 ? (int)(random() % 40) : 400;   /* 400: groups beyond 32 */
        const char *ends[] = {"\r", "\r", "\n", "\r\n"};
        std::string list;
        for (int i = 0; i < lineCount; i++) {
            const char *end = ends[round < 20 ? 0 : random() % 4];   /* the first rounds: CR only */
            if (random() % 17 == 0) {
                list += end;
                continue;
            }
            list += std::string(ids[random() % (round < 50 ? 6 : 2)]) + "\t" + names[random() % 8] + "\t" +
                    names[random() % 8];
            if (i + 1 < lineCount || random() % 2)
                list += end;
        }
        std::string expected = ModelClean(list);
        char buffer[32768];
        memcpy(buffer, list.c_str(), list.size() + 1);
        long newLength = -1;
        ASSERT_EQ(noErr, CleanLST2Text(buffer, &newLength));
        ASSERT_EQ(expected, std::string(buffer)) << "round " << round;
        ASSERT_EQ((long)expected.size() + 1, newLength);
        if (round % 10 == 0) {
            ASSERT_EQ(Z(expected), Clean(list)) << "through the function, round " << round;
        }
    }
}

TEST_F(Lst2Clean, CopyIncomingToOutgoingAndRenameLSTA)
{
    Call(kTPX1CopyIncomingLST2ToOutgoingLST2, "");
    EXPECT_EQ("", Outgoing("LST2")) << "no incoming list: the empty text";

    Receive({"MSSG", "SHOW", "LSTA", kA + kB});
    EXPECT_EQ("", Call(kTPX1GetParameterLST2Line, "0"));
    Call(kTPX1RenameIncomingLSTAtoLST2, "");
    EXPECT_EQ("<none>", Incoming("LSTA"));
    EXPECT_EQ(kA.substr(0, kA.size() - 1), Call(kTPX1GetParameterLST2Line, "0"));
    Call(kTPX1CopyIncomingLST2ToOutgoingLST2, "");
    EXPECT_EQ(Z(kA + kB), Outgoing("LST2"));
    EXPECT_EQ(Z(kA + kB), Incoming("LST2")) << "the incoming list stays";

    Receive({"MSSG", "SHOW"});
    Call(kTPX1RenameIncomingLSTAtoLST2, "");
    EXPECT_EQ("<none>", Incoming("LST2")) << "no LSTA: no effect";
    EXPECT_EQ(0, DialogCount());
}

}  // namespace
