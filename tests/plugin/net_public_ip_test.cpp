// The client's public address against loopback responders standing in for the services: the
// reading rules, the order of methods, and the bounds on time and descriptors.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "net/public_ip.h"
#include "net_test_support.h"
#include "plugin_test_support.h"
#include "sim/core/encoding.h"
#include "sim/core/handles.h"
#include "sim/core/value.h"

namespace {

using net_test::Answer;
using net_test::HttpResponder;

std::string http(std::string_view body, std::string_view headers = "Connection: close\r\n") {
    return "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n" + std::string(headers) + "\r\n" +
           std::string(body);
}
std::string chunked(std::string_view size, std::string_view chunk) {
    return http(std::string(size) + "\r\n" + std::string(chunk) + "\r\n0\r\n\r\n",
                "Transfer-Encoding: chunked\r\n");
}
Answer page(std::string_view marker, std::string_view address) {
    return {http("<html><body><p>" + std::string(marker) + std::string(address) + "</p>")};
}

// Every method asks 127.0.0.1 on `service`, which must outlive the table.
slib::EndpointTable loopback(const std::string& service) {
    slib::EndpointTable t;
    t.fill({"127.0.0.1", service.c_str()});
    return t;
}

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator fds("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(fds), end(fds)));
}

TEST(PublicIP, ReadsEachMethodsAnswer) {
    const std::string padding(16100, ' ');
    const struct {
        const char* name;
        int method;
        Answer answer;
        int status;
        std::string address;
    } cases[] = {
        {"a trailing line feed stays in the last group",
         2,
         {http("203.0.113.7\n")},
         0,
         "203.0.113.7\n"},
        {"two dots", 2, {http("1.2.3")}, -8, "1.2.3"},
        {"four dots", 2, {http("1.2.3.4.5")}, -8, "1.2.3.4.5"},
        {"four characters in a group", 2, {http("1234.1.1.1")}, -8, "1234"},
        {"more than 15 characters", 2, {http("1.1.1.1.1.1.1.1.1")}, -8, "1.1.1.1.1.1.1.1."},
        {"only the first packet counts", 2, {http("203.0."), "113.7"}, -8, "203.0."},
        {"an empty answer", 2, {""}, -8, ""},
        {"chunk size b", 6, {chunked("b", "203.0.113.7")}, 0, "203.0.113.7"},
        {"chunk size c", 6, {chunked("c", "203.0.113.70")}, -8, ""},
        {"chunk size 9", 6, {chunked("9", "192.0.2.1")}, -8, ""},
        {"chunk size d, first packet",
         4,
         {http("d\r\n198.51.100.27", "Transfer-Encoding: chunked\r\n"), "\r\n0\r\n\r\n"},
         0,
         "198.51.100.27"},
        {"close before the body", 5, {http("198.51.100.5")}, 0, "198.51.100.5"},
        {"no close before the body", 5, {http("198.51.100.5", "")}, -8, ""},
        {"method 1", 1, page("My IP address: ", "192.0.2.1"), 0, "192.0.2.1"},
        {"method 0 reads as 1", 0, page("My IP address: ", "192.0.2.1"), 0, "192.0.2.1"},
        {"method 10 reads as 1", 10, page("My IP address: ", "192.0.2.1"), 0, "192.0.2.1"},
        {"method 3", 3, page("IP Information: ", "192.0.2.3"), 0, "192.0.2.3"},
        {"method 7", 7, page("<strong id=\"ip_address\">", "192.0.2.7"), 0, "192.0.2.7"},
        {"method 8", 8, page("Your IP is ", "192.0.2.8"), 0, "192.0.2.8"},
        {"method 9", 9, page("Current IP Address: ", "192.0.2.9"), 0, "192.0.2.9"},
        {"a zero byte inside the address is read on", 9,
         page("Current IP Address: ", std::string("1.2.3.4\0", 8)), 0, "1.2.3.4"},
        {"a zero byte hides the marker",
         9,
         {http(std::string("\0", 1) + "Current IP Address: 1.2.3.4<")},
         -8,
         ""},
        {"the end character at once", 9, page("Current IP Address: ", ""), -8, ""},
        {"another method's marker", 8, page("Current IP Address: ", "192.0.2.9"), -8, ""},
        {"the marker beyond 16000 bytes",
         9,
         {http(padding + "Current IP Address: 1.2.3.4<")},
         -8,
         ""},
        {"no answer within the wait", 2, {"", "", true}, -7, "untouched"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::mutex mutex;  // the socket orders the two threads, but no race detector sees that
        std::string request;
        const HttpResponder responder([&](const std::string& r) {
            const std::lock_guard lock(mutex);
            request = r;
            return c.answer;
        });
        slib::AddressText out{};
        std::copy_n("untouched", 10, out.begin());
        EXPECT_EQ(slib::GetClientPublicIP(c.method, out, loopback(responder.port())), c.status);
        EXPECT_EQ(std::string(out.data()), c.address);
        const std::lock_guard lock(mutex);
        EXPECT_EQ(request, "GET / HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    }
}

TEST(PublicIP, FailsBeforeTheAnswer) {
    const net_test::RefusingPort refusing;
    slib::AddressText out{};
    testing::internal::CaptureStdout();
    EXPECT_EQ(slib::GetClientPublicIP(2, out, loopback(refusing.port())), -5);
    std::string expected;
    for (int i = 0; i < 11; ++i) expected += "Error while connecting: Connection refused";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);
    EXPECT_EQ(slib::GetClientPublicIP(2, out, loopback("no-such-service")), -3);
    // A host value with a path never resolves; the lookup stays on a loopback name server.
    const net_test::LoopbackResolver resolver(3);
    EXPECT_EQ(slib::GetClientPublicIP(4, out, slib::kEndpoints, resolver.servers()), -3);
}

// Ravelin_GetClientPublicIPAddress's order, with one responder per method.
class PublicIPAddress : public plugin_test::HostTest {
protected:
    void serve(const std::vector<int>& answering) {
        for (int m = 1; m <= 9; ++m) {
            const bool good = std::find(answering.begin(), answering.end(), m) != answering.end();
            responders_[m - 1] = std::make_unique<HttpResponder>([this, m, good](const auto&) {
                const std::lock_guard lock(mutex_);
                asked_.push_back(m);
                const std::string address = "203.0.113." + std::to_string(m);
                if (!good) return Answer{http("")};
                return m == 9 ? page("Current IP Address: ", address) : Answer{http(address)};
            });
            ports_[m - 1] = responders_[m - 1]->port();
            endpoints_[m - 1] = {"127.0.0.1", ports_[m - 1].c_str()};
        }
    }
    std::string call(const slib::EndpointTable& endpoints, const slib::NameServers& servers = {}) {
        const sim::DataHandle result = sim::makeData();
        slib::PerformGetClientPublicIPAddress(env(), *result, endpoints, servers);
        return sim::toUtf8(sim::valueOf(*result).asText().units());
    }

    std::vector<int> asked() {
        const std::lock_guard lock(mutex_);
        return asked_;
    }

    std::unique_ptr<HttpResponder> responders_[9];
    std::string ports_[9];
    slib::EndpointTable endpoints_{};
    std::mutex mutex_;
    std::vector<int> asked_;
};

TEST_F(PublicIPAddress, TriesMethodsInOrderUntilOneAnswers) {
    const struct {
        std::vector<int> answering;
        std::string result;
        std::vector<int> asked;
    } cases[] = {
        {{2, 6, 9}, "203.0.113.2", {2}},
        {{1, 3, 4, 7, 9}, "203.0.113.9", {2, 6, 5, 8, 9}},
        {{}, "-8", {2, 6, 5, 8, 9}},
    };
    for (const auto& c : cases) {
        asked_.clear();
        serve(c.answering);
        eval("Let ( [ $$Ravelin_LastError = 7 ; $$Ravelin_LastErrorMessage = \"x\" ] ; 1 )");
        EXPECT_EQ(call(endpoints_), c.result);
        EXPECT_EQ(asked(), c.asked);
        const bool failed = c.result == "-8";
        EXPECT_EQ(variable("$$Ravelin_LastError"), failed ? "-8" : "7");
        EXPECT_EQ(variable("$$Ravelin_LastErrorMessage"),
                  failed ? "Public IP is not available" : "x");
    }
}

TEST_F(PublicIPAddress, WithoutNameServiceAnswersTheLastLookupFailure) {
    const net_test::LoopbackResolver resolver(3);
    EXPECT_EQ(call(slib::kEndpoints, resolver.servers()), "-3");
    EXPECT_EQ(variable("$$Ravelin_LastErrorMessage"), "Public IP is not available");
}

// Services that accept and never answer, and a name server that never answers: the call gives up
// once its one deadline has passed, with the status of the step that was waiting.
TEST_F(PublicIPAddress, SilentServicesAndNameServersEndAtTheCallsDeadline) {
    HttpResponder silent([](const auto&) { return Answer{"", "", true}; });
    const std::string port = silent.port();
    slib::EndpointTable endpoints{};
    endpoints.fill({"127.0.0.1", port.c_str()});
    const net_test::SilentNameServer nameServer;
    const struct {
        slib::EndpointTable endpoints;
        const char* status;
    } cases[] = {{endpoints, "-7"}, {slib::kEndpoints, "-3"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.status);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(call(c.endpoints, nameServer.servers()), c.status);
        // Generous beside the five seconds, on a loaded machine.
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(12));
    }
    slib::JoinLookupWorkers();
}

TEST(PublicIP, FailuresLeaveNoDescriptorOpen) {
    const net_test::RefusingPort refusing;
    const HttpResponder garbage([](const std::string&) { return Answer{"HTTP/1.1 404"}; });
    const std::string services[] = {refusing.port(), garbage.port(), "no-such-service"};
    const slib::EndpointTable tables[] = {loopback(services[0]), loopback(services[1]),
                                          loopback(services[2])};
    slib::AddressText out{};
    const std::size_t before = openDescriptors();
    testing::internal::CaptureStdout();
    for (int i = 0; i < 10000; ++i) slib::GetClientPublicIP(2, out, tables[i % 3]);
    testing::internal::GetCapturedStdout();
    // The responder may still be closing its side of the last connection.
    for (int wait = 0; wait < 100 && openDescriptors() != before; ++wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(openDescriptors(), before);
}

// Eight threads ask at once under different spellings of 127.0.0.1; the responder answers each
// spelling with its own address, so a request mixed up with another thread's shows.
TEST(PublicIP, ThreadsDoNotShareRequests) {
    const char* const spellings[] = {"127.0.0.1",  "127.1",      "127.0.1",    "0x7f.0.0.1",
                                     "0177.0.0.1", "2130706433", "127.00.0.1", "0x7f000001"};
    const HttpResponder responder([&](const std::string& request) {
        for (int i = 0; i < 8; ++i) {
            if (request.find(std::string("Host: ") + spellings[i] + "\r\n") != std::string::npos)
                return Answer{http("10.0.0." + std::to_string(i))};
        }
        return Answer{http("")};
    });
    const std::string port = responder.port();
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&, i] {
            slib::EndpointTable table;
            table.fill({spellings[i], port.c_str()});
            for (int k = 0; k < 50; ++k) {
                slib::AddressText out{};
                if (slib::GetClientPublicIP(2, out, table) != 0 ||
                    std::string(out.data()) != "10.0.0." + std::to_string(i))
                    ++wrong;
            }
        });
    }
    for (auto& t : threads) t.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(responder.connections(), 400);
}

}  // namespace
