/*
 * bench_repform.cpp: times TPX1GetRepformYearsFromIDs and TPX1ChangeRepformIDsInFile
 * on a generated file (1 GB unless the first argument or TPX1_BENCH_BYTES says
 * otherwise) with identifiers across every 300000-byte chunk border, against
 * `cat FILE > /dev/null` and `grep -c -a` for the identifiers, and prints the ratios.
 */
#include "FileBench.h"

#include "files/FileOps.h"

using namespace filebench;

int main(int argc, char **argv)
{
    long long size = SizeToTest(argc, argv);
    std::string folder = MakeTempFolder();
    std::string file = folder + "/big.rpf";
    /* Chunk k of the scan covers file bytes 8 + 300000k up to 8 + 300000(k+1). */
    GenerateFile(file, size, [](long long offset, char *block, long length) {
        static const char *ids[] = {"CMTR2005", "fdtR2007", "PHTR2003", "cvTR2001"};
        /* Identifier k starts at 8 + 300000k - 4; copy whatever part of it falls here. */
        for (long long k = offset / 300000;; k++) {
            long long at = 8 + 300000 * k - 4;
            if (at >= offset + length)
                break;
            for (int i = 0; i < 8; i++) {
                if (at + i >= offset && at + i < offset + length)
                    block[at + i - offset] = ids[k % 4][i];
            }
        }
    });
    printf("file %s, %lld bytes\n", file.c_str(), size);

    Host host;
    std::string classic = ClassicPath(file);
    std::string catCommand = "cat '" + file + "' > /dev/null";
    std::string grepCommand = "grep -c -a -E '([Cc][KkLlMmTtVv]|[Ff][AaDd]|[Pp][Hh])[Tt]R200[0-9]' '" + file +
                              "' > /dev/null";
    Shell(catCommand);   /* into the page cache */

    std::string years;
    const int kRuns = 5;
    Timing cat = Seconds([&] { Shell(catCommand); }, kRuns);
    Timing scan = Seconds([&] { years = host.Call(kTPX1GetRepformYearsFromIDs, classic); }, kRuns);
    Timing grep = Seconds([&] { Shell(grepCommand); }, 1);
    /* Each rewrite changes every identifier: to 2004 and 2008 in turn, the last to 2006. */
    std::string changed;
    int rewrites = 0;
    Timing rewrite = Seconds([&] {
        const char *year = rewrites == kRuns - 1 ? "2006|" : rewrites % 2 ? "2008|" : "2004|";
        changed += host.Call(kTPX1ChangeRepformIDsInFile, year + classic);
        rewrites++;
    }, kRuns);
    std::string after = host.Call(kTPX1GetRepformYearsFromIDs, classic);

    printf("years found: \"%s\"; after the rewrite: \"%s\"\n", years.c_str(), after.c_str());
    PrintRatio("scan", scan, "cat > /dev/null", cat, 1.5);
    PrintRatio("scan", scan, "grep -c -a", grep, 0);
    PrintRatio("rewrite", rewrite, "cat > /dev/null", cat, 1.5);

    std::filesystem::remove_all(folder);
    bool right = changed.empty() && (size < 1300000 || (years == "2001 2003 2005 2007" && after == "2006"));
    return right ? 0 : 1;
}
