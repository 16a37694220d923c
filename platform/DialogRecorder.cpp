/*
 * DialogRecorder.cpp: the dialog backend of the tests. It keeps a deep copy of every
 * dialog and counts beeps, and answers from queues: buttons (1 when the queue is empty)
 * and classic paths for the file dialogs (cancel when empty or when the entry is "").
 */
#include "platform/DialogBackends.h"

#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace {

/* A DialogSpec whose texts point into strings it owns. */
struct RecordedDialog {
    DialogSpec theSpec;
    std::string text, buttons[3], caption;
};

std::mutex gRecorderLock;
std::vector<std::unique_ptr<RecordedDialog>> gRecorded;
std::deque<int16_t> gButtonAnswers;
std::deque<std::string> gFileAnswers;
int32_t gBeeps = 0;

int16_t RecordDialog(const DialogSpec *theSpec)
{
    std::lock_guard<std::mutex> hold(gRecorderLock);
    auto r = std::make_unique<RecordedDialog>();
    r->theSpec = *theSpec;
    r->text = theSpec->text ? theSpec->text : "";
    r->caption = theSpec->caption ? theSpec->caption : "";
    r->theSpec.text = r->text.c_str();
    r->theSpec.caption = r->caption.c_str();
    for (int i = 0; i < 3; i++) {
        r->buttons[i] = theSpec->buttons[i] ? theSpec->buttons[i] : "";
        r->theSpec.buttons[i] = r->buttons[i].c_str();
    }
    gRecorded.push_back(std::move(r));
    if (gButtonAnswers.empty()) return 1;
    int16_t answer = gButtonAnswers.front();
    gButtonAnswers.pop_front();
    return answer;
}

void CountBeep(int16_t duration)
{
    std::lock_guard<std::mutex> hold(gRecorderLock);
    gBeeps++;
}

std::string NextFileAnswer(void)
{
    std::lock_guard<std::mutex> hold(gRecorderLock);
    if (gFileAnswers.empty()) return std::string();
    std::string answer = gFileAnswers.front();
    gFileAnswers.pop_front();
    return answer;
}

OSErr RecordChooseFile(const char *windowTitle, const char *clientName, char *path, int32_t pathSize)
{
    return AnswerChosenFile(NextFileAnswer().c_str(), path, pathSize);
}

OSErr RecordPutFile(const char *windowTitle, const char *clientName, const char *proposedName,
                    char *folderPath, int32_t folderSize, char *fileName, int32_t nameSize)
{
    return AnswerPutFile(NextFileAnswer().c_str(), folderPath, folderSize, fileName, nameSize);
}

} // namespace

const Tpx1DialogMethods gDialogRecorder = {"recorder", RecordDialog, CountBeep, RecordChooseFile, RecordPutFile};

void ClearDialogRecorder(void)
{
    std::lock_guard<std::mutex> hold(gRecorderLock);
    gRecorded.clear();
    gButtonAnswers.clear();
    gFileAnswers.clear();
    gBeeps = 0;
}

extern "C" {

void PlatformDialogQueueAnswer(int16_t button)
{
    std::lock_guard<std::mutex> hold(gRecorderLock);
    gButtonAnswers.push_back(button);
}

void PlatformDialogQueueFileAnswer(const char *classicPathOrEmpty)
{
    std::lock_guard<std::mutex> hold(gRecorderLock);
    gFileAnswers.push_back(classicPathOrEmpty ? classicPathOrEmpty : "");
}

int32_t PlatformDialogRecordedCount(void)
{
    std::lock_guard<std::mutex> hold(gRecorderLock);
    return (int32_t)gRecorded.size();
}

const DialogSpec *PlatformDialogRecorded(int32_t i)
{
    std::lock_guard<std::mutex> hold(gRecorderLock);
    if (i < 0 || (size_t)i >= gRecorded.size()) return nullptr;
    return &gRecorded[i]->theSpec;
}

int32_t PlatformBeepCount(void)
{
    std::lock_guard<std::mutex> hold(gRecorderLock);
    return gBeeps;
}

void PlatformDialogClearRecord(void)
{
    ClearDialogRecorder();
}

} // extern "C"
