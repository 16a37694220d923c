/*
 * CoreTestHost.h: the host memory fixture of the core unit tests: installs the moving,
 * pattern-filling host memory behind gFMX_ExternCallPtr and gives text handles.
 */
#ifndef TPX1_CORETESTHOST_H
#define TPX1_CORETESTHOST_H

#include <gtest/gtest.h>
#include <string>

#include "host/HostCore.h"

class CoreHostTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    /* A plug-in-owned handle holding exactly these bytes. */
    char **MakeHandle(const std::string &bytes);
    static std::string Bytes(char **h) { return HostHandleBytes(h); }
    FMX_ExternCallBlock block{};
};

#endif
