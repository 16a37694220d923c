/*
 * test_fuzz_replay.cpp: every input a fuzzer ever crashed on (fuzz/regressions/<target>/,
 * one file per crash, named after what it found) and the seed corpus of each target
 * (fuzz/corpus/<target>/) replayed through the target's body. A body aborts with its
 * reason when a check fails, so a regression shows as this test crashing.
 */
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

#include "fuzz/FuzzTargets.h"

/* A target as gtest lists it: by its name. */
void PrintTo(const FuzzTarget &target, std::ostream *out)
{
    *out << target.name;
}

namespace {

std::vector<std::string> InputsIn(const std::string &folder)
{
    std::vector<std::string> files;
    std::error_code ec;
    for (const auto &entry : std::filesystem::directory_iterator(folder, ec))
        if (entry.is_regular_file() && entry.path().filename().string()[0] != '.')
            files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    return files;
}

std::string ReadAll(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

/* Runs every file of a folder through the body; returns how many ran. */
size_t Replay(const FuzzTarget &target, const std::string &folder)
{
    std::vector<std::string> files = InputsIn(folder);
    for (const std::string &file : files) {
        SCOPED_TRACE(file);
        std::string bytes = ReadAll(file);
        fprintf(stderr, "replaying %s\n", file.c_str());
        EXPECT_EQ(0, target.body(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size()));
    }
    return files.size();
}

class FuzzReplay : public ::testing::TestWithParam<FuzzTarget> {};

TEST_P(FuzzReplay, SavedCrashesAndSeedsRunClean)
{
    const FuzzTarget &target = GetParam();
    std::string fuzz = TPX1_FUZZ_DIR;
    Replay(target, fuzz + "/regressions/" + target.name);
    EXPECT_GT(Replay(target, fuzz + "/corpus/" + target.name), 0u) << "the seed corpus is missing";
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzReplay, ::testing::ValuesIn(kFuzzTargets),
                         [](const ::testing::TestParamInfo<FuzzTarget> &info) { return std::string(info.param.name); });

}  // namespace
