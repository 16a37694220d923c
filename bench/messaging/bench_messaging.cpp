/*
 * bench_messaging.cpp: the messaging benchmark. In one run, on one private dbus-daemon:
 *   - baseline: a bare sd-bus ping-pong between two processes (bench_pingpong), and the
 *     same bare ping against the vesk partner, to separate the partner's share;
 *   - the plug-in: this process hosts it through the host core; the solution's
 *     TPX1SendMessageTo sends "PING" to a vesk partner posing as TOPOLUX, which answers
 *     "PONG"; the handler archives it, idle runs the handling script, which takes it.
 *     Round-trip latency (sequential) and messages per second (8 in flight).
 * The baselines and the plug-in's sequential trips run in alternating rounds, so that a
 * machine whose speed drifts (other guests on the same host, frequency changes) slows
 * both alike; the ratio is taken in each round and the median of the rounds is reported.
 * Prints the figures and the ratio of the plug-in's round trip to the bare ping-pong
 * (target: within 2x).
 *
 * Usage: bench_messaging [--count N] [--window W] [--rounds R]   (defaults 10000, 8, 20)
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

template <typename T> double Percentile(std::vector<T> v, size_t permille)
{
    std::sort(v.begin(), v.end());
    return v.empty() ? 0 : (double)v[v.size() * permille / 1000];
}

/* The sequential trips of one round. A trip is timed from TPX1SendMessageTo (the list
 * already composed) until idle starts the handling script: send, the partner answers,
 * the handler archives, idle runs the script. Around it, for the whole picture: the
 * solution composing the list before (five TPX1SetParameter) and the script reading the
 * message after (four calls). Legs: the send call (host), the partner's two answers
 * (OKHI, PONG) coming in and dispatched (bus, partner, handler), idle until the script
 * starts (host, with "FRWD" sent on the way). */
struct Trips {
    std::vector<uint64_t> latency, whole, composes, sends, answers, idles, reads;
    long lost = 0;

    void Append(const Trips &more)
    {
        for (auto [to, from] : {std::pair{&latency, &more.latency}, {&whole, &more.whole},
                                {&composes, &more.composes}, {&sends, &more.sends}, {&answers, &more.answers},
                                {&idles, &more.idles}, {&reads, &more.reads}})
            to->insert(to->end(), from->begin(), from->end());
        lost += more.lost;
    }
};

void RunTrips(MessagingSession *session, long *seq, long count, Trips *trips)
{
    for (long i = 0; i < count; i++, (*seq)++) {
        uint64_t start = HarnessNowUsec(), sendAt = 0;
        SessionSendPing(session, *seq, &sendAt);
        uint64_t sent = HarnessNowUsec(), answered = 0;
        int dispatched = 0;
        while (session->lastTaken != *seq && HarnessNowUsec() - start < 5000000u) {
            uint64_t at;
            dispatched += SessionTurn(session, 5, &at);
            if (dispatched >= 2 && !answered) answered = at;
        }
        uint64_t end = HarnessNowUsec();
        if (session->lastTaken != *seq) trips->lost++;
        uint64_t scriptAt = session->lastTaken == *seq ? session->lastScriptAt : end;
        if (!answered) answered = scriptAt;
        trips->latency.push_back(scriptAt - sendAt);
        trips->whole.push_back(end - start);
        trips->composes.push_back(sendAt - start);
        trips->sends.push_back(sent - sendAt);
        trips->answers.push_back(answered - sent);
        trips->idles.push_back(scriptAt - answered);
        trips->reads.push_back(end - scriptAt);
    }
}

struct Summary {
    std::vector<double> median, p90, perSecond;
    bool ok = true;
    void Add(const Baseline &b)
    {
        ok = ok && b.ok;
        median.push_back(b.medianUs);
        p90.push_back(b.p90Us);
        perSecond.push_back(b.perSecond);
    }
};

void PrintBaseline(const char *label, const Summary &s, const char *tail)
{
    if (!s.ok) return;
    printf("  %-40s median %8.1f us  p90 %8.1f us  %8.0f round trips/s%s\n", label, Percentile(s.median, 500),
           Percentile(s.p90, 500), Percentile(s.perSecond, 500), tail);
}

} // namespace

int main(int argc, char **argv)
{
    long count = 10000, window = 8, rounds = 20;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (!strcmp(argv[i], "--count")) count = atol(argv[i + 1]);
        else if (!strcmp(argv[i], "--window")) window = atol(argv[i + 1]);
        else if (!strcmp(argv[i], "--rounds")) rounds = atol(argv[i + 1]);
    }
    if (count < 10 || window < 1 || window > 16 || rounds < 1 || rounds > 50 || count / rounds < 10) {
        fprintf(stderr, "usage: bench_messaging [--count N (>= 10)] [--window W (1..16)] [--rounds R (1..50, N/R >= 10)]\n");
        return 2;
    }
    const long warmup = 200, perRound = count / rounds;
    MessagingSession session;
    std::string error;
    if (!SessionStart(&session, warmup + perRound * rounds + count + 1, &error)) {
        fprintf(stderr, "bench_messaging: %s\n", error.c_str());
        SessionStop(&session);
        return 1;
    }
    /* The bare partner has its own name on the same daemon. */
    pid_t pong = HarnessSpawn({HarnessSiblingPath("bench_pingpong", PINGPONG_PATH), "pong", "--as", "PONG"}, "",
                              session.temp + "/pong.err");
    long seq = 1;
    SessionRunWindowed(&session, seq, warmup, window, 5000);
    seq += warmup;

    Summary bare, barePattern, viaVesk;
    Trips trips;
    std::vector<double> roundRatios, roundWholeRatios, roundPatternRatios, roundVeskRatios;
    double cpuUsec = 0;
    for (long round = 0; round < rounds; round++) {
        Baseline b = RunPing(&session, "PONG", perRound, window, false);
        Baseline p = RunPing(&session, "PONG", perRound, window, true);
        Baseline v = RunPing(&session, "TPX1", perRound, window, true);
        bare.Add(b);
        barePattern.Add(p);
        viaVesk.Add(v);
        Trips mine;
        double cpuBefore = HostCpuUsec();
        RunTrips(&session, &seq, perRound, &mine);
        cpuUsec += HostCpuUsec() - cpuBefore;
        if (b.ok && b.medianUs > 0) {
            roundRatios.push_back(Percentile(mine.latency, 500) / b.medianUs);
            roundWholeRatios.push_back(Percentile(mine.whole, 500) / b.medianUs);
            roundPatternRatios.push_back(p.medianUs / b.medianUs);
            roundVeskRatios.push_back(v.medianUs / b.medianUs);
        }
        trips.Append(mine);
    }
    HarnessReap(pong, SIGTERM, 5000);
    long sequential = perRound * rounds;
    double cpuPerTrip = cpuUsec / (double)sequential;
    MessagingRun run = SessionRunWindowed(&session, seq, count, window, 5000);
    double perSecond = (double)run.received / ((double)run.elapsedUsec / 1e6);
    long lost = trips.lost + (run.sent - run.received);

    printf("messaging benchmark: %ld rounds of %ld sequential round trips per measurement, events of 8 TEXT"
           " parameters of 16 bytes, private dbus-daemon (medians of the rounds)\n",
           rounds, perRound);
    char inFlight[48];
    snprintf(inFlight, sizeof inFlight, " (%ld in flight)", window);
    PrintBaseline("bare sd-bus ping-pong (2 processes):", bare, inFlight);
    PrintBaseline("the same with the plug-in's events:", barePattern, " (HOLA, PING; OKHI, PONG; FRWD)");
    PrintBaseline("and against the vesk partner:", viaVesk, "");
    printf("  %-40s median %8.1f us  p90 %8.1f us  %8.0f messages/s into the archive and taken\n",
           "plug-in <-> vesk partner, round trip:", Percentile(trips.latency, 500), Percentile(trips.latency, 900),
           perSecond);
    printf("    from TPX1SendMessageTo until idle starts the handling script; legs (medians): the send call %.1f us,"
           " the partner's answers dispatched %.1f us, idle until the script starts %.1f us\n",
           Percentile(trips.sends, 500), Percentile(trips.answers, 500), Percentile(trips.idles, 500));
    printf("    with the solution composing the message before (5 calls, %.1f us) and the script reading it after"
           " (4 calls, %.1f us): median %.1f us, p90 %.1f us\n",
           Percentile(trips.composes, 500), Percentile(trips.reads, 500), Percentile(trips.whole, 500),
           Percentile(trips.whole, 900));
    printf("    host process CPU per round trip: %.1f us\n", cpuPerTrip);
    printf("    events per message: HOLA + PING out, OKHI + PONG in, FRWD out (the handling script brings the host "
           "forward), do-script in-process\n");
    printf("  lost: %ld of %ld (duplicates %ld, malformed %ld, send errors %ld)\n", lost, sequential + count,
           session.duplicates, session.malformed, session.sendErrors);
    printf("  %s\n", SessionMemoryLine("memory at the end").c_str());
    int status = 0;
    if (!roundRatios.empty()) {
        double ratio = Percentile(roundRatios, 500);
        printf("  ratio plug-in round trip / bare ping-pong: %.2f (rounds from %.2f to %.2f; target <= 2.00: %s)\n",
               ratio, *std::min_element(roundRatios.begin(), roundRatios.end()),
               *std::max_element(roundRatios.begin(), roundRatios.end()), ratio <= 2.0 ? "met" : "missed");
        printf("  the same with composing and reading: %.2f\n", Percentile(roundWholeRatios, 500));
        if (barePattern.ok && viaVesk.ok)
            printf("  where the time goes, as ratios to the bare ping-pong: five events instead of two %.2f, the vesk"
                   " partner instead of a bare one %.2f, the plug-in and its host instead of a bare sender %.2f\n",
                   Percentile(roundPatternRatios, 500), Percentile(roundVeskRatios, 500), ratio);
    } else {
        status = 1;
    }
    if (lost) status = 1;
    SessionStop(&session);
    return status;
}
