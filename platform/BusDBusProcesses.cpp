/*
 * BusDBusProcesses.cpp: the running applications as the bus shows them. The table of
 * org.vesk.App.s<hex> names is loaded once when the connection opens and kept current
 * from the daemon's NameOwnerChanged signals, so that "is it running" costs no round
 * trip; process ids (GetConnectionUnixProcessID) and application files (the
 * TPX1_APP_PATH a launched process was given, else /proc/<pid>/exe) are looked up when
 * first asked for. Also SetFrontProcess of another application, which
 * calls its Activate method.
 */
#include "platform/BusDBus.h"
#include "platform/EventService.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <unistd.h>
#include <vector>

namespace {

const uint64_t kProcessTableFreshUsec = 1000;

struct NameEntry {
    std::string name;
    OSType signature;
    std::string owner;       /* unique connection name */
    ProcessSerialNumber psn;
    int32_t pid;             /* 0 until looked up */
    std::string executable;
    bool self;
};

std::vector<NameEntry> gNames;

bool SignatureOfName(const char *name, OSType *signature)
{
    const char *prefix = kBusNamePrefix ".s";
    size_t prefixLen = strlen(prefix);
    if (strncmp(name, prefix, prefixLen) != 0 || strlen(name) != prefixLen + 8) return false;
    unsigned value = 0;
    for (const char *p = name + prefixLen; *p; p++) {
        int digit;
        if (*p >= '0' && *p <= '9') digit = *p - '0';
        else if (*p >= 'a' && *p <= 'f') digit = *p - 'a' + 10;
        else return false;
        value = value * 16 + digit;
    }
    *signature = value;
    return true;
}

NameEntry *FindByName(const std::string &name)
{
    for (NameEntry &entry : gNames)
        if (entry.name == name) return &entry;
    return nullptr;
}

NameEntry *FindByPSN(const ProcessSerialNumber *psn)
{
    for (NameEntry &entry : gNames)
        if (!entry.self && entry.psn.highLongOfPSN == psn->highLongOfPSN && entry.psn.lowLongOfPSN == psn->lowLongOfPSN)
            return &entry;
    return nullptr;
}

bool IsOwnConnection(const std::string &owner)
{
    sd_bus *bus = BusDBusConnection();
    const char *unique = nullptr;
    return bus && sd_bus_get_unique_name(bus, &unique) >= 0 && unique && owner == unique;
}

void SetOwner(const char *name, const char *owner)
{
    OSType signature;
    if (!SignatureOfName(name, &signature)) return;
    NameEntry *entry = FindByName(name);
    if (!owner || !*owner) {
        if (entry) gNames.erase(gNames.begin() + (entry - gNames.data()));
        return;
    }
    if (entry && entry->owner == owner) return;
    NameEntry fresh;
    fresh.name = name;
    fresh.signature = signature;
    fresh.owner = owner;
    fresh.self = IsOwnConnection(owner);
    fresh.psn = fresh.self ? ProcessCurrentPSN() : ProcessNewPSN();
    fresh.pid = fresh.self ? getpid() : 0;
    if (entry) *entry = fresh;
    else gNames.push_back(fresh);
}

int OnNameOwnerChanged(sd_bus_message *m, void *userdata, sd_bus_error *error)
{
    const char *name, *oldOwner, *newOwner;
    if (sd_bus_message_read(m, "sss", &name, &oldOwner, &newOwner) < 0) return 0;
    SetOwner(name, newOwner);
    return 0;
}

/* The application file a process runs as: the TPX1_APP_PATH it was given (a launched
 * application gets the file it was launched as, which may be a wrapper script), else
 * its executable. */
std::string ApplicationFileOf(uint32_t pid)
{
    std::ifstream variables("/proc/" + std::to_string(pid) + "/environ", std::ios::binary);
    const std::string key = "TPX1_APP_PATH=";
    for (std::string entry; std::getline(variables, entry, '\0');)
        if (entry.size() > key.size() && entry.compare(0, key.size(), key) == 0) return entry.substr(key.size());
    char link[64], path[PATH_MAX];
    snprintf(link, sizeof link, "/proc/%u/exe", pid);
    ssize_t len = readlink(link, path, sizeof path - 1);
    return len > 0 ? std::string(path, (size_t)len) : std::string();
}

/* Looks up the process id and executable of an entry (one round trip, once). The
 * caller drains the bus afterwards, when it no longer holds the entry. */
bool ResolvePid(NameEntry *entry)
{
    if (entry->pid) return true;
    sd_bus *bus = BusDBusConnection();
    if (!bus) return false;
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message *reply = nullptr;
    int r = sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                               "GetConnectionUnixProcessID", &error, &reply, "s", entry->owner.c_str());
    uint32_t pid = 0;
    if (r >= 0) r = sd_bus_message_read(reply, "u", &pid);
    sd_bus_error_free(&error);
    sd_bus_message_unref(reply);
    if (r < 0 || !pid) return false;
    entry->pid = (int32_t)pid;
    entry->executable = ApplicationFileOf(pid);
    return true;
}

} // namespace

int BusDBusWatchNames(sd_bus *bus, sd_bus_slot **slot)
{
    return sd_bus_add_match(bus, slot,
                            "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
                            "interface='org.freedesktop.DBus',member='NameOwnerChanged',"
                            "arg0namespace='" kBusNamePrefix "'",
                            OnNameOwnerChanged, nullptr);
}

void BusDBusLoadNames(sd_bus *bus)
{
    char **names = nullptr;
    if (sd_bus_list_names(bus, &names, nullptr) < 0) return;
    for (char **p = names; p && *p; p++) {
        OSType signature;
        if (SignatureOfName(*p, &signature) && !FindByName(*p)) {
            const char *owner = nullptr;
            sd_bus_creds *creds = nullptr;
            if (sd_bus_get_name_creds(bus, *p, SD_BUS_CREDS_UNIQUE_NAME, &creds) >= 0 &&
                sd_bus_creds_get_unique_name(creds, &owner) >= 0)
                SetOwner(*p, owner);
            sd_bus_creds_unref(creds);
        }
        free(*p);
    }
    free(names);
    BusDBusDrain();
}

void BusDBusForgetNames(void)
{
    gNames.clear();
}

void BusDBusNoteOwnName(OSType signature, bool owned)
{
    char name[32];
    PlatformBusNameForSignature(signature, name);
    const char *unique = nullptr;
    sd_bus *bus = BusDBusConnection();
    if (owned && bus && sd_bus_get_unique_name(bus, &unique) >= 0) SetOwner(name, unique);
    else if (!owned) SetOwner(name, nullptr);
}

bool BusDBusOwnerOf(OSType signature, std::string *owner)
{
    for (const NameEntry &entry : gNames) {
        if (entry.signature == signature) {
            *owner = entry.owner;
            return true;
        }
    }
    return false;
}

bool BusDBusFindByPid(int32_t pid, OSType expected, ProcessSerialNumber *psn)
{
    for (size_t i = 0; i < gNames.size(); i++) {
        NameEntry *entry = &gNames[i];
        if (entry->self) continue;
        if ((expected && entry->signature == expected) || (ResolvePid(entry) && entry->pid == pid)) {
            *psn = entry->psn;
            return true;
        }
    }
    return false;
}

void BusDBusListProcesses(bool walkStart, std::vector<ProcessSerialNumber> *list)
{
    if (walkStart) {
        /* A walk starts from what the bus has said by now, read afresh unless the bus
         * was read less than a millisecond ago (one send looks its addressee up three
         * times): a name that changed within that millisecond shows at the next read. */
        BusDBusEnsure(false);
        BusDBusDrainUnlessFresh(kProcessTableFreshUsec);
    }
    for (const NameEntry &entry : gNames)
        if (!entry.self) list->push_back(entry.psn);
}

OSErr BusDBusProcessInfo(const ProcessSerialNumber *psn, BusProcess *out)
{
    if (ProcessIsCurrent(psn)) {
        *out = BusSelfProcess();
        return noErr;
    }
    NameEntry *entry = FindByPSN(psn);
    if (!entry) return procNotFound;
    ResolvePid(entry);
    out->psn = entry->psn;
    out->signature = entry->signature;
    out->pid = entry->pid;
    out->name.clear();
    out->executable = entry->executable;
    return noErr;
}

OSErr BusDBusActivate(const ProcessSerialNumber *psn)
{
    if (ProcessIsCurrent(psn)) {
        ProcessCallActivateHandler();
        return noErr;
    }
    NameEntry *entry = FindByPSN(psn);
    sd_bus *bus = BusDBusConnection();
    if (!entry || !bus) return procNotFound;
    sd_bus_message *m = nullptr;
    int r = sd_bus_message_new_method_call(bus, &m, entry->owner.c_str(), kBusObjectPath, kBusInterface, "Activate");
    if (r >= 0) r = sd_bus_message_set_expect_reply(m, 0);
    if (r >= 0) r = sd_bus_send(bus, m, nullptr);
    sd_bus_message_unref(m);
    OSErr err = r < 0 ? BusDBusFailure(r) : (OSErr)noErr;
    BusDBusFlush();
    BusDBusDrain();
    return err;
}

extern "C" Boolean PlatformBusOwnsSignatureName(void)
{
    OSType signature = PlatformProcessSignature();
    if (!signature || BusDBusEnsure(false)) return false;
    for (const NameEntry &entry : gNames)
        if (entry.self && entry.signature == signature) return true;
    return false;
}
