/*
 * FakePlugin.h: a tiny plug-in entry linked into the host tests, so that fmhost's core
 * is tested without the real plug-in. Its functions: 0 FakeEcho (result = argument),
 * 1 FakeUpper (upper case), 2 FakeTab (a TAB), 3 FakeLeak (keeps a handle it never
 * frees, result "leaked"), 4 FakeDoScript (sends this process a do-script event for
 * the argument), 5 FakeAlert (shows a dialog with the argument, result = the button).
 */
#ifndef TPX1_TESTS_FAKEPLUGIN_H
#define TPX1_TESTS_FAKEPLUGIN_H

#include "host/HostCore.h"

/* Fills plugin with the fake entry and its function names. */
void FakePluginInstall(HostPlugin *plugin);
/* Calls the fake received, by selector (0..7). */
extern int gFakeCalls[8];
extern int gFakeLastIdleLevel;
/* Disposes the handles FakeLeak kept. */
void FakePluginFreeLeaks(void);

#endif
