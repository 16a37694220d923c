/*
 * Services.h: the tables of functions behind the toolbox services of Toolbox.h. Each
 * service has one table with x-prefixed members, a Linux implementation and test
 * implementations; the exported toolbox calls are thin wrappers that go through the
 * installed table. PlatformInstall<Service> swaps the table and returns the previous one
 * (NULL restores the default implementation and still returns the previous table).
 */
#ifndef TPX1_SERVICES_H
#define TPX1_SERVICES_H

#include "platform/Toolbox.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Ticks since some fixed point, 60 per second, wrapping at 2^32. */
typedef struct Tpx1ClockMethods {
    uint32_t (*xTicks)(void);
} Tpx1ClockMethods;

/* The store of open resource files. xOpen answers a reference number > 0 or an OSErr
 * (< 0); xText copies item (type, id, index) of file refNum as Mac Roman C text. */
typedef struct Tpx1ResourceMethods {
    int16_t (*xOpen)(const char *posixPath);
    void (*xClose)(int16_t refNum);
    OSErr (*xText)(int16_t refNum, OSType type, int16_t id, int16_t index, char *dest, int32_t destSize);
} Tpx1ResourceMethods;

/* One backend of the dialog service: the log, the terminal, the headless line, the
 * recorder of the tests. */
typedef struct Tpx1DialogMethods {
    const char *zName;
    int16_t (*xRun)(const DialogSpec *theSpec);
    void (*xBeep)(int16_t duration);
    OSErr (*xChooseFile)(const char *windowTitle, const char *clientName, char *path, int32_t pathSize);
    OSErr (*xPutFile)(const char *windowTitle, const char *clientName, const char *proposedName,
                      char *folderPath, int32_t folderSize, char *fileName, int32_t nameSize);
} Tpx1DialogMethods;

TPX1_API const Tpx1ClockMethods *PlatformInstallClock(const Tpx1ClockMethods *methods);
TPX1_API const Tpx1ResourceMethods *PlatformInstallResources(const Tpx1ResourceMethods *methods);
TPX1_API const Tpx1DialogMethods *PlatformInstallDialogs(const Tpx1DialogMethods *methods);

/* Forget the dialog backend chosen from the environment, so that the next dialog
 * chooses again (tests set TPX1_DIALOG_LOG / TPX1_DIALOG_ANSWERS first). */
TPX1_API void PlatformDialogReset(void);

/* Puts every service back as a process starts, for harnesses, sweeps and fuzzing
 * between runs: the default tables, no fault armed (TPX1_FAULTS is not read again), no
 * handler and no queued event, the bus closed with D-Bus selected, no signature, no
 * open file or resource file, the real clock, the dialog backend chosen again. What
 * deliberately outlives it is listed in ResetAll.cpp. */
TPX1_API void PlatformResetAll(void);

#ifdef __cplusplus
}
#endif

#endif
