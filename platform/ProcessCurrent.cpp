/*
 * ProcessCurrent.cpp: this process as the Process Manager shows it: its declared
 * signature (and with it its bus name), its serial number, its application path (the
 * executable, or TPX1_APP_PATH), its record for the transports, the activate callback,
 * and the filling of process information records (name and application FSSpec) for any
 * process.
 */
#include "platform/AppleEventRecords.h"
#include "platform/BusTransport.h"
#include "platform/ServiceResets.h"
#include "platform/Files.h"
#include "platform/Toolbox.h"

#include <climits>
#include <cstring>
#include <unistd.h>

namespace {

OSType gSignature = 0;
PlatformActivateProc gActivateProc = nullptr;
const uint32_t kCurrentSerial = 0x10;
uint32_t gLastSerial = kCurrentSerial;

} // namespace

extern "C" {

void PlatformSetProcessSignature(OSType signature)
{
    OSType previous = gSignature;
    gSignature = signature;
    BusCurrent()->xSignatureChanged(previous, signature);
}

OSType PlatformProcessSignature(void)
{
    return gSignature;
}

void PlatformSetActivateHandler(PlatformActivateProc proc)
{
    gActivateProc = proc;
}

} // extern "C"

/* The bus is closed first: no name to give up. */
void ResetCurrentProcess(void)
{
    gSignature = 0;
    gActivateProc = nullptr;
    gLastSerial = kCurrentSerial;
}

ProcessSerialNumber ProcessCurrentPSN(void)
{
    return ProcessSerialNumber{0, kCurrentSerial};
}

bool ProcessIsCurrent(const ProcessSerialNumber *psn)
{
    return psn && psn->highLongOfPSN == 0 && (psn->lowLongOfPSN == kCurrentProcess || psn->lowLongOfPSN == kCurrentSerial);
}

ProcessSerialNumber ProcessNewPSN(void)
{
    return ProcessSerialNumber{0, ++gLastSerial};
}

std::string ProcessCurrentAppPath(void)
{
    const char *setting = PlatformSetting("TPX1_APP_PATH");
    if (setting && *setting) return setting;
    /* The executable of a running process does not change: read it once, not at every
     * process query (each message asks several times whether a partner runs), and kept
     * by PlatformResetAll. */
    static std::string executable;
    if (executable.empty()) {
        char path[PATH_MAX];
        ssize_t len = readlink("/proc/self/exe", path, sizeof path - 1);
        if (len <= 0) return "";
        executable.assign(path, (size_t)len);
    }
    return executable;
}

BusProcess BusSelfProcess(void)
{
    /* Asked at every look-up of this process; it never forks without exec'ing. Kept by
     * PlatformResetAll: the process's own. */
    static const int32_t pid = (int32_t)getpid();
    BusProcess self;
    self.psn = ProcessCurrentPSN();
    self.signature = PlatformProcessSignature();
    self.pid = pid;
    self.executable = ProcessCurrentAppPath();
    return self;
}

void ProcessCallActivateHandler(void)
{
    if (gActivateProc) gActivateProc();
}

void ProcessFillNameAndSpec(ProcessInfoRec *info, const std::string &displayName, const std::string &posixExecutable)
{
    if (info->processName) {
        std::string name = displayName;
        if (name.empty()) {
            size_t slash = posixExecutable.rfind('/');
            name = slash == std::string::npos ? posixExecutable : posixExecutable.substr(slash + 1);
        }
        char roman[256];
        int32_t len = PlatformUTF8ToMacRoman(name.data(), (int32_t)name.size(), roman, sizeof roman, nullptr);
        if (len < 0) len = 0;
        info->processName[0] = (unsigned char)len;
        memcpy(info->processName + 1, roman, len);
    }
    if (info->processAppSpec) {
        memset(info->processAppSpec, 0, sizeof *info->processAppSpec);
        char classic[1024];
        if (!posixExecutable.empty() &&
            PlatformPOSIXPathToClassic(posixExecutable.c_str(), classic, sizeof classic) == noErr) {
            size_t len = strlen(classic);
            if (len <= 255) {
                Str255 name;
                name[0] = (unsigned char)len;
                memcpy(name + 1, classic, len);
                FSMakeFSSpec(0, 0, name, info->processAppSpec);
            }
        }
    }
}
