/*
 * ResetAll.cpp: PlatformResetAll, every service's reset in one call, in an order in
 * which none undoes another: faults first (nothing fails during the reset), the queued
 * events answered while the bus that brought them is still open, then the bus, this
 * process, files, resources, dialogs and the clock.
 *
 * What deliberately outlives the reset, and why:
 *   - the live descriptor records (AppleEventDescriptors.cpp): each belongs to the
 *     descriptor holding it until AEDisposeDesc;
 *   - the epoll descriptor and eventfd of the event queue (AppleEventQueue.cpp): a host
 *     may hold AEGetEventFD's for the life of the process; the reset empties the queue
 *     and clears its signal;
 *   - the children launched over D-Bus (BusDBusLaunch.cpp): each is reaped when it ends;
 *   - the private bus daemon (BusDaemon.cpp): it runs until PlatformBusStopPrivateDaemon
 *     or exit;
 *   - the exit hooks set once per process (BusDBusConnection.cpp, BusDaemon.cpp,
 *     MemoryBus.cpp);
 *   - this process's pid and executable (ProcessCurrent.cpp), which do not change;
 *   - the iconv descriptors (MacRoman.cpp), put back to their initial state before
 *     every use;
 *   - the text buffer PlatformBusAddress returns (BusDBusConnection.cpp);
 *   - the locks (Faults, dialog log and recorder, resource files, iconv), which hold no
 *     state of their own.
 */
#include "platform/AppleEventRecords.h"
#include "platform/BusTransport.h"
#include "platform/DialogBackends.h"
#include "platform/EventService.h"
#include "platform/Faults.h"
#include "platform/FileService.h"
#include "platform/ServiceResets.h"

extern "C" void PlatformResetAll(void)
{
    PlatformFaultClearAll();

    PlatformInstallEvents(nullptr);
    AEHandlerClearAll();
    ResetEventQueue();
    ResetReturnIDs();

    ResetDBusConnection();
    ResetDBusCalls();
    BusMemoryReset();
    ResetBusSelection();

    ResetCurrentProcess();
    PlatformInstallProcesses(nullptr);

    PlatformInstallFileMethods(nullptr);
    PlatformFilesUseMountInfo(nullptr);
    PlatformFilesReset();

    ResetResourceManager();

    PlatformDialogReset();
    ClearDialogRecorder();

    ResetClock();
}
