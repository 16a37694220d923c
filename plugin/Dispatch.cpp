/*
 * Dispatch.cpp: the external function table (ids 0 to 65) and Plugin_External, which
 * terminates the argument text and runs the function of the id. An argument that cannot
 * be terminated is reported with context -1; id -1 and ids outside the table do nothing.
 */
#include "plugin/Plugin.h"
#include "files/FileOps.h"
#include "files/Paths.h"
#include "iac/Iac.h"
#include "maplist/Lst2.h"
#include "store/Globals.h"
#include "store/MessageLists.h"
#include "text/TextHandles.h"
#include "ui/Alerts.h"

typedef void (*ExternalFunction)(long funcId, char **argHandle, char **resultHandle);

/* As the host reaches it, asking for a file name to write ignores the solution's text:
 * the save dialog starts with an empty proposed name. */
static void AskUserForFileNameToWriteAsDispatched(long funcId, char **argHandle, char **resultHandle)
{
    char ignored[256];
    char path[256] = {0};
    strcpyFHandleToCStr(ignored, sizeof ignored, argHandle);
    if (!AskUserForFileNameToWrite(path))
        path[0] = 0;
    OSErr err = SetResultsHandle(resultHandle, path);
    if (err != 0)
        ReportErrorToUser(funcId, err);
}

static const ExternalFunction gExternalFunctions[kFunctionCount] = {
    TPX1Version,                                /* 0 */
    TPX1TabChar,                                /* 1 */
    TPX1ReturnChar,                             /* 2 */
    TPX1DoubleQuoteChar,                        /* 3 */
    TPX1Ascii2Char,                             /* 4 */
    TPX1CallScript,                             /* 5 */
    TPX1ShowMessage,                            /* 6 */
    TPX1ResolveRelativePath,                    /* 7 */
    TPX1FileExists,                             /* 8 */
    TPX1CopyFile,                               /* 9 */
    TPX1DeleteFile,                             /* 10 */
    TPX1ZipFiles,                               /* 11 */
    TPX1UnzipFiles,                             /* 12 */
    TPX1UnzipFilesBatchMode,                    /* 13 */
    TPX1AskUserForFileNameToRead,               /* 14 */
    AskUserForFileNameToWriteAsDispatched,      /* 15 */
    TPX1SetKnownFriend,                         /* 16 */
    TPX1SetHandledMessages,                     /* 17 */
    TPX1SetMessageHandlingScriptTo,             /* 18 */
    TPX1SetScriptMenuName,                      /* 19 */
    TPX1SetSIGNPSIG,                            /* 20 */
    TPX1SetStartupDocument,                     /* 21 */
    TPX1InitIAC,                                /* 22 */
    TPX1SetGlobal,                              /* 23 */
    TPX1AppendToGlobal,                         /* 24 */
    TPX1UnsetGlobal,                            /* 25 */
    TPX1GetGlobal,                              /* 26 */
    TPX1GetGlobalList,                          /* 27 */
    TPX1AttachScriptToGlobal,                   /* 28 */
    TPX1EnableGlobalScript,                     /* 29 */
    TPX1DisableGlobalScript,                    /* 30 */
    TPX1ClearOutgoingMessage,                   /* 31 */
    TPX1SendMessageTo,                          /* 32 */
    TPX1SetParameter,                           /* 33 */
    TPX1AppendToParameter,                      /* 34 */
    TPX1ClearIncomingMessage,                   /* 35 */
    TPX1GetNextMessage,                         /* 36 */
    TPX1GetParameter,                           /* 37 */
    TPX1GetParameterLST2,                       /* 38 */
    TPX1GetParameterLST2Line,                   /* 39 */
    TPX1GetParameterLatLong,                    /* 40 */
    TPX1IsAppRunning,                           /* 41 */
    TPX1GoToApp,                                /* 42 */
    TPX1ShowOnMap,                              /* 43 */
    TPX1ProcessLST2ParameterForTopolux,         /* 44 */
    TPX1SetTopoluxSharingMenu,                  /* 45 */
    TPX1SetTopoluxSharingMenuActions,           /* 46 */
    TPX1SetTopoluxNoneSelectedGetInfoAlert,     /* 47 */
    TPX1SetTopoluxNoneSelectedUnlinkAlert,      /* 48 */
    TPX1SetTopoluxNoneSelectedLinkAlert,        /* 49 */
    TPX1SetTopoluxMoreThanOneSelectedLinkAlert, /* 50 */
    TPX1SetTopoluxMapInfo,                      /* 51 */
    TPX1SetTopoluxFirstView,                    /* 52 */
    TPX1RenameIncomingLSTAtoLST2,               /* 53 */
    TPX1CopyIncomingLST2ToOutgoingLST2,         /* 54 */
    TPX1SetNimboSharingMenu,                    /* 55 */
    TPX1SetNimboSharingMenuActions,             /* 56 */
    TPX1SetNimboNoneSelectedGetInfoAlert,       /* 57 */
    TPX1GetRepformYearsFromIDs,                 /* 58 */
    TPX1ChangeRepformIDsInFile,                 /* 59 */
    TPX1GetCharsFromFile,                       /* 60 */
    TPX1GetListOfFilesInFolder,                 /* 61 */
    TPX1GetNthLine,                             /* 62 */
    TPX1FileSystemRepresentationFromClassicPath, /* 63 */
    TPX1WaitOneSecond,                          /* 64 */
    TPX1GetNameOfGlobalThatTriggeredScript,     /* 65 */
};

void Plugin_External(long funcId, char **argHandle, char **resultHandle)
{
    if (gDeferredInitDone == 0)
        gDeferredInitDone = 1;

    OSErr err = EnsureHandleIsNullTerminated(argHandle);
    if (err != 0) {
        ReportErrorToUser(-1, err);
        return;
    }
    if (funcId < 0 || funcId >= kFunctionCount)
        return;
    gExternalFunctions[funcId](funcId, argHandle, resultHandle);
}
