/*
 * test_dialogs.cpp: the message dialog's layout (cancel button, hidden buttons, icon,
 * caption and beep by kind, growth by the text's height) and the texts of the error
 * reports, seen through the dialog recorder.
 */
#include <cstring>
#include <string>

#include "tests/common/PluginTest.h"
#include "platform/Toolbox.h"
#include "ui/Alerts.h"

class DialogTest : public PluginTest {
protected:
    DialogSpec theSpec{};
    char caption[256];
    int16_t Cancel(const char *b1, const char *b2, const char *b3)
    {
        EXPECT_EQ(LayoutVariableDlg('M', "text", b1, b2, b3, &theSpec, caption, sizeof caption), 0);
        return theSpec.cancelButton;
    }
    const DialogSpec *Last() { return PlatformDialogRecorded(PlatformDialogRecordedCount() - 1); }
};

TEST_F(DialogTest, CancelButtonAndHiddenButtons)
{
    EXPECT_EQ(Cancel("OK", "", ""), 1);
    EXPECT_TRUE(theSpec.shown[0]);
    EXPECT_FALSE(theSpec.shown[1]);
    EXPECT_FALSE(theSpec.shown[2]);
    EXPECT_EQ(theSpec.defaultButton, 1);
    EXPECT_EQ(Cancel("Save", "Don't Save", "Cancel"), 3);
    EXPECT_TRUE(theSpec.shown[1] && theSpec.shown[2]);
    EXPECT_EQ(Cancel("Yes", "No", ""), 2);
    EXPECT_EQ(Cancel("Yes", "Maybe", ""), 2);
    EXPECT_EQ(Cancel("No", "cancel", "Back"), 2);     /* CANCEL is looked for first */
    EXPECT_EQ(Cancel("back", "Go", "no"), 3);          /* then NO, then BACK */
    EXPECT_EQ(Cancel("Go back", "", "Stop"), 1);
    EXPECT_EQ(Cancel("OK", nullptr, nullptr), 1);
    EXPECT_FALSE(theSpec.shown[1]);
    EXPECT_STREQ(theSpec.buttons[1], "");
}

TEST_F(DialogTest, TextGrowsTheWindowAndMovesTheButtons)
{
    ASSERT_EQ(LayoutVariableDlg('M', "", "OK", "", "", &theSpec, caption, sizeof caption), 0);
    DialogSpec empty = theSpec;
    EXPECT_EQ(empty.textHeight, 0);
    ASSERT_EQ(LayoutVariableDlg('M', "one", "OK", "", "", &theSpec, caption, sizeof caption), 0);
    int16_t line = theSpec.textHeight;
    EXPECT_GT(line, 0);
    ASSERT_EQ(LayoutVariableDlg('M', "one\rtwo\rthree", "OK", "", "", &theSpec, caption, sizeof caption), 0);
    EXPECT_EQ(theSpec.textHeight, 3 * line);
    std::string text = "one\rtwo\rthree\r" + std::string(200, 'w');   /* the last line wraps */
    ASSERT_EQ(LayoutVariableDlg('M', text.c_str(), "OK", "", "", &theSpec, caption, sizeof caption), 0);
    int16_t height = theSpec.textHeight;
    EXPECT_GT(height, 4 * line);
    EXPECT_EQ(height % line, 0);
    EXPECT_EQ(theSpec.window.bottom - empty.window.bottom, height);
    EXPECT_EQ(theSpec.window.right, empty.window.right);
    EXPECT_EQ(theSpec.textItem.bottom - empty.textItem.bottom, height);
    EXPECT_EQ(theSpec.textItem.top, empty.textItem.top);
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(theSpec.buttonItems[i].top - empty.buttonItems[i].top, height);
        EXPECT_EQ(theSpec.buttonItems[i].bottom - empty.buttonItems[i].bottom, height);
    }

    /* An icon keeps the text area where it is; without one it moves up by 15. */
    ASSERT_EQ(LayoutVariableDlg('s', "", "OK", "", "", &theSpec, caption, sizeof caption), 0);
    EXPECT_EQ(theSpec.textItem.top - empty.textItem.top, 15);
    EXPECT_EQ(theSpec.icon, 0);
    char expected[256];
    my_getindstring(expected, 15000, 35);
    EXPECT_NE(expected[0], 0);
    EXPECT_STREQ(theSpec.caption, expected);
    EXPECT_NE(theSpec.iconItem.bottom, 0);
    EXPECT_EQ(empty.iconItem.bottom, 0);
    EXPECT_EQ(empty.captionItem.right, 0);
}

TEST_F(DialogTest, KindsIconsCaptionsAndBeeps)
{
    struct { char kind; int16_t icon; short caption; bool beep; } kinds[] = {
        {'S', 0, 35, true}, {'n', 1, 36, true}, {'W', 2, 37, true}, {'c', 2, 38, true},
        {'M', -1, 0, false}, {'b', -1, 0, false}, {'x', -1, 0, false}};
    for (const auto &k : kinds) {
        int32_t beeps = PlatformBeepCount();
        PlatformDialogQueueAnswer(2);
        EXPECT_EQ(VariableDlg(k.kind, "Hello", "Yes", "No", ""), 2) << k.kind;
        const DialogSpec *shown = Last();
        EXPECT_EQ(shown->icon, k.icon) << k.kind;
        EXPECT_EQ(shown->beep, k.beep) << k.kind;
        EXPECT_EQ(PlatformBeepCount() - beeps, k.beep ? 1 : 0) << k.kind;
        char expected[256] = "";
        if (k.caption)
            my_getindstring(expected, 15000, k.caption);
        EXPECT_STREQ(shown->caption, expected) << k.kind;
        EXPECT_STREQ(shown->text, "Hello");
        EXPECT_EQ(shown->cancelButton, 2);
    }
}

TEST_F(DialogTest, ErrorReportTexts)
{
    ReportErrorToUser(kTPX1UnsetGlobal, -117);
    EXPECT_EQ(LastDialogText(), "An error occurred in the plug-in function TPX1UnsetGlobal.\r\rError: -117\r\r");
    EXPECT_EQ(Last()->kind, 'M');
    EXPECT_STREQ(Last()->buttons[0], "OK");
    EXPECT_FALSE(Last()->shown[1]);
    EXPECT_EQ(Last()->icon, -1);
    ReportErrorToUser(kTPX1SetParameter, -108);
    EXPECT_EQ(LastDialogText(),
              "An error occurred in the plug-in function TPX1SetParameter.\r\rNot enough memory to complete this operation.\r\r");
    ReportErrorToUser(-1, -2802);
    EXPECT_EQ(LastDialogText(), "Error: -2802\r\r\r\r");
    ReportErrorAndMsgToUser(23, -1, "details");
    EXPECT_EQ(LastDialogText(), "An error occurred in the plug-in function TPX1SetGlobal.\r\rError: -1\rdetails\r");
    ReportErrorAndMsgToUser(23, -1, nullptr);
    EXPECT_EQ(LastDialogText(), "An error occurred in the plug-in function TPX1SetGlobal.\r\rError: -1\r\r");
    ReportErrorAndMsgToUser(23, 0, std::string(300, 'm').c_str());
    EXPECT_EQ(LastDialogText(), "An error occurred in the plug-in function TPX1SetGlobal.\r\r\r" + std::string(255, 'm') + "\r");

    EXPECT_EQ(ReportErrorMsgToUser("plain"), 1);
    EXPECT_EQ(LastDialogText(), "plain");
    DoAlertMessage("one", nullptr, "three", "four");
    EXPECT_EQ(LastDialogText(), "one\r\rthree\rfour\r");
    DoAlertMessage(nullptr, "two", nullptr, nullptr);
    EXPECT_EQ(LastDialogText(), "two\r");
    DoDebugMessage("debug");
    EXPECT_EQ(LastDialogText(), "debug\r\r");
    std::string big(1500, 'x');
    DoAlertMessage(big.c_str(), big.c_str(), nullptr, nullptr);
    EXPECT_EQ(LastDialogText().size(), 2047u);
    EXPECT_EQ(PlatformBeepCount(), 0);
}

TEST_F(DialogTest, ShowMessageAnswersTheButton)
{
    EXPECT_EQ(Call(kTPX1ShowMessage, ""), "1");
    EXPECT_EQ(LastDialogText(), "");
    PlatformDialogQueueAnswer(3);
    EXPECT_EQ(Call(kTPX1ShowMessage, "Hi\rthere", "old"), "3");
    EXPECT_EQ(LastDialogText(), "Hi\rthere");
    PlatformDialogQueueAnswer(-1);
    EXPECT_EQ(Call(kTPX1ShowMessage, "lost", "old"), "old");

    char s[256];
    my_numtostring(-42, s);
    EXPECT_STREQ(s, "-42");
    long n = 0;
    my_stringtonum("-17", &n);
    EXPECT_EQ(n, -17);
    my_c2pstr(s);
    EXPECT_EQ(s[0], 3);
    my_p2cstr(reinterpret_cast<unsigned char *>(s));
    EXPECT_STREQ(s, "-42");
    my_getindstring(s, 144, 24);
    EXPECT_STREQ(s, "TPX1SetGlobal");
    my_getindstring(s, 144, 999);
    EXPECT_STREQ(s, "");
}
