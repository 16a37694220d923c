/*
 * bench_copy.cpp: times TPX1CopyFile on a generated file (1 GB unless the first
 * argument or TPX1_BENCH_BYTES says otherwise) against cp on the same file system,
 * and prints the ratio.
 */
#include "FileBench.h"

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

    double cp = Seconds([&] {
        std::filesystem::remove(byCp);
        Shell("cp '" + source + "' '" + byCp + "'");
    });
    std::string result;
    double copy = Seconds([&] {
        std::filesystem::remove(byPlugin);
        result = host.Call(TPX1CopyFile, 9, argument);
    });
    bool same = result.empty() && std::filesystem::file_size(byPlugin) == (uintmax_t)size &&
                system(("cmp -s '" + source + "' '" + byPlugin + "'").c_str()) == 0;
    PrintRatio("TPX1CopyFile", copy, "cp", cp, 1.2);
    printf("copy %s\n", same ? "identical" : ("DIFFERS: " + result).c_str());
    std::filesystem::remove_all(folder);
    return same ? 0 : 1;
}
