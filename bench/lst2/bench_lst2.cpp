/*
 * bench_lst2.cpp: the map object list benchmark. Cleans generated LST2 lists of 10 000,
 * 100 000 and 1 000 000 lines through the plug-in's entry (TPX1SetParameter, then
 * TPX1ProcessLST2ParameterForTopolux by id) with fmhost's host memory, and reads the
 * 1 000 000-line list back in a column format (TPX1GetParameterLST2). In the same run
 * it times awk doing the same jobs and prints time per line, the ratio to awk and the
 * growth of the cleaning against n log n.
 *
 * Usage: bench_lst2 [awk program path, default "awk"]
 */
#include <sys/resource.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "fuzz/TestHooks.h"
#include "host/HostCore.h"
#include "plugin/Plugin.h"
#include "store/MessageLists.h"
#include "text/TextHandles.h"

namespace {


struct GeneratedList {
    std::string list;          /* CR-separated, as the plug-in gets it */
    std::string validLines;    /* the valid lines, LF-separated, for the baseline */
    std::string allLines;      /* every line, LF-separated, for the column baseline */
};

const char *const kLayers[] = {"Roads", "Rivers", "Wells", "Buildings", "Parcels", "Hydrants", "Contours",
                               "Soil samples", "Monitoring stations", "Pipelines"};
const char *const kMaps[] = {"County", "District 4", "Harbour area", "North sector", "Town centre"};

std::string RandomHex(std::mt19937_64 &random, int length, bool lowerCase)
{
    static const char upper[] = "0123456789ABCDEF";
    static const char lower[] = "0123456789abcdef";
    std::string s;
    for (int i = 0; i < length; i++)
        s += (lowerCase ? lower : upper)[random() % 16];
    return s;
}

std::string LongLayerName(std::mt19937_64 &random)
{
    std::string s = "Environmental monitoring layer ";
    size_t length = 40 + random() % 24;   /* 40..63 characters */
    while (s.size() < length)
        s += (char)('a' + random() % 26);
    return s;
}

std::string MixCase(std::mt19937_64 &random, const std::string &line)
{
    std::string s = line;
    for (size_t i = 17; i < s.size(); i++)   /* the identifier keeps its upper case */
        if (random() % 2)
            s[i] = (char)(islower((unsigned char)s[i]) ? toupper((unsigned char)s[i]) : tolower((unsigned char)s[i]));
    return s;
}

/* A realistic mix: new objects (some on several layers), repeats differing only in
 * letter case, exact repeats, malformed identifiers and long layer names. */
GeneratedList GenerateList(long lineCount, unsigned seed)
{
    std::mt19937_64 random(seed);
    std::vector<std::string> emitted;
    GeneratedList g;
    g.list.reserve((size_t)lineCount * 48);
    for (long i = 0; i < lineCount; i++) {
        int kind = (int)(random() % 100);
        std::string line;
        bool valid = true;
        if (kind < 60 || emitted.empty()) {
            line = RandomHex(random, 16, false) + "\t" + kLayers[random() % 10] + "\t" + kMaps[random() % 5];
        } else if (kind < 68) {   /* the same object on another layer */
            const std::string &earlier = emitted[random() % emitted.size()];
            line = earlier.substr(0, 16) + "\t" + kLayers[random() % 10] + "\t" + kMaps[random() % 5];
        } else if (kind < 80) {
            line = MixCase(random, emitted[random() % emitted.size()]);
        } else if (kind < 85) {
            line = emitted[random() % emitted.size()];
        } else if (kind < 93) {
            int broken = (int)(random() % 3);
            std::string id = broken == 0 ? "a" + RandomHex(random, 15, true)
                             : broken == 1 ? RandomHex(random, 15, false) : RandomHex(random, 17, false);
            line = id + "\t" + kLayers[random() % 10] + "\t" + kMaps[random() % 5];
            valid = false;
        } else {
            line = RandomHex(random, 16, false) + "\t" + LongLayerName(random) + "\t" + kMaps[random() % 5];
        }
        if (valid) {
            emitted.push_back(line);
            g.validLines += line + "\n";
        }
        g.allLines += line + "\n";
        g.list += line;
        if (i + 1 < lineCount)
            g.list += "\r";
    }
    return g;
}

/* Times are processor time (user and system), which a busy machine disturbs far less
 * than wall time: this process's own for the plug-in, the children's for the baseline. */
double ProcessSeconds(void)
{
    timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return (double)t.tv_sec + (double)t.tv_nsec * 1e-9;
}

double ChildrenSeconds(void)
{
    rusage usage;
    getrusage(RUSAGE_CHILDREN, &usage);
    return (double)usage.ru_utime.tv_sec + (double)usage.ru_utime.tv_usec * 1e-6 + (double)usage.ru_stime.tv_sec +
           (double)usage.ru_stime.tv_usec * 1e-6;
}

std::string gTempFolder;

std::string WriteTempFile(const char *name, const std::string &bytes)
{
    std::string path = gTempFolder + "/" + name;
    FILE *f = fopen(path.c_str(), "wb");
    if (!f || fwrite(bytes.data(), 1, bytes.size(), f) != bytes.size()) {
        fprintf(stderr, "bench_lst2: cannot write %s\n", path.c_str());
        exit(1);
    }
    fclose(f);
    return path;
}

/* Best time of a shell command over `runs` runs. */
double TimeCommand(const std::string &command, int runs)
{
    double best = 1e30;
    for (int r = 0; r < runs; r++) {
        double start = ChildrenSeconds();
        if (system(command.c_str()) != 0) {
            fprintf(stderr, "bench_lst2: baseline failed: %s\n", command.c_str());
            exit(1);
        }
        best = std::min(best, ChildrenSeconds() - start);
    }
    return best;
}

/* The plug-in linked in, called through its entry with fmhost's host callbacks. */
HostPlugin gPlugin;
FMX_ExternCallBlock gBlock{};

std::string External(long funcId, const std::string &arg)
{
    return HostCallExternal(&gPlugin, (int32_t)funcId, arg);
}

/* The outgoing list's text as the plug-in keeps it. */
std::string OutgoingList(void)
{
    gFMX_ExternCallPtr = &gBlock;
    char **h = GetTheOutgoingMessageParameterDataHandleFromList_NotACopy("LST2", 1);
    return h ? std::string(*h) : std::string();
}

long CountLines(const std::string &text, char separator)
{
    if (text.empty())
        return 0;
    long n = (long)std::count(text.begin(), text.end(), separator);
    return text.back() == separator ? n : n + 1;
}

struct CleanResult {
    double seconds;
    long keptLines;
};

CleanResult TimeClean(const GeneratedList &g, int runs)
{
    CleanResult result = {1e30, 0};
    std::string argument = "LST2|" + g.list;
    for (int r = 0; r < runs; r++) {
        External(kTPX1SetParameter, argument);
        double start = ProcessSeconds();
        External(kTPX1ProcessLST2ParameterForTopolux, "");
        result.seconds = std::min(result.seconds, ProcessSeconds() - start);
    }
    std::string cleaned = OutgoingList();
    result.keptLines = CountLines(cleaned, '\r');
    return result;
}

}  // namespace

int main(int argc, char **argv)
{
    std::string awk = argc > 1 ? argv[1] : "awk";
    char folder[] = "/tmp/bench_lst2.XXXXXX";
    if (!mkdtemp(folder)) {
        perror("bench_lst2: mkdtemp");
        return 1;
    }
    gTempFolder = folder;

    HostMemoryInstall(&gBlock);
    gFMX_ExternCallPtr = &gBlock;
    gPlugin.entry = RunHostCall;
    if (HostInit(&gPlugin, 60) != 51) {
        fprintf(stderr, "bench_lst2: Init refused\n");
        return 1;
    }

    printf("LST2 cleaning (TPX1ProcessLST2ParameterForTopolux through the entry) vs\n"
           "  %s '!seen[toupper($0)]++' on the valid lines\n\n", awk.c_str());
    printf("%10s %12s %10s %12s %10s %8s %12s\n", "lines", "plugin s", "ns/line", "baseline s", "ns/line", "ratio",
           "t/(n log n)");
    const long sizes[] = {10000, 100000, 1000000};
    double growth[3];
    double bigRatio = 0;
    bool sane = true;
    GeneratedList biggest;
    for (int k = 0; k < 3; k++) {
        long n = sizes[k];
        GeneratedList g = GenerateList(n, 1000 + (unsigned)k);
        int runs = n >= 1000000 ? 3 : (n >= 100000 ? 5 : 20);
        CleanResult clean = TimeClean(g, runs);
        std::string validPath = WriteTempFile("valid.txt", g.validLines);
        std::string outPath = gTempFolder + "/dedup.txt";
        double baseline = TimeCommand(awk + " '!seen[toupper($0)]++' " + validPath + " > " + outPath, runs);
        struct stat st;
        std::string countCommand = "test $(wc -l < " + outPath + ") -eq " + std::to_string(clean.keptLines);
        if (stat(outPath.c_str(), &st) != 0 || system(countCommand.c_str()) != 0) {
            printf("  mismatch: the plug-in kept %ld lines, awk a different number\n", clean.keptLines);
            sane = false;
        }
        growth[k] = clean.seconds / ((double)n * std::log2((double)n));
        double ratio = clean.seconds / baseline;
        if (k == 2) {
            bigRatio = ratio;
            biggest = g;
        }
        printf("%10ld %12.4f %10.1f %12.4f %10.1f %8.3f %12.3g\n", n, clean.seconds, clean.seconds * 1e9 / n, baseline,
               baseline * 1e9 / n, ratio, growth[k]);
    }
    double growth100k = growth[1] / growth[0], growth1m = growth[2] / growth[0];
    bool flat = growth100k < 2.0 && growth1m < 2.0;
    printf("\ngrowth: t/(n log n) relative to 10 000 lines: 1.00 %.2f %.2f (n log n keeps it near 1; n^2 "
           "would give about 8 and 67) %s\n", growth100k, growth1m, flat ? "PASS" : "FAIL");
    printf("cleaning 1 000 000 lines: %.3f of the baseline's time (target: under 0.5) %s\n", bigRatio,
           bigRatio < 0.5 ? "PASS" : "FAIL");

    /* Reading the 1 000 000-line list in a column format. */
    gFMX_ExternCallPtr = &gBlock;
    const char *pairs[] = {"MSSG", "SHOW", "LST2", biggest.list.c_str()};
    if (ArchiveMessageForTesting(pairs, 2) != noErr) {
        fprintf(stderr, "bench_lst2: cannot archive the list\n");
        return 1;
    }
    External(kTPX1GetNextMessage, "");
    double readBest = 1e30;
    std::string columns;
    for (int r = 0; r < 3; r++) {
        double start = ProcessSeconds();
        columns = External(kTPX1GetParameterLST2, "TOPOLUXID TAB MAPNAME RETURN");
        readBest = std::min(readBest, ProcessSeconds() - start);
    }
    std::string allPath = WriteTempFile("all.txt", biggest.allLines);
    double readBaseline =
        TimeCommand(awk + " -F'\\t' '{print $1 \"\\t\" $3}' " + allPath + " > " + gTempFolder + "/columns.txt", 3);
    double readRatio = readBest / readBaseline;
    printf("\nLST2 reading (TPX1GetParameterLST2 \"TOPOLUXID TAB MAPNAME RETURN\") vs %s -F'\\t' "
           "'{print $1 \"\\t\" $3}'\n", awk.c_str());
    printf("%10s %12s %10s %12s %10s %8s\n", "lines", "plugin s", "ns/line", "baseline s", "ns/line", "ratio");
    printf("%10ld %12.4f %10.1f %12.4f %10.1f %8.3f\n", 1000000L, readBest, readBest * 1e9 / 1e6, readBaseline,
           readBaseline * 1e9 / 1e6, readRatio);
    printf("  %ld output lines\n", CountLines(columns, '\r'));
    printf("reading 1 000 000 lines: %.3f of the baseline's time (target: at most 0.8) %s\n", readRatio,
           readRatio <= 0.8 ? "PASS" : "FAIL");

    HostShutdown(&gPlugin);
    std::string cleanup = "rm -rf " + gTempFolder;
    if (system(cleanup.c_str()) != 0)
        fprintf(stderr, "bench_lst2: could not remove %s\n", gTempFolder.c_str());
    return sane ? 0 : 1;
}
