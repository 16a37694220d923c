/*
 * Plugin.h: the plug-in frame: life cycle (Init, Idle, Shutdown), the external
 * function dispatch, the DoScript queue run at idle, the version text and the simple
 * external functions. The frame sits on top of the core: no other folder includes this.
 */
#ifndef TPX1_PLUGIN_H
#define TPX1_PLUGIN_H

#include "plugin/ExternalIds.h"
#include "text/FMXExtern.h"
#include "platform/MacTypes.h"
#include "store/DataNode.h"

/* ---- Entry and life cycle ---- */
extern unsigned char &gDeferredInitDone;
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
extern char (&gDeferredScript)[kDoScriptSlots][kDoScriptNameSize];
extern uint32_t &gLastSentDoScriptTicks;
extern unsigned char &gIdleReentryGuard;
/* AddScriptToDoScriptQueue is declared with the stores, which feed the queue. */
void ProcessDoScriptQueue(void);
OSErr SendDoScript(const char *scriptName, unsigned long signature);

/* ---- Version ---- */
void GetVersionString(char *dest);
extern const char kPluginVersionText[];   /* "TOPOLUX plugin ver 8.0" */

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
