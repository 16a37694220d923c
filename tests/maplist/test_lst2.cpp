/*
 * test_lst2.cpp: the map object lists. Reading an incoming list: the column format
 * (fields, runs of TABs, line limits, the ten-word limit, unknown words, "FILE", letter
 * case), one line of the list by number, one line of any text, latitude and longitude.
 * Cleaning the outgoing list case by case (invalid identifiers and repeated lines go,
 * first occurrences stay in place, letter case ignored; against its model the fuzz
 * target's replays judge it), no memory for the sort records; copying the incoming list
 * out and renaming 'LSTA'.
 */
#include "fuzz/TestHooks.h"
#include "maplist/Lst2.h"
#include "store/MessageLists.h"
#include "tests/common/PluginTest.h"

namespace {

class Lst2Test : public InitedPluginTest {
protected:
    /* Archives a message of (keyword, value) pairs and makes it the incoming message. */
    static void Receive(const std::vector<std::string> &keywordValuePairs)
    {
        std::vector<const char *> pairs;
        for (const std::string &s : keywordValuePairs)
            pairs.push_back(s.c_str());
        ASSERT_EQ(noErr, ArchiveMessageForTesting(pairs.data(), (int)pairs.size() / 2));
        Call(kTPX1GetNextMessage, "");
    }
    /* A parameter's bytes, "" without a value, "<none>" when the list lacks it. */
    static std::string Parameter(const char *keyword, DataNode *first)
    {
        DataNode *node = FindDataNodeInList(keyword, first);
        return node == nullptr ? "<none>" : node->data != nullptr ? HostHandleBytes(node->data) : "";
    }
    static std::string Outgoing(const char *keyword)
    {
        return Parameter(keyword, gOutgoingUserMessageParameterDataNodeList);
    }
    static std::string Incoming(const char *keyword)
    {
        return Parameter(keyword, gIncomingMessageParameterDataNodeList);
    }
    /* Sets the outgoing list, cleans it and returns what is left (with its NUL). */
    static std::string Clean(const std::string &list)
    {
        Call(kTPX1SetParameter, "LST2|" + list);
        Call(kTPX1ProcessLST2ParameterForTopolux, "");
        return Outgoing("LST2");
    }
};
using Lst2Clean = Lst2Test;

/* The list with every CR replaced by another line end (LF, CR LF, ...). */
std::string WithLineEnds(const std::string &list, const std::string &end)
{
    std::string out;
    for (char c : list)
        out += c == '\r' ? end : std::string(1, c);
    return out;
}


const std::string kId1 = "0123456789ABCDEF";
const std::string kId2 = "FEDCBA9876543210";
const std::string kId3 = "1111222233334444";
const std::string k63(63, 'L');
const std::string k64(64, 'L');

/* Valid lines 0, 2, 3, 6 and 9; the others break one rule each. */
const std::string kList =
    kId1 + "\tLayer A\tMap 1\r"                          /* 0 valid */
    "0123456789ABCDE\tLayer X\tMap X\r"                  /* 1 15-character identifier */
    + kId2 + "\t\t\tLayer B\t\tMap 2\textra\tfields\r"   /* 2 runs of TABs, extra fields */
    "\t" + kId3 + "\tLayer C\tMap 3\r"                   /* 3 leading TAB skipped */
    + kId1 + "\t\tOnly\r"                                /* 4 the name becomes the layer: no map */
    + kId1 + "\t" + k64 + "\tMap\r"                      /* 5 layer of 64 characters */
    + kId2 + "\t" + k63 + "\t" + k63 + "\r"              /* 6 both names of 63 characters */
    + kId2 + "\tLayer\t" + k64 + "\r"                    /* 7 map name of 64 characters */
    "\r"                                                 /* 8 empty */
    "abcdef0123456789\tlow\tcase";                       /* 9 valid here: only lengths count */

TEST_F(Lst2Test, ColumnFormatTakesValidLinesInTheChosenColumns)
{
    Receive({"MSSG", "SHOW", "LST2", kList});
    EXPECT_EQ(kId1 + "\r" + kId2 + "\r" + kId3 + "\r" + kId2 + "\r" + "abcdef0123456789\r",
              Call(kTPX1GetParameterLST2, "TOPOLUXID RETURN"));
    EXPECT_EQ(kId1 + "\tMap 1\r" + kId2 + "\tMap 2\r" + kId3 + "\tMap 3\r" + kId2 + "\t" + k63 + "\r" +
                  "abcdef0123456789\tcase\r",
              Call(kTPX1GetParameterLST2, "TOPOLUXID\tTAB \t MAPNAME  RETURN"));
    /* Lower-case words; no RETURN, so no break between objects. */
    EXPECT_EQ("\t" + kId1 + "\t" + kId2 + "\t" + kId3 + "\t" + kId2 + "\tabcdef0123456789",
              Call(kTPX1GetParameterLST2, "tab TopoluxID"));
    /* An unknown word ends the line at its place. */
    EXPECT_EQ("Map 1Map 2Map 3" + k63 + "case", Call(kTPX1GetParameterLST2, "MAPNAME LAYERS LAYERNAME"));
    EXPECT_EQ("Layer A Map 1\rLayer B Map 2\rLayer C Map 3\r" + k63 + " " + k63 + "\rlow case\r",
              Call(kTPX1GetParameterLST2, "LAYERNAME SPACE MAPNAME RETURN"));
    /* Only the first ten words count. */
    std::string blanks = std::string(9, ' ') + "\r";
    EXPECT_EQ(blanks + blanks + blanks + blanks + blanks,
              Call(kTPX1GetParameterLST2, "space space space space space space space space space return "
                                        "TOPOLUXID RETURN"));
    /* LF and CR LF end lines as CR does; the output's breaks are CR. */
    for (const char *end : {"\n", "\r\n"}) {
        Receive({"MSSG", "SHOW", "LST2", WithLineEnds(kList, end)});
        EXPECT_EQ(kId1 + "\r" + kId2 + "\r" + kId3 + "\r" + kId2 + "\r" + "abcdef0123456789\r",
                  Call(kTPX1GetParameterLST2, "TOPOLUXID RETURN"));
    }
    /* A line is read as its first 255 characters: here the map name keeps 7. */
    Receive({"MSSG", "SHOW", "LST2", std::string(180, '\t') + kId1 + "\t" + k64.substr(0, 50) + "\tMapNameMore"});
    EXPECT_EQ("MapName", Call(kTPX1GetParameterLST2, "MAPNAME"));
    EXPECT_EQ(0, DialogCount());
}

TEST_F(Lst2Test, ColumnFormatWithoutListOrWithFileWord)
{
    EXPECT_EQ("", Call(kTPX1GetParameterLST2, "TOPOLUXID RETURN")) << "no incoming list";
    Receive({"MSSG", "SHOW", "LST2", "short\tno\tgood\rX\tY\tZ"});
    EXPECT_EQ("", Call(kTPX1GetParameterLST2, "TOPOLUXID FILE"));
    EXPECT_EQ(0, DialogCount()) << "no valid line: no error even with FILE";

    Receive({"MSSG", "SHOW", "LST2", kList});
    EXPECT_EQ("", Call(kTPX1GetParameterLST2, "TOPOLUXID file RETURN"));
    ASSERT_EQ(1, DialogCount()) << "reported once, at the first valid line";
    EXPECT_NE(std::string::npos, DialogText(0).find("Error: -3")) << DialogText(0);
    EXPECT_EQ("", Call(kTPX1GetParameterLST2, "RETURN FILE"));
    EXPECT_EQ(2, DialogCount()) << "once per call";
    /* The list itself is never changed by reading it. */
    EXPECT_EQ(kList + std::string(1, '\0'), Incoming("LST2"));
}

TEST_F(Lst2Test, LineOfListByNumber)
{
    EXPECT_EQ("kept", Call(kTPX1GetParameterLST2Line, "0", "kept")) << "no list: result untouched";
    Receive({"MSSG", "SHOW", "LST2", kId1 + "\tA\tM\r\n" + kId2 + "\tB\tN\n" + "third"});
    EXPECT_EQ(kId1 + "\tA\tM", Call(kTPX1GetParameterLST2Line, "0", "old"));
    EXPECT_EQ(kId2 + "\tB\tN", Call(kTPX1GetParameterLST2Line, "1"));
    EXPECT_EQ("third", Call(kTPX1GetParameterLST2Line, "2"));
    EXPECT_EQ("", Call(kTPX1GetParameterLST2Line, "3", "old")) << "past the end";
    EXPECT_EQ("", Call(kTPX1GetParameterLST2Line, "-1", "old")) << "negative: the empty text";
    EXPECT_EQ("", Call(kTPX1GetParameterLST2Line, "-9223372036854775809", "old"));
    EXPECT_EQ("", Call(kTPX1GetParameterLST2Line, "9223372036854775808", "old"));
    EXPECT_EQ(kId1 + "\tA\tM", Call(kTPX1GetParameterLST2Line, "zero", "old")) << "atol gives 0";
    EXPECT_EQ(0, DialogCount());
}

TEST_F(Lst2Test, NthLineOfAnyText)
{
    EXPECT_EQ("first", Call(kTPX1GetNthLine, "1|first\rsecond\r"));
    EXPECT_EQ("second", Call(kTPX1GetNthLine, "2|first\r\nsecond\r"));
    EXPECT_EQ("c", Call(kTPX1GetNthLine, "3|a\nb\nc"));
    EXPECT_EQ("a|b", Call(kTPX1GetNthLine, "1|a|b")) << "only the first bar splits";
    EXPECT_EQ("x", Call(kTPX1GetNthLine, "1|NODUPES|x")) << "NODUPES is stripped too";
    EXPECT_EQ("", Call(kTPX1GetNthLine, "4|a\rb", "old")) << "past the end";
    EXPECT_EQ("old", Call(kTPX1GetNthLine, "0|a\rb", "old"));
    EXPECT_EQ("old", Call(kTPX1GetNthLine, "|a\rb", "old"));
    EXPECT_EQ("old", Call(kTPX1GetNthLine, "-2|a\rb", "old"));
    /* Numbers at and beyond the limits of long. */
    EXPECT_EQ("old", Call(kTPX1GetNthLine, "-9223372036854775808|a\rb", "old"));
    EXPECT_EQ("old", Call(kTPX1GetNthLine, "-99999999999999999999|a\rb", "old"));
    EXPECT_EQ("", Call(kTPX1GetNthLine, "9223372036854775807|a\rb", "old"));
    EXPECT_EQ("", Call(kTPX1GetNthLine, "99999999999999999999|a\rb", "old"));
    std::string longLine(6000, 'z');
    EXPECT_EQ(std::string(4999, 'z'), Call(kTPX1GetNthLine, "1|" + longLine)) << "cut to the 5000-byte buffer";
    EXPECT_EQ(0, DialogCount());
}

TEST_F(Lst2Test, LatitudeAndLongitudePassedThrough)
{
    Receive({"MSSG", "SHOW", "LAT ", "38.5", "LONG", "-77.0"});
    EXPECT_EQ("38.5 -77.0", Call(kTPX1GetParameterLatLong, "ignored"));
    Receive({"MSSG", "SHOW", "LONG", "east"});
    EXPECT_EQ(" east", Call(kTPX1GetParameterLatLong, ""));
    EXPECT_EQ(0, DialogCount());
}


const std::string kA = "0123456789ABCDEF\tRoads\tCounty\r";
const std::string kB = "FEDCBA9876543210\tRivers\tCounty\r";
const std::string kC = "00000000FFFFFFFF\tWells\tCounty\r";

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
    EXPECT_EQ("An error occurred in the plug-in function TPX1ProcessLST2ParameterForTopolux.\r\r"
              "Not enough memory to complete this operation.\r\r", DialogText(0));
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
