/*
 * test_vesk_rules.cpp: the rule lines of vesk's stand-in partner: keys with blanks,
 * quoted and escaped values, "to SIG", "*", comments, and the mistakes it names.
 */
#include <gtest/gtest.h>

#include "Vesk.h"

namespace {

TEST(VeskRules, RuleLinesParseKeysValuesAndDestination)
{
    VeskRule rule;
    bool isRule = false;
    std::string error;
    ASSERT_TRUE(ParseRuleLine("on MYOD send MSSG=YROD NUM =1 LST2=0001\\tRoads\\r XTRA=$XTRA", 3, &rule, &isRule,
                              &error))
        << error;
    ASSERT_TRUE(isRule);
    EXPECT_EQ(FOUR_CHAR('M', 'Y', 'O', 'D'), rule.onMessage);
    EXPECT_EQ(0u, rule.to);
    ASSERT_EQ(4u, rule.send.size());
    EXPECT_EQ(FOUR_CHAR('N', 'U', 'M', ' '), rule.send[1].keyword);
    EXPECT_EQ("1", rule.send[1].data);
    EXPECT_EQ("0001\tRoads\r", rule.send[2].data);
    EXPECT_EQ("$XTRA", rule.send[3].data);

    ASSERT_TRUE(ParseRuleLine("  on * send to NMB5 TEXT=\"two words \\\"q\\\"\" BYE=", 4, &rule, &isRule, &error));
    EXPECT_EQ(typeWildCard, rule.onMessage);
    EXPECT_EQ(FOUR_CHAR('N', 'M', 'B', '5'), rule.to);
    ASSERT_EQ(2u, rule.send.size());
    EXPECT_EQ("two words \"q\"", rule.send[0].data);
    EXPECT_EQ(FOUR_CHAR('B', 'Y', 'E', ' '), rule.send[1].keyword);
    EXPECT_EQ("", rule.send[1].data);

    /* "to" directly followed by "=" is a key, not a destination. */
    ASSERT_TRUE(ParseRuleLine("on HOLA send to=x", 5, &rule, &isRule, &error));
    EXPECT_EQ(0u, rule.to);
    EXPECT_EQ(FOUR_CHAR('t', 'o', ' ', ' '), rule.send[0].keyword);

    ASSERT_TRUE(ParseRuleLine("# a comment", 6, &rule, &isRule, &error));
    EXPECT_FALSE(isRule);
    ASSERT_TRUE(ParseRuleLine("   ", 7, &rule, &isRule, &error));
    EXPECT_FALSE(isRule);

    EXPECT_FALSE(ParseRuleLine("when HOLA send MSSG=OKHI", 8, &rule, &isRule, &error));
    EXPECT_NE(std::string::npos, error.find("line 8"));
    EXPECT_FALSE(ParseRuleLine("on TOOLONG send MSSG=X", 9, &rule, &isRule, &error));
    EXPECT_FALSE(ParseRuleLine("on HOLA send KEYWORD=X", 10, &rule, &isRule, &error));
    EXPECT_FALSE(ParseRuleLine("on HOLA send TEXT=\"open", 11, &rule, &isRule, &error));
    EXPECT_FALSE(ParseRuleLine("on HOLA send", 12, &rule, &isRule, &error));
}

} // namespace
