// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/FakeCounter.h"
#include "support/Host.h"

namespace {

using Gentra::GlobalMessageManager;
using Support::Messages;

std::string Read(Util::MessageManager const& manager, int size) {
    std::string buffer(4096, '#');
    manager.GetAllMessages(buffer.data(), size);
    return buffer.substr(0, buffer.find('\0'));
}

TEST(MessageLog, KeepsTheNewest128Messages) {
    Util::MessageManager manager;
    for (int i = 1; i <= 129; ++i) {
        manager.OutputMessage(std::to_string(i));
    }
    std::string const text = Read(manager, 4096);
    EXPECT_EQ(text.substr(0, 10), "129\r\n128\r\n");
    EXPECT_EQ(text.substr(text.size() - 3), "2\r\n");
}

TEST(MessageLog, LeavesOutWhatDoesNotFitAndCutsNothing) {
    Util::MessageManager manager;
    EXPECT_EQ(Read(manager, 10), "");
    manager.OutputMessage("xyz");
    manager.OutputMessage("0123456789");
    struct Row {
        int size;
        char const* expected;
    };
    for (Row const& row : {Row{4096, "0123456789\r\nxyz\r\n"}, Row{18, "0123456789\r\nxyz\r\n"},
                           Row{17, "0123456789\r\n"}, Row{14, "0123456789\r\n"}, Row{13, "0123456789\r\n"},
                           Row{12, "xyz\r\n"}, Row{6, "xyz\r\n"}, Row{5, ""}, Row{1, ""}}) {
        EXPECT_EQ(Read(manager, row.size), row.expected) << row.size;
    }
    char untouched = '#';
    manager.GetAllMessages(&untouched, 0);
    manager.GetAllMessages(&untouched, -1);
    manager.GetAllMessages(nullptr, 10);
    EXPECT_EQ(untouched, '#');
}

TEST(MessageLog, LogsOnceUntilItIsCleared) {
    Support::MessageLog const log;
    GlobalMessageManager::OutputMessage(std::string("100 %s"));
    GlobalMessageManager::OutputMessageOnce(std::string("100 %s"));
    GlobalMessageManager::OutputMessageOnce(std::string("100 %s"));
    GlobalMessageManager::OutputMessageOnce("%s-%d", "a", 1);
    GlobalMessageManager::OutputMessageOnce("%s-%d", "a", 1);
    GlobalMessageManager::OutputMessageOnce("%s-%d", "a", 2);
    EXPECT_EQ(log.Take(), (Messages{"100 %s", "100 %s", "a-1", "a-2"}));
    GlobalMessageManager::OutputMessageOnce("%s-%d", "a", 1);
    char const* const null = nullptr;
    GlobalMessageManager::OutputMessage(null);
    GlobalMessageManager::OutputMessageOnce(null);
    GlobalMessageManager::OutputDebugMessage("unseen");
    EXPECT_EQ(log.Take(), (Messages{"a-1"}));
}

TEST(MessageLog, CutsFormattedTextAt1023CharactersOnly) {
    Support::MessageLog const log;
    std::string const endless(5000, 'x');
    GlobalMessageManager::OutputMessage("%s", endless.c_str());
    GlobalMessageManager::OutputMessage(endless);
    Messages const messages = log.Take();
    EXPECT_EQ(messages[0].size(), 1023u);
    EXPECT_EQ(messages[1].size(), 5000u);
}

TEST(Timers, MeasureSecondsAndLaps) {
    Support::FakeCounter counter;
    counter.now = 5000;
    Util::Timer timer;
    counter.now = 5250;
    EXPECT_FLOAT_EQ(timer.Lap(), 0.25f) << "the first lap of an unstarted timer counts from its construction";
    timer.Start();
    counter.now = 6250;
    EXPECT_DOUBLE_EQ(timer.GetElapsedSeconds(), 1.0);
    EXPECT_FLOAT_EQ(timer.Lap(), 1.0f);
    counter.now = 6750;
    EXPECT_FLOAT_EQ(timer.Lap(), 0.5f);
    counter.countsPerSecond = 0;
    EXPECT_DOUBLE_EQ(timer.GetElapsedSeconds(), -1.0);
    counter.now = 7000;
    EXPECT_FLOAT_EQ(timer.Lap(), -1.0f);
    counter.countsPerSecond = 1000;
    EXPECT_FLOAT_EQ(timer.Lap(), 0.25f) << "without a counter nothing changed";
}

TEST(Timers, RunOnTheSystemsCounter) {
    Util::Timer timer;
    timer.Start();
    double const elapsed = timer.GetElapsedSeconds();
    EXPECT_GE(elapsed, 0.0);
    EXPECT_GE(timer.GetElapsedSeconds(), elapsed);
}

class Profiling : public testing::Test {
protected:
    ~Profiling() override { profiler.StopSession(); }
    void Sample(std::int64_t milliseconds) {
        stats.SampleStart();
        counter.now += milliseconds;
        stats.SampleStop();
    }
    void Expect(unsigned int count, double average, double minimum, double maximum) const {
        EXPECT_EQ(stats.GetSampleCount(), count);
        EXPECT_NEAR(stats.GetAvgProcessingTime(), average, 1e-12);
        EXPECT_NEAR(stats.GetMinProcessingTime(), minimum, 1e-12);
        EXPECT_NEAR(stats.GetMaxProcessingTime(), maximum, 1e-12);
    }

    Support::FakeCounter counter;
    Gentra::PerformanceProfiler& profiler = Support::MainContext().GetPerformanceProfiler();
    Gentra::PerformanceStatistics stats;
};

TEST_F(Profiling, CollectsSamplesPerPeriod) {
    Sample(100);
    Expect(0, 0, 0, 0);
    profiler.StartNewSession();
    Sample(200);
    Expect(1, 0.2, 0.2, 0.2);
    Sample(100);
    Sample(300);
    Expect(3, 0.2, 0.1, 0.3);
    profiler.StartNewSession();
    Expect(3, 0.2, 0.1, 0.3);
    Sample(50);
    Expect(1, 0.05, 0.05, 0.05);
    stats.SampleStart();
    profiler.StopSession();
    stats.SampleStop();
    Expect(1, 0.05, 0.05, 0.05);
}

TEST_F(Profiling, MeasuresASampleAcrossPeriodsAgainstTheNewClock) {
    profiler.StartNewSession();
    counter.now += 700;
    stats.SampleStart();
    profiler.StartNewSession();
    counter.now += 100;
    stats.SampleStop();
    Expect(1, -0.6, -0.6, -0.6);
}

TEST_F(Profiling, TakesSamplesOfZeroWithoutACounter) {
    counter.countsPerSecond = 0;
    profiler.StartNewSession();
    Sample(100);
    Expect(1, 0, 0, 0);
}

} // namespace
