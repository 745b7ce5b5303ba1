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
};

void* runJob(void* arg) {
    auto* job = static_cast<Job*>(arg);
    try {
        (*job->work)();
    } catch (...) {
        job->error = std::current_exception();
    }
    return nullptr;
}

// Bytes of [base, base + size) that are resident, i.e. were written since the mapping was made.
std::size_t residentBytes(char* base, std::size_t size) {
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    std::vector<unsigned char> pages((size + page - 1) / page);
    if (mincore(base, size, pages.data()) != 0) return 0;
    std::size_t count = 0;
    for (unsigned char p : pages) count += p & 1;
    return count * page;
}

class Mapping {
public:
    explicit Mapping(std::size_t size) : size_(size) {
        void* p = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
        if (p == MAP_FAILED) throw std::bad_alloc();
        base_ = static_cast<char*>(p);
    }
    ~Mapping() { munmap(base_, size_); }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;
    char* base() const { return base_; }

private:
    char* base_ = nullptr;
    std::size_t size_;
};

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
    // The stack grows down, towards the guard at the low end.
    const Mapping mapping(kGuardBytes + stack);
    if (mprotect(mapping.base(), kGuardBytes, PROT_NONE) != 0) throw std::bad_alloc();
    char* const stackBase = mapping.base() + kGuardBytes;

    Attributes attributes;
    if (pthread_attr_setstack(attributes.get(), stackBase, stack) != 0) throw std::bad_alloc();
    Job job{&work, nullptr};
    pthread_t thread;
    if (pthread_create(&thread, attributes.get(), runJob, &job) != 0) throw std::bad_alloc();
    pthread_join(thread, nullptr);
    if (touched != nullptr) *touched = residentBytes(stackBase, stack);
    if (job.error) std::rethrow_exception(job.error);
}

}  // namespace rvl
