/*
 * test_globals.cpp: the external functions on globals, called as the dispatcher calls
 * them, with their error reports seen through the dialog recorder.
 */
#include <cstring>

#include "plugin/Plugin.h"
#include "tests/common/PluginTest.h"
#include "platform/Toolbox.h"
#include "store/Globals.h"

static const char kSetGlobalError222[] =
    "An error occurred in the plug-in function TPX1SetGlobal.\r\rError: -222\r\r";

class GlobalsTest : public PluginTest {
protected:
    void SetUp() override
    {
        PluginTest::SetUp();
        SetGlobalFromStr("App Signature", 1, "FMP5");
        SetGlobalFromStr("Plugin Version", 1, "TOPOLUX plugin ver 8.0");
    }
};

TEST_F(GlobalsTest, SetGlobalForms)
{
    Call(kTPX1SetGlobal, "Empty|");
    EXPECT_EQ(Value("Empty", gUserGlobalsDataNodeList), "");
    EXPECT_NE(FindDataNodeInList("Empty", gUserGlobalsDataNodeList), nullptr);
    Call(kTPX1SetGlobal, "Three|b|c");
    EXPECT_EQ(Value("Three", gUserGlobalsDataNodeList), "b|c");
    std::string longValue(1000, 'v');
    Call(kTPX1SetGlobal, "Long|" + longValue);
    EXPECT_EQ(Value("Long", gUserGlobalsDataNodeList), longValue);
    EXPECT_EQ(DialogCount(), 0);

    Call(kTPX1SetGlobal, "NoBar");
    EXPECT_EQ(LastDialogText(), kSetGlobalError222);
    EXPECT_EQ(FindDataNodeInList("NoBar", gUserGlobalsDataNodeList), nullptr);

    Call(kTPX1SetGlobal, "App Signature|XXXX");
    EXPECT_EQ(Value("App Signature", gUserGlobalsDataNodeList), "FMP5");
    EXPECT_EQ(DialogCount(), 1);

    EXPECT_EQ(Call(kTPX1GetGlobal, "Three", "old"), "b|c");
    EXPECT_EQ(Call(kTPX1GetGlobal, "Missing", "old"), "");
    char buf[4];
    EXPECT_EQ(GetGlobalInListAsStr("Three", buf, sizeof buf), 0);
    EXPECT_EQ(GetGlobalInListAsStr("Long", buf, sizeof buf), 1);
    EXPECT_EQ(GetGlobalInListAsOSType("Missing"), FOUR_CHAR(' ', ' ', ' ', ' '));
    EXPECT_EQ(GetGlobalInListAsOSType("App Signature"), FOUR_CHAR('F', 'M', 'P', '5'));
    SetGlobalFromStr("Flag", 0, "true");
    EXPECT_TRUE(GetGlobalInListAsBoolean("Flag"));
    EXPECT_FALSE(GetGlobalInListAsBoolean("Missing"));
}

TEST_F(GlobalsTest, AppendUnsetAndScripts)
{
    Call(kTPX1AppendToGlobal, "Lines|NODUPES|one");
    Call(kTPX1AppendToGlobal, "Lines|NODUPES|one");
    EXPECT_EQ(Value("Lines", gUserGlobalsDataNodeList), "one\r");
    Call(kTPX1AppendToGlobal, "Text|ab");
    Call(kTPX1AppendToGlobal, "Text|NODUPESX|cd");
    Call(kTPX1AppendToGlobal, "Text|NODUPES");
    Call(kTPX1AppendToGlobal, "Text");
    EXPECT_EQ(Value("Text", gUserGlobalsDataNodeList), "abNODUPESX|cd");

    EXPECT_EQ(Call(kTPX1AttachScriptToGlobal, ""), "");
    EXPECT_EQ(LastDialogText(), "An error occurred in the plug-in function TPX1AttachScriptToGlobal.\r\rError: -2802\r\r");
    Call(kTPX1AttachScriptToGlobal, "Text");
    EXPECT_EQ(LastDialogText().substr(LastDialogText().find("Error")), "Error: -1\r\r");
    Call(kTPX1AttachScriptToGlobal, "Text|");
    EXPECT_EQ(LastDialogText().substr(LastDialogText().find("Error")), "Error: -1\r\r");
    Call(kTPX1AttachScriptToGlobal, "Nope|Script");
    EXPECT_EQ(LastDialogText().substr(LastDialogText().find("Error")), "Error: -2802\r\r");
    int dialogs = DialogCount();
    Call(kTPX1AttachScriptToGlobal, "Text|Recount");
    Call(kTPX1AppendToGlobal, "Text|x");
    EXPECT_EQ(std::string(gDeferredScript[0]), "");
    Call(kTPX1EnableGlobalScript, "Text");
    Call(kTPX1AppendToGlobal, "Text|");
    EXPECT_EQ(std::string(gDeferredScript[0]), "Recount");
    EXPECT_EQ(DialogCount(), dialogs);
    EXPECT_EQ(Call(kTPX1GetNameOfGlobalThatTriggeredScript, "", "old"), "Text");
    EXPECT_EQ(Call(kTPX1GetNameOfGlobalThatTriggeredScript, "", "old"), "");
    Call(kTPX1DisableGlobalScript, "Lines");
    EXPECT_EQ(LastDialogText().substr(LastDialogText().find("Error")), "Error: -1\r\r");

    Call(kTPX1UnsetGlobal, "Plugin Version");
    EXPECT_EQ(LastDialogText(), "An error occurred in the plug-in function TPX1UnsetGlobal.\r\rError: -117\r\r");
    Call(kTPX1UnsetGlobal, "*");
    EXPECT_EQ(Describe(gUserGlobalsDataNodeList), "App Signature=FMP5;Plugin Version=TOPOLUX plugin ver 8.0;");
}

TEST_F(GlobalsTest, Listing)
{
    EXPECT_EQ(Call(kTPX1GetGlobalList, "", "untouched"), "untouched");
    std::string forty(40, 'f'), thirtyTwo(32, 't'), thirtyOne(31, 'o');
    SetGlobalFromStr("Count", 0, "3");
    SetGlobalFromStr("Forty", 0, forty.c_str());
    SetGlobalFromStr("ThirtyTwo", 0, thirtyTwo.c_str());
    SetGlobalFromStr("ThirtyOne", 0, thirtyOne.c_str());
    AttachScriptToGlobalInList("Count", "Recount");
    SetEnableOfGlobalScript("Count", 1);
    AttachScriptToGlobalInList("Forty", "Off");

    std::string users = "'Count'\t'3'\r'Forty'\t'" + forty.substr(0, 32) + "...'\r'ThirtyTwo'\t'" + thirtyTwo +
                        "...'\r'ThirtyOne'\t'" + thirtyOne + "'\r";
    EXPECT_EQ(Call(kTPX1GetGlobalList, ""), users);
    EXPECT_EQ(Call(kTPX1GetGlobalList, "sysenv detail"), users);
    std::string detail = Call(kTPX1GetGlobalList, "DETAIL\tSYSENV ignored");
    EXPECT_EQ(detail.substr(0, detail.find("'Count'")),
              "'App Signature'\t'FMP5'\tSysEnv\r'Plugin Version'\t'TOPOLUX plugin ver 8.0'\tSysEnv\r");
    EXPECT_NE(detail.find("'Count'\t'3'\tUser\tRecount\tEnabled\r"), std::string::npos);
    EXPECT_NE(detail.find("...'\tUser\tOff\tDisabled\r"), std::string::npos);
    EXPECT_EQ(Call(kTPX1GetGlobalList, "DETAIL x SYSENV").find("App Signature"), std::string::npos);

    std::string longName(255, 'N'), longScript(255, 'S');
    SetGlobalFromStr(longName.c_str(), 0, forty.c_str());
    AttachScriptToGlobalInList(longName.c_str(), longScript.c_str());
    std::string all = Call(kTPX1GetGlobalList, "DETAIL");
    EXPECT_NE(all.find("'" + longName + "'\t'" + forty.substr(0, 32) + "...'\tUser\t" + longScript + "\tDisabled\r"),
              std::string::npos);
}

/* A NODUPES append that fails part way (no memory at any point, or a line over 510
 * characters after one that would be added) leaves the store as it was before the call:
 * a new global still does not exist, an existing one keeps its value. */
TEST_F(GlobalsTest, FailedMergeLeavesTheStoreAsItWas)
{
    const std::string reserved = "App Signature=FMP5;Plugin Version=TOPOLUX plugin ver 8.0;";
    Call(kTPX1SetGlobal, "Old|x");
    for (const char *name : {"New", "Old"}) {
        std::string before = Describe(gUserGlobalsDataNodeList);
        for (long n = 1;; n++) {
            ASSERT_LT(n, 50);
            PlatformDialogClearRecord();
            HostMemorySetFailure(n, kHostFailOnce);
            Call(kTPX1AppendToGlobal, std::string(name) + "|NODUPES|a\rb");
            bool failed = HostMemoryFailuresDelivered() > 0;
            HostMemorySetFailure(0, kHostFailOff);
            if (!failed)
                break;
            EXPECT_EQ(LastDialogText(), "An error occurred in the plug-in function TPX1AppendToGlobal.\r\r"
                                        "Not enough memory to complete this operation.\r\r");
            EXPECT_EQ(Describe(gUserGlobalsDataNodeList), before) << name << ", allocation " << n;
        }
        EXPECT_EQ(DialogCount(), 0);
        EXPECT_EQ(Value(name, gUserGlobalsDataNodeList), std::string(name) == "Old" ? "xa\rb\r" : "a\rb\r");

        Call(kTPX1SetGlobal, std::string(name) + "|x");
        before = Describe(gUserGlobalsDataNodeList);
        Call(kTPX1AppendToGlobal, std::string(name) + "2|NODUPES|a\r" + std::string(511, 'l'));
        Call(kTPX1AppendToGlobal, std::string(name) + "|NODUPES|a\r" + std::string(511, 'l') + "\rb");
        EXPECT_EQ(DialogCount(), 2);
        EXPECT_NE(LastDialogText().find("Error: -345"), std::string::npos) << LastDialogText();
        EXPECT_EQ(Describe(gUserGlobalsDataNodeList), before);
        RemoveGlobalFromList(name);
    }
    EXPECT_EQ(Describe(gUserGlobalsDataNodeList), reserved);
}
