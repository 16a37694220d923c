/*
 * CoreState.cpp: the plug-in's state (see CoreState.h), all zero at load, and the g
 * names bound to its pieces. A binding is a reference fixed when the program is loaded:
 * the code reads and writes gUserGlobalsDataNodeList as before, and the bytes live in
 * gCoreState.
 */
#include "plugin/CoreState.h"

#include <cstring>
#include <type_traits>

#include "files/Paths.h"
#include "store/MessageLists.h"
#include "text/OutputCodes.h"
#include "text/TextHandles.h"
#include "text/TextUtils.h"

static_assert(std::is_trivially_copyable<CoreState>::value, "the state is plain data that zero bytes reset");

CoreState gCoreState;

/* ---- The frame ---- */
FMX_ExternCallBlock *&gFMX_ExternCallPtr = gCoreState.frame.callBlock;
uint32_t &gLastSentDoScriptTicks = gCoreState.frame.lastSentDoScriptTicks;
char (&gDeferredScript)[kDoScriptSlots][kDoScriptNameSize] = gCoreState.frame.deferredScript;
unsigned char &gDeferredInitDone = gCoreState.frame.deferredInitDone;
unsigned char &gIdleReentryGuard = gCoreState.frame.idleReentryGuard;

/* ---- text/ ---- */
const WordCode *&gWordCodeTable = gCoreState.text.wordCodeTable;
const char *&gLineCursor = gCoreState.text.lineCursor;
long &gLineCursorLine = gCoreState.text.lineCursorLine;
int16_t (&gOutputCodes)[10] = gCoreState.text.outputCodes;
char (&gReturnString)[4] = gCoreState.text.returnString;
char (&gIbmReturnString)[4] = gCoreState.text.ibmReturnString;
char (&gMacReturnString)[4] = gCoreState.text.macReturnString;

/* ---- store/ ---- */
DataNode *&gUserGlobalsDataNodeList = gCoreState.store.userGlobalsDataNodeList;
DataNode *&gOutgoingUserMessageParameterDataNodeList = gCoreState.store.outgoingUserMessageParameterDataNodeList;
DataNode *&gOutgoingStdBevaviorMessageParameterDataNodeList =
    gCoreState.store.outgoingStdBevaviorMessageParameterDataNodeList;
DataNode *&gIncomingMessageParameterDataNodeList = gCoreState.store.incomingMessageParameterDataNodeList;
DataNode *(&gArchivedIncomingMessageParameterDataNodeList)[kArchiveSlotCount] =
    gCoreState.store.archivedIncomingMessageParameterDataNodeList;
uint32_t &gLastSetParameterCallTicks = gCoreState.store.lastSetParameterCallTicks;
uint32_t &gLastGetParameterCallTicks = gCoreState.store.lastGetParameterCallTicks;
uint32_t &gLastGetNextMessageCallTicks = gCoreState.store.lastGetNextMessageCallTicks;
char (&gNameOfGlobalThatTriggeredScript)[256] = gCoreState.store.nameOfGlobalThatTriggeredScript;
unsigned char &gHaveSendDoScriptAndWaitingForGetNextMessage =
    gCoreState.store.haveSendDoScriptAndWaitingForGetNextMessage;
unsigned char &gHaveGottenAnIncomingMessageButNotClearedIt =
    gCoreState.store.haveGottenAnIncomingMessageButNotClearedIt;

/* ---- iac/ ---- */
AEEventHandlerUPP &gVeskHandlerUPP = gCoreState.iac.veskHandlerUPP;
FriendEntry (&gFriends)[kFriendCount] = gCoreState.iac.friends;
OSType (&gHandledMessages)[kHandledMessageCount] = gCoreState.iac.handledMessages;
SharingMenu &gTopoluxSharingMenu = gCoreState.iac.topoluxSharingMenu;
SharingMenu &gNimboSharingMenu = gCoreState.iac.nimboSharingMenu;
char (&gTopoluxNoneSelectedGetInfoAlert)[kAlertTextSize] = gCoreState.iac.topoluxNoneSelectedGetInfoAlert;
char (&gTopoluxNoneSelectedUnlinkAlert)[kAlertTextSize] = gCoreState.iac.topoluxNoneSelectedUnlinkAlert;
char (&gTopoluxNoneSelectedLinkAlert)[kAlertTextSize] = gCoreState.iac.topoluxNoneSelectedLinkAlert;
char (&gTopoluxMoreThanOneSelectedLinkAlert)[kAlertTextSize] = gCoreState.iac.topoluxMoreThanOneSelectedLinkAlert;
char (&gNimboNoneSelectedGetInfoAlert)[kAlertTextSize] = gCoreState.iac.nimboNoneSelectedGetInfoAlert;
MapEntry (&gTopoluxMaps)[kMapCount] = gCoreState.iac.topoluxMaps;
FirstView &gTopoluxFirstView = gCoreState.iac.topoluxFirstView;
bool &gIacClosed = gCoreState.iac.iacClosed;
OSType (&gFailedLaunches)[kFailedLaunchSlots] = gCoreState.iac.failedLaunches;
int &gNextFailedLaunch = gCoreState.iac.nextFailedLaunch;

/* ---- maplist/ ---- */
const char *&gLst2GroupText = gCoreState.maplist.lst2GroupText;

/* ---- files/ ---- */
char (&gBaseDirectory)[256] = gCoreState.files.baseDirectory;
char (&gAppFullPathName)[kPathSize] = gCoreState.files.appFullPathName;
bool &gAppFullPathKnown = gCoreState.files.appFullPathKnown;

void ResetCoreState(void)
{
    memset(&gCoreState, 0, sizeof gCoreState);
}
