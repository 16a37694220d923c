/*
 * test_lst2_read.cpp: reading an incoming map object list: the column format (fields,
 * runs of TABs, line limits, the ten-word limit, unknown words, "FILE", letter case),
 * one line of the list by number, one line of any text, and latitude and longitude.
 */
#include "Lst2TestHost.h"

namespace {

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

}  // namespace
