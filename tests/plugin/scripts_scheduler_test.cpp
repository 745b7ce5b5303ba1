// The scheduler on a clock moved by hand, with a fake start-script call: order, due times, the
// pending array, failures, re-entry, load and unload.
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <limits>
#include <set>
#include <stdexcept>
#include <thread>

#include "scripts/due_time.h"
#include "scripts/ravelin.h"
#include "scripts_test_support.h"

namespace {

using std::chrono::nanoseconds;
constexpr long long kMax = std::numeric_limits<long long>::max();

TEST(DueTime, Int64NanosecondsWithoutOverflow) {
    const double nan = std::nan(""), inf = HUGE_VAL;
    const struct {
        long long now;
        double delay;
        std::optional<long long> due;
    } cases[] = {
        {0, 1.5, 1500000000},
        {7, 0.0, 7},
        {7, -3.0, 7},
        {7, -inf, 7},
        {0, 1e-10, 0},
        {0, 9.2e9, 9200000000000000000},
        {0, 9.3e9, std::nullopt},
        {0, 63.9e9, std::nullopt},
        {0, inf, std::nullopt},
        {0, nan, std::nullopt},
        {kMax - 5000000000, 10.0, std::nullopt},
        {-10, 1e-9, -9},
    };
    for (const auto& c : cases) {
        const auto due = dueTime(nanoseconds(c.now), c.delay);
        ASSERT_EQ(due.has_value(), c.due.has_value()) << c.now << " + " << c.delay;
        if (due) {
            EXPECT_EQ(due->count(), *c.due) << c.now << " + " << c.delay;
        }
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
    std::vector<std::string> pending() const {
        std::vector<std::string> out;
        for (const auto& s :
             ravelin_.getScheduledScripts().value_or(std::vector<FileMakerScript>{})) {
            out.push_back(s.script_parameters);
        }
        return out;
    }

    std::shared_ptr<scripts_test::ManualClock> clock_ =
        std::make_shared<scripts_test::ManualClock>();
    scripts_test::CapturedLog log_;
    std::vector<std::string> started_;
    fmx::errcode answer_ = 0;
    Ravelin::StartScript start_ = [this](const FileMakerScript& s) {
        started_.push_back(s.script_parameters);
        return answer_;
    };
    Ravelin ravelin_{clock_, [this](std::string_view line) { log_(line); }};
};

TEST_F(Scheduler, LastDueStartsFirstOnePerIdleCall) {
    schedule("3", 3);
    schedule("2", 2);
    schedule("1", 1);
    advance(5);
    EXPECT_EQ(pending(), (std::vector<std::string>{"1", "2", "3"}));
    idle();
    EXPECT_EQ(started_, (std::vector<std::string>{"3"}));
    idle();
    idle();
    idle();
    EXPECT_EQ(started_, (std::vector<std::string>{"3", "2", "1"}));
    EXPECT_EQ(pending(), std::vector<std::string>{});
}

TEST_F(Scheduler, ComesDueOnceItsDelayHasPassed) {
    const struct {
        double delay, before, after;  // clock moves: `before` leaves it waiting, `after` not
    } cases[] = {{0, -1, 0}, {-5, -1, 0}, {-HUGE_VAL, -1, 0}, {10, 9.999, 0.001}, {0.25, 0.2, 1}};
    for (const auto& c : cases) {
        schedule("x", c.delay);
        if (c.before >= 0) {
            advance(c.before);
            EXPECT_EQ(ravelin_.waitingCount(), 1u) << c.delay;
        }
        advance(c.after);
        EXPECT_EQ(ravelin_.waitingCount(), 0u) << c.delay;
        EXPECT_EQ(pending().size(), 1u) << c.delay;
        idle();
    }
    EXPECT_EQ(started_.size(), std::size(cases));
}

TEST_F(Scheduler, UnrepresentableDelaysNeverComeDue) {
    clock_->set(nanoseconds(kMax - 5000000000));
    for (double delay : {std::nan(""), HUGE_VAL, 9.3e9, 10.0}) schedule("never", delay);
    EXPECT_EQ(ravelin_.waitingCount(), 0u);
    advance(4.9);
    EXPECT_EQ(ravelin_.getScheduledScripts(), std::nullopt);
}

TEST_F(Scheduler, IdleWithAnEmptyOrMissingArrayDoesNothing) {
    idle();
    EXPECT_EQ(ravelin_.getScheduledScripts(), std::nullopt);
    ravelin_.setScheduledScripts(std::vector<FileMakerScript>{});
    idle();
    EXPECT_TRUE(started_.empty());
    EXPECT_EQ(ravelin_.getScheduledScripts()->size(), 0u);
}

TEST_F(Scheduler, ArrayIsLoggedBeforeAndAfterEachDelivery) {
    schedule("p", 0);
    advance(0);
    EXPECT_EQ(log_.lines(),
              (std::vector<std::string>{"(\n)",
                                        "(\n    {script_name = \"Hello\"; file_name = "
                                        "\"Demo\"; script_parameters = \"p\";}\n)"}));
}

TEST_F(Scheduler, StartErrorIsLoggedOnceAndTheRecordIsGone) {
    answer_ = 104;
    schedule("a", 0);
    advance(0);
    idle();
    idle();
    EXPECT_EQ(started_.size(), 1u);
    EXPECT_EQ(log_.count("Script call ended with error: 104"), 1u);
    EXPECT_TRUE(pending().empty());
}

TEST_F(Scheduler, StartingIsNotReentered) {
    schedule("first", 0);
    schedule("second", 0);
    advance(0);
    start_ = [this](const FileMakerScript& s) {
        started_.push_back(s.script_parameters);
        idle();  // the host runs idle again while the script starts: returns at once
        return fmx::errcode{0};
    };
    idle();
    EXPECT_EQ(started_, (std::vector<std::string>{"second"}));
    EXPECT_EQ(pending(), (std::vector<std::string>{"first"}));
}

TEST_F(Scheduler, ThrowingStartStillDropsTheRecord) {
    schedule("a", 0);
    schedule("b", 0);
    advance(0);
    start_ = [](const FileMakerScript&) -> fmx::errcode { throw std::runtime_error("host"); };
    EXPECT_THROW(idle(), std::runtime_error);
    EXPECT_EQ(pending(), (std::vector<std::string>{"a"}));
    start_ = [this](const FileMakerScript& s) {
        started_.push_back(s.script_parameters);
        return fmx::errcode{0};
    };
    idle();
    EXPECT_EQ(started_, (std::vector<std::string>{"a"}));
}

TEST(SchedulerThreads, DestroyingWithWaitingRequestsNeitherHangsNorCrashes) {
    for (int round = 0; round < 20; ++round) {
        Ravelin ravelin(std::make_shared<SteadySchedulerClock>(), {});
        ravelin.scheduleScript("Hello", "Demo", "soon", 0);
        ravelin.scheduleScript("Hello", "Demo", "later", 3600);
    }
}

TEST(SchedulerThreads, TimerAndIdleSidesUnderLoad) {
    constexpr int kThreads = 4, kPerThread = 250;
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
    // Idle from two threads at once, as a server does. The multiset is guarded only by the
    // scheduler's own busy flag; the thread sanitizer reports it if that does not hold.
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
        while (count.load() < kThreads * kPerThread) ravelin.performScheduledScripts(start);
    };
    std::thread otherIdle(idleUntilAllStarted);
    idleUntilAllStarted();
    otherIdle.join();
    for (auto& p : producers) p.join();
    EXPECT_EQ(std::set<std::string>(started.begin(), started.end()).size(), started.size());
}

}  // namespace
