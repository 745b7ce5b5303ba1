// Where fmsim's output goes. Results (and the answers of dot-commands) go to the standard output
// fmsim was started with, through a descriptor of fmsim's own; whatever the plug-in writes to
// descriptors 1 and 2 goes to the standard error, the --log file, or nowhere (--quiet), so that
// no trace of the plug-in ever lands between two result lines.
#pragma once

#include <cstdio>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>

namespace fmsim {

// An output buffer that writes to a file descriptor with write(2), bypassing the C library's
// stdout, which the plug-in shares.
class DescriptorBuffer : public std::streambuf {
public:
    explicit DescriptorBuffer(int fd) : fd_(fd) { setp(buffer_, buffer_ + sizeof buffer_); }
    void setDescriptor(int fd) { fd_ = fd; }

protected:
    int_type overflow(int_type c) override;
    int sync() override;

private:
    bool drain();

    int fd_;
    char buffer_[4096];
};

class Output {
public:
    Output();
    // Results to `resultFd` and messages to `messageFd`, as they are (tests).
    Output(int resultFd, int messageFd);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    // Keeps copies of standard output (for results) and standard error (for fmsim's messages),
    // then points descriptors 1 and 2 at `logPath` (appended to), at /dev/null for `quiet`, or
    // at standard error. Throws UsageError when the log cannot be opened.
    void separate(const std::string& logPath, bool quiet);

    std::ostream& results() { return results_; }
    // Flushes the results and whatever the plug-in left in the C library's buffers.
    void flush();
    // "fmsim: TEXT" on fmsim's standard error, after the results written so far.
    void message(const std::string& text);
    // Whether results go to a terminal.
    bool resultsToTerminal() const;
    // The results as a C stream, for line editing (which writes its prompt there).
    FILE* resultFile();
    // fmsim's standard error as a C stream, for line editing's messages.
    FILE* messageFile();

private:
    int resultFd_ = 1;
    int messageFd_ = 2;
    DescriptorBuffer buffer_{1};
    std::ostream results_{&buffer_};
    FILE* resultFile_ = nullptr;
    FILE* messageFile_ = nullptr;
};

// Writes all of `text` to `fd`, retrying after signals; false when it cannot.
bool writeAll(int fd, const std::string& text);

}  // namespace fmsim
