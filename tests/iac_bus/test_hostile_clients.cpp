/*
 * test_hostile_clients.cpp: the bus as a trust boundary. The real fmhost with the
 * plug-in meets clients written with bare sd-bus that speak as signatures whose names
 * they do not own, send the do-script event or other classes from outside, or send more
 * parameters than an event may have: each is refused with the D-Bus error its sender
 * asked for, said on fmhost's standard error at most once a second, and leaves nothing
 * behind (no partner recorded, nothing archived, nothing launched, no script run). A
 * client that owns its name is heard as before.
 */
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "FmhostSession.h"
#include "WireEvent.h"

namespace {

struct Answer {
    std::string error, message;   /* the D-Bus error's name and message, "" for none */
    int result = -1;              /* the handler's result otherwise */
};

std::vector<WireParam> Message(const char *id, const char *sign, std::vector<WireParam> more = {})
{
    more.insert(more.begin(), {{"MSSG", id}, {"SIGN", sign}});
    return more;
}

class HostileClients : public FmhostTest {
protected:
    void SetUp() override
    {
        FmhostTest::SetUp();
        ASSERT_GE(sd_bus_open_user(&nameless), 0);
        ASSERT_GE(WireOpen("BUSC", nullptr, nullptr, &owner), 0);
        StartHost();
        Run("TPX1SetHandledMessages(\"HOLA|ZZZZ\")\nTPX1InitIAC()");
    }

    void TearDown() override
    {
        sd_bus_flush_close_unref(nameless);
        sd_bus_flush_close_unref(owner);
        FmhostTest::TearDown();
    }

    /* One Event call to fmhost (or to), waiting for the answer unless noReply. */
    Answer Send(sd_bus *bus, const char *eventClass, const char *eventID, const char *sender,
                const std::vector<WireParam> &params, bool noReply = false, const char *to = "FMP7")
    {
        sd_bus_message *m = nullptr, *reply = nullptr;
        sd_bus_error error = SD_BUS_ERROR_NULL;
        Answer answer;
        int r = WireNewEvent(bus, sender, to, params, &m, eventClass, eventID);
        if (r >= 0 && noReply) {
            r = sd_bus_message_set_expect_reply(m, 0);
            if (r >= 0) r = sd_bus_send(bus, m, nullptr);
        } else if (r >= 0 && sd_bus_call(bus, m, 0, &error, &reply) >= 0) {
            sd_bus_message_read(reply, "i", &answer.result);
        } else if (sd_bus_error_is_set(&error)) {
            answer.error = error.name;
            answer.message = error.message ? error.message : "";
        }
        EXPECT_GE(r, 0) << "building the event: " << r;
        sd_bus_error_free(&error);
        sd_bus_message_unref(reply);
        sd_bus_message_unref(m);
        return answer;
    }

    sd_bus *nameless = nullptr, *owner = nullptr;
};

const char kAccessDenied[] = "org.freedesktop.DBus.Error.AccessDenied";

} // namespace

TEST_F(HostileClients, ForgedSignIsRefusedAndNothingOfItKept)
{
    /* A greeting that names a program to run, as TOPOLUX and as an unknown ZZZZ. */
    std::string evil = temp + "/evil";
    HarnessWriteFile(evil, "#!/bin/sh\ntouch '" + temp + "/evil-ran'\n", true);
    for (const char *sign : {"TPX1", "ZZZZ"}) {
        Answer a = Send(nameless, "VESK", "AEVT", "", Message("HOLA", sign, {{"PATH", Classic(evil)}}));
        EXPECT_EQ(a.error, kAccessDenied);
        EXPECT_NE(a.message.find(std::string("must own ") + WireBusName(sign)), std::string::npos) << a.message;
    }
    /* A burst: refused alike, said on standard error at most once a second. */
    for (int i = 0; i < 50; i++) Send(nameless, "VESK", "AEVT", "", Message("HOLA", "TPX1"), true);
    EXPECT_EQ(Send(nameless, "VESK", "AEVT", "", Message("HOLA", "TPX1")).error, kAccessDenied);

    /* Nothing archived, nothing recorded: neither partner is found, nothing runs. */
    EXPECT_EQ(Calc("TPX1GetNextMessage()"), "\"\"\n");
    EXPECT_EQ(Calc("TPX1GoToApp(\"ZZZZ\")"), "\"\"\n");
    EXPECT_EQ(Calc("TPX1GoToApp(\"TPX1\")"), "\"\"\n");
    EXPECT_NE(Dialogs().find("Unable to locate the application."), std::string::npos) << Dialogs();
    EXPECT_NE(Dialogs().find("Unable to locate TOPOLUX."), std::string::npos) << Dialogs();
    EXPECT_FALSE(std::filesystem::exists(temp + "/evil-ran"));
    EXPECT_EQ(StopHost(), 0);
    std::string errors = HostErrors();
    size_t lines = Occurrences(errors, "refused a VESK/AEVT event from ");
    EXPECT_GE(lines, 1u) << errors;
    EXPECT_LE(lines, 3u) << errors;
    EXPECT_NE(errors.find("the sender must own org.vesk.App.s54505831 to speak as 'TPX1'"), std::string::npos)
        << errors;
}

TEST_F(HostileClients, ForgedSenderSignatureIsRefusedAndAnOwnerIsHeardExactly)
{
    /* BUSC owns its name but speaks as TOPOLUX, in the call or in SIGN. */
    Answer a = Send(owner, "VESK", "AEVT", "TPX1", Message("ZZZZ", "BUSC"));
    EXPECT_EQ(a.error, kAccessDenied);
    EXPECT_NE(a.message.find("must own org.vesk.App.s54505831"), std::string::npos) << a.message;
    EXPECT_EQ(Send(owner, "VESK", "AEVT", "BUSC", Message("ZZZZ", "TPX1")).error, kAccessDenied);
    EXPECT_EQ(Calc("TPX1GetNextMessage()"), "\"\"\n");

    /* As itself it is heard: texts converted, a NUL in bytes cuts the text (with a
     * warning, as for a character without a Mac Roman form), only the id's keywords kept. */
    a = Send(owner, "VESK", "AEVT", "BUSC",
             {{"QQQQ", "not kept"}, {"MSSG", "ZZZZ"}, {"SIGN", "BUSC", true}, {"NAME", "Caf\xc3\xa9 \xc2\xb6"},
              {"TEXT", "a\xe4\xb8\xad" "b"}, {"LST2", "0000000000000001\tRoads\tCity\r"},
              {"DOC ", std::string("ab\0\x1b[2J", 7), true}, {"\x1b[1m", "\xe4\xb8\xad"}});
    EXPECT_EQ(a.error, "");
    EXPECT_EQ(a.result, 0);
    EXPECT_EQ(Calc("TPX1GetNextMessage()"), "\"ZZZZ\"\n") << transcript;
    EXPECT_EQ(Calc("TPX1GetParameter(\"SIGN\")"), "\"BUSC\"\n");
    EXPECT_EQ(Calc("Show [ TPX1GetParameter(\"NAME\") ]"), "Caf\xc3\xa9 \xc2\xb6\n");
    EXPECT_EQ(Calc("TPX1GetParameter(\"TEXT\")"), "\"a?b\"\n");
    EXPECT_EQ(Calc("TPX1GetParameter(\"LST2\")"), "\"0000000000000001\\tRoads\\tCity\\r\"\n");
    EXPECT_EQ(Calc("TPX1GetParameter(\"DOC \")"), "\"ab\"\n");
    EXPECT_EQ(Calc("TPX1GetParameter(\"QQQQ\")"), "\"\"\n");
    /* A value that is neither a string nor bytes is refused as a malformed call. */
    sd_bus_error error = SD_BUS_ERROR_NULL;
    EXPECT_LT(sd_bus_call_method(owner, WireBusName("FMP7").c_str(), "/org/vesk/App", "org.vesk.AppleEvent1", "Event",
                                 &error, nullptr, "sssa(ssv)", "VESK", "AEVT", "BUSC", 1, "MSSG", "TEXT", "i", 5),
              0);
    EXPECT_STREQ(error.name, "org.freedesktop.DBus.Error.InvalidArgs");
    sd_bus_error_free(&error);
    EXPECT_EQ(StopHost(), 0);
    std::string errors = HostErrors();
    EXPECT_NE(errors.find("event from 'BUSC': parameter 'TEXT' has characters without a Mac Roman form"),
              std::string::npos) << errors;
    EXPECT_NE(errors.find("event from 'BUSC': parameter 'DOC ' holds a NUL byte; its text was cut there"),
              std::string::npos) << errors;
    EXPECT_NE(errors.find("parameter '\\x1b[1m' has characters"), std::string::npos) << errors;
    EXPECT_EQ(errors.find('\x1b'), std::string::npos) << errors;
}

TEST_F(HostileClients, DoScriptAndOtherClassesFromOutsideAreRefused)
{
    Run("Script \"Evil\"\n$$evil = \"ran\"\nEnd Script");
    /* The first refusal is said on standard error, its class escaped. */
    EXPECT_EQ(Send(owner, "\x1b[2J", "dosc", "BUSC", {}).error, kAccessDenied);
    for (auto [eventClass, eventID] : std::vector<std::pair<const char *, const char *>>{
             {"misc", "dosc"}, {"TEST", "EVNT"}, {"aevt", "quit"}}) {
        Answer a = Send(owner, eventClass, eventID, "BUSC", {{"----", "Evil"}});
        EXPECT_EQ(a.error, kAccessDenied) << eventClass;
        EXPECT_NE(a.message.find("only VESK/AEVT and aevt/odoc events are taken from the bus"), std::string::npos);
    }
    /* A document is taken from the bus, but fmhost has no handler for it. */
    EXPECT_EQ(Send(owner, "aevt", "odoc", "BUSC", {}).result, -1717);
    Run("Idle 5");
    EXPECT_EQ(Calc("$$evil"), "\"\"\n");
    /* The host's own do-script event, inside the process, runs the script. */
    Run("TPX1CallScript(\"Evil\")\nIdle 5");
    EXPECT_EQ(Calc("$$evil"), "\"ran\"\n");
    EXPECT_EQ(StopHost(), 0);
    EXPECT_NE(HostErrors().find("refused a \\x1b[2J/dosc event"), std::string::npos) << HostErrors();
    EXPECT_EQ(HostErrors().find('\x1b'), std::string::npos) << HostErrors();
}

TEST_F(HostileClients, TooManyParametersAreRefused)
{
    std::vector<WireParam> params = Message("ZZZZ", "BUSC");
    while (params.size() < 4096) {
        char keyword[8];
        snprintf(keyword, sizeof keyword, "K%03d", (int)(params.size() % 1000));
        params.push_back({keyword, "v"});
    }
    params.back().keyword = "LST2";
    params.push_back({"NUM ", "4097"});
    Answer a = Send(owner, "VESK", "AEVT", "BUSC", params);
    EXPECT_EQ(a.error, "org.freedesktop.DBus.Error.LimitsExceeded");
    EXPECT_NE(a.message.find("at most 4096 parameters"), std::string::npos) << a.message;
    EXPECT_EQ(Calc("TPX1GetNextMessage()"), "\"\"\n");

    /* 4096, a repeated keyword counting each time, are taken; the last value wins. */
    params.pop_back();
    a = Send(owner, "VESK", "AEVT", "BUSC", params);
    EXPECT_EQ(a.error, "");
    EXPECT_EQ(a.result, 0);
    EXPECT_EQ(Calc("TPX1GetNextMessage()"), "\"ZZZZ\"\n");
    EXPECT_EQ(Calc("TPX1GetParameter(\"LST2\")"), "\"v\"\n");
    EXPECT_EQ(StopHost(), 0);
    EXPECT_NE(HostErrors().find("an event has at most 4096 parameters"), std::string::npos) << HostErrors();
}

TEST_F(HostileClients, VeskShowsWhatCameFromTheBusWithControlsEscaped)
{
    /* A listener whose application file's name holds an escape sequence. */
    std::string out = temp + "/listen.out", file = temp + "/x\x1b[2J";
    HarnessWriteFile(file, "");
    setenv("TPX1_APP_PATH", file.c_str(), 1);
    partners.push_back(HarnessSpawn({VESK_PATH, "listen", "--as", "LSTN"}, out, ""));
    unsetenv("TPX1_APP_PATH");
    ASSERT_TRUE(HostSees("LSTN"));
    EXPECT_EQ(HarnessReap(HarnessSpawn({VESK_PATH, "ps"}, temp + "/ps.out", ""), 0, kWaitMs), 0);
    std::string ps = HarnessReadFile(temp + "/ps.out");
    EXPECT_NE(ps.find(temp + "/x\\x1b[2J"), std::string::npos) << ps;
    Send(owner, "VESK", "AEVT", "BUSC", {{"\x1b[1m", "\x1b]0;t\x07"}}, false, "LSTN");
    EXPECT_TRUE(WaitFor([&] {
        return HarnessReadFile(out).find("  \\x1b[1m TEXT \"\\x1b]0;t\\x07\"\n") != std::string::npos;
    })) << HarnessReadFile(out);
    EXPECT_EQ((ps + HarnessReadFile(out)).find('\x1b'), std::string::npos);
}
