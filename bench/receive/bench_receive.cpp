/*
 * bench_receive.cpp: how long the host is unavailable to other events while it receives
 * one large event. This process hosts the real plug-in (messaging started) on a private
 * dbus-daemon; a child process that owns its name sends it one VESK event and waits for
 * the answer: 1 000, 4 096 and 400 000 distinct keywords, and 100 000 repetitions of one
 * keyword. The host's loop is timed call by call: the longest single AEProcessEvents (in
 * which nothing else can be served) is the figure, target under 50 ms. Baseline, in the
 * same run: a bare sd-bus receiver in this process that reads every parameter of the
 * same event, timed the same way; the ratio is host / bare.
 *
 * Usage: bench_receive [--runs N]   (default 5; the median and the worst run are shown)
 */
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include "BusHarness.h"
#include "WireEvent.h"
#include "platform/AppleEvents.h"
#include "platform/EventService.h"
#include "platform/Toolbox.h"

namespace {

const double kTargetMs = 50;

struct Case {
    const char *label;
    long count;
    bool repeated;   /* one keyword again and again instead of distinct ones */
};

/* Four characters, a digit first, so that none is a standard keyword. */
std::string Keyword(long i)
{
    static const char kDigits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    std::string k(4, '0');
    for (int at = 3; at >= 0; at--, i /= 62) k[at] = kDigits[i % 62];
    k[0] = kDigits[i % 10];
    return k;
}

/* In the child: owns "BNCH", sends the event to `to` and waits for the answer. Exit
 * status 0 answered, 1 refused (a D-Bus error), 2 not sent. */
int SendOne(const std::string &to, const Case &c)
{
    sd_bus *bus = nullptr;
    if (WireOpen("BNCH", nullptr, nullptr, &bus) < 0) return 2;
    std::vector<WireParam> params = {{"MSSG", "ZZZZ"}, {"SIGN", "BNCH"}};
    params.reserve((size_t)c.count + 2);
    for (long i = 0; i < c.count; i++) params.push_back({c.repeated ? std::string("LST2") : Keyword(i), "v"});
    sd_bus_message *m = nullptr, *reply = nullptr;
    sd_bus_error error = SD_BUS_ERROR_NULL;
    int r = WireNewEvent(bus, "BNCH", to, params, &m);
    if (r < 0) return 2;
    r = sd_bus_call(bus, m, 120000000u, &error, &reply);
    return r >= 0 ? 0 : sd_bus_error_is_set(&error) ? 1 : 2;
}

/* A bare receiver's handler: reads every parameter, answers 0. */
int ReadAll(sd_bus_message *m, void *, sd_bus_error *)
{
    std::string sender;
    std::vector<WireParam> params;
    WireReadEvent(m, &sender, &params);
    return sd_bus_reply_method_return(m, "i", 0);
}

struct Run {
    double worstMs = 0;
    int outcome = -1;
};

/* Forks the sender and times each turn of the receiver's loop (turn returns after
 * serving what waits) until the sender has its answer. */
Run Measure(const std::string &to, const Case &c, int fd, const std::function<void()> &turn)
{
    fflush(nullptr);
    pid_t child = fork();
    if (child == 0) _exit(SendOne(to, c));
    Run run;
    for (;;) {
        struct pollfd ready = {fd, POLLIN, 0};
        poll(&ready, 1, 5);
        uint64_t start = HarnessNowUsec();
        turn();
        run.worstMs = std::max(run.worstMs, (HarnessNowUsec() - start) / 1000.0);
        int status;
        if (waitpid(child, &status, WNOHANG) == child) {
            run.outcome = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            return run;
        }
    }
}

double Median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v.empty() ? 0 : v[v.size() / 2];
}

} // namespace

int main(int argc, char **argv)
{
    int runs = 5;
    if (argc == 3 && !strcmp(argv[1], "--runs")) runs = std::max(1, atoi(argv[2]));
    signal(SIGPIPE, SIG_IGN);
    char tmpl[] = "/tmp/tpx1-bench-receive-XXXXXX";
    if (!mkdtemp(tmpl)) return 1;
    std::string temp = tmpl;
    setenv("HOME", temp.c_str(), 1);
    HarnessDaemon daemon;
    HarnessHost host;
    std::string error;
    if (!HarnessDaemonStart(temp + "/bus", &daemon)) {
        fprintf(stderr, "bench_receive: dbus-daemon did not start\n");
        return 1;
    }
    PlatformDialogUseRecorder();
    if (!HarnessHostStart(&host, HarnessSiblingPath("tpx1.fmx", FMX_PATH), "FMP7", &error)) {
        fprintf(stderr, "bench_receive: %s\n", error.c_str());
        return 1;
    }
    HarnessCall(&host, "TPX1InitIAC", "");
    sd_bus *bare = nullptr;
    if (WireOpen("BASE", ReadAll, nullptr, &bare) < 0) return 1;

    const Case cases[] = {{"1 000 distinct keywords", 1000, false},
                          {"4 096 distinct keywords", 4094, false},
                          {"400 000 distinct keywords", 400000, false},
                          {"100 000 repetitions of one keyword", 100000, true}};
    printf("Host unavailable while receiving one event (longest single dispatch, ms; median / worst of %d runs)\n",
           runs);
    printf("%-36s %-9s %17s %17s %8s  %s\n", "event", "host", "host ms", "bare sd-bus ms", "ratio", "target");
    bool met = true;
    for (const Case &c : cases) {
        std::vector<double> hostMs, bareMs;
        int outcome = -1;
        for (int i = 0; i < runs; i++) {
            Run h = Measure("FMP7", c, AEGetEventFD(), [] { AEProcessEvents(); });
            Run b = Measure("BASE", c, sd_bus_get_fd(bare), [&] {
                while (sd_bus_process(bare, nullptr) > 0) {
                }
            });
            hostMs.push_back(h.worstMs);
            bareMs.push_back(b.worstMs);
            outcome = h.outcome;
        }
        double worst = *std::max_element(hostMs.begin(), hostMs.end());
        met = met && worst < kTargetMs;
        char hostText[32], bareText[32];
        snprintf(hostText, sizeof hostText, "%.1f / %.1f", Median(hostMs), worst);
        snprintf(bareText, sizeof bareText, "%.1f / %.1f", Median(bareMs),
                 *std::max_element(bareMs.begin(), bareMs.end()));
        printf("%-36s %-9s %17s %17s %8.2f  %s\n", c.label,
               outcome == 0 ? "took it" : outcome == 1 ? "refused" : "FAILED", hostText, bareText,
               Median(bareMs) > 0 ? Median(hostMs) / Median(bareMs) : 0.0, worst < kTargetMs ? "met" : "MISSED");
        fflush(stdout);
    }
    printf("target: under %.0f ms for each event: %s\n", kTargetMs, met ? "met" : "missed");
    sd_bus_flush_close_unref(bare);
    HarnessHostStop(&host);
    PlatformBusClose();
    HarnessDaemonStop(&daemon, SIGTERM);
    std::error_code ec;
    std::filesystem::remove_all(temp, ec);
    return 0;
}
