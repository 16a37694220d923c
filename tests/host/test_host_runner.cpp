/*
 * test_host_runner.cpp: fmhost's script runner against a fake plug-in: printed results,
 * expectations that pass and fail (file:line, expected and actual with TAB and CR
 * visible), host scripts with their own variables, do-script events that run host
 * scripts after dispatch (and a missing script reported as FileMaker does), recorded
 * dialogs with answers and expectations, and the leak expectation.
 */
#include <gtest/gtest.h>

#include <cstdlib>

#include "FakePlugin.h"
#include "host/HostLanguage.h"
#include "platform/Processes.h"
#include "platform/TestBus.h"
#include "platform/Toolbox.h"

namespace {

class HostRunner : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        PlatformBusUseMemory();
        PlatformSetProcessSignature(FOUR_CHAR('F', 'M', 'P', '7'));
        HostEventsInstall();
    }

    void SetUp() override
    {
        FakePluginInstall(&plugin);
        out = open_memstream(&outText, &outSize);
        err = open_memstream(&errText, &errSize);
    }

    void TearDown() override
    {
        Collect();
        free(outText);
        free(errText);
        PlatformDialogUseDefault();
    }

    /* Parses and runs a script file's text; false when it does not parse. */
    bool Run(const std::string &source)
    {
        HostError error;
        if (!HostParseProgram("t.fmh", source, &plugin, &program, &error)) {
            ADD_FAILURE() << HostFormatError(error);
            return false;
        }
        HostSessionBegin(&session, &plugin, &program);
        session.out = out;
        session.err = err;
        if (program.usesDialogs)
            HostDialogsUseRecorder(&session);
        HostRunStatements(&session, program.main);
        HostDrain(&session);
        return true;
    }

    void Collect()
    {
        if (out) {
            fclose(out);
            fclose(err);
            out = err = nullptr;
            printed.assign(outText, outSize);
            complaints.assign(errText, errSize);
        }
    }

    HostPlugin plugin;
    HostProgram program;
    HostSession session;
    FILE *out = nullptr, *err = nullptr;
    char *outText = nullptr, *errText = nullptr;
    size_t outSize = 0, errSize = 0;
    std::string printed, complaints;
};

TEST_F(HostRunner, PassingScriptPrintsAndFailsNothing)
{
    ASSERT_TRUE(Run("FakeEcho(\"a\") & FakeTab(\"\") & ¶\n"
                    "Show [ \"two\" & ¶ & \"lines\" ]\n"
                    "$x = FakeUpper(\"abc\")\n"
                    "Expect [ $x ; \"ABC\" ]\n"
                    "expect FakeTab(\"\") == Char(9)\n"));
    Collect();
    EXPECT_EQ(printed, "\"a\\t\\r\"\ntwo\nlines\n");
    EXPECT_EQ(complaints, "");
    EXPECT_EQ(session.failures, 0);
    EXPECT_EQ(session.errors, 0);
}

TEST_F(HostRunner, FailedExpectationsAreReportedAndTheRunGoesOn)
{
    ASSERT_TRUE(Run("Expect [ FakeEcho(\"a\" & ¶) ; \"a\" & Char(9) ]\n"
                    "Show [ \"still running\" ]\n"
                    "expect \"x\" == \"y\"\n"
                    "Char(19990)\n"
                    "Show [ \"after the error\" ]\n"));
    Collect();
    EXPECT_EQ(session.failures, 2);
    EXPECT_EQ(session.errors, 1);
    EXPECT_EQ(printed, "still running\nafter the error\n");
    EXPECT_NE(complaints.find("t.fmh:1: expectation failed\n    expected: \"a\\t\"\n    actual:   \"a\\r\"\n"),
              std::string::npos)
        << complaints;
    EXPECT_NE(complaints.find("t.fmh:3: expectation failed"), std::string::npos);
    EXPECT_NE(complaints.find("t.fmh:4:1: Char(19990)"), std::string::npos);
}

TEST_F(HostRunner, HostScriptsHaveTheirOwnVariablesAndAreFoundByName)
{
    ASSERT_TRUE(Run("Script \"Inner\"\n"
                    "  Show [ \"inner sees [\" & $x & \"] [\" & $$g & \"]\" ]\n"
                    "  $$g = \"set inside\"\n"
                    "End Script\n"
                    "$x = \"outer\"\n"
                    "$$g = \"shared\"\n"
                    "Perform Script [ \"inner\" ]\n"
                    "Show [ $x & \" \" & $$g ]\n"
                    "Perform Script [ \"Missing\" ]\n"
                    "Script \"Loop\"\n"
                    "  Perform Script [ \"Loop\" ]\n"
                    "End Script\n"
                    "Perform Script [ \"Loop\" ]\n"));
    Collect();
    EXPECT_EQ(printed, "inner sees [] [shared]\nouter set inside\nScript \"Missing\" could not be found.\n");
    EXPECT_EQ(session.errors, 1) << "endless recursion is stopped";
    EXPECT_NE(complaints.find("nested more than 32 deep"), std::string::npos);
}

TEST_F(HostRunner, DoScriptEventsRunHostScriptsAfterDispatch)
{
    ASSERT_TRUE(Run("Script \"Handle\"\n"
                    "  Show [ \"handled\" ]\n"
                    "  FakeDoScript(\"Second\")\n"
                    "End Script\n"
                    "Script \"Second\"\n"
                    "  Show [ \"second\" ]\n"
                    "End Script\n"
                    "FakeDoScript(\"Handle\")\n"
                    "Show [ \"before idle\" ]\n"
                    "Idle [ 1 ]\n"
                    "Show [ \"after idle\" ]\n"
                    "FakeDoScript(\"Nobody\")\n"));
    Collect();
    /* The event waits for the host's event loop; the script that the handled script
     * asks for runs after it, and a missing one is reported at the end of the file. */
    EXPECT_EQ(printed,
              "\"\"\nbefore idle\nhandled\n\"\"\nsecond\nafter idle\n\"\"\nScript \"Nobody\" could not be found.\n");
    EXPECT_GE(gFakeCalls[kFMXT_Idle], 1);
    EXPECT_EQ(gFakeLastIdleLevel, 0);
    EXPECT_FALSE(HostEventsScriptsPending());
}

TEST_F(HostRunner, RecordedDialogsAnswersAndExpectations)
{
    ASSERT_TRUE(Run("answer dialog 2\n"
                    "Expect [ FakeAlert(\"First¶line\") ; \"2\" ]\n"
                    "expect dialog \"First¶line\"\n"
                    "FakeAlert(\"Second\")\n"
                    "expect dialog \"Other\"\n"
                    "expect no dialog\n"
                    "FakeAlert(\"Third\")\n"
                    "expect no dialog\n"
                    "expect dialog \"Fourth\"\n"));
    Collect();
    EXPECT_EQ(session.failures, 3) << complaints;
    EXPECT_NE(printed.find("dialog: \"First\\rline\"\n"), std::string::npos) << printed;
    EXPECT_NE(printed.find("\"1\"\ndialog: \"Second\"\n"), std::string::npos) << "no answer queued: button 1";
    EXPECT_NE(complaints.find("t.fmh:5: dialog expectation failed\n    expected: \"Other\"\n    actual:   \"Second\""),
              std::string::npos)
        << complaints;
    EXPECT_NE(complaints.find("t.fmh:8: dialog expectation failed\n    expected: no dialog\n    actual:   \"Third\""),
              std::string::npos);
    EXPECT_NE(complaints.find("t.fmh:9: dialog expectation failed\n    expected: \"Fourth\"\n    actual:   no dialog was shown"),
              std::string::npos);
}

TEST_F(HostRunner, LeakExpectationIsCheckedAfterShutdown)
{
    long before = HostMemoryLiveHandles();
    ASSERT_TRUE(Run("FakeLeak(\"\")\nexpect leaks 0\n"));
    long leaks = HostMemoryLiveHandles() - before;
    EXPECT_EQ(leaks, 1) << "argument and result handles are the host's and are gone";
    HostCheckLeakExpectation(&session, leaks);
    Collect();
    EXPECT_EQ(session.failures, 1);
    EXPECT_NE(complaints.find("t.fmh:2: leak expectation failed (after Shutdown)\n    expected: 0\n    actual:   1"),
              std::string::npos)
        << complaints;
    FakePluginFreeLeaks();
    EXPECT_EQ(HostMemoryLiveHandles(), before);
}

TEST_F(HostRunner, RawSelectorsAndInitVersions)
{
    ASSERT_TRUE(Run("raw 0\n"
                    "Expect [ $$raw ; 51 ]\n"
                    "raw 7 ; 1 ; 2\n"
                    "raw 3 ; 0 ; 1\n"
                    "Expect [ $$raw.text ; \"\" ]\n"));
    Collect();
    EXPECT_EQ(session.failures, 0) << complaints;
    EXPECT_EQ(gFakeCalls[7], 1);
    EXPECT_EQ(HostInit(&plugin, 50), 51);
    EXPECT_EQ(HostInit(&plugin, 256), -1);
    EXPECT_EQ(HostInit(&plugin, 255), 51);
}

}  // namespace
