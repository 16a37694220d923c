/*
 * test_dialogs.cpp: text measurement, the recorder, the log backend's JSON lines and
 * answers, the headless line on stderr, and faults of the dialog calls.
 */
#include "platform/Faults.h"
#include "platform/Services.h"
#include "tests/common/TestFolder.h"

#include <cstring>
#include <gtest/gtest.h>

static DialogSpec MakeSpec(const char *text, const char *b1, const char *b2, const char *b3)
{
    DialogSpec s{};
    s.kind = 'S';
    s.text = text;
    s.buttons[0] = b1;
    s.buttons[1] = b2;
    s.buttons[2] = b3;
    for (int i = 0; i < 3; i++) s.shown[i] = *s.buttons[i] != 0;
    s.defaultButton = 1;
    s.cancelButton = 2;
    s.icon = 0;
    s.caption = "Stop";
    s.beep = 1;
    s.textHeight = 32;
    return s;
}

TEST(PlatformText, MeasureLines)
{
    EXPECT_EQ(TELineHeight(), 16);
    EXPECT_EQ(TEMeasureLines("", 0, 280), 0);
    EXPECT_EQ(TEMeasureLines("one line", -1, 280), 1);
    EXPECT_EQ(TEMeasureLines("a\rb\nc\r\nd", -1, 280), 4);   // CR LF is one break
    EXPECT_EQ(TEMeasureLines("A\r\rError: -222\r", -1, 280), 4);   // trailing break: empty last line
    // 70 pixels hold 10 characters: words wrap, blanks hang over the edge
    EXPECT_EQ(TEMeasureLines("aaaa bbbb cccc dddd", -1, 70), 2);
    EXPECT_EQ(TEMeasureLines("aaaaaaaaa bbbbbbbbb", -1, 70), 2);
    EXPECT_EQ(TEMeasureLines("aaaaaaaaaa    \rb", -1, 70), 2);
    EXPECT_EQ(TEMeasureLines("aaaaaaaaaaaaaaaaaaaaaaaaa", -1, 70), 3);   // a long word is cut
    EXPECT_EQ(TEMeasureLines("abc", 2, 7), 2);                            // length is honoured
    EXPECT_EQ(TEMeasureLines(nullptr, 0, 70), 0);
}

TEST(PlatformDialogs, RecorderCopiesAndAnswers)
{
    PlatformDialogUseRecorder();
    char text[] = "Delete it?";
    char yes[] = "Yes";
    DialogSpec theSpec = MakeSpec(text, yes, "No", "");
    PlatformDialogQueueAnswer(2);
    EXPECT_EQ(RunModalDialog(&theSpec), 2);
    strcpy(text, "changed");
    strcpy(yes, "Oui");
    EXPECT_EQ(RunModalDialog(&theSpec), 1);   // empty queue: button 1
    SysBeep(5);
    ASSERT_EQ(PlatformDialogRecordedCount(), 2);
    const DialogSpec *first = PlatformDialogRecorded(0);
    EXPECT_STREQ(first->text, "Delete it?");   // deep copies
    EXPECT_STREQ(first->buttons[0], "Yes");
    EXPECT_STREQ(first->buttons[1], "No");
    EXPECT_STREQ(first->caption, "Stop");
    EXPECT_EQ(first->cancelButton, 2);
    EXPECT_EQ(first->textHeight, 32);
    EXPECT_STREQ(PlatformDialogRecorded(1)->text, "changed");
    EXPECT_EQ(PlatformDialogRecorded(2), nullptr);
    EXPECT_EQ(PlatformBeepCount(), 1);

    char path[64], folder[64], name[16];
    PlatformDialogQueueFileAnswer("Linux:tmp:a.txt");
    PlatformDialogQueueFileAnswer("");
    PlatformDialogQueueFileAnswer("Linux:home:report.txt");
    EXPECT_EQ(NavChooseFile("Open", "TPX1", path, sizeof path), noErr);
    EXPECT_STREQ(path, "Linux:tmp:a.txt");
    EXPECT_EQ(NavChooseFile("Open", "TPX1", path, sizeof path), userCanceledErr);
    EXPECT_STREQ(path, "");
    EXPECT_EQ(NavPutFile("Save", "TPX1", "x.txt", folder, sizeof folder, name, sizeof name), noErr);
    EXPECT_STREQ(folder, "Linux:home:");
    EXPECT_STREQ(name, "report.txt");
    EXPECT_EQ(NavPutFile("Save", "TPX1", "x.txt", folder, sizeof folder, name, sizeof name), userCanceledErr);
    PlatformDialogQueueFileAnswer("Linux:tmp:a.txt");
    EXPECT_EQ(NavChooseFile("Open", "TPX1", path, 8), paramErr);   // does not fit

    PlatformFaultSet(kFaultRunModalDialog, 1, memFullErr, false);
    EXPECT_EQ(RunModalDialog(&theSpec), -1);
    PlatformFaultSet(kFaultNavChooseFile, 1, ioErr, false);
    EXPECT_EQ(NavChooseFile("Open", "TPX1", path, sizeof path), ioErr);
    PlatformFaultClearAll();

    PlatformDialogClearRecord();
    EXPECT_EQ(PlatformDialogRecordedCount(), 0);
    EXPECT_EQ(PlatformBeepCount(), 0);
    PlatformDialogUseDefault();
}

static std::vector<std::string> Lines(const std::string &s)
{
    std::vector<std::string> lines;
    size_t start = 0, nl;
    while ((nl = s.find('\n', start)) != std::string::npos) {
        lines.push_back(s.substr(start, nl - start));
        start = nl + 1;
    }
    return lines;
}

TEST(PlatformDialogs, LogBackendWritesJsonLinesAndUsesAnswers)
{
    TestFolder tmp;
    setenv("TPX1_DIALOG_LOG", tmp.Posix("dialogs.jsonl").c_str(), 1);
    setenv("TPX1_DIALOG_ANSWERS", "2,Linux:tmp:caf\xC3\xA9.txt,,Linux:out:r.txt,,7", 1);
    PlatformDialogReset();

    DialogSpec theSpec = MakeSpec("Say \"hi\"\\\rcaf\x8E\ttab", "OK", "Cancel", "");
    EXPECT_EQ(RunModalDialog(&theSpec), 2);
    char path[64], folder[64], name[32];
    EXPECT_EQ(NavChooseFile("Open", "TPX1", path, sizeof path), noErr);
    EXPECT_STREQ(path, "Linux:tmp:caf\x8E.txt");   // answered in Mac Roman
    EXPECT_EQ(RunModalDialog(&theSpec), 2);            // empty entry: the cancel button
    EXPECT_EQ(NavPutFile("Save", "TPX1", "r.txt", folder, sizeof folder, name, sizeof name), noErr);
    EXPECT_STREQ(folder, "Linux:out:");
    EXPECT_STREQ(name, "r.txt");
    EXPECT_EQ(NavChooseFile("Open", "TPX1", path, sizeof path), userCanceledErr);   // empty entry
    EXPECT_EQ(RunModalDialog(&theSpec), 1);            // 7 is no button: the default
    EXPECT_EQ(RunModalDialog(&theSpec), 1);            // list used up
    EXPECT_EQ(NavChooseFile("Open", "TPX1", path, sizeof path), userCanceledErr);
    SysBeep(5);

    std::vector<std::string> lines = Lines(tmp.Read("dialogs.jsonl"));
    ASSERT_EQ(lines.size(), 9u);
    EXPECT_EQ(lines[0],
              "{\"kind\":\"S\",\"text\":\"Say \\\"hi\\\"\\\\\\rcaf\xC3\xA9\\ttab\",\"buttons\":[\"OK\",\"Cancel\",\"\"],"
              "\"shown\":[true,true,false],\"default\":1,\"cancel\":2,\"icon\":0,\"caption\":\"Stop\",\"beep\":true,"
              "\"window\":[0,0,0,0],\"textItem\":[0,0,0,0],\"textHeight\":32,\"answer\":2}");
    EXPECT_EQ(lines[1], "{\"kind\":\"choose-file\",\"title\":\"Open\",\"client\":\"TPX1\",\"answer\":\"Linux:tmp:caf\xC3\xA9.txt\"}");
    EXPECT_NE(lines[3].find("\"kind\":\"put-file\""), std::string::npos);
    EXPECT_NE(lines[3].find("\"name\":\"r.txt\",\"answer\":\"Linux:out:r.txt\""), std::string::npos);
    EXPECT_NE(lines[4].find("\"answer\":\"\""), std::string::npos);
    EXPECT_NE(lines[5].find("\"answer\":1}"), std::string::npos);
    EXPECT_EQ(lines[8], "{\"beep\":5}");

    unsetenv("TPX1_DIALOG_LOG");
    unsetenv("TPX1_DIALOG_ANSWERS");
    PlatformDialogReset();
}

TEST(PlatformDialogs, HeadlessLineOnStderrWhenTheLogCannotBeOpened)
{
    /* Said once; then every dialog is one line on standard error, terminal or not. */
    TestFolder tmp;
    setenv("TPX1_DIALOG_LOG", tmp.Posix("missing/dialogs.jsonl").c_str(), 1);
    PlatformDialogReset();

    DialogSpec theSpec = MakeSpec("First line\r\nsecond\rthird \x8E", "OK", "", "");
    testing::internal::CaptureStderr();
    EXPECT_EQ(RunModalDialog(&theSpec), 1);
    char path[64] = "x";
    EXPECT_EQ(NavChooseFile("Open", "TPX1", path, sizeof path), userCanceledErr);
    EXPECT_STREQ(path, "");
    std::string err = testing::internal::GetCapturedStderr();

    unsetenv("TPX1_DIALOG_LOG");
    PlatformDialogReset();
    std::vector<std::string> lines = Lines(err);
    ASSERT_EQ(lines.size(), 3u) << err;
    EXPECT_NE(lines[0].find(": cannot open the dialog log " + tmp.Posix("missing/dialogs.jsonl") +
                            " (TPX1_DIALOG_LOG): No such file or directory; dialogs go to standard error"),
              std::string::npos) << lines[0];
    EXPECT_EQ(lines[1], "tpx1 dialog: [Stop] Stop: First line / second / third \xC3\xA9 { 1=OK } -> 1");
    EXPECT_NE(lines[2].find("choose-file"), std::string::npos);
}
