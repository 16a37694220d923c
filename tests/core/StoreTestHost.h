/*
 * StoreTestHost.h: the fixture of the store and dialog tests: host memory, empty
 * lists, an empty DoScript queue, the dialog recorder, and a leak check at the end.
 */
#ifndef TPX1_STORETESTHOST_H
#define TPX1_STORETESTHOST_H

#include <string>

#include "CoreTestHost.h"
#include "plugin/ExternalIds.h"
#include "store/DataNode.h"

class StoreTest : public CoreHostTest {
protected:
    void SetUp() override;
    void TearDown() override;
    /* Calls an external function through the dispatcher: a NUL-terminated argument,
     * a host result handle that starts with resultBefore. */
    std::string Call(long funcId, const std::string &arg, const std::string &resultBefore = "");
public:
    static std::string Value(const char *name, DataNode *first);
    /* "name=value" for each node, "name~" for a node with no data handle. */
    static std::string Describe(DataNode *first);
    static std::string LastDialogText();
    static int DialogCount();
    static std::string QueuedScript(int slot);
};

#endif
