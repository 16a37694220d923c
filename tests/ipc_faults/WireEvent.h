/*
 * WireEvent.h: events on bare sd-bus, without the platform library: owning an
 * application's bus name, building an Event call and reading one. Used by the flood
 * sender of the fault tests, the hostile clients of the fmhost tests and the baselines
 * of the messaging benchmarks, so that all speak exactly the public wire format
 * (docs/wire-format.md). Values go as they are given (UTF-8 on the wire): no Mac Roman
 * conversion here.
 */
#ifndef TPX1_WIREEVENT_H
#define TPX1_WIREEVENT_H

#include <string>
#include <systemd/sd-bus.h>
#include <vector>

struct WireParam {
    std::string keyword;   /* four characters */
    std::string value;     /* sent as TEXT */
    bool bytes = false;    /* the value as bytes (ay) instead of a string */
};

/* "org.vesk.App.s" + the 8 hex digits of the signature (four characters). */
std::string WireBusName(const std::string &signature);
/* Opens a private connection to the session bus and owns the signature's name;
 * handler (may be null) serves Event calls on /org/vesk/App. Returns 0 or -errno. */
int WireOpen(const std::string &signature, sd_bus_message_handler_t handler, void *userdata, sd_bus **bus);
/* A new Event call (by default 'VESK'/'AEVT') from one signature to another, parameters
 * in order. */
int WireNewEvent(sd_bus *bus, const std::string &from, const std::string &to, const std::vector<WireParam> &params,
                 sd_bus_message **m, const char *eventClass = "VESK", const char *eventID = "AEVT");
/* Reads an Event call's sender and TEXT parameters. Returns 0 or -errno. */
int WireReadEvent(sd_bus_message *m, std::string *sender, std::vector<WireParam> *params);
/* The value of a parameter, "" when absent. */
std::string WireValue(const std::vector<WireParam> &params, const std::string &keyword);
/* Processes everything waiting; when nothing was, waits at most usec for something to
 * arrive. Returns < 0 on error. */
int WireStep(sd_bus *bus, uint64_t usec);

#endif
