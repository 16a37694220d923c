/*
 * test_fuzz_replay.cpp: every input a fuzzer ever crashed on (fuzz/regressions/<target>/,
 * one file per crash, named after what it found) and the seed corpus of each target
 * (fuzz/corpus/<target>/) replayed through the target's body, and random map object
 * lists through the lst2 body. A body aborts with its reason when a check fails, so a
 * regression shows as this test crashing.
 */
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
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

/* Lists the seeds do not spell out: valid and invalid identifiers, names equal but for
 * letter case or accents, stray 0x01 bytes, empty lines, every line end, and groups of
 * more than 32 lines; cleaned, read and copied against the lst2 body's models. */
TEST(FuzzLst2, RandomListsMatchTheModels)
{
    const char *ids[] = {"0123456789ABCDEF", "0123456789abcdef", "0123456789ABCDE", "FFFFFFFFFFFFFFFF",
                         "0123456789ABCDEF0", "AAAAAAAAAAAAAAAA"};
    const char *names[] = {"Roads", "ROADS", "roads", "R\x01oads", "", "Wells", "w\x8e" "lls", "W\x83LLS"};
    const char *ends[] = {"\r", "\r", "\n", "\r\n"};
    std::mt19937 random(20240611);
    for (int round = 0; round < 60; round++) {
        int lineCount = round < 50 ? (int)(random() % 40) : 400;
        std::string input = {(char)(round % 9), (char)(round % 7)};   /* the format, the line number */
        for (int i = 0; i < lineCount; i++) {
            const char *end = ends[round < 20 ? 0 : random() % 4];   /* the first rounds: CR only */
            if (random() % 17 == 0) {
                input += end;
                continue;
            }
            input += std::string(ids[random() % (round < 50 ? 6 : 2)]) + "\t" + names[random() % 8] + "\t" +
                     names[random() % 8];
            if (i + 1 < lineCount || random() % 2)
                input += end;
        }
        SCOPED_TRACE("round " + std::to_string(round));
        EXPECT_EQ(0, FuzzLst2OneInput(reinterpret_cast<const uint8_t *>(input.data()), input.size()));
    }
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzReplay, ::testing::ValuesIn(kFuzzTargets),
                         [](const ::testing::TestParamInfo<FuzzTarget> &info) { return std::string(info.param.name); });

}  // namespace
