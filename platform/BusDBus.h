/*
 * BusDBus.h: the pieces of the D-Bus transport and how they meet (not exported): the
 * connection (BusDBusConnection.cpp), the event method and its wire format
 * (BusDBusEvents.cpp), what an incoming event must satisfy (BusDBusTrust.cpp), the
 * process table kept from the daemon's name-owner signals (BusDBusProcesses.cpp),
 * launching (BusDBusLaunch.cpp) and the private daemon (BusDaemon.cpp). The wire format is described in docs/wire-format.md.
 */
#ifndef TPX1_BUSDBUS_H
#define TPX1_BUSDBUS_H

#include <string>
#include <systemd/sd-bus.h>

#include "platform/BusTransport.h"

#define kBusObjectPath "/org/vesk/App"
#define kBusInterface "org.vesk.AppleEvent1"
#define kBusNamePrefix "org.vesk.App"

/* ---- Connection ---- */
/* The open connection, or null. */
sd_bus *BusDBusConnection(void);
/* Opens the connection if it never was (or, with reconnect, was lost): 0 or an error. */
OSErr BusDBusEnsure(bool reconnect);
/* A call failed with r (< 0): when it means the connection is gone, forget it. Returns
 * the error to report (connectionInvalid for a lost bus). */
OSErr BusDBusFailure(int r);
/* Handles every message already waiting, without blocking and without running event
 * handlers (received events only go to the queue). */
void BusDBusDrain(void);
/* The same, unless the bus was drained less than maxAgeUsec ago. */
void BusDBusDrainUnlessFresh(uint64_t maxAgeUsec);
/* Writes out what is queued for sending. */
void BusDBusFlush(void);
/* Microseconds of the monotonic clock. */
uint64_t BusDBusNowUsec(void);

/* ---- Events ---- */
int BusDBusAddObject(sd_bus *bus, sd_bus_slot **objectSlot, sd_bus_slot **filterSlot);
OSErr BusDBusSendEvent(const AEDescRecord *event, OSType signature, int32_t sendMode, int32_t timeoutTicks,
                       OSErr *handlerResult);
/* Activations received since the last call (Activate is answered at once, the
 * callback runs from AEProcessEvents). */
int32_t BusDBusTakeActivations(void);
bool BusDBusActivationsPending(void);
/* A four-character code <-> its string on the wire (Mac Roman <-> UTF-8). */
std::string BusDBusCodeString(OSType code);
bool BusDBusCodeFromString(const char *text, OSType *code);

/* ---- Trust ---- */
/* Parameters an event may have, on the wire (a repeated keyword counts each time). */
const size_t kBusMaxEventParams = 4096;
/* Whether events of this class and id are taken from the bus (VESK/AEVT, aevt/odoc). */
bool BusDBusTakesEventClass(OSType eventClass, OSType eventID);
/* The signature an event's SIGN parameter names, 0 when none (absent, empty, blank). */
OSType BusDBusSignedAs(const AEDescRecord *record);
/* 0 when speaksAs is 0 or the connection that sent m owns speaksAs's name; otherwise the
 * event is refused (BusDBusRefuse, AccessDenied naming the name to own). */
int BusDBusCheckSpeaker(sd_bus_message *m, const AEDescRecord *record, OSType speaksAs, sd_bus_error *error);
/* Refuses the event m carries (record: its class and id): sets the D-Bus error that
 * answers a sender asking for a reply, notes it on standard error (at most a line a
 * second) and returns the negative errno for the method handler to return. */
int BusDBusRefuse(sd_bus_message *m, const AEDescRecord *record, const char *errorName, const std::string &reason,
                  sd_bus_error *error);
/* Says how many refusals went unsaid, once their second is over. */
void BusDBusReportRefusals(void);
/* UTF-8 with control characters shown as \x1b; a code (Mac Roman) the same way. */
std::string BusDBusPrintable(const std::string &utf8);
std::string BusDBusPrintableCode(OSType code);

/* ---- Processes ---- */
int BusDBusWatchNames(sd_bus *bus, sd_bus_slot **slot);
void BusDBusLoadNames(sd_bus *bus);
void BusDBusForgetNames(void);
/* This process now owns (or no longer owns) its name. */
void BusDBusNoteOwnName(OSType signature, bool owned);
/* The owner (unique name) of a signature's name, if it runs. */
bool BusDBusOwnerOf(OSType signature, std::string *owner);
/* A process that owns a name and whose process id is pid (resolving ids as needed). */
bool BusDBusFindByPid(int32_t pid, OSType expected, ProcessSerialNumber *psn);
void BusDBusListProcesses(bool walkStart, std::vector<ProcessSerialNumber> *list);
OSErr BusDBusProcessInfo(const ProcessSerialNumber *psn, BusProcess *out);
OSErr BusDBusActivate(const ProcessSerialNumber *psn);

/* ---- Launching ---- */
OSErr BusDBusLaunch(const std::string &executable, const std::string &document, OSType expected,
                    ProcessSerialNumber *psn);
void BusDBusReapChildren(void);

#endif
