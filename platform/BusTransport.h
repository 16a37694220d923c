/*
 * BusTransport.h: the transport between this process and the other applications, inside
 * the platform library (not exported). Two implementations: the D-Bus session bus
 * (BusDBus*.cpp) and the in-memory test bus (MemoryBus.cpp). The event and process
 * services reach other processes only through the selected transport.
 */
#ifndef TPX1_BUSTRANSPORT_H
#define TPX1_BUSTRANSPORT_H

#include <string>
#include <vector>

#include "platform/AppleEventRecords.h"

/* What the transport knows of another application. */
struct BusProcess {
    ProcessSerialNumber psn;
    OSType signature;
    int32_t pid;
    std::string name;         /* display name (UTF-8), "" for the executable's file name */
    std::string executable;   /* POSIX path, "" when unknown */
};

struct Tpx1BusMethods {
    /* Opens the transport if it never was; with reconnect, also when it was lost. */
    OSErr (*xEnsureOpen)(bool reconnect);
    /* The process's own signature changed (release the old name, own the new one). */
    void (*xSignatureChanged)(OSType oldSignature, OSType newSignature);
    /* Sends event (sender already set) to the application owning signature. With a
     * wait-reply send mode the handler's result lands in *handlerResult. */
    OSErr (*xSend)(const AEDescRecord *event, OSType signature, int32_t sendMode, int32_t timeoutTicks,
                   OSErr *handlerResult);
    int (*xGetFD)(void);
    /* Reads everything waiting without blocking; received events go to the queue. */
    void (*xPump)(void);
    /* True when something was already read from the transport but not yet handed to
     * the queue (a poll of the descriptor would not see it): pump before sleeping. */
    bool (*xPending)(void);
    /* Appends the other applications, in the order they appeared. A walk of the process
     * table (walkStart) first brings the transport's view up to date. */
    void (*xListProcesses)(bool walkStart, std::vector<ProcessSerialNumber> *list);
    OSErr (*xProcessInfo)(const ProcessSerialNumber *psn, BusProcess *out);
    OSErr (*xActivate)(const ProcessSerialNumber *psn);
    /* Starts posixExecutable (document: POSIX path or "") and waits until it runs;
     * expected: its signature when known, else 0. */
    OSErr (*xLaunch)(const std::string &posixExecutable, const std::string &document, OSType expected,
                     ProcessSerialNumber *psn);
    void (*xClose)(void);
};

const Tpx1BusMethods *BusCurrent(void);
const Tpx1BusMethods *BusDBusMethods(void);
const Tpx1BusMethods *BusMemoryMethods(void);
/* Empties the memory bus's tables. */
void BusMemoryReset(void);
/* This process as a bus process record. */
BusProcess BusSelfProcess(void);

#endif
