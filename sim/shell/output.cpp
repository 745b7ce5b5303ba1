#include "sim/shell/output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>

#include "sim/shell/options.h"

namespace fmsim {

bool writeAll(int fd, const std::string& text) {
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
}

bool DescriptorBuffer::drain() {
    const std::string pending(pbase(), pptr());
    setp(buffer_, buffer_ + sizeof buffer_);
    return writeAll(fd_, pending);
}

DescriptorBuffer::int_type DescriptorBuffer::overflow(int_type c) {
    if (!drain()) return traits_type::eof();
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
        *pptr() = traits_type::to_char_type(c);
        pbump(1);
    }
    return traits_type::not_eof(c);
}

int DescriptorBuffer::sync() { return drain() ? 0 : -1; }

Output::Output() = default;

Output::Output(int resultFd, int messageFd)
    : resultFd_(resultFd), messageFd_(messageFd), buffer_(resultFd) {}

Output::~Output() {
    results_.flush();
    if (resultFile_ != nullptr) std::fclose(resultFile_);
    if (messageFile_ != nullptr) std::fclose(messageFile_);
}

namespace {

int keptCopy(int fd) {
    const int copy = ::fcntl(fd, F_DUPFD_CLOEXEC, 3);
    return copy < 0 ? fd : copy;
}

}  // namespace

void Output::separate(const std::string& logPath, bool quiet) {
    int target = -1;
    if (quiet || !logPath.empty()) {
        const char* path = quiet ? "/dev/null" : logPath.c_str();
        target = ::open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
        if (target < 0) throw UsageError("--log " + logPath + ": " + std::strerror(errno));
    }
    resultFd_ = keptCopy(STDOUT_FILENO);
    messageFd_ = keptCopy(STDERR_FILENO);
    buffer_.setDescriptor(resultFd_);
    if (target >= 0) {
        ::dup2(target, STDERR_FILENO);
        ::close(target);
    }
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    // What the plug-in prints goes out at once, in order with what it writes to standard error.
    std::setvbuf(stdout, nullptr, _IONBF, 0);
}

void Output::flush() {
    results_.flush();
    std::cout.flush();
    std::fflush(stdout);
}

void Output::message(const std::string& text) {
    flush();
    writeAll(messageFd_, "fmsim: " + text + "\n");
}

bool Output::resultsToTerminal() const { return ::isatty(resultFd_) != 0; }

namespace {

// A C stream on a copy of `fd`, made once into `file`; `fallback` when it cannot be.
FILE* streamOf(int fd, FILE*& file, FILE* fallback) {
    if (file == nullptr) {
        const int copy = ::fcntl(fd, F_DUPFD_CLOEXEC, 3);
        if (copy >= 0) file = ::fdopen(copy, "w");
        if (file == nullptr) {
            if (copy >= 0) ::close(copy);
            return fallback;
        }
    }
    return file;
}

}  // namespace

FILE* Output::resultFile() { return streamOf(resultFd_, resultFile_, stdout); }

FILE* Output::messageFile() { return streamOf(messageFd_, messageFile_, stderr); }

}  // namespace fmsim
