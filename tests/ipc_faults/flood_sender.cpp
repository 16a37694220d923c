/*
 * flood_sender.cpp: a partner-like sender that floods an application with VESK events,
 * each asking for the handler's result (as `busctl call` would), with a bounded number
 * of calls in flight. It prints one line:
 *   sent N answered A noErr Z other O failed F
 * and exits 0 when every event was answered with noErr, 1 otherwise, 2 for bad usage,
 * 3 when the answers did not come within the time limit.
 *
 * Usage: flood_sender --as SIG --to SIG --count N [--window W] [--id MSSG] [--limit-ms MS]
 */
#include "ProcessHarness.h"
#include "WireEvent.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

struct Tally {
    long answered = 0, noErr = 0, other = 0, failed = 0;
};

int OnAnswer(sd_bus_message *reply, void *userdata, sd_bus_error *)
{
    Tally *tally = static_cast<Tally *>(userdata);
    tally->answered++;
    int32_t result = 0;
    if (sd_bus_message_is_method_error(reply, nullptr) || sd_bus_message_read(reply, "i", &result) < 0)
        tally->failed++;
    else if (result == 0)
        tally->noErr++;
    else
        tally->other++;
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    std::string self, to, id = "FLUD";
    long count = 0, window = 500, limitMs = 60000;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (!strcmp(argv[i], "--as")) self = argv[i + 1];
        else if (!strcmp(argv[i], "--to")) to = argv[i + 1];
        else if (!strcmp(argv[i], "--count")) count = atol(argv[i + 1]);
        else if (!strcmp(argv[i], "--window")) window = atol(argv[i + 1]);
        else if (!strcmp(argv[i], "--id")) id = argv[i + 1];
        else if (!strcmp(argv[i], "--limit-ms")) limitMs = atol(argv[i + 1]);
    }
    if (self.size() != 4 || to.size() != 4 || count <= 0 || window <= 0) {
        fprintf(stderr, "usage: flood_sender --as SIG --to SIG --count N [--window W] [--id MSSG]\n");
        return 2;
    }
    sd_bus *bus = nullptr;
    int r = WireOpen(self, nullptr, nullptr, &bus);
    if (r < 0) {
        fprintf(stderr, "flood_sender: no bus: %s\n", strerror(-r));
        return 1;
    }
    Tally tally;
    long sent = 0;
    uint64_t deadline = HarnessNowUsec() + (uint64_t)limitMs * 1000u;
    while (tally.answered < count && HarnessNowUsec() < deadline) {
        while (sent < count && sent - tally.answered < window) {
            char number[32];
            snprintf(number, sizeof number, "%ld", sent + 1);
            sd_bus_message *m = nullptr;
            r = WireNewEvent(bus, self, to,
                             {{"MSSG", id}, {"SIGN", self}, {"PSIG", self}, {"XTRA", ""}, {"NUM ", number}}, &m);
            if (r >= 0) r = sd_bus_call_async(bus, nullptr, m, OnAnswer, &tally, 0);
            sd_bus_message_unref(m);
            if (r < 0) {
                fprintf(stderr, "flood_sender: send %ld: %s\n", sent + 1, strerror(-r));
                sd_bus_flush_close_unref(bus);
                return 1;
            }
            sent++;
        }
        if (WireStep(bus, 100000) < 0) break;
    }
    printf("sent %ld answered %ld noErr %ld other %ld failed %ld\n", sent, tally.answered, tally.noErr, tally.other,
           tally.failed);
    fflush(stdout);
    sd_bus_flush_close_unref(bus);
    if (tally.answered < count) return 3;
    return tally.noErr == count ? 0 : 1;
}
