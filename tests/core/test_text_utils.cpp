/*
 * test_text_utils.cpp: upper-casing, line counting and fetching, codes, truth values,
 * Pascal strings, numbers and the name matching rules.
 */
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "text/TextUtils.h"

static std::string Upper(std::string s)
{
    StrToUpper(s.data());
    return s;
}

TEST(TextUtils, UpperCasingFoldsAccents)
{
    EXPECT_EQ(Upper("abz AZ 09{}~"), "ABZ AZ 09{}~");
    EXPECT_EQ(Upper("\x8F"), "E");              /* small e grave */
    EXPECT_EQ(Upper("\x8E"), "\x8E");           /* small e acute stays */
    EXPECT_EQ(Upper("\x87\x8A\xCB\xE7"), "AAAA");
    EXPECT_EQ(Upper("\x96\x8D\xBE\xB9\xCF\xCA"), "\x84\x82\xAE\xB8\xCE ");
    EXPECT_EQ(Upper("\xD8\xD9\x9F\x9A\x94"), "YYUOI");
    EXPECT_EQ(Upper("\xF5\xFF\x7F\x01\xC9"), "\xF5\xFF\x7F\x01\xC9");
    EXPECT_EQ(mytoupper('q'), 'Q');
    EXPECT_EQ(mytoupper(0), 0);
    for (int c = 245; c < 256; c++)
        EXPECT_EQ(mytoupper((char)c), (char)c) << c;
    EXPECT_EQ(StrToUpper(nullptr), nullptr);
}

TEST(TextUtils, CountsLinesOverAllBreaks)
{
    EXPECT_EQ(NumLinesInText(""), 1);
    EXPECT_EQ(NumLinesInText("a"), 1);
    EXPECT_EQ(NumLinesInText("a\r"), 1);
    EXPECT_EQ(NumLinesInText("a\rb"), 2);
    EXPECT_EQ(NumLinesInText("a\r\rb"), 3);
    EXPECT_EQ(NumLinesInText("a\r\nb"), 2);
    EXPECT_EQ(NumLinesInText("a\nb\n"), 2);
    EXPECT_EQ(NumLinesInText("a\r\n"), 1);
    EXPECT_EQ(NumLinesInText("a\n\rb"), 3);
}

TEST(TextUtils, FetchesLinesBothWays)
{
    const char *text = "first\r\nsecond\nthird\r\rfifth";
    const char *expected[] = {"first", "second", "third", "", "fifth"};
    char buf[32];
    for (long n = 0; n < 5; n++) {
        NthLineInTextNonOptimized(text, n, buf, sizeof buf);
        EXPECT_STREQ(buf, expected[n]) << n;
    }
    for (long n = 0; n < 5; n++) {
        NthLineInTextOptimizedForUseInLoop(text, n, buf, sizeof buf);
        EXPECT_STREQ(buf, expected[n]) << n;
    }
    /* Skipping lines in the loop walks from the cursor. */
    NthLineInTextOptimizedForUseInLoop(text, 0, buf, sizeof buf);
    NthLineInTextOptimizedForUseInLoop(text, 2, buf, sizeof buf);
    EXPECT_STREQ(buf, "third");
    NthLineInTextOptimizedForUseInLoop(text, 4, buf, sizeof buf);
    EXPECT_STREQ(buf, "fifth");

    NthLineInTextNonOptimized("a\r\nb", 1, buf, sizeof buf);
    EXPECT_STREQ(buf, "b");
    strcpy(buf, "old");
    NthLineInTextNonOptimized("a\rb", 5, buf, sizeof buf);
    EXPECT_STREQ(buf, "");
    strcpy(buf, "old");
    NthLineInTextNonOptimized("", 0, buf, sizeof buf);
    EXPECT_STREQ(buf, "");
    memset(buf, 'x', sizeof buf);
    NthLineInTextNonOptimized("abcdefgh\rz", 0, buf, 4);
    EXPECT_STREQ(buf, "abc");
    EXPECT_EQ(buf[4], 'x');
    memset(buf, 'x', sizeof buf);
    NthLineInTextNonOptimized("abc", 0, buf, -3);
    EXPECT_EQ(buf[0], 'x');
}

TEST(TextUtils, FourCharacterCodes)
{
    EXPECT_EQ(StringToOSType(""), FOUR_CHAR(' ', ' ', ' ', ' '));
    EXPECT_EQ(StringToOSType("ab"), FOUR_CHAR('a', 'b', ' ', ' '));
    EXPECT_EQ(StringToOSType("MSSGX"), FOUR_CHAR('M', 'S', 'S', 'G'));
    char s[5];
    OSTypeToString(FOUR_CHAR('T', 'P', 'X', '1'), s);
    EXPECT_STREQ(s, "TPX1");
    EXPECT_TRUE(IsAllSpacesOSType(StringToOSType("")));
    EXPECT_FALSE(IsAllSpacesOSType(0));
}

TEST(TextUtils, TruthValuesAndNumbers)
{
    char t[] = "true";
    EXPECT_TRUE(StringToBoolean(t));
    EXPECT_STREQ(t, "TRUE");
    char yes[] = "YES", one[] = "1", trailing[] = "TRUE ", tru[] = "TRU";
    EXPECT_FALSE(StringToBoolean(yes));
    EXPECT_FALSE(StringToBoolean(one));
    EXPECT_FALSE(StringToBoolean(trailing));
    EXPECT_FALSE(StringToBoolean(tru));

    char n[32];
    mylong2str(0, n);
    EXPECT_STREQ(n, "0");
    mylong2str(-2802, n);
    EXPECT_STREQ(n, "-2802");
    mylong2str(1234567, n);
    EXPECT_STREQ(n, "1234567");
}

TEST(TextUtils, PascalStrings)
{
    unsigned char p[256], q[256];
    std::string longText(300, 'x');
    EXPECT_EQ(myc2pstr(longText.c_str(), p), 0);
    EXPECT_EQ(p[0], 255);
    myc2pstr("abc", p);
    EXPECT_EQ(p[0], 3);
    EXPECT_EQ(memcmp(p + 1, "abc", 3), 0);
    pstrcpy(q, p);
    char c[256];
    myp2cstr(q, c);
    EXPECT_STREQ(c, "abc");
    pstrcat(q, p);
    myp2cstr(q, c);
    EXPECT_STREQ(c, "abcabc");

    myc2pstr(std::string(248, 'a').c_str(), p);
    myc2pstr("bcdef", q);
    pstrcat(p, q);
    EXPECT_EQ(p[0], 250);
    EXPECT_EQ(p[249], 'b');
    EXPECT_EQ(p[250], 'c');
    pstrcat(p, q);
    EXPECT_EQ(p[0], 250);
}

TEST(TextUtils, TopicAndMenuMatching)
{
    EXPECT_TRUE(TopicStringsMatch("&Layers", "layers"));
    EXPECT_TRUE(TopicStringsMatch("L&ay&ers", "LAYERS"));
    EXPECT_FALSE(TopicStringsMatch("Layers ", "Layers"));
    EXPECT_FALSE(TopicStringsMatch("Layers...", "Layers"));

    EXPECT_TRUE(MenuStrMatches("Open...", "open"));
    EXPECT_TRUE(MenuStrMatches("Open\xC9", "OPEN"));
    EXPECT_TRUE(MenuStrMatches("&Open...", "Op&en"));
    EXPECT_TRUE(MenuStrMatches("...", ""));
    EXPECT_FALSE(MenuStrMatches("Open..", "Open"));
    EXPECT_FALSE(MenuStrMatches("Open......", "Open"));
    EXPECT_TRUE(MenuStrMatches("Open&...", "Open"));
    EXPECT_FALSE(MenuStrMatches("Open.&..", "Open"));
    std::string longA(300, 'a');
    std::string longB = std::string(255, 'A') + "zzz";
    EXPECT_TRUE(MenuStrMatches(longA.c_str(), longB.c_str()));
}
