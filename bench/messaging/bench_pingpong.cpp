/*
 * bench_pingpong.cpp: the baseline of the messaging benchmark: a bare sd-bus ping-pong
 * between two processes on the same bus, with the same events the plug-in exchanges
 * (VESK/AEVT Event calls, no reply expected, 8 TEXT parameters of about 16 bytes).
 *
 *   bench_pingpong pong --as SIG              answers "PING" with "PONG", "HOLA" with "OKHI"
 *   bench_pingpong ping --as SIG --to SIG --count N [--window W] [--greet]
 *
 * ping measures N sequential round trips (send, wait for the "PONG"), then N round trips
 * with W in flight. With --greet every trip has the plug-in's pattern of events: "HOLA"
 * before each "PING" (answered by "OKHI") and a "FRWD" after the "PONG". It prints:
 *   roundtrip_median_us X
 *   roundtrip_p90_us X
 *   pipelined_roundtrips_per_s X
 */
#include "WireEvent.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <time.h>
#include <vector>

namespace {

volatile sig_atomic_t gStop = 0;
std::string gSelf;
long gLastAnswer = 0;
long gAnswers = 0;

uint64_t NowUsec(void)
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (uint64_t)ts.tv_sec * 1000000u + (uint64_t)ts.tv_nsec / 1000u;
}

std::vector<WireParam> PingParams(const std::string &self, long n, const char *id = "PING")
{
    char number[24];
    snprintf(number, sizeof number, "%016ld", n);
    return {{"MSSG", id}, {"SIGN", self},
            {"PSIG", self},   {"XTRA", ""},
            {"ACTN", "abcdefghijklmnop"}, {"ANSR", "ponmlkjihgfedcba"},
            {"CODE", "0123456789abcdef"}, {"NUM ", number}};
}

int SendEvent(sd_bus *bus, const std::string &to, const std::vector<WireParam> &params)
{
    sd_bus_message *m = nullptr;
    int r = WireNewEvent(bus, gSelf, to, params, &m);
    if (r >= 0) r = sd_bus_message_set_expect_reply(m, 0);
    if (r >= 0) r = sd_bus_send(bus, m, nullptr);
    sd_bus_message_unref(m);
    return r;
}

/* pong: "PING" goes back to its sender as "PONG" with the same parameters, "HOLA" as
 * "OKHI"; anything else is only read. */
int Echo(sd_bus_message *m, void *userdata, sd_bus_error *)
{
    std::string sender;
    std::vector<WireParam> params;
    if (WireReadEvent(m, &sender, &params) >= 0 && !sender.empty()) {
        std::string id = WireValue(params, "MSSG");
        std::string answer = id == "PING" ? "PONG" : id == "HOLA" ? "OKHI" : "";
        for (WireParam &p : params)
            if (p.keyword == "MSSG") p.value = answer;
        if (!answer.empty()) SendEvent(sd_bus_message_get_bus(m), sender, params);
    }
    return sd_bus_reply_method_return(m, "i", 0);
}

/* ping: notes the number of every "PONG". */
int Answer(sd_bus_message *m, void *userdata, sd_bus_error *)
{
    std::string sender;
    std::vector<WireParam> params;
    if (WireReadEvent(m, &sender, &params) >= 0 && WireValue(params, "MSSG") == "PONG") {
        gLastAnswer = atol(WireValue(params, "NUM ").c_str());
        gAnswers++;
    }
    return sd_bus_reply_method_return(m, "i", 0);
}

void OnStop(int)
{
    gStop = 1;
}

bool WaitForOwner(sd_bus *bus, const std::string &signature)
{
    uint64_t deadline = NowUsec() + 10000000u;
    while (NowUsec() < deadline) {
        sd_bus_message *reply = nullptr;
        int owned = 0;
        int r = sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                   "NameHasOwner", nullptr, &reply, "s", WireBusName(signature).c_str());
        if (r >= 0) sd_bus_message_read(reply, "b", &owned);
        sd_bus_message_unref(reply);
        if (owned) return true;
        WireStep(bus, 10000);
    }
    return false;
}

int Pong(void)
{
    sd_bus *bus = nullptr;
    int r = WireOpen(gSelf, Echo, nullptr, &bus);
    if (r < 0) {
        fprintf(stderr, "bench_pingpong: no bus: %s\n", strerror(-r));
        return 1;
    }
    signal(SIGTERM, OnStop);
    signal(SIGINT, OnStop);
    while (!gStop)
        if (WireStep(bus, 200000) < 0 && !gStop) break;
    sd_bus_flush_close_unref(bus);
    return 0;
}

/* One trip's events before the answer: "HOLA" first when greeting, then "PING". */
int SendTrip(sd_bus *bus, const std::string &to, long n, bool greet)
{
    int r = greet ? SendEvent(bus, to, PingParams(gSelf, n, "HOLA")) : 0;
    return r < 0 ? r : SendEvent(bus, to, PingParams(gSelf, n));
}

/* After the answer: "FRWD" when greeting (as the plug-in's handling script does). */
int EndTrip(sd_bus *bus, const std::string &to, bool greet)
{
    return greet ? SendEvent(bus, to, {{"MSSG", "FRWD"}, {"SIGN", gSelf}, {"PSIG", gSelf}, {"XTRA", ""},
                                       {"WHO ", gSelf}, {"NAME", ""}})
                 : 0;
}

int Ping(const std::string &to, long count, long window, bool greet)
{
    sd_bus *bus = nullptr;
    int r = WireOpen(gSelf, Answer, nullptr, &bus);
    if (r < 0 || !WaitForOwner(bus, to)) {
        fprintf(stderr, "bench_pingpong: no bus or no %s on it\n", to.c_str());
        return 1;
    }
    std::vector<uint64_t> trips;
    for (long i = 1; i <= count; i++) {
        uint64_t start = NowUsec();
        if (SendTrip(bus, to, i, greet) < 0) return 1;
        while (gLastAnswer != i)
            if (WireStep(bus, 1000000) < 0) return 1;
        if (EndTrip(bus, to, greet) < 0) return 1;
        trips.push_back(NowUsec() - start);
    }
    std::sort(trips.begin(), trips.end());
    long sent = 0;
    gAnswers = 0;
    uint64_t start = NowUsec();
    while (gAnswers < count) {
        while (sent < count && sent - gAnswers < window)
            if (SendTrip(bus, to, count + ++sent, greet) < 0) return 1;
        long before = gAnswers;
        if (WireStep(bus, 1000000) < 0) return 1;
        for (long n = before; n < gAnswers; n++)
            if (EndTrip(bus, to, greet) < 0) return 1;
    }
    double seconds = (double)(NowUsec() - start) / 1e6;
    printf("roundtrip_median_us %.1f\n", (double)trips[trips.size() / 2]);
    printf("roundtrip_p90_us %.1f\n", (double)trips[trips.size() * 9 / 10]);
    printf("pipelined_roundtrips_per_s %.0f\n", (double)count / seconds);
    sd_bus_flush_close_unref(bus);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    std::string to;
    long count = 2000, window = 8;
    bool greet = false;
    for (int i = 2; i < argc; i++) {
        bool hasValue = i + 1 < argc;
        if (!strcmp(argv[i], "--greet")) greet = true;
        else if (!strcmp(argv[i], "--as") && hasValue) gSelf = argv[++i];
        else if (!strcmp(argv[i], "--to") && hasValue) to = argv[++i];
        else if (!strcmp(argv[i], "--count") && hasValue) count = atol(argv[++i]);
        else if (!strcmp(argv[i], "--window") && hasValue) window = atol(argv[++i]);
    }
    if (argc >= 2 && !strcmp(argv[1], "pong") && gSelf.size() == 4) return Pong();
    if (argc >= 2 && !strcmp(argv[1], "ping") && gSelf.size() == 4 && to.size() == 4 && count > 0 && window > 0)
        return Ping(to, count, window, greet);
    fprintf(stderr, "usage: bench_pingpong pong --as SIG\n"
                    "       bench_pingpong ping --as SIG --to SIG --count N [--window W] [--greet]\n");
    return 2;
}
