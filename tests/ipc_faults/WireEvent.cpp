/*
 * WireEvent.cpp: VESK events on bare sd-bus (see WireEvent.h).
 */
#include "WireEvent.h"

#include <cerrno>
#include <cstdio>

namespace {

const char kObjectPath[] = "/org/vesk/App";
const char kInterface[] = "org.vesk.AppleEvent1";

sd_bus_message_handler_t gHandler = nullptr;

int DispatchEvent(sd_bus_message *m, void *userdata, sd_bus_error *error)
{
    return gHandler(m, userdata, error);
}

const sd_bus_vtable kVtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Event", "sssa(ssv)", "i", DispatchEvent, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

} // namespace

std::string WireBusName(const std::string &signature)
{
    unsigned code = 0;
    for (size_t i = 0; i < 4; i++) code = code << 8 | (unsigned char)(i < signature.size() ? signature[i] : ' ');
    char name[32];
    snprintf(name, sizeof name, "org.vesk.App.s%08x", code);
    return name;
}

int WireOpen(const std::string &signature, sd_bus_message_handler_t handler, void *userdata, sd_bus **bus)
{
    int r = sd_bus_open_user(bus);
    if (r < 0) return r;
    if (handler) {
        gHandler = handler;
        r = sd_bus_add_object_vtable(*bus, nullptr, kObjectPath, kInterface, kVtable, userdata);
        if (r < 0) return r;
    }
    return sd_bus_request_name(*bus, WireBusName(signature).c_str(), 0);
}

int WireNewEvent(sd_bus *bus, const std::string &from, const std::string &to, const std::vector<WireParam> &params,
                 sd_bus_message **m, const char *eventClass, const char *eventID)
{
    int r = sd_bus_message_new_method_call(bus, m, WireBusName(to).c_str(), kObjectPath, kInterface, "Event");
    if (r >= 0) r = sd_bus_message_append(*m, "sss", eventClass, eventID, from.c_str());
    if (r >= 0) r = sd_bus_message_open_container(*m, 'a', "(ssv)");
    for (size_t i = 0; r >= 0 && i < params.size(); i++) {
        const WireParam &p = params[i];
        r = sd_bus_message_open_container(*m, 'r', "ssv");
        if (r >= 0) r = sd_bus_message_append_basic(*m, 's', p.keyword.c_str());
        if (r >= 0) r = sd_bus_message_append_basic(*m, 's', "TEXT");
        if (r >= 0) r = sd_bus_message_open_container(*m, 'v', p.bytes ? "ay" : "s");
        if (r >= 0 && p.bytes) r = sd_bus_message_append_array(*m, 'y', p.value.data(), p.value.size());
        else if (r >= 0) r = sd_bus_message_append_basic(*m, 's', p.value.c_str());
        if (r >= 0) r = sd_bus_message_close_container(*m);
        if (r >= 0) r = sd_bus_message_close_container(*m);
    }
    if (r >= 0) r = sd_bus_message_close_container(*m);
    return r < 0 ? r : 0;
}

int WireReadEvent(sd_bus_message *m, std::string *sender, std::vector<WireParam> *params)
{
    const char *eventClass, *eventID, *from;
    int r = sd_bus_message_read(m, "sss", &eventClass, &eventID, &from);
    if (r < 0) return r;
    *sender = from;
    r = sd_bus_message_enter_container(m, 'a', "(ssv)");
    while (r >= 0) {
        const char *keyword, *type, *value;
        r = sd_bus_message_enter_container(m, 'r', "ssv");
        if (r <= 0) break;
        r = sd_bus_message_read_basic(m, 's', &keyword);
        if (r >= 0) r = sd_bus_message_read_basic(m, 's', &type);
        if (r >= 0) r = sd_bus_message_enter_container(m, 'v', "s");
        if (r >= 0) r = sd_bus_message_read_basic(m, 's', &value);
        if (r >= 0) r = sd_bus_message_exit_container(m);
        if (r >= 0) params->push_back(WireParam{keyword, value});
        if (r >= 0) r = sd_bus_message_exit_container(m);
    }
    if (r >= 0) r = sd_bus_message_exit_container(m);
    return r < 0 ? r : 0;
}

std::string WireValue(const std::vector<WireParam> &params, const std::string &keyword)
{
    for (const WireParam &p : params)
        if (p.keyword == keyword) return p.value;
    return "";
}

int WireStep(sd_bus *bus, uint64_t usec)
{
    bool handled = false;
    for (;;) {
        int r = sd_bus_process(bus, nullptr);
        if (r < 0) return r;
        if (r == 0) break;
        handled = true;
    }
    return handled ? 1 : sd_bus_wait(bus, usec);
}
