#include "regex/big_stack.h"

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <exception>
#include <new>
#include <vector>

namespace {

constexpr std::size_t kGuardBytes = std::size_t{1} << 20;
constexpr std::size_t kMinimumStack = std::size_t{1} << 20;

struct Job {
    const std::function<void()>* work;
    std::exception_ptr error;
    std::size_t touched = 0;
};

// Bytes of [base, base + size) that are resident, i.e. were written since the mapping was made.
std::size_t residentBytes(char* base, std::size_t size) {
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    std::vector<unsigned char> pages((size + page - 1) / page);
    if (mincore(base, size, pages.data()) != 0) return 0;
    std::size_t count = 0;
    for (unsigned char p : pages) count += p & 1;
    return count * page;
}

// How much of this thread's own stack has been touched so far.
std::size_t touchedStackBytes() {
    pthread_attr_t attr;
    if (pthread_getattr_np(pthread_self(), &attr) != 0) return 0;
    void* base = nullptr;
    std::size_t size = 0;
    const bool known = pthread_attr_getstack(&attr, &base, &size) == 0;
    pthread_attr_destroy(&attr);
    return known ? residentBytes(static_cast<char*>(base), size) : 0;
}

void* runJob(void* arg) {
    auto* job = static_cast<Job*>(arg);
    try {
        (*job->work)();
    } catch (...) {
        job->error = std::current_exception();
    }
    job->touched = touchedStackBytes();
    return nullptr;
}

class Attributes {
public:
    Attributes() {
        if (pthread_attr_init(&attr_) != 0) throw std::bad_alloc();
    }
    ~Attributes() { pthread_attr_destroy(&attr_); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    pthread_attr_t* get() { return &attr_; }

private:
    pthread_attr_t attr_;
};

}  // namespace

namespace rvl {

void RunOnBigStack(std::size_t stackBytes, const std::function<void()>& work,
                   std::size_t* touched) {
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    std::size_t stack = stackBytes < kMinimumStack ? kMinimumStack : stackBytes;
    stack = (stack + page - 1) / page * page;
    // The C library maps the stack without touching it, puts the guard below it, and unmaps a
    // stack this large when the thread has been joined.
    Attributes attributes;
    if (pthread_attr_setstacksize(attributes.get(), stack) != 0 ||
        pthread_attr_setguardsize(attributes.get(), kGuardBytes) != 0) {
        throw std::bad_alloc();
    }
    Job job{&work, nullptr};
    pthread_t thread;
    if (pthread_create(&thread, attributes.get(), runJob, &job) != 0) throw std::bad_alloc();
    pthread_join(thread, nullptr);
    if (touched != nullptr) *touched = job.touched;
    if (job.error) std::rethrow_exception(job.error);
}

}  // namespace rvl
