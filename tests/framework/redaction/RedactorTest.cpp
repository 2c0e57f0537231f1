#include "framework/redaction/Redactor.h"

#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>

namespace {

platform::PersonalFacts someone() {
    return {.home = "/home/jörg",
            .userName = "jörg",
            .realName = "Jörg Müller",
            .hostName = "wolke.example.org",
            .machineIds = {"0123456789abcdef0123456789abcdef"},
            .serialNumbers = {"5CG8123XYZ", "0000:00:14.0", "1"}};
}

struct Case {
    const char* text;
    const char* expected;
};

void expectRedacted(const platform::PersonalFacts& facts, std::initializer_list<Case> cases) {
    const Redactor redactor(facts);
    for (const Case& one : cases)
        EXPECT_EQ(redactor.redacted(one.text), one.expected);
}

} // namespace

TEST(Redactor, ReplacesNamesInEveryForm) {
    expectRedacted(
        someone(),
        {{"/home/jörg/x.log", "[home]/x.log"},
         {"file:///home/j%C3%B6rg/x", "file://[home]/x"},
         {"%2Fhome%2Fj%c3%b6rg%2Fx", "[home]%2Fx"},
         {R"("\/home\/j\u00f6rg\/x")", R"("[home]\/x")"},
         {R"("/home/j\u00F6rg")", R"("[home]")"},
         {"/home/jörgen/x", "/home/jörgen/x"},
         {"/media/jörg/stick", "/media/[user]/stick"},
         {"Jörg's phone, by JÖRG MÜLLER", "[user]'s phone, by JÖRG MÜLLER"}, // no case beyond ASCII
         {"jörg's phone, by Jörg Müller", "[user]'s phone, by [user]"},
         {"jörg@wolke:~$ ssh jörg@WOLKE.example.org", "[user]@[host]:~$ ssh [user]@[host]"},
         {R"(line\njörg\twolke)", R"(line\n[user]\t[host])"},
         {"a%20jörg", "a%20[user]"},
         {"wolken jörg_2 bewölkt", "wolken jörg_2 bewölkt"},
         {"id 0123456789ABCDEF0123456789abcdef.", "id [machine-id]."},
         {"usb-Maker_5CG8123XYZ serial 5CG8123XYZ at 0000:00:14.0, 1",
          "usb-Maker_[serial] serial [serial] at 0000:00:14.0, 1"}});
}

TEST(Redactor, SparesOrdinaryWordsWhereNoNameStands) {
    platform::PersonalFacts facts{.home = "/home/audio",
                                  .userName = "audio",
                                  .realName = "",
                                  .hostName = "debian",
                                  .machineIds = {},
                                  .serialNumbers = {}};
    const char* const plain = "audio device /dev/audio.0 of debian 12, lib/audio audio-src";
    expectRedacted(
        facts,
        {{plain, plain},
         {"/home/audio/x /run/media/audio/x", "[home]/x /run/media/[user]/x"},
         {"audio@debian: audio@1000.service", "[user]@[host]: audio@1000.service"},
         {"USER=audio user: \"audio\"", "USER=[user] user: \"[user]\""},
         {"\"application.process.user\": \"audio\"", "\"application.process.user\": \"[user]\""},
         {"application.process.host = \"debian\"", "application.process.host = \"[host]\""},
         {"<hostname>debian</hostname>", "<hostname>[host]</hostname>"},
         {"<property name=\"application.process.host\">debian</property>",
          "<property name=\"application.process.host\">[host]</property>"},
         {"<node id=\"debian\" claimed=\"true\" class=\"system\" handle=\"\">",
          "<node id=\"[host]\" claimed=\"true\" class=\"system\" handle=\"\">"},
         {"x\nNov  7 05:30:12 debian kernel: audio", "x\nNov  7 05:30:12 [host] kernel: audio"},
         {"2026-11-07T05:30:12+00:00 debian kernel: debian",
          "2026-11-07T05:30:12+00:00 [host] kernel: debian"}});
    facts.userName = "li";
    facts.home = "/home/li";
    expectRedacted(facts, {{"<li>li</li>", "<li>li</li>"}, {"li@debian", "[user]@[host]"}});
}

TEST(Redactor, ReplacesAddresses) {
    expectRedacted({},
                   {{"at AA:bb:cc:00:11:22,", "at [mac],"},
                    {"bluez_card.AA_BB_CC_00_11_22", "bluez_card.[mac]"},
                    {"/org/bluez/hci0/dev_AA_BB_CC_00_11_22/fd1", "/org/bluez/hci0/dev_[mac]/fd1"},
                    {"AA%3ABB%3acc", "AA%3ABB%3acc"},
                    {"AA%3ABB%3ACC%3A00%3A11%3A22", "[mac]"},
                    {"enx00e04c680001: up", "[mac]: up"},
                    {"00:00:00:00:00:00 05:30:12", "00:00:00:00:00:00 05:30:12"},
                    {"from 192.168.1.20:8080 to 10.0.0.1.", "from [ip]:8080 to [ip]."},
                    {"127.0.0.1 0.0.0.0 255.255.255.0 1.2.3 1.2.3.4.5 6.1.0-18",
                     "127.0.0.1 0.0.0.0 255.255.255.0 1.2.3 1.2.3.4.5 6.1.0-18"},
                    {"fe80::1ff:fe23:4567:890a%eth0", "[ip]%eth0"},
                    {"2001:db8:1:2:3:4:5:6", "[ip]"},
                    {"std::abs bad::cafe a1::b2 ::1 0000:00:1f.3 05:30:12:11",
                     "std::abs bad::cafe a1::b2 ::1 0000:00:1f.3 05:30:12:11"}});
}

TEST(Redactor, ReplacesFieldsAndSecrets) {
    expectRedacted({},
                   {{"<serial>PF3X9</serial>", "<serial>[serial]</serial>"},
                    {"<setting id=\"serial\" value=\"PF3X9\" />",
                     "<setting id=\"serial\" value=\"[serial]\" />"},
                    {"device.serial = \"Acme_Mic_77\"", "device.serial = \"[serial]\""},
                    {"<property name=\"device.serial\">Acme_77</property>",
                     "<property name=\"device.serial\">[serial]</property>"},
                    {"Serial Number: PF3X9", "Serial Number: [serial]"},
                    {"ID_SERIAL_SHORT=PF3X9", "ID_SERIAL_SHORT=[serial]"},
                    {"object.serial = 12345, serial: none", "object.serial = 12345, serial: none"},
                    {"ESSID:\"Café am Eck\"", "ESSID:\"[network]\""},
                    {"ssid=Café am Eck\n", "ssid=[network]\n"},
                    {"\"media.name\": \"My Song\"", "\"media.name\": \"[media]\""},
                    {"password=hunter2 x", "password=[token] x"},
                    {"Authorization: Bearer abc.def", "Authorization: [token]"},
                    {"\"access_token\":\"abcd\"", "\"access_token\":\"[token]\""},
                    {"key ghp_abcdefghij0123456789 sk-proj-abcdefgh1234", "key [token] [token]"},
                    {"dGhpcyBpcyBh9IHNlY3J1dA4zX7q0=", "[token]"},
                    {"123e4567-e89b-12d3-a456-426614174000", "[token]"},
                    {"deadbeef0123456789deadbeef0123456789beef", "[token]"},
                    {"BuildID[sha1]=deadbeef0123456789deadbeef0123456789beef",
                     "BuildID[sha1]=deadbeef0123456789deadbeef0123456789beef"},
                    {"modalias=\"pci:v00001AF4d00001045sv00001AF4sd00001045bcFFscFFi00\"",
                     "modalias=\"pci:v00001AF4d00001045sv00001AF4sd00001045bcFFscFFi00\""},
                    {"_ZN12QApplication4execEv10QStringView3fooE2barI1x",
                     "_ZN12QApplication4execEv10QStringView3fooE2barI1x"},
                    {"alsa_output.pci-0000_00_1f.3.analog-stereo",
                     "alsa_output.pci-0000_00_1f.3.analog-stereo"},
                    {"VolumeWindow::showAbout 0x00007f3a5c2b1d40 token->next",
                     "VolumeWindow::showAbout 0x00007f3a5c2b1d40 token->next"}});
}

TEST(Redactor, CountsEachKind) {
    const Redactor redactor(someone());
    EXPECT_EQ(redactor.redacted("/home/jörg 10.0.0.1 10.0.0.2"), "[home] [ip] [ip]");
    EXPECT_EQ(redactor.count(RedactionKind::homeFolder), 1U);
    EXPECT_EQ(redactor.count(RedactionKind::ipAddress), 2U);
    EXPECT_EQ(redactor.count(RedactionKind::token), 0U);
}

TEST(Redactor, SurvivesAnyBytes) {
    const Redactor redactor(someone());
    const std::string parts[] = {
        "%",  "\\",     "\\u00", ":",  "=\"", "serial=", "/home/jö", "@",
        "aa", ":bb:cc", "enx",   "::", "1.2", "<",       "eyJ",      "\xff"};
    std::string text;
    unsigned state = 1;
    for (int i = 0; i < 20000; ++i) {
        state = state * 1103515245U + 12345U;
        text += parts[(state >> 16U) % std::size(parts)];
        if (i % 50 == 0) {
            EXPECT_LT(redactor.redacted(text).size(), 10 * text.size() + 100);
            text.clear();
        }
    }
}

TEST(PersonalFacts, AreThoseOfTheSystem) {
    const support::PrivateFolder root;
    const auto write = [&](const std::string& file, const std::string& text) {
        std::filesystem::create_directories((root.path() / file).parent_path());
        std::ofstream(root.path() / file) << text;
    };
    write("proc/sys/kernel/hostname", "wolke\n");
    write("etc/machine-id", "0123\n");
    write("sys/class/dmi/id/product_serial", "PF3X9 \n");
    write("sys/bus/usb/devices/1-2/serial", "MIC77\n");
    const platform::PersonalFacts facts = platform::PersonalFacts::ofThisMachine(root.path());
    EXPECT_EQ(facts.hostName, "wolke");
    EXPECT_EQ(facts.machineIds, std::vector<std::string>{"0123"});
    EXPECT_EQ(facts.serialNumbers, (std::vector<std::string>{"PF3X9", "MIC77"}));
    EXPECT_FALSE(facts.userName.empty());
    EXPECT_FALSE(facts.home.empty());
}
