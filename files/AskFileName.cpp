/*
 * AskFileName.cpp: asking the user for a file to read or a place to write through the
 * platform's file dialogs, and the external functions that return the chosen path.
 */
#include <cstring>

#include "files/FileOps.h"
#include "files/FileSupport.h"
#include "platform/Toolbox.h"
#include "text/TextHandles.h"
#include "ui/Alerts.h"

static const char kClientName[] = "VeskFileMakerPlugin";

bool AskUserForFileNameToRead(char *out)
{
    char path[kPathSize];
    path[0] = 0;
    OSErr err = NavChooseFile("Choose a File", kClientName, path, sizeof path);
    if (err != noErr || path[0] == 0)
        return false;
    strcpy(out, path);
    return true;
}

bool AskUserForFileNameToWrite(char *inOut)
{
    char proposed[kPathSize];
    char folder[kPathSize], name[kPathSize];
    CopyPathPiece(proposed, inOut);
    folder[0] = 0;
    name[0] = 0;
    OSErr err = NavPutFile("Save As", kClientName, proposed, folder, sizeof folder,
                           name, sizeof name);
    if (err != noErr || folder[0] == 0)
        return false;
    size_t folderLength = strlen(folder);
    bool delimited = folder[folderLength - 1] == ':';
    if (folderLength + (delimited ? 0 : 1) + strlen(name) >= kPathSize)
        return false;
    strcpy(inOut, folder);
    if (!delimited)
        strcat(inOut, ":");
    strcat(inOut, name);
    return true;
}

/* Both functions copy the solution's text and ignore it: the open dialog shows no prompt
 * of the solution's, and the save dialog starts with no proposed name. */
static void AskAndSetResult(long funcId, char **argHandle, char **resultHandle, bool (*ask)(char *))
{
    char ignored[kPathSize];
    char path[kPathSize];
    CopyArgumentText(argHandle, ignored, sizeof ignored);
    memset(path, 0, sizeof path);
    if (!ask(path))
        path[0] = 0;
    OSErr err = SetResultsHandle(resultHandle, path);
    if (err != noErr)
        ReportErrorToUser(funcId, err);
}

void TPX1AskUserForFileNameToRead(long funcId, char **argHandle, char **resultHandle)
{
    AskAndSetResult(funcId, argHandle, resultHandle, AskUserForFileNameToRead);
}

void TPX1AskUserForFileNameToWrite(long funcId, char **argHandle, char **resultHandle)
{
    AskAndSetResult(funcId, argHandle, resultHandle, AskUserForFileNameToWrite);
}
