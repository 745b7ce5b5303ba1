// The scheduler on a clock moved by hand, with a fake start-script call: due times, order, the
// pending array, failures and re-entry; then on the real clock under load.
#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <stdexcept>
#include <thread>

#include "scripts/due_time.h"
#include "scripts/ravelin.h"
#include "scripts_test_support.h"

namespace {

using std::chrono::nanoseconds;
using Strings = std::vector<std::string>;

TEST(DueTime, Int64NanosecondsWithoutOverflow) {
    constexpr long long kMax = std::numeric_limits<long long>::max();
    const struct {
        long long now;
        double delay;
        std::optional<long long> due;
    } cases[] = {
        {0, 1.5, 1500000000},
        {7, 0.0, 7},
        {7, -3.0, 7},
        {7, -HUGE_VAL, 7},
        {-10, 1e-9, -9},
        {0, 9.2e9, 9200000000000000000},
        {0, 9.3e9, {}},
        {0, 63.9e9, {}},
        {0, HUGE_VAL, {}},
        {0, std::nan(""), {}},
        {kMax - 5000000000, 10.0, {}},
    };
    for (const auto& c : cases) {
        const auto due = dueTime(nanoseconds(c.now), c.delay);
        EXPECT_EQ(due ? std::optional(due->count()) : std::nullopt, c.due)
            << c.now << "+" << c.delay;
    }
}

class Scheduler : public ::testing::Test {
protected:
    void schedule(const std::string& parameter, double delay) {
        ravelin_.scheduleScript("Hello", "Demo", parameter, delay);
    }
    void advance(double seconds) {
        clock_->advance(seconds);
        ravelin_.clockAdvanced();
    }
    void idle() { ravelin_.performScheduledScripts(start_); }
    Strings pending() const {
        Strings out;
        for (const auto& s :
             ravelin_.getScheduledScripts().value_or(std::vector<FileMakerScript>{}))
            out.push_back(s.script_parameters);
        return out;
    }

    std::shared_ptr<scripts_test::ManualClock> clock_ =
        std::make_shared<scripts_test::ManualClock>();
    scripts_test::CapturedLog log_;
    Strings started_;
    Ravelin::StartScript start_ = [this](const FileMakerScript& s) {
        started_.push_back(s.script_parameters);
        return fmx::errcode{0};
    };
    Ravelin ravelin_{clock_, [this](std::string_view line) { log_.add(line); }};
};

TEST_F(Scheduler, LastDueStartsFirstOnePerIdleCall) {
    schedule("3", 3);
    schedule("2", 2);
    schedule("1", 1);
    advance(5);
    EXPECT_EQ(pending(), (Strings{"1", "2", "3"}));
    idle();
    EXPECT_EQ(started_, (Strings{"3"}));
    for (int i = 0; i < 3; ++i) idle();
    EXPECT_EQ(started_, (Strings{"3", "2", "1"}));
    EXPECT_EQ(pending(), Strings{});
}

TEST_F(Scheduler, ComesDueOnceItsDelayHasPassed) {
    // The clock moves `before` seconds (unless negative) with the request still waiting, then
    // `after` more and it is due.
    const struct {
        double delay, before, after;
    } cases[] = {{0, -1, 0}, {-5, -1, 0}, {10, 9.999, 0.001}, {0.25, 0.2, 1}};
    for (const auto& c : cases) {
        schedule("x", c.delay);
        if (c.before >= 0) {
            advance(c.before);
            EXPECT_EQ(pending().size(), 0u) << c.delay;
        }
        advance(c.after);
        EXPECT_EQ(pending().size(), 1u) << c.delay;
        idle();
    }
}

TEST_F(Scheduler, IdleWithAnEmptyOrMissingArrayDoesNothing) {
    idle();
    EXPECT_EQ(ravelin_.getScheduledScripts(), std::nullopt);
    ravelin_.setScheduledScripts(std::vector<FileMakerScript>{});
    idle();
    EXPECT_TRUE(started_.empty());
}

TEST_F(Scheduler, LogsTheArrayAroundEachDeliveryAndAStartErrorOnce) {
    start_ = [](const FileMakerScript&) { return fmx::errcode{104}; };
    schedule("p", 0);
    advance(0);
    for (int i = 0; i < 2; ++i) idle();
    EXPECT_EQ(log_.lines, (Strings{"(\n)",
                                   "(\n    {script_name = \"Hello\"; file_name = \"Demo\"; "
                                   "script_parameters = \"p\";}\n)",
                                   "Script call ended with error: 104"}));
    EXPECT_EQ(pending(), Strings{});
}

TEST_F(Scheduler, NotReenteredAndDroppedEvenWhenTheStartThrows) {
    for (const char* p : {"a", "b", "c"}) schedule(p, 0);
    advance(0);
    const auto startNested = start_;
    start_ = [&](const FileMakerScript& s) {
        idle();  // the host idles again while the script starts: returns at once
        return startNested(s);
    };
    idle();
    EXPECT_EQ(started_, (Strings{"c"}));
    start_ = [](const FileMakerScript&) -> fmx::errcode { throw std::runtime_error("host"); };
    EXPECT_THROW(idle(), std::runtime_error);
    EXPECT_EQ(pending(), (Strings{"a"}));
}

// The queue holds a bounded number of requests and bytes; a refused request leaves it as it was.
TEST_F(Scheduler, RefusesRequestsBeyondTheQueuesBounds) {
    for (std::size_t i = 0; i < Ravelin::kMaxQueuedScripts; ++i) {
        ASSERT_TRUE(ravelin_.scheduleScript("Hello", "Demo", "", 100));
    }
    EXPECT_FALSE(ravelin_.scheduleScript("Hello", "Demo", "one more", 100));
    EXPECT_EQ(ravelin_.waitingCount(), Ravelin::kMaxQueuedScripts);

    Ravelin fresh{clock_, {}};
    EXPECT_FALSE(
        fresh.scheduleScript("Hello", "Demo", std::string(Ravelin::kMaxQueuedBytes, 'p'), 1));
    EXPECT_TRUE(fresh.scheduleScript("Hello", "Demo", std::string(1000, 'p'), 1));
    EXPECT_EQ(fresh.waitingCount(), 1U);
}

TEST(SchedulerThreads, TimerAndIdleSidesUnderLoad) {
    constexpr int kThreads = 4, kPerThread = 250, kTotal = kThreads * kPerThread;
    Ravelin ravelin(std::make_shared<SteadySchedulerClock>(), {});
    std::vector<std::thread> producers;
    for (int t = 0; t < kThreads; ++t) {
        producers.emplace_back([&ravelin, t] {
            for (int i = 0; i < kPerThread; ++i) {
                ravelin.scheduleScript("Hello", "Demo", std::to_string(t * kPerThread + i),
                                       (i % 4) * 1e-4);
            }
        });
    }
    // Idle from two threads, as a server does. Only the scheduler's busy flag guards the set:
    // the thread sanitizer reports it if that does not hold.
    std::multiset<std::string> started;
    std::atomic<int> count{0}, inside{0};
    const Ravelin::StartScript start = [&](const FileMakerScript& s) {
        EXPECT_EQ(inside.fetch_add(1), 0);
        started.insert(s.script_parameters);
        inside.fetch_sub(1);
        count.fetch_add(1);
        return fmx::errcode{0};
    };
    const auto idleUntilAllStarted = [&] {
        while (count.load() < kTotal) ravelin.performScheduledScripts(start);
    };
    std::thread otherIdle(idleUntilAllStarted);
    idleUntilAllStarted();
    otherIdle.join();
    for (auto& p : producers) p.join();
    EXPECT_EQ(std::set<std::string>(started.begin(), started.end()).size(), std::size_t{kTotal});
}

}  // namespace
