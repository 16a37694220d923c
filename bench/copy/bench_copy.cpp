/*
 * bench_copy.cpp: times TPX1CopyFile on a generated file (1 GB unless the first
 * argument or TPX1_BENCH_BYTES says otherwise) against cp on the same file system,
 * and prints the ratio and which path the copy took: inside the kernel, or read and
 * written through the plug-in's transfer buffer. The read-and-write path is timed too,
 * with the kernel copy switched off, for comparison.
 */
#include "FileBench.h"

#include <algorithm>

#include "files/FileOps.h"
#include "platform/FileService.h"

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

    /* cp and the plug-in alternate, and every timing starts with the old copies gone and
     * written back, so that neither side pays for the other's dirty pages. The
     * read-and-write path comes after them: its many small writes leave the page cache
     * in pieces, which would slow whatever runs next. */
    auto clean = [&] {
        std::filesystem::remove(byCp);
        std::filesystem::remove(byPlugin);
        Shell("sync");
    };
    auto identical = [&](const std::string &result) {
        return result.empty() && std::filesystem::file_size(byPlugin) == (uintmax_t)size &&
               system(("cmp -s '" + source + "' '" + byPlugin + "'").c_str()) == 0;
    };
    const int kRounds = 5;
    bool same = true;
    std::string result;
    Timing cp, copy, readWrite;
    long long inKernel = 0, inKernelReadWrite = 0;
    for (int round = 0; round < kRounds; round++) {
        clean();
        cp = Best(cp, Seconds([&] { Shell("cp '" + source + "' '" + byCp + "'"); }, 1));
        clean();
        int64_t before = PlatformFilesBytesCopiedInKernel();
        copy = Best(copy, Seconds([&] { result = host.Call(kTPX1CopyFile, argument); }, 1));
        inKernel = PlatformFilesBytesCopiedInKernel() - before;
        same = same && (round < kRounds - 1 || identical(result));
    }
    PlatformFilesAllowKernelCopy(false);
    for (int round = 0; round < kRounds; round++) {
        clean();
        int64_t before = PlatformFilesBytesCopiedInKernel();
        readWrite = Best(readWrite, Seconds([&] { result = host.Call(kTPX1CopyFile, argument); }, 1));
        inKernelReadWrite = PlatformFilesBytesCopiedInKernel() - before;
        same = same && (round < kRounds - 1 || identical(result));
    }
    PlatformFilesAllowKernelCopy(true);
    auto path = [size](long long kernelBytes) {
        return kernelBytes == size ? "inside the kernel (copy_file_range)"
               : kernelBytes == 0  ? "read and written through the transfer buffer"
                                   : "partly inside the kernel, partly read and written";
    };
    PrintRatio("TPX1CopyFile", copy, "cp", cp, 1.1);
    printf("  path: %s\n", path(inKernel));
    PrintRatio("read/write path", readWrite, "cp", cp, 0);
    printf("  path: %s\n", path(inKernelReadWrite));
    printf("copies %s\n", same ? "identical" : ("DIFFER: " + result).c_str());
    std::filesystem::remove_all(folder);
    return same ? 0 : 1;
}
