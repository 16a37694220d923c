/*
 * test_message_lists.cpp: the outgoing lists, the archive and the incoming message,
 * through the external functions and the selector-based operations.
 */
#include "fuzz/TestHooks.h"
#include "tests/common/PluginTest.h"
#include "platform/Toolbox.h"
#include "store/MessageLists.h"

class MessageListsTest : public PluginTest {
protected:
    void SetUp() override
    {
        PluginTest::SetUp();
        PlatformClockUseManual(1000, 0);
    }
    static void Archive(const char *id, const char *extra)
    {
        const char *pairs[] = {"MSSG", id, "XTRA", extra};
        ASSERT_EQ(ArchiveMessageForTesting(pairs, 2), 0);
    }
};

TEST_F(MessageListsTest, ArchiveIsFirstInFirstOut)
{
    EXPECT_EQ(Call(kTPX1GetNextMessage, "", "old"), "");
    EXPECT_EQ(DialogCount(), 1) << "the failed MSSG lookup of an empty archive is reported";
    EXPECT_EQ(gIncomingMessageParameterDataNodeList, nullptr);
    EXPECT_EQ(gHaveGottenAnIncomingMessageButNotClearedIt, 1);
    EXPECT_EQ(gLastGetNextMessageCallTicks, 1000u);

    Archive("ONE ", "1");
    Archive("TWO ", "2");
    Archive("THRE", "3");
    EXPECT_TRUE(AnyArchivedMessage());
    EXPECT_EQ(FirstFreeArchiveSlot(), 3);
    gHaveSendDoScriptAndWaitingForGetNextMessage = 1;
    PlatformClockAdvance(5);
    EXPECT_EQ(Call(kTPX1GetNextMessage, ""), "ONE ");
    EXPECT_EQ(gHaveSendDoScriptAndWaitingForGetNextMessage, 0);
    EXPECT_EQ(gLastGetNextMessageCallTicks, 1005u);
    EXPECT_EQ(Call(kTPX1GetParameter, "XTRA"), "1");
    EXPECT_EQ(Call(kTPX1GetParameter, "LST2", "old"), "");
    EXPECT_EQ(gLastGetParameterCallTicks, 1005u);
    EXPECT_EQ(Call(kTPX1GetNextMessage, ""), "TWO ");
    EXPECT_EQ(Call(kTPX1GetNextMessage, ""), "THRE");
    char buf[2];
    EXPECT_EQ(GetIncomingMessageParameterInListAsStr("XTRA", buf, sizeof buf), 0);
    EXPECT_EQ(GetIncomingMessageParameterInListAsStr("MSSG", buf, sizeof buf), 1);
    EXPECT_EQ(Call(kTPX1GetNextMessage, ""), "");
    EXPECT_EQ(DialogCount(), 2);
    EXPECT_FALSE(AnyArchivedMessage());

    Archive("LAST", "x");
    Call(kTPX1GetNextMessage, "");
    Call(kTPX1ClearIncomingMessage, "");
    EXPECT_EQ(gIncomingMessageParameterDataNodeList, nullptr);
    EXPECT_EQ(gHaveGottenAnIncomingMessageButNotClearedIt, 0);
    EXPECT_EQ(DialogCount(), 2);
}

TEST_F(MessageListsTest, ComposingOutgoingMessages)
{
    Call(kTPX1SetParameter, "MSSG|");
    EXPECT_EQ(Describe(gOutgoingUserMessageParameterDataNodeList), "MSSG~;");
    EXPECT_EQ(gLastSetParameterCallTicks, 1000u);
    Call(kTPX1SetParameter, "MSSG");
    EXPECT_EQ(LastDialogText(), "An error occurred in the plug-in function TPX1SetParameter.\r\rError: -222\r\r");
    Call(kTPX1SetParameter, "MSSG|HOLA|x");
    Call(kTPX1AppendToParameter, "LST2|NODUPES|a\rb");
    Call(kTPX1AppendToParameter, "LST2|NODUPES|b\rc");
    Call(kTPX1AppendToParameter, "TEXT|ab");
    Call(kTPX1AppendToParameter, "TEXT|cd");
    EXPECT_EQ(Describe(gOutgoingUserMessageParameterDataNodeList), "MSSG=HOLA|x;LST2=a\rb\rc\r;TEXT=abcd;");

    EXPECT_EQ(SetOutgoingMessageParameterFromStr("MSSG", "BYE ", 2), 0);
    EXPECT_EQ(SetOutgoingMessageParameterFromStr("MSSG", "BYE ", 3), -2);
    EXPECT_EQ(GetOutgoingMessageParameterInListAsOSType("MSSG", 2), FOUR_CHAR('B', 'Y', 'E', ' '));
    EXPECT_EQ(GetOutgoingMessageParameterInListAsOSType("MSSG", 3), FOUR_CHAR(' ', ' ', ' ', ' '));
    EXPECT_EQ(GetOutgoingMessageParameterInListAsOSType("SIGN", 1), FOUR_CHAR(' ', ' ', ' ', ' '));
    EXPECT_EQ(GetTheOutgoingMessageParameterDataHandleFromList_NotACopy("MSSG", 3), nullptr);
    EXPECT_EQ(GetTheOutgoingMessageParameterDataHandleFromList_NotACopy("NONE", 1), nullptr);
    char **lst2 = GetTheOutgoingMessageParameterDataHandleFromList_NotACopy("LST2", 1);
    ASSERT_NE(lst2, nullptr);
    EXPECT_EQ(Bytes(lst2), std::string("a\rb\rc\r\0", 7));
    char buf[4];
    EXPECT_EQ(GetOutgoingMessageParameterInListAsStr("TEXT", buf, sizeof buf, 1), 1);
    EXPECT_STREQ(buf, "abc");
    EXPECT_EQ(GetOutgoingMessageParameterInListAsStr("NONE", buf, sizeof buf, 1), 0);
    EXPECT_STREQ(buf, "");
    EXPECT_EQ(RemoveOutgoingMessageParameterFromList("TEXT", 1), 0);
    EXPECT_EQ(RemoveOutgoingMessageParameterFromList("TEXT", 7), -2);

    LockAllOutgoingMessageParameters(gOutgoingUserMessageParameterDataNodeList);
    UnLockAllOutgoingMessageParameters(gOutgoingUserMessageParameterDataNodeList);
    EXPECT_EQ(SetOutgoingMessageParameterFromStr("LST2", std::string(100, 'g').c_str(), 1), 0);

    Call(kTPX1ClearOutgoingMessage, "");
    EXPECT_EQ(gOutgoingUserMessageParameterDataNodeList, nullptr);
    EXPECT_EQ(Describe(gOutgoingStdBevaviorMessageParameterDataNodeList), "MSSG=BYE ;");
    DisposeOutgoingMessageParameterList(3);
    RemoveOutgoingMessageParameterFromList("*", 2);
    EXPECT_EQ(gOutgoingStdBevaviorMessageParameterDataNodeList, nullptr);
}
