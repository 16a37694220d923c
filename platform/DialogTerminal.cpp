/*
 * DialogTerminal.cpp: the dialog backend for an interactive terminal. The dialog is
 * drawn as a box on stderr and answered with one key read in raw mode from stdin:
 * Return for the default button, Escape for the cancel button, or a button's digit.
 * The file dialogs ask for a classic path on one line (empty: cancelled). Input typed
 * before a dialog showed (at a prompt, the next lines typed ahead) is no answer to it:
 * it is set aside while the dialog waits and handed back to the terminal afterwards.
 */
#include "platform/DialogBackends.h"
#include "platform/TextLayout.h"

#include <cstdio>
#include <cstring>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace {

enum { kBoxColumns = 60 };

/* One row of the box: "| " + text padded to the box width + " |". The text is Mac
 * Roman, one column a byte, and is converted for the terminal. */
void DrawBoxRow(const std::string &mac)
{
    std::string padded = mac;
    if (padded.size() < kBoxColumns) padded.append(kBoxColumns - padded.size(), ' ');
    fprintf(stderr, "| %s |\n", MacRomanToUTF8String(padded.c_str()).c_str());
}

void DrawBoxRule(const std::string &title)
{
    std::string rule = "+-";
    if (!title.empty()) rule += " " + title + " ";
    while (rule.size() < kBoxColumns + 3) rule += '-';
    fprintf(stderr, "%s+\n", MacRomanToUTF8String(rule.c_str()).c_str());
}

void DrawDialogBox(const DialogSpec *theSpec)
{
    std::string title = (theSpec->caption && *theSpec->caption) ? theSpec->caption : DialogIconWord(theSpec->icon);
    DrawBoxRule(title);
    const char *text = theSpec->text ? theSpec->text : "";
    int32_t len = (int32_t)strlen(text), pos = 0, end;
    bool hadBreak = false;
    while (pos < len) {
        int32_t start = pos;
        pos = NextLayoutLine(text, len, pos, kBoxColumns, &end, &hadBreak);
        DrawBoxRow(std::string(text + start, end - start));
    }
    if (hadBreak) DrawBoxRow("");
    DrawBoxRow("");
    std::string buttons;
    for (int i = 0; i < 3; i++) {
        if (!theSpec->shown[i]) continue;
        buttons += "[" + std::to_string(i + 1) + " " + (theSpec->buttons[i] ? theSpec->buttons[i] : "");
        buttons += (i + 1 == theSpec->defaultButton) ? "*] " : "] ";
    }
    DrawBoxRow(buttons);
    DrawBoxRule("Return = *, Esc = " + std::to_string(theSpec->cancelButton));
}

/* The terminal while a dialog has it: raw (no echo, no line buffering, no signals),
 * with what had been typed before the dialog showed set aside. */
struct TerminalTurn {
    bool haveTerm = false;
    struct termios saved, raw;
    std::string typedAhead;
};

void BeginTurn(TerminalTurn *turn)
{
    turn->haveTerm = tcgetattr(STDIN_FILENO, &turn->saved) == 0;
    if (!turn->haveTerm) return;
    turn->raw = turn->saved;
    turn->raw.c_lflag &= ~(ICANON | ECHO | ISIG);
    turn->raw.c_iflag &= ~(ICRNL);
    turn->raw.c_cc[VMIN] = 0;
    turn->raw.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSANOW, &turn->raw);
    char chunk[256];
    ssize_t n;
    while ((n = read(STDIN_FILENO, chunk, sizeof chunk)) > 0) turn->typedAhead.append(chunk, (size_t)n);
    turn->raw.c_cc[VMIN] = 1;
    tcsetattr(STDIN_FILENO, TCSANOW, &turn->raw);
}

/* Hands the typed-ahead input back to the terminal's input queue (still without echo:
 * it was shown when it was typed) and restores the terminal's mode. */
void EndTurn(TerminalTurn *turn)
{
    if (!turn->haveTerm) return;
    tcsetattr(STDIN_FILENO, TCSANOW, &turn->raw);
    size_t given = 0;
    while (given < turn->typedAhead.size() && ioctl(STDIN_FILENO, TIOCSTI, &turn->typedAhead[given]) == 0) given++;
    tcsetattr(STDIN_FILENO, TCSANOW, &turn->saved);
    if (given < turn->typedAhead.size()) {
        std::string lost;
        for (size_t i = given; i < turn->typedAhead.size(); i++) {
            unsigned char c = (unsigned char)turn->typedAhead[i];
            char escaped[8];
            if (c == '\r' || c == '\n') lost += "\\n";
            else if (c < 32 || c == 127) snprintf(escaped, sizeof escaped, "\\x%02X", c), lost += escaped;
            else lost += (char)c;
        }
        fprintf(stderr, "(typed ahead before the dialog and not run: \"%s\")\n", lost.c_str());
    }
}

/* One key without echo or line buffering; -1 at end of input. */
int ReadRawKey(void)
{
    unsigned char c;
    return read(STDIN_FILENO, &c, 1) == 1 ? c : -1;
}

int16_t RunTerminalDialog(const DialogSpec *theSpec)
{
    TerminalTurn turn;
    BeginTurn(&turn);
    DrawDialogBox(theSpec);
    for (;;) {
        int key = ReadRawKey();
        int16_t answer = 0;
        if (key == '\r' || key == '\n') answer = theSpec->defaultButton;
        else if (key == 27 || key == 3 || key == 4 || key < 0) answer = theSpec->cancelButton;
        else if (key >= '1' && key <= '3' && theSpec->shown[key - '1']) answer = (int16_t)(key - '0');
        if (answer) {
            fprintf(stderr, "-> %d\n", answer);
            EndTurn(&turn);
            return answer;
        }
        fputc('\a', stderr);
    }
}

void BeepTerminal(int16_t duration)
{
    fputc('\a', stderr);
    fflush(stderr);
}

/* Reads a classic path typed on one line (echoed, with the terminal's line editing),
 * in Mac Roman; "" when cancelled. Nothing after the line's end is read. */
std::string AskClassicPath(const char *prompt, const char *windowTitle)
{
    TerminalTurn turn;
    BeginTurn(&turn);
    fprintf(stderr, "%s (%s)\nClassic path, empty to cancel: ", prompt, FlatDialogText(windowTitle).c_str());
    if (turn.haveTerm) tcsetattr(STDIN_FILENO, TCSANOW, &turn.saved);
    std::string line;
    char c;
    while (line.size() < 1023 && read(STDIN_FILENO, &c, 1) == 1 && c != '\n' && c != '\r') line += c;
    EndTurn(&turn);
    char mac[1024];
    int32_t n = PlatformUTF8ToMacRoman(line.c_str(), -1, mac, sizeof mac, nullptr);
    return n > 0 ? std::string(mac, n) : std::string();
}

OSErr TerminalChooseFile(const char *windowTitle, const char *clientName, char *path, int32_t pathSize)
{
    return AnswerChosenFile(AskClassicPath("Choose a file", windowTitle).c_str(), path, pathSize);
}

OSErr TerminalPutFile(const char *windowTitle, const char *clientName, const char *proposedName,
                      char *folderPath, int32_t folderSize, char *fileName, int32_t nameSize)
{
    std::string prompt = "Save as \"" + FlatDialogText(proposedName) + "\"";
    std::string answer = AskClassicPath(prompt.c_str(), windowTitle);
    return AnswerPutFile(answer.c_str(), folderPath, folderSize, fileName, nameSize);
}

} // namespace

const Tpx1DialogMethods gDialogTerminal = {"terminal", RunTerminalDialog, BeepTerminal, TerminalChooseFile,
                                           TerminalPutFile};
