/*
 * FileBench.h: what the file benchmarks share: the size to test (first argument or
 * TPX1_BENCH_BYTES, 1 GB by default), a temporary folder, a generated test file, the
 * monotonic clock, running a shell baseline, and calling an external function of the
 * plug-in core with a host call block.
 */
#ifndef TPX1_BENCH_FILEBENCH_H
#define TPX1_BENCH_FILEBENCH_H

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>

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

/* Seconds taken by work, best of runs. */
inline double Seconds(const std::function<void()> &work, int runs = 3)
{
    double best = 1e30;
    for (int i = 0; i < runs; i++) {
        auto start = std::chrono::steady_clock::now();
        work();
        std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        if (taken.count() < best)
            best = taken.count();
    }
    return best;
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

inline void PrintRatio(const char *what, double seconds, const char *baseline, double baseSeconds, double target)
{
    double ratio = seconds / baseSeconds;
    if (target > 0)
        printf("%-22s %8.3f s   %-22s %8.3f s   ratio %5.2f (target <= %.1f) %s\n", what, seconds, baseline,
               baseSeconds, ratio, target, ratio <= target ? "ok" : "OVER");
    else
        printf("%-22s %8.3f s   %-22s %8.3f s   ratio %5.2f\n", what, seconds, baseline, baseSeconds, ratio);
}

} // namespace filebench

#endif
