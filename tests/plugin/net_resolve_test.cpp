// Name and address resolution, through the host and in the routines, and the hosts-file entry
// writer on files of a temporary folder. Names that the hosts file does not hold are asked of a
// loopback name server.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

#include "entry/function_table.h"
#include "net/hosts_file.h"
#include "net/resolve.h"
#include "net_test_support.h"
#include "plugin_test_support.h"
#include "sim/core/handles.h"
#include "sim/session/session.h"

namespace {

TEST(Resolve, NameForIP) {
    const net_test::LoopbackResolver noNames(3);
    const struct {
        const char* ip;
        const char* name;
    } cases[] = {
        {"127.0.0.1", "localhost"},    {"127.1", "localhost"},
        {"0x7f.0.0.1", "localhost"},   {"192.0.2.77", "192.0.2.77"},  // no name: the numeric form
        {"192.0.2.077", "192.0.2.63"}, {"255.255.255.255", "Invalid IP address"},
        {"::1", "Invalid IP address"}, {"1.2.3.4.5", "Invalid IP address"},
        {"", "Invalid IP address"},
    };
    for (const auto& c : cases) EXPECT_EQ(slib::NameForIP(c.ip, noNames.servers()), c.name) << c.ip;
}

TEST(Resolve, FailuresComeBackAsMessages) {
    const net_test::LoopbackResolver failing(2);
    const slib::NameServers s = failing.servers();
    EXPECT_EQ(slib::NameForIP("192.0.2.77", s), "Cannot get host information for IP");
    EXPECT_EQ(slib::IPForName("no-such-host.invalid", s), "Cannot retrieve IP for host");
    EXPECT_EQ(slib::IPForName("localhost", s), "127.0.0.1");  // the hosts file first
    EXPECT_EQ(slib::IPForName("127.1", s), "127.0.0.1");
    EXPECT_EQ(slib::IPForName("::1", s), "Cannot retrieve IP for host");
    EXPECT_EQ(slib::IPForName("", s), "Cannot retrieve IP for host");
}

// A name server that never answers costs the caller at most the look-up's wait, and the failure
// message; the worker left behind finishes on its own.
TEST(Resolve, SilentNameServerFailsWithinTheWait) {
    const net_test::SilentNameServer silent;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(slib::IPForName("silent.example.", silent.servers()), "Cannot retrieve IP for host");
    EXPECT_EQ(slib::NameForIP("192.0.2.78", silent.servers()),
              "Cannot get host information for IP");
    // Generous: two waits of two seconds, on a loaded machine.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
    slib::JoinLookupWorkers();
    EXPECT_EQ(slib::IPForName("localhost", silent.servers()), "127.0.0.1");
}

// The name server's order stands, whatever the addresses: no sorting by route or prefix.
TEST(Resolve, IPForNameGivesTheFirstAddressListed) {
    const struct {
        std::vector<const char*> listed;
        const char* first;
    } cases[] = {
        {{"198.51.100.7", "192.0.2.9", "127.0.0.2"}, "198.51.100.7"},
        {{"203.0.113.250", "127.0.0.2", "10.1.2.3"}, "203.0.113.250"},
        {{"10.1.2.3", "192.0.2.9"}, "10.1.2.3"},
    };
    for (const auto& c : cases) {
        std::vector<in_addr_t> addresses;
        for (const char* a : c.listed) addresses.push_back(inet_addr(a));
        const net_test::LoopbackResolver several(0, addresses);
        EXPECT_EQ(slib::IPForName("several.example", several.servers()), c.first) << c.first;
    }
}

TEST(Resolve, ThroughTheHost) {
    sim::SessionOptions o;
    o.pluginPath = RAVELIN_PLUGIN_PATH;
    sim::Session session(o);
    session.eval("Let ( [ $$Ravelin_LastError = 7 ; $$Ravelin_LastErrorMessage = \"x\" ] ; 1 )");
    const struct {
        const char* calc;
        const char* result;
        const char* lastError;
    } cases[] = {
        {"Ravelin_GetIPforName ( \"localhost\" )", "127.0.0.1", "7"},
        {"Ravelin_GetNameForIP ( \"127.0.0.1\" )", "localhost", "7"},
        {"Ravelin_GetNameForIP ( \"255.255.255.255\" )", "Invalid IP address", "7"},
        {"Ravelin_GetNameForIP ( \"127.0.0.1\" & \"           \" )", "localhost", "7"},
    };
    for (const auto& c : cases) {
        const sim::EvalResult r = session.eval(c.calc);
        EXPECT_EQ(r.type, "Text") << c.calc;
        EXPECT_EQ(r.text, c.result) << c.calc;
        EXPECT_EQ(session.eval("$$Ravelin_LastError").text, c.lastError);
    }
}

class ResolveFunctions : public plugin_test::HostTest {};

TEST_F(ResolveFunctions, WithoutArgumentSayWhatIsMissing) {
    const struct {
        fmx::ExtPluginType function;
        const char* message;
    } cases[] = {
        {Ravelin_GetNameForIP, "IP address is not specified"},
        {Ravelin_GetIPforName, "Host name is not specified"},
    };
    for (const auto& c : cases) {
        const sim::DataVectHandle none = sim::makeDataVect({});
        const sim::DataHandle result = sim::makeData();
        EXPECT_EQ(c.function(17, env(), *none, *result), 0);
        EXPECT_EQ(sim::valueOf(*result).asNumber().toDouble(), -50);
        EXPECT_EQ(variable("$$Ravelin_LastError"), "-50");
        EXPECT_EQ(variable("$$Ravelin_LastErrorMessage"), c.message);
    }
}

// Eight of fmsim's threads at once, each result counted: one result each.
TEST(Resolve, ConcurrentCallsInFmsim) {
    const std::string command =
        std::string(FMSIM_PATH) +
        " --threads 8 --repeat 25 -t 'Ravelin_GetIPforName ( \"localhost\" )'"
        " -t 'Ravelin_GetNameForIP ( \"127.0.0.1\" )' 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::string output;
    char buffer[1024];
    for (std::size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) output.append(buffer, n);
    EXPECT_EQ(pclose(pipe), 0);
    EXPECT_EQ(output,
              "Ravelin_GetIPforName ( \"localhost\" )\t127.0.0.1 x200\n"
              "Ravelin_GetNameForIP ( \"127.0.0.1\" )\tlocalhost x200\n");
}

std::string read(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

TEST(CheckIp, RewritesTheHostsFile) {
    const std::string modified =
        "mail.example\t10.0.0.9\t# modifyed by Filemaker Ravelin plug-in\n";
    const std::string added = "mail.example\t10.0.0.9\t# added by Filemaker Ravelin plug-in\n";
    const std::string longLine = std::string(300, 'x') + "\n";
    const struct {
        const char* name;
        std::string before;
        int mode;
        std::string after;
    } cases[] = {
        {"two matches replaced",
         "127.0.0.1 localhost\n1.1.1.1 mail.example\n\n2.2.2.2 mail.example", 1,
         "127.0.0.1 localhost\n" + modified + "\n" + modified},
        {"two matches dropped, one added",
         "1.1.1.1 mail.example\n127.0.0.1 localhost\n"
         "2.2.2.2 mail.example\n",
         3, "127.0.0.1 localhost\n" + added},
        {"no match", "127.0.0.1 localhost\n", 1, "127.0.0.1 localhost\n" + added},
        {"a CR LF pair ends two lines", "1.1.1.1 mail.example\r\n", 2, modified + "\n"},
        {"a long line is copied whole", longLine, 1, longLine + added},
    };
    const std::filesystem::path dir =
        std::filesystem::temp_directory_path() / ("ravelin-hosts-" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    const std::filesystem::path hosts = dir / "hosts", backup = dir / "hosts.backup";
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::filesystem::remove(hosts);
        std::ofstream(hosts, std::ios::binary) << c.before;
        EXPECT_EQ(slib::CheckIp("mail.example", "10.0.0.9", c.mode, hosts, backup), 0);
        EXPECT_EQ(read(hosts), c.after);
        EXPECT_FALSE(std::filesystem::exists(backup));
        struct stat st {};
        stat(hosts.c_str(), &st);
        EXPECT_EQ(st.st_mode & 0777, 0444u);
    }
    std::filesystem::remove(hosts);
    EXPECT_EQ(slib::CheckIp("a", "b", 1, hosts, backup), -1);
    std::ofstream(hosts) << "";
    EXPECT_EQ(slib::CheckIp("a", "b", 1, hosts, backup), -1);
    std::ofstream(hosts) << "1.1.1.1 a\n";
    EXPECT_EQ(slib::CheckIp("a", "b", 1, hosts, dir / "missing" / "hosts.backup"), -2);
    EXPECT_EQ(read(hosts), "1.1.1.1 a\n");
    std::filesystem::remove_all(dir);
}

}  // namespace
