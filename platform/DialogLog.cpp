/*
 * DialogLog.cpp: the dialog backend for scripted runs. Every dialog, file dialog and
 * beep is appended as one JSON line (UTF-8) to the file TPX1_DIALOG_LOG names. Answers
 * come in order from TPX1_DIALOG_ANSWERS, a comma-separated list read at first use:
 * a button number for a dialog (an empty entry is its cancel button, anything else
 * not 1..3 its default), a classic path for a file dialog (empty: cancelled). When the
 * list runs out, dialogs answer 1 and file dialogs are cancelled.
 */
#include "platform/DialogBackends.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <unistd.h>
#include <vector>

namespace {

std::mutex gLogLock;
bool gAnswersRead = false;
std::vector<std::string> gAnswers;   /* UTF-8, as the environment gave them */
size_t gNextAnswer = 0;

/* The next entry of TPX1_DIALOG_ANSWERS; false when there is none left. */
bool NextLogAnswer(std::string *answer)
{
    std::lock_guard<std::mutex> hold(gLogLock);
    if (!gAnswersRead) {
        gAnswersRead = true;
        gAnswers.clear();
        gNextAnswer = 0;
        const char *list = PlatformSetting("TPX1_DIALOG_ANSWERS");
        for (const char *p = (list && *list) ? list : nullptr; p;) {
            const char *comma = strchr(p, ',');
            gAnswers.emplace_back(p, comma ? comma - p : strlen(p));
            p = comma ? comma + 1 : nullptr;
        }
    }
    if (gNextAnswer >= gAnswers.size()) return false;
    *answer = gAnswers[gNextAnswer++];
    return true;
}

std::string JsonString(const std::string &utf8)
{
    std::string out = "\"";
    for (unsigned char c : utf8) {
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        default:
            if (c < 0x20) {
                char esc[8];
                snprintf(esc, sizeof esc, "\\u%04x", c);
                out += esc;
            } else {
                out += (char)c;
            }
        }
    }
    return out + "\"";
}

std::string JsonText(const char *mac)
{
    return JsonString(MacRomanToUTF8String(mac));
}

std::string JsonRect(const Rect &r)
{
    return "[" + std::to_string(r.top) + "," + std::to_string(r.left) + "," + std::to_string(r.bottom) + "," +
           std::to_string(r.right) + "]";
}

void AppendLogLine(const std::string &json)
{
    const char *path = PlatformSetting("TPX1_DIALOG_LOG");
    if (!path || !*path) return;
    int fd = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) return;
    std::string line = json + "\n";
    ssize_t n = write(fd, line.data(), line.size());
    (void)n;
    close(fd);
}

int16_t LogDialog(const DialogSpec *theSpec)
{
    int16_t answer = 1;
    std::string entry;
    if (NextLogAnswer(&entry)) {
        char *end;
        long n = strtol(entry.c_str(), &end, 10);
        if (entry.empty()) answer = theSpec->cancelButton;
        else if (*end == 0 && n >= 1 && n <= 3) answer = (int16_t)n;
        else answer = theSpec->defaultButton;
    }
    std::string json = "{\"kind\":" + JsonString(std::string(1, theSpec->kind)) + ",\"text\":" + JsonText(theSpec->text);
    json += ",\"buttons\":[" + JsonText(theSpec->buttons[0]) + "," + JsonText(theSpec->buttons[1]) + "," +
            JsonText(theSpec->buttons[2]) + "]";
    json += ",\"shown\":[";
    for (int i = 0; i < 3; i++) json += std::string(i ? "," : "") + (theSpec->shown[i] ? "true" : "false");
    json += "],\"default\":" + std::to_string(theSpec->defaultButton) + ",\"cancel\":" + std::to_string(theSpec->cancelButton);
    json += ",\"icon\":" + std::to_string(theSpec->icon) + ",\"caption\":" + JsonText(theSpec->caption);
    json += std::string(",\"beep\":") + (theSpec->beep ? "true" : "false");
    json += ",\"window\":" + JsonRect(theSpec->window) + ",\"textItem\":" + JsonRect(theSpec->textItem);
    json += ",\"textHeight\":" + std::to_string(theSpec->textHeight);
    json += ",\"answer\":" + std::to_string(answer) + "}";
    AppendLogLine(json);
    return answer;
}

void LogBeep(int16_t duration)
{
    AppendLogLine("{\"beep\":" + std::to_string(duration) + "}");
}

/* The answer of a file dialog, in Mac Roman; "" when cancelled. */
std::string NextFileAnswer(void)
{
    std::string entry;
    if (!NextLogAnswer(&entry)) return std::string();
    std::string mac(entry.size() + 1, '\0');
    int32_t n = PlatformUTF8ToMacRoman(entry.data(), (int32_t)entry.size(), mac.data(), (int32_t)mac.size(), nullptr);
    mac.resize(n < 0 ? 0 : n);
    return mac;
}

OSErr LogChooseFile(const char *windowTitle, const char *clientName, char *path, int32_t pathSize)
{
    std::string answer = NextFileAnswer();
    AppendLogLine("{\"kind\":\"choose-file\",\"title\":" + JsonText(windowTitle) + ",\"client\":" +
                  JsonText(clientName) + ",\"answer\":" + JsonText(answer.c_str()) + "}");
    return AnswerChosenFile(answer.c_str(), path, pathSize);
}

OSErr LogPutFile(const char *windowTitle, const char *clientName, const char *proposedName,
                 char *folderPath, int32_t folderSize, char *fileName, int32_t nameSize)
{
    std::string answer = NextFileAnswer();
    AppendLogLine("{\"kind\":\"put-file\",\"title\":" + JsonText(windowTitle) + ",\"client\":" +
                  JsonText(clientName) + ",\"name\":" + JsonText(proposedName) + ",\"answer\":" +
                  JsonText(answer.c_str()) + "}");
    return AnswerPutFile(answer.c_str(), folderPath, folderSize, fileName, nameSize);
}

} // namespace

const Tpx1DialogMethods gDialogLog = {"log", LogDialog, LogBeep, LogChooseFile, LogPutFile};

void ResetDialogLog(void)
{
    std::lock_guard<std::mutex> hold(gLogLock);
    gAnswersRead = false;
    gAnswers.clear();
    gNextAnswer = 0;
}
