/*
 * ServiceResets.h: the resets of the services' state that PlatformResetAll runs
 * (ResetAll.cpp), internal to the platform library. Each lives with the state it puts
 * back.
 */
#ifndef TPX1_SERVICERESETS_H
#define TPX1_SERVICERESETS_H

void ResetClock(void);              /* Clock.cpp: the real clock, the manual one at 0 */
void ResetResourceManager(void);    /* Resources.cpp: the default store, no file open or current */
void ForgetAllResourceFiles(void);  /* ResourceFile.cpp */
void ResetEventQueue(void);         /* AppleEventQueue.cpp: no event queued, no dispatch under way */
void ResetReturnIDs(void);          /* AppleEventDescriptors.cpp */
void ResetBusSelection(void);       /* BusSelect.cpp: D-Bus selected again, opened at first need */
void ResetDBusConnection(void);     /* BusDBusConnection.cpp: closed, and warns again when missing */
void ResetDBusCalls(void);          /* BusDBusEvents.cpp: no send awaiting an error, no activation */
void ResetCurrentProcess(void);     /* ProcessCurrent.cpp: no signature, no activate handler */

#endif
