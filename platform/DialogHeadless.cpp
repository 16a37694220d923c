/*
 * DialogHeadless.cpp: the dialog backend when nobody can answer: each dialog becomes
 * one line on stderr and is answered with button 1; the file dialogs report that they
 * were cancelled. It never blocks.
 */
#include "platform/DialogBackends.h"

#include <cstdio>

namespace {

int16_t ShowHeadless(const DialogSpec *theSpec)
{
    std::string caption = MacRomanToUTF8String(theSpec->caption);
    std::string line = "tpx1 dialog:";
    if (*DialogIconWord(theSpec->icon)) line += std::string(" [") + DialogIconWord(theSpec->icon) + "]";
    if (!caption.empty()) line += " " + caption + ":";
    line += " " + FlatDialogText(theSpec->text) + " {";
    for (int i = 0; i < 3; i++) {
        if (!theSpec->shown[i]) continue;
        line += " " + std::to_string(i + 1) + "=" + MacRomanToUTF8String(theSpec->buttons[i]);
    }
    line += " } -> 1\n";
    fputs(line.c_str(), stderr);
    return 1;
}

void BeepHeadless(int16_t duration)
{
}

OSErr ChooseFileHeadless(const char *windowTitle, const char *clientName, char *path, int32_t pathSize)
{
    fprintf(stderr, "tpx1 choose-file: %s -> cancelled\n", FlatDialogText(windowTitle).c_str());
    return userCanceledErr;
}

OSErr PutFileHeadless(const char *windowTitle, const char *clientName, const char *proposedName,
                      char *folderPath, int32_t folderSize, char *fileName, int32_t nameSize)
{
    fprintf(stderr, "tpx1 put-file: %s (%s) -> cancelled\n", FlatDialogText(windowTitle).c_str(),
            FlatDialogText(proposedName).c_str());
    return userCanceledErr;
}

} // namespace

const Tpx1DialogMethods gDialogHeadless = {"headless", ShowHeadless, BeepHeadless, ChooseFileHeadless, PutFileHeadless};
