/*
 * test_host_language.cpp: fmhost's calculation language against a fake plug-in:
 * literals and FileMaker escapes, ¶ and &, nested plug-in calls by name, built-ins,
 * variables, the printed form of values, and errors that name line and column
 * (including text without a Mac Roman form).
 */
#include <gtest/gtest.h>

#include "FakePlugin.h"
#include "host/HostLanguage.h"

namespace {

class HostLanguage : public ::testing::Test {
protected:
    void SetUp() override
    {
        FakePluginInstall(&plugin);
        program.file = "calc";
        HostSessionBegin(&session, &plugin, &program);
    }

    /* Evaluates one calculation; "ERROR line:col: message" when it fails. */
    std::string Calc(const std::string &source)
    {
        HostExpr expr;
        HostError error;
        std::string value;
        if (!HostParseCalculation("calc", 1, source, &plugin, &expr, &error) ||
            !HostEvaluate(&session, expr, &value, &error))
            return "ERROR " + std::to_string(error.line) + ":" + std::to_string(error.column) + ": " + error.message;
        return value;
    }

    std::string ParseError(const std::string &source)
    {
        HostProgram p;
        HostError error;
        if (HostParseProgram("f.fmh", source, &plugin, &p, &error))
            return "no error";
        return HostFormatError(error);
    }

    HostPlugin plugin;
    HostProgram program;
    HostSession session;
};

TEST_F(HostLanguage, LiteralsEscapesAndConcatenation)
{
    EXPECT_EQ(Calc("\"abc\""), "abc");
    EXPECT_EQ(Calc("\"\""), "");
    EXPECT_EQ(Calc("\"say \\\"hi\\\"\""), "say \"hi\"");
    EXPECT_EQ(Calc("\"back\\\\slash\""), "back\\slash");
    EXPECT_EQ(Calc("\"a¶b\""), "a\rb") << "a pilcrow inside a literal is a return";
    EXPECT_EQ(Calc("\"a\\¶b\""), "a\xA6" "b") << "an escaped pilcrow stays a pilcrow (Mac Roman A6)";
    EXPECT_EQ(Calc("\"a\\tb\""), "a\\tb") << "other backslashes are kept as written";
    EXPECT_EQ(Calc("\"x\" & ¶ & 42 & -7 & 3.5"), "x\r42-73.5");
    EXPECT_EQ(Calc("(\"a\" & \"b\") & \"c\""), "abc");
    EXPECT_EQ(Calc("\"café €\""), "caf\x8E \xDB") << "UTF-8 source becomes Mac Roman";
}

TEST_F(HostLanguage, PluginFunctionsByNameNestedAndBuiltins)
{
    EXPECT_EQ(Calc("FakeEcho(\"x\")"), "x");
    EXPECT_EQ(Calc("fakeupper(FakeEcho(\"ab\" & \"c\") & fakeTAB(\"\"))"), "ABC\t") << "names are case-insensitive";
    EXPECT_EQ(Calc("FakeTab()"), "\t");
    EXPECT_EQ(Calc("External(1; \"q\")"), "Q");
    EXPECT_EQ(Calc("External(66; \"q\")"), "") << "an id the plug-in does not know gives empty text";
    EXPECT_EQ(Calc("Char(65) & Char(9) & Char(13) & Char(0)"), "A\t\r");
    EXPECT_EQ(Calc("Char(8364)"), "\xDB");
    EXPECT_EQ(Calc("Code(\"€uro\") & \"/\" & Code(\"\")"), "8364/0");
    EXPECT_EQ(Calc("Length(\"a¶b\")"), "3");
    EXPECT_GT(gFakeCalls[kFMXT_External], 0);
}

TEST_F(HostLanguage, VariablesAreScopedLikeFileMaker)
{
    HostSetVariable(&session, "$x", "local");
    HostSetVariable(&session, "$$G", "global");
    EXPECT_EQ(Calc("$X & \"/\" & $$g & \"/\" & $unset"), "local/global/");
    session.locals.emplace_back();   /* as a script does */
    EXPECT_EQ(Calc("$x & \"/\" & $$g"), "/global");
    session.locals.pop_back();
    EXPECT_EQ(Calc("$x"), "local");
}

TEST_F(HostLanguage, ErrorsNameLineAndColumn)
{
    EXPECT_EQ(Calc("Nope(\"x\")"), "ERROR 1:1: unknown function \"Nope\"");
    EXPECT_EQ(Calc("\"a\" & FakeEcho(\"x\""), "ERROR 1:19: expected ; or ) in the call of FakeEcho");
    EXPECT_EQ(Calc("\"open"), "ERROR 1:1: expected a closing \" to end this text");
    EXPECT_EQ(Calc("\"a\" &"), "ERROR 1:6: expected a text, a number, a variable or a function call");
    EXPECT_EQ(Calc("\"a\" \"b\""), "ERROR 1:5: expected the end of the line");
    EXPECT_EQ(Calc("FakeEcho(\"a\"; \"b\")"), "ERROR 1:1: FakeEcho takes one parameter");
    EXPECT_EQ(Calc("Char(\"x\")").substr(0, 35), "ERROR 1:1: Char needs a character n");
    EXPECT_EQ(Calc("Char(19990)"), "ERROR 1:1: Char(19990): the character U+4E16 has no Mac Roman form");
    EXPECT_EQ(Calc("\"ab¶世\""), "ERROR 1:5: the character U+4E16 has no Mac Roman form")
        << "the column counts characters, not bytes";
    EXPECT_EQ(Calc("1 ~ 2"), "ERROR 1:3: unexpected character \"~\"");
    EXPECT_EQ(Calc(std::string(150, '(') + "\"deep\"" + std::string(150, ')')), "deep");
    EXPECT_EQ(Calc(std::string(100000, '(')), "ERROR 1:201: expected fewer than 200 nested calls and parentheses")
        << "deep nesting is refused, not a stack overflow";

    EXPECT_EQ(ParseError("\n\n  Show [ FakeEcho(\"x\" ]"), "f.fmh:3:23: expected ; or ) in the call of FakeEcho");
    EXPECT_EQ(ParseError("Script \"A\"\n1\n"), "f.fmh:1:1: expected End Script for script \"A\"");
    EXPECT_EQ(ParseError("End Script"), "f.fmh:1:1: End Script without a Script \"name\" line before it");
    EXPECT_EQ(ParseError("Script \"A\"\nEnd Script\nScript \"A\"\nEnd Script"),
              "f.fmh:3:1: script \"A\" is already defined on line 1");
    EXPECT_EQ(ParseError("Frobnicate 3"), "f.fmh:1:1: unknown step \"Frobnicate\" (a function call needs parentheses)");
    EXPECT_EQ(ParseError("Set Variable [ $x ; Value: ]"), "f.fmh:1:28: expected a text, a number, a variable or a function call");
    EXPECT_EQ(ParseError("expect 1 = 1"), "f.fmh:1:10: expected == between the two calculations");
    EXPECT_EQ(ParseError("fault FSRead x"), "f.fmh:1:14: expected which call fails (1 = the next one)");
    EXPECT_EQ(ParseError("fault FSReed 1 -36"), "f.fmh:1:7: \"FSReed\" is no platform call that can be made to fail");
    EXPECT_EQ(ParseError("clock slow"), "f.fmh:1:7: expected manual, advance or real after clock");
    EXPECT_EQ(ParseError("\"\xFF\""), "f.fmh:1:2: the line is not valid UTF-8");
}

TEST_F(HostLanguage, StepsParseInBothForms)
{
    HostProgram p;
    HostError error;
    const char *source =
        "# a comment\n"
        "Set Variable [ $a ; Value: \"1\" ]   # trailing comment\n"
        "$b = $a & \"2\"\n"
        "Show [ $b ]\n"
        "Expect [ $b ; \"12\" ]\n"
        "expect $b == \"12\"\n"
        "Idle [ 3 ]\n"
        "Idle\n"
        "fault FSRead 2 -36 always\n"
        "clock manual 100 1\n"
        "raw 7 ; 1 ; -2\n"
        "expect dialog \"x\"\n"
        "expect leaks 0\n"
        "Script \"Later\"\n"
        "  Perform Script [ \"Later\" ]\n"
        "End Script\n";
    ASSERT_TRUE(HostParseProgram("s.fmh", source, &plugin, &p, &error)) << HostFormatError(error);
    ASSERT_EQ(p.main.size(), 12u);
    EXPECT_EQ(p.main[0].kind, kStmtSetVariable);
    EXPECT_EQ(p.main[0].name, "$a");
    EXPECT_EQ(p.main[1].kind, kStmtSetVariable);
    EXPECT_EQ(p.main[3].kind, kStmtExpect);
    EXPECT_EQ(p.main[4].kind, kStmtExpect);
    EXPECT_EQ(p.main[5].numbers[0], 3);
    EXPECT_EQ(p.main[6].numbers[0], 1);
    EXPECT_EQ(p.main[7].kind, kStmtFault);
    EXPECT_EQ(p.main[7].numbers[1], -36);
    EXPECT_TRUE(p.main[7].always);
    EXPECT_EQ(p.main[9].numberCount, 3);
    EXPECT_EQ(p.main[9].numbers[2], -2);
    EXPECT_TRUE(p.usesDialogs);
    ASSERT_EQ(p.scripts.size(), 1u);
    EXPECT_EQ(p.scripts[0].body.size(), 1u);
}

TEST(HostText, VisibleAndPlainForms)
{
    EXPECT_EQ(HostVisibleText("A\t\r\n\"\\\x01\x8E"), "\"A\\t\\r\\n\\\"\\\\\\x01é\"");
    EXPECT_EQ(HostVisibleText(""), "\"\"");
    EXPECT_EQ(HostPlainText("one\rtwo \xDB"), "one\ntwo €");
}

}  // namespace
