/*
 * test_data_nodes.cpp: the DataNode list operations: set, replace, the caller's handle,
 * script triggering, remove, rename, attach and enable. (Every allocation failing in
 * them is the out-of-memory sweep's part.)
 */
#include <cstring>

#include "plugin/Plugin.h"
#include "tests/common/PluginTest.h"
#include "text/ErrorCodes.h"
#include "text/TextHandles.h"

class DataNodeTest : public PluginTest {
protected:
    DataNode *list = nullptr;
    void TearDown() override
    {
        DisposeDataList(&list);
        PluginTest::TearDown();
    }
    long Set(const char *name, const char *text, unsigned char isSystem = 0)
    {
        return SetDataFromStr(name, isSystem, text, &list);
    }
};

TEST_F(DataNodeTest, ReplaceQueuesScriptOnlyOnChange)
{
    EXPECT_EQ(Set("a", "1"), 0);
    EXPECT_EQ(Describe(list), "a=1;");
    EXPECT_EQ(AttachScriptToDataInList("a", "Recount", list), 0);
    EXPECT_EQ(list->scriptEnabled, 0);
    EXPECT_EQ(Set("a", "3"), 0);
    EXPECT_EQ(std::string(gDeferredScript[0]), "");           /* attached, not enabled */
    EXPECT_EQ(SetEnableOfDataScriptInList("a", 1, list), 0);
    EXPECT_EQ(Set("a", "3"), 0);
    EXPECT_EQ(std::string(gDeferredScript[0]), "");           /* same value: no change */
    EXPECT_EQ(Set("a", "2"), 0);
    EXPECT_EQ(std::string(gDeferredScript[0]), "Recount");
    EXPECT_STREQ(gNameOfGlobalThatTriggeredScript, "a");

    EXPECT_EQ(Set("Name", "x"), 0);
    EXPECT_EQ(Set("name", "y"), 0);
    EXPECT_EQ(Set("empty", ""), 0);
    EXPECT_EQ(Set("name", "z", 1), 0);        /* the flag is fixed at creation */
    EXPECT_EQ(Describe(list), "a=2;Name=x;name=z;empty~;");
    EXPECT_EQ(list->next->next->isSystem, 0);

    std::string longName(300, 'n');
    EXPECT_EQ(Set(longName.c_str(), "v"), 0);
    EXPECT_EQ(Value(longName.substr(0, 255).c_str(), list), "v");
    EXPECT_EQ(RenameDataInList(list, "Name", "Renamed"), 1);
    EXPECT_EQ(RenameDataInList(list, "Nope", "X"), 0);
    EXPECT_EQ(RenameDataInList(nullptr, "Name", "X"), 0);
    EXPECT_EQ(Value("Renamed", list), "x");
}

/* The caller's handle is read, terminated if need be, and never kept. (Appending, with
 * and without NODUPES and as a change that runs an attached script, is tested through
 * the external functions in GlobalsTest and MessageListsTest.) */
TEST_F(DataNodeTest, CallersHandleIsReadAndNeverKept)
{
    char **bare = MakeHandle("abc");
    EXPECT_EQ(SetDataInList("q", 0, bare, &list, false, false), 0);
    EXPECT_EQ(Bytes(bare), std::string("abc\0", 4));
    EXPECT_EQ(Value("q", list), "abc");
    DisposeFHandle(bare);
    EXPECT_EQ(SetDataInList("q", 0, nullptr, &list, false, false), kMissingErr);
}

TEST_F(DataNodeTest, RemoveAttachAndEnable)
{
    Set("sys1", "a", 1);
    Set("u1", "b");
    Set("sys2", "c", 1);
    Set("u2", "d");
    Set("u3", "e");
    EXPECT_EQ(RemoveDataFromList("sys2", &list), kReservedGlobalErr);
    EXPECT_EQ(Describe(list), "sys1=a;u1=b;sys2=c;u2=d;u3=e;");
    EXPECT_EQ(RemoveDataFromList("missing", &list), 0);
    EXPECT_EQ(RemoveDataFromList("u2", &list), 0);
    EXPECT_EQ(Describe(list), "sys1=a;u1=b;sys2=c;u3=e;");
    EXPECT_EQ(RemoveDataFromList("*", &list), 0);
    EXPECT_EQ(Describe(list), "sys1=a;sys2=c;");

    EXPECT_EQ(SetEnableOfDataScriptInList("sys1", 1, list), kMissingErr);
    EXPECT_EQ(SetEnableOfDataScriptInList("nope", 1, list), kNoSuchGlobalErr);
    EXPECT_EQ(SetEnableOfDataScriptInList("nope", 1, nullptr), kNoSuchGlobalErr);
    EXPECT_EQ(AttachScriptToDataInList("nope", "S", list), kNoSuchGlobalErr);
    EXPECT_EQ(AttachScriptToDataInList("sys1", std::string(300, 's').c_str(), list), 0);
    EXPECT_EQ(strlen(list->scriptName), 255u);
    EXPECT_EQ(SetEnableOfDataScriptInList("sys1", 1, list), 0);
    EXPECT_EQ(AttachScriptToDataInList("sys1", "Other", list), 0);
    EXPECT_EQ(list->scriptEnabled, 1);       /* a replaced script keeps the flag */

    char buf[8];
    EXPECT_EQ(GetDataFromListAsStr("absent", buf, sizeof buf, list), 0);
    EXPECT_STREQ(buf, "");
}
