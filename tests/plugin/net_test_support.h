// Loopback stand-ins for the network: an HTTP responder with canned answers and a name server
// that knows no names. Nothing here reaches beyond 127.0.0.1.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "net/bounded_lookup.h"

namespace net_test {

inline int boundLoopbackSocket(int type, sockaddr_in& address) {
    const int fd = socket(AF_INET, type | SOCK_CLOEXEC, 0);
    address = sockaddr_in{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    bind(fd, reinterpret_cast<sockaddr*>(&address), size);
    getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
    return fd;
}

// What the responder sends for one request. `later` goes out only once the client has closed
// (so the client's single receive never sees it); a silent answer sends nothing at all.
struct Answer {
    Answer(std::string f, std::string l = "", bool s = false)
        : first(std::move(f)), later(std::move(l)), silent(s) {}
    std::string first;
    std::string later;
    bool silent = false;
};

// Serves each connection in turn on 127.0.0.1 with what `answer` makes of the request.
class HttpResponder {
public:
    explicit HttpResponder(std::function<Answer(const std::string&)> answer)
        : answer_(std::move(answer)) {
        fd_ = boundLoopbackSocket(SOCK_STREAM, address_);
        listen(fd_, 64);
        thread_ = std::thread([this] { serve(); });
    }
    ~HttpResponder() {
        shutdown(fd_, SHUT_RDWR);
        thread_.join();
        close(fd_);
    }
    std::string port() const { return std::to_string(ntohs(address_.sin_port)); }
    int connections() const { return connections_; }

private:
    void serve() {
        for (int c; (c = accept(fd_, nullptr, nullptr)) >= 0; close(c)) {
            ++connections_;
            std::string request;
            char buffer[512];
            ssize_t n = 0;
            while (request.find("\r\n\r\n") == std::string::npos &&
                   (n = recv(c, buffer, sizeof buffer, 0)) > 0) {
                request.append(buffer, static_cast<std::size_t>(n));
            }
            const Answer a = answer_(request);
            if (!a.silent) send(c, a.first.data(), a.first.size(), MSG_NOSIGNAL);
            if (a.silent || !a.later.empty()) {
                while (recv(c, buffer, sizeof buffer, 0) > 0) {
                }
                send(c, a.later.data(), a.later.size(), MSG_NOSIGNAL);
            }
        }
    }

    std::function<Answer(const std::string&)> answer_;
    sockaddr_in address_{};
    int fd_ = -1;
    std::atomic<int> connections_{0};
    std::thread thread_;
};

// A loopback port that refuses connections: bound, never listening.
class RefusingPort {
public:
    RefusingPort() : fd_(boundLoopbackSocket(SOCK_STREAM, address_)) {}
    ~RefusingPort() { close(fd_); }
    std::string port() const { return std::to_string(ntohs(address_.sin_port)); }

private:
    sockaddr_in address_{};
    int fd_;
};

// A loopback name server that reads every question and never answers.
class SilentNameServer {
public:
    SilentNameServer() { fd_ = boundLoopbackSocket(SOCK_DGRAM, address_); }
    ~SilentNameServer() { close(fd_); }
    slib::NameServers servers() const { return {{address_}}; }

private:
    sockaddr_in address_{};
    int fd_ = -1;
};

// A loopback name server that answers every question with `rcode` (3: no such name, 2: server
// failure; 0: every name has the IPv4 `addresses`, in this order, and no others), for look-ups
// given its servers(); the hosts file is still read first.
class LoopbackResolver {
public:
    explicit LoopbackResolver(unsigned char rcode, std::vector<in_addr_t> addresses = {})
        : rcode_(rcode), addresses_(std::move(addresses)) {
        fd_ = boundLoopbackSocket(SOCK_DGRAM, address_);
        thread_ = std::thread([this] { serve(); });
    }
    slib::NameServers servers() const { return {{address_}}; }
    ~LoopbackResolver() {
        shutdown(fd_, SHUT_RDWR);
        thread_.join();
        close(fd_);
    }

private:
    void serve() {
        unsigned char packet[512];
        sockaddr_in from{};
        socklen_t size = sizeof from;
        ssize_t n = 0;
        while ((n = recvfrom(fd_, packet, sizeof packet, 0, reinterpret_cast<sockaddr*>(&from),
                             &size)) >= 12) {
            std::string answer(reinterpret_cast<char*>(packet), static_cast<std::size_t>(n));
            answer[2] = static_cast<char>(packet[2] | 0x80);  // a response
            answer[3] = static_cast<char>(0x80 | rcode_);     // recursion available, the code
            addRecords(answer);
            sendto(fd_, answer.data(), answer.size(), 0, reinterpret_cast<sockaddr*>(&from), size);
            size = sizeof from;
        }
    }

    // The A records of an A question, after the question; nothing else in the answer.
    void addRecords(std::string& answer) const {
        std::size_t end = 12;
        while (end < answer.size() && answer[end] != 0) end += 1 + std::size_t(answer[end]);
        end += 5;  // the root label, type and class
        if (end > answer.size()) return;
        answer.resize(end);
        answer.replace(6, 6, 6, '\0');  // no answer, authority or additional records yet
        const bool typeA = answer[end - 4] == 0 && answer[end - 3] == 1;
        if (rcode_ != 0 || !typeA) return;
        answer[7] = static_cast<char>(addresses_.size());
        for (const in_addr_t a : addresses_) {
            // The question's name by pointer, type A, class IN, a minute to live, four bytes.
            answer.append("\xC0\x0C\0\x01\0\x01\0\0\0\x3C\0\x04", 12);
            answer.append(reinterpret_cast<const char*>(&a), 4);
        }
    }

    unsigned char rcode_;
    std::vector<in_addr_t> addresses_;
    sockaddr_in address_{};
    int fd_ = -1;
    std::thread thread_;
};

}  // namespace net_test
