/*
 * HostDialogs.cpp: dialogs in script runs. When a script answers or expects dialogs,
 * the platform's recorder takes them instead of showing them; each recorded dialog is
 * printed once, and expectations check the recorded ones in order. Also the recorded
 * texts for programs that drive the core themselves (tests, benchmarks, fuzz targets).
 */
#include "host/HostCore.h"
#include "host/HostLanguage.h"

#include "platform/Toolbox.h"

void HostDialogsUseRecorder(HostSession *session)
{
    if (session->recorder)
        return;
    PlatformDialogUseRecorder();
    PlatformDialogClearRecord();
    session->recorder = true;
    session->dialogsEchoed = 0;
    session->dialogsChecked = 0;
}

void HostDialogsEcho(HostSession *session)
{
    if (!session->recorder)
        return;
    int32_t count = PlatformDialogRecordedCount();
    for (; session->dialogsEchoed < count; session->dialogsEchoed++) {
        const DialogSpec *theSpec = PlatformDialogRecorded(session->dialogsEchoed);
        if (theSpec)
            fprintf(session->out, "dialog: %s\n", HostVisibleText(theSpec->text ? theSpec->text : "").c_str());
    }
}

bool HostDialogsExpect(HostSession *session, const std::string &text, std::string *actual)
{
    if (session->dialogsChecked >= PlatformDialogRecordedCount()) {
        *actual = "no dialog was shown";
        return false;
    }
    const DialogSpec *theSpec = PlatformDialogRecorded(session->dialogsChecked++);
    std::string shown = theSpec && theSpec->text ? theSpec->text : "";
    if (shown == text)
        return true;
    *actual = HostVisibleText(shown);
    return false;
}

bool HostDialogsExpectNone(HostSession *session, std::string *actual)
{
    int32_t count = PlatformDialogRecordedCount();
    if (session->dialogsChecked >= count)
        return true;
    const DialogSpec *theSpec = PlatformDialogRecorded(session->dialogsChecked);
    *actual = HostVisibleText(theSpec && theSpec->text ? theSpec->text : "");
    session->dialogsChecked = count;
    return false;
}

std::vector<std::string> HostTakeRecordedDialogs(void)
{
    std::vector<std::string> texts;
    for (int32_t i = 0; i < PlatformDialogRecordedCount(); i++) {
        const DialogSpec *theSpec = PlatformDialogRecorded(i);
        texts.push_back(theSpec && theSpec->text ? theSpec->text : "");
    }
    PlatformDialogClearRecord();
    return texts;
}
