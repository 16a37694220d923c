/*
 * bench_messaging.cpp: the messaging benchmark. In one run, on one private dbus-daemon:
 *   - baseline: a bare sd-bus ping-pong between two processes (bench_pingpong), and the
 *     same bare ping against the vesk partner, to separate the partner's share;
 *   - the plug-in: this process hosts it through the host core; the solution's
 *     TPX1SendMessageTo sends "PING" to a vesk partner posing as TOPOLUX, which answers
 *     "PONG"; the handler archives it, idle runs the handling script, which takes it.
 *     Round-trip latency (sequential) and messages per second (8 in flight).
 * Prints the figures and the ratio of the plug-in's round trip to the bare ping-pong
 * (target: within 2x).
 *
 * Usage: bench_messaging [--count N] [--window W]     (defaults 2000 and 8)
 */
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <sstream>
#include <sys/resource.h>
#include <sys/wait.h>

#include "MessagingSession.h"

namespace {

struct Baseline {
    double medianUs = 0, p90Us = 0, perSecond = 0;
    bool ok = false;
};

Baseline RunPing(MessagingSession *session, const char *to, long count, long window, bool greet)
{
    Baseline b;
    std::string out = session->temp + "/ping.out";
    std::vector<std::string> argv = {HarnessSiblingPath("bench_pingpong", PINGPONG_PATH),
                                     "ping", "--as", "PING", "--to", to, "--count", std::to_string(count),
                                     "--window", std::to_string(window)};
    if (greet) argv.push_back("--greet");
    pid_t ping = HarnessSpawn(argv, out, session->temp + "/ping.err");
    /* The host keeps its bus read meanwhile (it is on the same daemon). */
    int status = -1;
    uint64_t deadline = HarnessNowUsec() + 120000000u;
    while (HarnessNowUsec() < deadline) {
        HarnessPump(20);
        int s;
        if (waitpid(ping, &s, WNOHANG) == ping) {
            status = WIFEXITED(s) ? WEXITSTATUS(s) : -1;
            break;
        }
    }
    if (status != 0) {
        HarnessReap(ping, SIGKILL, 1000);
        fprintf(stderr, "bench_messaging: ping against %s failed: %s", to,
                HarnessReadFile(session->temp + "/ping.err").c_str());
        return b;
    }
    std::map<std::string, double> values;
    std::istringstream lines(HarnessReadFile(out));
    std::string key;
    double value;
    while (lines >> key >> value) values[key] = value;
    b.medianUs = values["roundtrip_median_us"];
    b.p90Us = values["roundtrip_p90_us"];
    b.perSecond = values["pipelined_roundtrips_per_s"];
    b.ok = b.medianUs > 0;
    return b;
}

/* User and system CPU time of this process. */
double HostCpuUsec(void)
{
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return (double)(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e6 +
           (double)(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

double Percentile(std::vector<uint64_t> v, size_t permille)
{
    std::sort(v.begin(), v.end());
    return v.empty() ? 0 : (double)v[v.size() * permille / 1000];
}

} // namespace

int main(int argc, char **argv)
{
    long count = 2000, window = 8;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (!strcmp(argv[i], "--count")) count = atol(argv[i + 1]);
        else if (!strcmp(argv[i], "--window")) window = atol(argv[i + 1]);
    }
    if (count < 10 || window < 1 || window > 16) {
        fprintf(stderr, "usage: bench_messaging [--count N (>= 10)] [--window W (1..16)]\n");
        return 2;
    }
    const long warmup = 200;
    MessagingSession session;
    std::string error;
    if (!SessionStart(&session, warmup + 2 * count + 1, &error)) {
        fprintf(stderr, "bench_messaging: %s\n", error.c_str());
        SessionStop(&session);
        return 1;
    }

    /* Baselines, with their own names on the same daemon. */
    pid_t pong = HarnessSpawn({HarnessSiblingPath("bench_pingpong", PINGPONG_PATH), "pong", "--as", "PONG"}, "",
                              session.temp + "/pong.err");
    Baseline bare = RunPing(&session, "PONG", count, window, false);
    Baseline barePattern = RunPing(&session, "PONG", count, window, true);
    HarnessReap(pong, SIGTERM, 5000);
    Baseline viaVesk = RunPing(&session, "TPX1", count, window, true);

    /* The plug-in: warm up, then sequential round trips, then pipelined. */
    long seq = 1;
    SessionRunWindowed(&session, seq, warmup, window, 5000);
    seq += warmup;
    /* Each trip in three legs: the solution composes and sends (host), the partner's two
     * answers (OKHI, PONG) come in and are dispatched (bus, partner, handler), idle runs
     * the handling script (host). */
    std::vector<uint64_t> trips, sends, answers, scripts;
    long latencyLost = 0;
    double cpuBefore = HostCpuUsec();
    for (long i = 0; i < count; i++, seq++) {
        uint64_t start = HarnessNowUsec();
        SessionSendPing(&session, seq);
        uint64_t sent = HarnessNowUsec(), answered = 0;
        int dispatched = 0;
        while (session.lastTaken != seq && HarnessNowUsec() - start < 5000000u) {
            uint64_t at;
            dispatched += SessionTurn(&session, 5, &at);
            if (dispatched >= 2 && !answered) answered = at;
        }
        uint64_t end = HarnessNowUsec();
        if (session.lastTaken != seq) latencyLost++;
        if (!answered) answered = end;
        trips.push_back(end - start);
        sends.push_back(sent - start);
        answers.push_back(answered - sent);
        scripts.push_back(end - answered);
    }
    double cpuPerTrip = (HostCpuUsec() - cpuBefore) / (double)count;
    MessagingRun run = SessionRunWindowed(&session, seq, count, window, 5000);
    double perSecond = (double)run.received / ((double)run.elapsedUsec / 1e6);
    long lost = latencyLost + (run.sent - run.received);

    double median = Percentile(trips, 500), p90 = Percentile(trips, 900), sendMedian = Percentile(sends, 500);
    printf("messaging benchmark: %ld round trips per measurement, events of 8 TEXT parameters of 16 bytes,"
           " private dbus-daemon\n",
           count);
    if (bare.ok)
        printf("  bare sd-bus ping-pong (2 processes):    median %8.1f us  p90 %8.1f us  %8.0f round trips/s (%ld in "
               "flight)\n",
               bare.medianUs, bare.p90Us, bare.perSecond, window);
    if (barePattern.ok)
        printf("  the same with the plug-in's events:     median %8.1f us  p90 %8.1f us  %8.0f round trips/s"
               " (HOLA, PING; OKHI, PONG; FRWD)\n",
               barePattern.medianUs, barePattern.p90Us, barePattern.perSecond);
    if (viaVesk.ok)
        printf("  and against the vesk partner:           median %8.1f us  p90 %8.1f us  %8.0f round trips/s\n",
               viaVesk.medianUs, viaVesk.p90Us, viaVesk.perSecond);
    printf("  plug-in <-> vesk partner, whole trip:   median %8.1f us  p90 %8.1f us  %8.0f messages/s into the "
           "archive and taken\n",
           median, p90, perSecond);
    printf("    legs (medians): compose + TPX1SendMessageTo %.1f us, partner's answers dispatched %.1f us, idle ->"
           " handling script took it %.1f us\n",
           sendMedian, Percentile(answers, 500), Percentile(scripts, 500));
    printf("    host process CPU per round trip: %.1f us\n", cpuPerTrip);
    printf("    events per message: HOLA + PING out, OKHI + PONG in, FRWD out (the handling script brings the host "
           "forward), do-script in-process\n");
    printf("  lost: %ld of %ld (duplicates %ld, malformed %ld, send errors %ld)\n", lost, count * 2,
           session.duplicates, session.malformed, session.sendErrors);
    printf("  %s\n", SessionMemoryLine("memory at the end").c_str());
    int status = 0;
    if (bare.ok && bare.medianUs > 0) {
        double ratio = median / bare.medianUs;
        printf("  ratio plug-in round trip / bare ping-pong: %.2f (target <= 2.00: %s)\n", ratio,
               ratio <= 2.0 ? "met" : "missed");
        if (barePattern.ok && viaVesk.ok)
            printf("  where the time goes, as ratios to the bare ping-pong: five events instead of two %.2f, the vesk"
                   " partner instead of a bare one %.2f, the plug-in and its host instead of a bare sender %.2f"
                   " (the plug-in's own share: %.2f)\n",
                   barePattern.medianUs / bare.medianUs, viaVesk.medianUs / bare.medianUs, ratio,
                   median / viaVesk.medianUs);
    } else {
        status = 1;
    }
    if (lost) status = 1;
    SessionStop(&session);
    return status;
}
