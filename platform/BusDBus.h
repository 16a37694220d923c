/*
 * BusDBus.h: the pieces of the D-Bus transport and how they meet (not exported): the
 * connection (BusDBusConnection.cpp), the event method and its wire format
 * (BusDBusEvents.cpp), the process table kept from the daemon's name-owner signals
 * (BusDBusProcesses.cpp), launching (BusDBusLaunch.cpp) and the private daemon
 * (BusDaemon.cpp). The wire format is described in docs/wire-format.md.
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
