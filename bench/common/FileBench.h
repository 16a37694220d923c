/*
 * FileBench.h: what the file benchmarks share: the size to test (first argument or
 * TPX1_BENCH_BYTES, 1 GB by default), a temporary folder, a generated test file, the
 * monotonic clock, running a shell baseline, and calling an external function of the
 * plug-in core with a host call block. Times are taken both as processor time (user and
 * system, of this process and of the baseline's processes), which other work on a shared
 * machine disturbs far less, and as wall time; the ratios and targets use processor time.
 */
#ifndef TPX1_BENCH_FILEBENCH_H
#define TPX1_BENCH_FILEBENCH_H

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <sys/resource.h>

#include "host/HostCore.h"
#include "plugin/Plugin.h"
#include "platform/Files.h"
#include "text/TextHandles.h"

namespace filebench {

inline long long SizeToTest(int argc, char **argv)
{
    const char *text = argc > 1 ? argv[1] : getenv("TPX1_BENCH_BYTES");
    long long size = text ? atoll(text) : 0;
    return size > 0 ? size : 1LL << 30;
}

inline std::string MakeTempFolder()
{
    char pattern[] = "/tmp/tpx1bench.XXXXXX";
    if (!mkdtemp(pattern)) {
        perror("mkdtemp");
        exit(1);
    }
    return pattern;
}

inline std::string ClassicPath(const std::string &posix)
{
    char classic[1024];
    if (PlatformPOSIXPathToClassic(posix.c_str(), classic, sizeof classic) != noErr) {
        fprintf(stderr, "no classic path for %s\n", posix.c_str());
        exit(1);
    }
    return classic;
}

/* Processor seconds (user and system) of this process and its finished children. */
inline double ProcessorSeconds()
{
    double total = 0;
    for (int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage;
        getrusage(who, &usage);
        total += (double)usage.ru_utime.tv_sec + (double)usage.ru_utime.tv_usec * 1e-6 +
                 (double)usage.ru_stime.tv_sec + (double)usage.ru_stime.tv_usec * 1e-6;
    }
    return total;
}

/* A timing: processor seconds and wall seconds. */
struct Timing {
    double cpu = 1e30;
    double wall = 1e30;
};

/* The time work takes, best of runs (each measure on its own). */
inline Timing Seconds(const std::function<void()> &work, int runs = 3)
{
    Timing best;
    for (int i = 0; i < runs; i++) {
        double cpuStart = ProcessorSeconds();
        auto start = std::chrono::steady_clock::now();
        work();
        std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
        best.cpu = std::min(best.cpu, ProcessorSeconds() - cpuStart);
        best.wall = std::min(best.wall, wall.count());
    }
    return best;
}

/* The better of two timings, measure by measure. */
inline Timing Best(const Timing &a, const Timing &b)
{
    return Timing{std::min(a.cpu, b.cpu), std::min(a.wall, b.wall)};
}

inline void Shell(const std::string &command)
{
    if (system(command.c_str()) != 0)
        fprintf(stderr, "baseline failed: %s\n", command.c_str());
}

/* Writes size bytes of pseudo-random printable text; place(offset, block, length) may
 * patch each block before it is written (offset = the block's place in the file). */
inline void GenerateFile(const std::string &path, long long size,
                         const std::function<void(long long, char *, long)> &place)
{
    const long kBlock = 1 << 20;
    std::string base(kBlock, ' ');
    uint32_t state = 12345;
    for (long i = 0; i < kBlock; i++) {
        state = state * 1103515245u + 12345u;
        base[i] = (char)(' ' + (state >> 16) % 95);
    }
    FILE *out = fopen(path.c_str(), "wb");
    if (!out) {
        perror(path.c_str());
        exit(1);
    }
    std::string block;
    for (long long offset = 0; offset < size; offset += kBlock) {
        long length = (long)(size - offset < kBlock ? size - offset : kBlock);
        block.assign(base, 0, (size_t)length);
        place(offset, block.data(), length);
        fwrite(block.data(), 1, (size_t)length, out);
    }
    fclose(out);
}

/* A host call block for the core and a way to call one external function. */
struct Host {
    FMX_ExternCallBlock block{};
    Host()
    {
        HostMemoryInstall(&block);
        gFMX_ExternCallPtr = &block;
    }
    std::string Call(long id, const std::string &argument)
    {
        return HostCallCoreFunction(Plugin_External, id, argument);
    }
};

/* One line: the processor times and their ratio (against the target, if any), then the
 * wall times and theirs. */
inline void PrintRatio(const char *what, const Timing &t, const char *baseline, const Timing &base, double target)
{
    double ratio = t.cpu / base.cpu;
    printf("%-18s cpu %7.3f s   %-16s cpu %7.3f s   ratio %5.2f", what, t.cpu, baseline, base.cpu, ratio);
    if (target > 0)
        printf(" (target <= %.1f) %-4s", target, ratio <= target ? "ok" : "OVER");
    else
        printf("%22s", "");
    printf("   wall %6.3f s vs %6.3f s, ratio %5.2f\n", t.wall, base.wall, t.wall / base.wall);
}

} // namespace filebench

#endif
