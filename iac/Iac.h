/*
 * Iac.h: messaging with the partner applications: the 'VESK' message protocol, sending
 * and receiving with the 20-slot archive and the built-in dispatcher, the partner table
 * with greetings and sharing menus, and process control (find, launch, bring forward).
 */
#ifndef TPX1_IAC_H
#define TPX1_IAC_H

#include "platform/MacTypes.h"
#include "platform/AppleEvents.h"
#include "platform/Files.h"
#include "platform/Processes.h"
#include "store/DataNode.h"

#define kVeskEventClass FOUR_CHAR('V', 'E', 'S', 'K')
#define kVeskEventID FOUR_CHAR('A', 'E', 'V', 'T')
#define kTopoluxSignature FOUR_CHAR('T', 'P', 'X', '1')
#define kNimboSignature FOUR_CHAR('N', 'M', 'B', '5')
enum { kMaxParamCount = 38, kHandledMessageCount = 30, kFriendCount = 3, kMapCount = 5 };

/* ---- Protocol: the keyword set read for an incoming message id. */
int GetKeywordSetForMessage(OSType messageId, OSType *keywords, int capacity);

/* ---- Sending ---- */
struct AEdata { OSType keyword; OSType type; const char *data; int32_t length; };
OSErr SendMessageFromOutgoingMessageParameters(unsigned long signature, short list);
OSErr myAESend(const AEdata *entries, short count, unsigned long signature);
void TPX1SendMessageTo(long funcId, char **argHandle, char **resultHandle);

/* ---- Receiving ---- */
OSErr InitIac(void);
/* Removes the handler at Shutdown and makes it refuse every event until the next Init,
 * so that an event still on its way, or one arriving because the removal failed, never
 * reaches the freed lists. */
void CloseIac(void);
void ReopenIac(void);
OSErr HandleVESKEvent(const AppleEvent *event, AppleEvent *reply, intptr_t refcon);
OSErr ArchiveIncomingMessage(const AEDesc *event);
OSErr RequiredCheck(const AEDesc *event);
OSErr MyAEGetStrParam(const AEDesc *event, unsigned long keyword, char *buffer, long maxLength);
OSErr myAEGetParamPtr(const AEDesc *event, unsigned long keyword, unsigned long desiredType,
                      unsigned long *actualType, char *buffer, long maxSize, long *actualSize);
char *AllocateAndGetAEStrParam(const AEDesc *event, unsigned long keyword);
OSErr HandleMessageItself(OSType messageId, DataNode *message, bool *handled);
short ActionWordToCode(const char *word);
void TPX1InitIAC(long funcId, char **argHandle, char **resultHandle);

/* ---- Partners and greetings ---- */
struct FriendEntry { OSType signature; char path[256]; };
extern FriendEntry (&gFriends)[kFriendCount];
extern OSType (&gHandledMessages)[kHandledMessageCount];
void AddFriend(unsigned long signature, const char *path);
void GetFriendsPath(unsigned long signature, char *path);
OSErr GreetFriendAndSendMenus(unsigned long signature, const char *greeting, unsigned char sendView);
void SayHolaToAllFriends(void);
OSErr SetDocVersPathOutgoingMessageParameters(short list);
OSErr SendMenuAndMapsToTopolux(void);
OSErr SendMenuToNimbo(void);
bool IsHandledMessage(OSType messageId);
/* Stores the action codes of a bar-separated word list (ids 46 and 56). */
void SetSharingMenuActions(bool nimbo, const char *words);
/* Stores an alert text (ids 47 to 50 and 57). */
void SetSelectionAlertText(long funcId, const char *text);
void TPX1SetKnownFriend(long funcId, char **argHandle, char **resultHandle);
void TPX1SetHandledMessages(long funcId, char **argHandle, char **resultHandle);
void TPX1SetTopoluxSharingMenu(long funcId, char **argHandle, char **resultHandle);
void TPX1SetTopoluxSharingMenuActions(long funcId, char **argHandle, char **resultHandle);
void TPX1SetTopoluxNoneSelectedGetInfoAlert(long funcId, char **argHandle, char **resultHandle);
void TPX1SetTopoluxNoneSelectedUnlinkAlert(long funcId, char **argHandle, char **resultHandle);
void TPX1SetTopoluxNoneSelectedLinkAlert(long funcId, char **argHandle, char **resultHandle);
void TPX1SetTopoluxMoreThanOneSelectedLinkAlert(long funcId, char **argHandle, char **resultHandle);
void TPX1SetTopoluxMapInfo(long funcId, char **argHandle, char **resultHandle);
void TPX1SetTopoluxFirstView(long funcId, char **argHandle, char **resultHandle);
void TPX1SetNimboSharingMenu(long funcId, char **argHandle, char **resultHandle);
void TPX1SetNimboSharingMenuActions(long funcId, char **argHandle, char **resultHandle);
void TPX1SetNimboNoneSelectedGetInfoAlert(long funcId, char **argHandle, char **resultHandle);

/* ---- Process control ---- */
OSErr SignatureToApp(unsigned long signature, const FSSpec *document, ProcessSerialNumber *psn, FSSpec *appSpec,
                     unsigned char *launched, short mode, unsigned short launchFlags);
int Sig2ProcessInfo(unsigned long signature, ProcessInfoRec *info, char *name, FSSpec *theSpec);
bool AppIsRunning(unsigned long signature);
OSErr MakeSureAppIsRunning(unsigned long signature, unsigned char *launched);
OSErr BringApplicationForward(unsigned long signature, unsigned char flag);
OSErr BringMeForward(unsigned long partner);
OSErr GetDefaultPath(unsigned long signature, char *path);
/* Each call from the host and each incoming event starts with no failed launches. */
void ForgetFailedLaunches(void);
void AssistTopoluxComingForwardOnIBM(void);
void TPX1IsAppRunning(long funcId, char **argHandle, char **resultHandle);
void TPX1GoToApp(long funcId, char **argHandle, char **resultHandle);
void TPX1ShowOnMap(long funcId, char **argHandle, char **resultHandle);

#endif
