/*
 * Dialogs.cpp: the dialog service's toolbox calls (RunModalDialog, SysBeep and the file
 * dialogs) and the choice of its backend. Unless a backend was installed, the first
 * dialog chooses one from the environment: the log when TPX1_DIALOG_LOG names a file,
 * the terminal when stdin and stderr are both terminals, else the headless line. A log
 * that cannot be opened is said once on standard error, and the headless line serves.
 */
#include "platform/DialogBackends.h"
#include "platform/Faults.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

std::atomic<const Tpx1DialogMethods *> gInstalledDialogs{nullptr};
std::atomic<const Tpx1DialogMethods *> gEnvironmentDialogs{nullptr};

const Tpx1DialogMethods *ChooseDialogBackend(void)
{
    const char *log = PlatformSetting("TPX1_DIALOG_LOG");
    if (log && *log) {
        int fd = open(log, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
        if (fd >= 0) {
            close(fd);
            return &gDialogLog;
        }
        fprintf(stderr, "%s: cannot open the dialog log %s (TPX1_DIALOG_LOG): %s; dialogs go to standard error\n",
                program_invocation_short_name, log, strerror(errno));
        return &gDialogHeadless;
    }
    if (isatty(STDIN_FILENO) && isatty(STDERR_FILENO)) return &gDialogTerminal;
    return &gDialogHeadless;
}

const Tpx1DialogMethods *Dialogs(void)
{
    const Tpx1DialogMethods *m = gInstalledDialogs.load(std::memory_order_acquire);
    if (m) return m;
    m = gEnvironmentDialogs.load(std::memory_order_acquire);
    if (m) return m;
    const Tpx1DialogMethods *chosen = ChooseDialogBackend();
    if (gEnvironmentDialogs.compare_exchange_strong(m, chosen)) return chosen;
    return m;
}

} // namespace

extern "C" {

const Tpx1DialogMethods *PlatformInstallDialogs(const Tpx1DialogMethods *methods)
{
    const Tpx1DialogMethods *previous = gInstalledDialogs.exchange(methods);
    return previous ? previous : Dialogs();
}

void PlatformDialogReset(void)
{
    gInstalledDialogs = nullptr;
    gEnvironmentDialogs = nullptr;
    ResetDialogLog();
}

void PlatformDialogUseRecorder(void)
{
    ClearDialogRecorder();
    gInstalledDialogs = &gDialogRecorder;
}

void PlatformDialogUseDefault(void)
{
    gInstalledDialogs = nullptr;
}

int16_t RunModalDialog(const DialogSpec *theSpec)
{
    if (PlatformFaultCheck(kFaultRunModalDialog) || !theSpec) return -1;
    return Dialogs()->xRun(theSpec);
}

void SysBeep(int16_t duration)
{
    if (PlatformFaultCheck(kFaultSysBeep)) return;
    Dialogs()->xBeep(duration);
}

OSErr NavChooseFile(const char *windowTitle, const char *clientName, char *path, int32_t pathSize)
{
    OSErr err = PlatformFaultCheck(kFaultNavChooseFile);
    if (!err && (!path || pathSize < 1)) err = paramErr;
    if (!err) err = Dialogs()->xChooseFile(windowTitle ? windowTitle : "", clientName ? clientName : "", path, pathSize);
    if (err && path && pathSize > 0) path[0] = 0;
    return err;
}

OSErr NavPutFile(const char *windowTitle, const char *clientName, const char *proposedName,
                 char *folderPath, int32_t folderSize, char *fileName, int32_t nameSize)
{
    OSErr err = PlatformFaultCheck(kFaultNavPutFile);
    if (!err && (!folderPath || folderSize < 1 || !fileName || nameSize < 1)) err = paramErr;
    if (!err)
        err = Dialogs()->xPutFile(windowTitle ? windowTitle : "", clientName ? clientName : "",
                                  proposedName ? proposedName : "", folderPath, folderSize, fileName, nameSize);
    if (err) {
        if (folderPath && folderSize > 0) folderPath[0] = 0;
        if (fileName && nameSize > 0) fileName[0] = 0;
    }
    return err;
}

} // extern "C"
