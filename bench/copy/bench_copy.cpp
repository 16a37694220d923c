/*
 * bench_copy.cpp: times TPX1CopyFile on a generated file (1 GB unless the first
 * argument or TPX1_BENCH_BYTES says otherwise) against cp on the same file system,
 * and prints the ratio.
 */
#include "FileBench.h"

#include <algorithm>

#include "files/FileOps.h"

using namespace filebench;

int main(int argc, char **argv)
{
    long long size = SizeToTest(argc, argv);
    std::string folder = MakeTempFolder();
    std::string source = folder + "/source.bin";
    std::string byCp = folder + "/by-cp.bin";
    std::string byPlugin = folder + "/by-plugin.bin";
    GenerateFile(source, size, [](long long, char *, long) {});
    printf("file %s, %lld bytes\n", source.c_str(), size);

    Host host;
    std::string argument = ClassicPath(source) + "|" + ClassicPath(folder) + ":by-plugin.bin";
    Shell("cat '" + source + "' > /dev/null");   /* into the page cache */

    /* Rounds alternate, and every timing starts with the old copies gone and written
     * back, so that neither side pays for the other's dirty pages. */
    auto clean = [&] {
        std::filesystem::remove(byCp);
        std::filesystem::remove(byPlugin);
        Shell("sync");
    };
    std::string result;
    double cp = 1e30, copy = 1e30;
    for (int round = 0; round < 3; round++) {
        clean();
        cp = std::min(cp, Seconds([&] { Shell("cp '" + source + "' '" + byCp + "'"); }, 1));
        clean();
        copy = std::min(copy, Seconds([&] { result = host.Call(kTPX1CopyFile, argument); }, 1));
    }
    bool same = result.empty() && std::filesystem::file_size(byPlugin) == (uintmax_t)size &&
                system(("cmp -s '" + source + "' '" + byPlugin + "'").c_str()) == 0;
    PrintRatio("TPX1CopyFile", copy, "cp", cp, 1.2);
    printf("copy %s\n", same ? "identical" : ("DIFFERS: " + result).c_str());
    std::filesystem::remove_all(folder);
    return same ? 0 : 1;
}
