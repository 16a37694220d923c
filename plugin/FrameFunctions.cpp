/*
 * FrameFunctions.cpp: the plug-in's version text and the external functions that need
 * no store of their own: the version, the character functions, queuing a script by
 * name, the message-handling script and script menu names, the signatures outgoing
 * messages carry, the start-up document and the one-second wait.
 */
#include <cstring>

#include "plugin/Plugin.h"
#include "files/Paths.h"
#include "platform/Toolbox.h"
#include "store/Globals.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"
#include "ui/Alerts.h"

const char kPluginVersionText[] = "TOPOLUX plugin ver 8.0";

void GetVersionString(char *dest)
{
    strcpy(dest, kPluginVersionText);
}

void TPX1Version(long funcId, char **argHandle, char **resultHandle)
{
    char buffer[256];
    long err = GetGlobalInListAsStr(kPluginVersionGlobal, buffer, sizeof buffer);
    if (err != 0) {
        ReportErrorToUser(funcId, (short)err);
        return;
    }
    ReportErrorIfAny(funcId, SetResultsHandle(resultHandle, buffer));
}

static void SetOneCharacterResult(long funcId, char **resultHandle, char c)
{
    char text[2] = {c, 0};
    ReportErrorIfAny(funcId, SetResultsHandle(resultHandle, text));
}

void TPX1TabChar(long funcId, char **argHandle, char **resultHandle)
{
    SetOneCharacterResult(funcId, resultHandle, 9);
}

void TPX1ReturnChar(long funcId, char **argHandle, char **resultHandle)
{
    SetOneCharacterResult(funcId, resultHandle, 13);
}

void TPX1DoubleQuoteChar(long funcId, char **argHandle, char **resultHandle)
{
    SetOneCharacterResult(funcId, resultHandle, '"');
}

/* The low 8 bits of the decimal argument: 321 gives "A" like 65, and a value whose
 * low byte is 0 gives the empty text. */
void TPX1Ascii2Char(long funcId, char **argHandle, char **resultHandle)
{
    char number[32];
    strcpyFHandleToCStr(number, sizeof number, argHandle);
    SetOneCharacterResult(funcId, resultHandle, (char)(TextToLong(number) & 0xFF));
}

void TPX1CallScript(long funcId, char **argHandle, char **resultHandle)
{
    char name[256];
    strcpyFHandleToCStr(name, sizeof name, argHandle);
    ReportErrorIfAny(funcId, (OSErr)AddScriptToDoScriptQueue(name));
}

/* An empty argument keeps the script name there was. */
void TPX1SetMessageHandlingScriptTo(long funcId, char **argHandle, char **resultHandle)
{
    char name[256];
    strcpyFHandleToCStr(name, sizeof name, argHandle);
    if (name[0] == 0)
        return;
    ReportErrorIfAny(funcId, SetGlobalFromStr(kHandleMessageScriptGlobal, 1, name));
}

void TPX1SetScriptMenuName(long funcId, char **argHandle, char **resultHandle)
{
    char name[256];
    strcpyFHandleToCStr(name, sizeof name, argHandle);
    ReportErrorIfAny(funcId, SetGlobalFromStr(kScriptMenuNameGlobal, 1, name));
}

/* "signature|psig". Only "App PSIG" is stored: "App Signature" stays what Init made it,
 * although the signature part must be there for the psig to be taken. */
void TPX1SetSIGNPSIG(long funcId, char **argHandle, char **resultHandle)
{
    char signature[256] = {0};
    char psig[5] = {0};
    bool noDupes = false;

    OSErr err = GetAndStripNameAndDupes(argHandle, signature, &noDupes);
    if (err == 0)
        strcpyFHandleToCStr(psig, sizeof psig, argHandle);
    if (signature[0] == 0 || err != 0) {
        ReportErrorIfAny(funcId, err);
        return;
    }
    char normalised[5];
    OSTypeToString(StringToOSType(psig), normalised);
    SetGlobalFromStr(kAppPsigGlobal, 1, normalised);
}

/* "path" or "path|reference file": "App DOC" becomes the resolved path, or the empty
 * text when the path is empty or cannot be resolved. */
void TPX1SetStartupDocument(long funcId, char **argHandle, char **resultHandle)
{
    char argument[512];
    char path[256] = {0};
    char base[256] = {0};
    char resolved[256] = {0};

    strcpyFHandleToCStr(argument, sizeof argument, argHandle);
    char *bar = strchr(argument, '|');
    if (bar != nullptr) {
        *bar = 0;
        strncat(base, bar + 1, sizeof base - 1);
    }
    strncat(path, argument, sizeof path - 1);

    if (path[0] != 0 && ResolvePossiblePartialPath(path, base, 1, resolved) != 0) {
        SetResultsHandle(resultHandle, "Error: ResolvePossiblePartialPath returned an error");
        resolved[0] = 0;
    }
    ReportErrorIfAny(funcId, SetGlobalFromStr(kAppDocGlobal, 1, resolved));
}

/* Blocks the host for one second on purpose, ending early only if the tick count wraps. */
void TPX1WaitOneSecond(long funcId, char **argHandle, char **resultHandle)
{
    uint32_t start = TickCount();
    for (;;) {
        uint32_t now = TickCount();
        if (now >= start + 60 || now < start)
            break;
    }
}
