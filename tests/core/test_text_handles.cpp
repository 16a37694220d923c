/*
 * test_text_handles.cpp: the host text handle operations under the moving host memory
 * (every resize moves an unlocked block, new bytes are pattern-filled).
 */
#include <cstring>
#include <string>

#include "tests/common/PluginTest.h"
#include "text/ErrorCodes.h"
#include "text/TextHandles.h"

using namespace std::string_literals;

using TextHandlesTest = PluginTest;

TEST_F(TextHandlesTest, ResultsAndTerminatedContents)
{
    char **h = MakeHandle("old text\0"s);
    EXPECT_EQ(SetResultsHandle(h, "abc"), 0);
    EXPECT_EQ(Bytes(h), "abc");
    EXPECT_EQ(SetResultsHandle(h, nullptr), 0);
    EXPECT_EQ(Bytes(h), "abc");
    EXPECT_EQ(SetResultsHandle(h, ""), 0);
    EXPECT_EQ(Bytes(h), "");
    EXPECT_EQ(SetResultsHandle(nullptr, "x"), -1);

    EXPECT_EQ(SetHandleContentsAndIncludeTerminator(h, "xy"), 0);
    EXPECT_EQ(Bytes(h), "xy\0"s);
    EXPECT_EQ(SetHandleContentsAndIncludeTerminator(h, nullptr), 0);
    EXPECT_EQ(Bytes(h), "\0"s);
    EXPECT_EQ(SetHandleContentsAndIncludeTerminator(nullptr, "x"), -1);

    /* A locked handle may not grow: the host's refusal is out of memory. */
    LockFHandle(h);
    EXPECT_EQ(SetResultsHandle(h, "longer"), -108);
    UnlockFHandle(h);
    DisposeFHandle(h);
    EXPECT_EQ(HostMemoryLiveHandles(), 0);
}

TEST_F(TextHandlesTest, CatKeepsTheTerminatorState)
{
    char **empty = MakeHandle("");
    char **terminated = MakeHandle("a\0"s);
    char **bare = MakeHandle("a");
    EXPECT_EQ(CatHandleContents(empty, "bc"), 0);
    EXPECT_EQ(Bytes(empty), "bc\0"s);
    EXPECT_EQ(CatHandleContents(terminated, "bc"), 0);
    EXPECT_EQ(Bytes(terminated), "abc\0"s);
    EXPECT_EQ(CatHandleContents(bare, "bc"), 0);
    EXPECT_EQ(Bytes(bare), "abc");
    EXPECT_EQ(CatHandleContents(bare, nullptr), kMissingErr);
    EXPECT_EQ(CatHandleContents(nullptr, "x"), -1);

    HostMemorySetFailure(1, kHostFailOnce);
    EXPECT_EQ(CatHandleContents(terminated, "more"), -108);
    HostMemorySetFailure(0, kHostFailOff);

    EXPECT_EQ(AppendStructToHandle(bare, "\1\0\2", 3), 0);
    EXPECT_EQ(Bytes(bare), "abc\1\0\2"s);
    EXPECT_EQ(AppendStructToHandle(bare, "zz", 0), 0);
    EXPECT_EQ(Bytes(bare), "abc\1\0\2"s);
    EXPECT_EQ(AppendStructToHandle(nullptr, "zz", 2), -1);
    DisposeFHandle(empty);
    DisposeFHandle(terminated);
    DisposeFHandle(bare);
}

TEST_F(TextHandlesTest, TerminatorAddedAndRemoved)
{
    char **h = MakeHandle("");
    EXPECT_EQ(EnsureHandleIsNullTerminated(h), 0);
    EXPECT_EQ(Bytes(h), "\0"s);
    EXPECT_EQ(EnsureHandleIsNullTerminated(h), 0);   /* one NUL becomes two */
    EXPECT_EQ(Bytes(h), "\0\0"s);
    EXPECT_EQ(SetResultsHandle(h, "ab"), 0);
    EXPECT_EQ(EnsureHandleIsNullTerminated(h), 0);
    EXPECT_EQ(Bytes(h), "ab\0"s);
    EXPECT_EQ(EnsureHandleIsNullTerminated(h), 0);
    EXPECT_EQ(Bytes(h), "ab\0"s);
    EXPECT_EQ(EnsureHandleIsNullTerminated(nullptr), kMissingErr);

    EXPECT_EQ(CatHandleContents(h, "\0"), 0);      /* no-op append keeps one NUL */
    EXPECT_EQ(Bytes(h), "ab\0"s);
    RemoveTrailingNullTerminator(h);
    EXPECT_EQ(Bytes(h), "ab");
    RemoveTrailingNullTerminator(h);
    EXPECT_EQ(Bytes(h), "ab");
    EXPECT_EQ(AppendStructToHandle(h, "\0\0", 2), 0);
    RemoveTrailingNullTerminator(h);          /* only one NUL goes */
    EXPECT_EQ(Bytes(h), "ab\0"s);
    EXPECT_EQ(SetHandleContentsAndIncludeTerminator(h, ""), 0);
    RemoveTrailingNullTerminator(h);          /* size 1 is left alone */
    EXPECT_EQ(Bytes(h), "\0"s);
    RemoveTrailingNullTerminator(nullptr);
    DisposeFHandle(h);
}

TEST_F(TextHandlesTest, CopyToCStringAndResult)
{
    char **h = MakeHandle("1234567\0"s);
    char buf[16];
    memset(buf, 'x', sizeof buf);
    EXPECT_EQ(strcpyFHandleToCStr(buf, 5, h), 7);
    EXPECT_STREQ(buf, "1234");
    EXPECT_EQ(strcpyFHandleToCStr(nullptr, 0, h), 7);
    EXPECT_EQ(strcpyFHandleToCStr(buf, 1, h), 7);
    EXPECT_STREQ(buf, "");
    EXPECT_EQ(strcpyFHandleToCStr(buf, sizeof buf, h), 7);
    EXPECT_STREQ(buf, "1234567");
    EXPECT_EQ(strcpyFHandleToCStr(buf, sizeof buf, nullptr), 0);
    EXPECT_STREQ(buf, "");
    char **bare = MakeHandle("abc");
    EXPECT_EQ(strcpyFHandleToCStr(buf, sizeof buf, bare), 3);
    EXPECT_STREQ(buf, "abc");
    char **empty = MakeHandle("");
    strcpy(buf, "keep");
    EXPECT_EQ(strcpyFHandleToCStr(buf, sizeof buf, empty), 0);
    EXPECT_STREQ(buf, "");

    FMX_Handle result = HostNewTextHandle("previous");
    EXPECT_EQ(CopyFHandleToResultHandle(h, result), 0);
    EXPECT_EQ(Bytes(result), "1234567");
    EXPECT_EQ(CopyFHandleToResultHandle(bare, result), 0);
    EXPECT_EQ(Bytes(result), "abc");
    EXPECT_EQ(CopyFHandleToResultHandle(nullptr, result), 0);
    EXPECT_EQ(Bytes(result), "");
    EXPECT_EQ(CopyFHandleToResultHandle(h, nullptr), kMissingErr);
    HostDisposeHandle(result);
    DisposeFHandle(h);
    DisposeFHandle(bare);
    DisposeFHandle(empty);
}

TEST_F(TextHandlesTest, MergeAddsOnlyMissingLines)
{
    char **h = MakeHandle("one\rtwo\r\0"s);
    char lines[] = "two\rthree\r\rthree";
    EXPECT_EQ(MergeHandleContents(h, lines), 0);
    EXPECT_EQ(Bytes(h), "one\rtwo\rthree\r\0"s);
    char contained[] = "ne";       /* inside a longer line: not added again */
    EXPECT_EQ(MergeHandleContents(h, contained), 0);
    EXPECT_EQ(Bytes(h), "one\rtwo\rthree\r\0"s);
    std::string longLine(511, 'q');
    EXPECT_EQ(MergeHandleContents(h, longLine.data()), kLineTooLongErr);
    std::string maxLine(510, 'q');
    EXPECT_EQ(MergeHandleContents(h, maxLine.data()), 0);
    EXPECT_EQ(Bytes(h).size(), 15u + 511u);
    EXPECT_EQ(MergeHandleContents(nullptr, lines), kMissingErr);
    EXPECT_EQ(MergeHandleContents(h, nullptr), kMissingErr);
    DisposeFHandle(h);
}

TEST_F(TextHandlesTest, CompareUsesSignedBytesAndIgnoresOneTerminator)
{
    char **a = MakeHandle("abc");
    char **b = MakeHandle("abc\0"s);
    char **high = MakeHandle("ab\x8E");
    char **shorter = MakeHandle("ab");
    EXPECT_EQ(strcmpFHandles(a, b), 0);
    EXPECT_EQ(strcmpFHandles(high, a), -1);   /* 142 sorts before 'c' */
    EXPECT_EQ(strcmpFHandles(a, high), 1);
    EXPECT_EQ(strcmpFHandles(shorter, a), -1);
    EXPECT_EQ(strcmpFHandles(nullptr, shorter), -1);
    char **nul = MakeHandle("\0"s);
    EXPECT_EQ(strcmpFHandles(nullptr, nul), 0);
    EXPECT_EQ(strcmpFHandles(nullptr, nullptr), 0);
    for (char **h : {a, b, high, shorter, nul})
        DisposeFHandle(h);
    EXPECT_EQ(HostMemoryLiveHandles(), 0);
}
