/*
 * Plugin.h: the plug-in frame: life cycle (Init, Idle, Shutdown), the external
 * function dispatch, the DoScript queue run at idle, the output codes and the simple
 * external functions, and the plug-in's own resource table.
 */
#ifndef TPX1_PLUGIN_H
#define TPX1_PLUGIN_H

#include "plugin/ExternalIds.h"
#include "plugin/FMXExtern.h"
#include "platform/MacTypes.h"

/* ---- Entry and life cycle ---- */
extern unsigned char gDeferredInitDone;
/* Everything FMExternCallProc does; the shell in the .fmx only forwards to it. */
void RunHostCall(FMX_ExternCallBlock *block);
void Plugin_Init(short hostVersion);
void Plugin_Idle(char idleLevel);
void Plugin_Shutdown(void);
void Plugin_DeferredInit(void);
void Plugin_AppPrefs(void);
void Plugin_External(long funcId, char **argHandle, char **resultHandle);
OSErr SendMessageToApp(unsigned long signature, short kind);

/* ---- DoScript queue and idle ---- */
enum { kDoScriptSlots = 10, kDoScriptNameSize = 64, kGraceTicks = 600 };
extern char gDeferredScript[kDoScriptSlots][kDoScriptNameSize];
extern uint32_t gLastSentDoScriptTicks;
extern unsigned char gIdleReentryGuard;
long AddScriptToDoScriptQueue(const char *scriptName);
void ProcessDoScriptQueue(void);
OSErr SendDoScript(const char *scriptName, unsigned long signature);

/* ---- Output codes ---- */
extern int16_t gOutputCodes[10];
struct WordCode { int16_t code; const char *word; };
extern const WordCode *gWordCodeTable;
void ClearOutputCodes(void);
void SetOutputCode(long slot, short code);
short StrToCode(const char *word);
void StrcpyOutputLine(char *dest, const char *field1, const char *field2, const char *field3);
/* The same with the fields' lengths known (fields need no NUL); returns the line's
 * length. dest must hold every field as often as a code names it, plus the separators. */
long ComposeOutputLine(char *dest, const char *const fields[3], const long lengths[3]);
void GetVersionString(char *dest);
extern const char kPluginVersionText[];   /* "TOPOLUX plugin ver 8.0" */

/* ---- Resources: the plug-in's own table, written out as tpx1.fmx.rsrc by the build. */
struct ResourceItem { OSType type; int16_t id; int16_t index; const char *text; };
extern const ResourceItem gPluginResources[];
extern const int gPluginResourceCount;
/* Looks an item up in the current resource file, then in the plug-in's own table. */
bool GetPluginResourceText(OSType type, short id, short index, char *dest, long destSize);

/* ---- External functions owned by the frame ---- */
void TPX1Version(long funcId, char **argHandle, char **resultHandle);
void TPX1TabChar(long funcId, char **argHandle, char **resultHandle);
void TPX1ReturnChar(long funcId, char **argHandle, char **resultHandle);
void TPX1DoubleQuoteChar(long funcId, char **argHandle, char **resultHandle);
void TPX1Ascii2Char(long funcId, char **argHandle, char **resultHandle);
void TPX1CallScript(long funcId, char **argHandle, char **resultHandle);
void TPX1SetMessageHandlingScriptTo(long funcId, char **argHandle, char **resultHandle);
void TPX1SetScriptMenuName(long funcId, char **argHandle, char **resultHandle);
void TPX1SetSIGNPSIG(long funcId, char **argHandle, char **resultHandle);
void TPX1SetStartupDocument(long funcId, char **argHandle, char **resultHandle);
void TPX1WaitOneSecond(long funcId, char **argHandle, char **resultHandle);

#endif
