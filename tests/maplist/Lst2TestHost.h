/*
 * Lst2TestHost.h: the fixture of the map object list tests: the plug-in linked in and
 * called through its entry with fmhost's host memory, recorded dialogs, external calls
 * by function id, helpers to put a message into the incoming list and to read the
 * outgoing list, and lists with other line ends.
 */
#ifndef TPX1_LST2TESTHOST_H
#define TPX1_LST2TESTHOST_H

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "host/HostCore.h"

enum { kHostVersion = 60 };

/* The list with every CR replaced by another line end (LF, CR LF, ...). */
std::string WithLineEnds(const std::string &list, const std::string &end);

class Lst2Test : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    /* One external call: the argument's bytes, the result handle's bytes before and after. */
    std::string Call(long funcId, const std::string &arg, const std::string &resultBefore = "");
    /* Archives a message of (keyword, value) pairs and makes it the incoming message. */
    void Receive(const std::vector<std::string> &keywordValuePairs);
    /* A parameter's bytes, "" without a value, "<none>" when the list lacks it. */
    std::string Outgoing(const char *keyword);
    std::string Incoming(const char *keyword);
    int DialogCount();
    std::string DialogText(int i);
    HostPlugin plugin;
    FMX_ExternCallBlock block{};
};

#endif
