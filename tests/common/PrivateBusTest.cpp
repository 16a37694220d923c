/*
 * PrivateBusTest.cpp: the temporary folder, private bus and partners of the tests
 * between processes (see PrivateBusTest.h).
 */
#include "PrivateBusTest.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

size_t Occurrences(const std::string &text, const std::string &what)
{
    size_t count = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + what.size())) count++;
    return count;
}

void PrivateBusTest::SetUp()
{
    signal(SIGPIPE, SIG_IGN);
    char tmpl[] = "/tmp/tpx1-bus-XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    temp = tmpl;
    std::filesystem::create_directories(temp + "/Applications");
    ASSERT_TRUE(HarnessDaemonStart(temp + "/bus", &daemon)) << "no private dbus-daemon";
    setenv("HOME", temp.c_str(), 1);
    setenv("TPX1_APPLICATIONS_FOLDER", (temp + "/Applications").c_str(), 1);
}

void PrivateBusTest::TearDown()
{
    for (pid_t pid : partners) HarnessReap(pid, SIGTERM, kWaitMs);
    /* A stand-in is this process's child when the platform here launched it. */
    for (pid_t pid : Started()) {
        kill(pid, SIGTERM);
        WaitFor([&] { return waitpid(pid, nullptr, WNOHANG) == pid || kill(pid, 0) != 0; });
    }
    HarnessDaemonStop(&daemon, SIGTERM);
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    std::error_code ec;
    for (int i = 0; i < 50 && std::filesystem::exists(temp); i++) {
        std::filesystem::remove_all(temp, ec);
        if (ec) usleep(20000);
    }
    unsetenv("TPX1_LAUNCH_TIMEOUT_MS");
}

pid_t PrivateBusTest::StartPartner(const char *signature, const std::string &rules, const std::string &log)
{
    std::string rulesFile = temp + "/rules-" + signature + ".txt";
    HarnessWriteFile(rulesFile, rules);
    partners.push_back(HarnessSpawn({VESK_PATH, "partner", "--as", signature, "--rules", rulesFile, "--log", log}, "",
                                    temp + "/partner.err"));
    return partners.back();
}

std::string PrivateBusTest::Install(const std::string &folder, const std::string &name, const std::string &body)
{
    std::filesystem::create_directories(temp + "/" + folder);
    std::string path = temp + "/" + folder + "/" + name;
    HarnessWriteFile(path, "#!/bin/sh\necho $$ >> '" + temp + "/started'\n" + body + "\n", true);
    return path;
}

std::string PrivateBusTest::Partner(const char *signature, const char *name, const std::string &log,
                                    const std::string &rules)
{
    std::string rulesFile = temp + "/rules-" + signature + ".txt";
    HarnessWriteFile(rulesFile, rules);
    return std::string("exec '" VESK_PATH "' partner --as ") + signature + " --name " + name + " --rules '" +
           rulesFile + "' --log '" + log + "' \"$@\"";
}

std::vector<pid_t> PrivateBusTest::Started()
{
    std::vector<pid_t> pids;
    std::istringstream lines(HarnessReadFile(temp + "/started"));
    for (pid_t pid; lines >> pid;) pids.push_back(pid);
    return pids;
}

std::string PrivateBusTest::Classic(const std::string &posix)
{
    std::string classic = "Linux" + posix;
    std::replace(classic.begin(), classic.end(), '/', ':');
    return classic;
}
