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

TEST(MessageLog, KeepsTheNewest128MessagesAndCutsNone) {
    Util::MessageManager manager;
    EXPECT_EQ(Read(manager, 10), "");
    std::string expected;
    for (int i = 1; i <= 129; ++i) {
        manager.OutputMessage(std::to_string(i));
        expected = i > 1 ? std::to_string(i) + "\r\n" + expected : expected;
    }
    EXPECT_EQ(Read(manager, 4096), expected);
    Util::MessageManager two;
    two.OutputMessage("xyz");
    two.OutputMessage("0123456789");
    for (std::size_t size = 1; size < 20; ++size) {
        std::string read;
        for (std::string const message : {"0123456789\r\n", "xyz\r\n"}) {
            read += read.size() + message.size() < size ? message : "";
        }
        EXPECT_EQ(Read(two, static_cast<int>(size)), read);
    }
    char untouched = '#';
    two.GetAllMessages(&untouched, 0);
    two.GetAllMessages(&untouched, -1);
    two.GetAllMessages(nullptr, 10);
    EXPECT_EQ(untouched, '#');
}

TEST(MessageLog, LogsOnceUntilItIsCleared) {
    Support::MessageLog const log;
    GlobalMessageManager::OutputMessage(std::string("100 %s"));
    for (int const number : {1, 1, 2}) {
        GlobalMessageManager::OutputMessageOnce(std::string("100 %s"));
        GlobalMessageManager::OutputMessageOnce("%s-%d", "a", number);
    }
    EXPECT_EQ(log.Take(), (Messages{"100 %s", "100 %s", "a-1", "a-2"}));
    GlobalMessageManager::OutputMessageOnce("%s-%d", "a", 1);
    char const* const null = nullptr;
    GlobalMessageManager::OutputMessage(null);
    GlobalMessageManager::OutputMessageOnce(null);
    GlobalMessageManager::OutputDebugMessage("unseen");
    EXPECT_EQ(log.Take(), (Messages{"a-1"}));
    std::string const endless(5000, 'x');
    GlobalMessageManager::OutputMessage("%s", endless.c_str());
    GlobalMessageManager::OutputMessage(endless);
    EXPECT_EQ(log.Take(), (Messages{endless.substr(0, 1023), endless})) << "only formatted text is cut";
}

TEST(Timers, MeasureSecondsAndLaps) {
    Support::FakeCounter counter;
    counter.now = 5000;
    Util::Timer timer;
    counter.now = 5250;
    EXPECT_FLOAT_EQ(timer.Lap(), 0.25f) << "the first lap of an unstarted timer counts from its construction";
    counter.now = 5500;
    timer.Start();
    counter.now = 6500;
    EXPECT_DOUBLE_EQ(timer.GetElapsedSeconds(), 1.0);
    EXPECT_FLOAT_EQ(timer.Lap(), 1.0f);
    counter.now = 7000;
    EXPECT_FLOAT_EQ(timer.Lap(), 0.5f);
    counter.countsPerSecond = 0;
    EXPECT_DOUBLE_EQ(timer.GetElapsedSeconds(), -1.0);
    counter.now = 7250;
    EXPECT_FLOAT_EQ(timer.Lap(), -1.0f);
    counter.countsPerSecond = 1000;
    EXPECT_FLOAT_EQ(timer.Lap(), 0.25f) << "without a counter nothing changed";
}

TEST(Timers, RunOnTheSystemsCounter) {
    Util::Timer timer;
    timer.Start();
    double elapsed = 0;
    for (int i = 0; elapsed == 0 && i < 1'000'000; ++i) {
        elapsed = timer.GetElapsedSeconds();
    }
    EXPECT_GT(elapsed, 0.0);
    EXPECT_LT(elapsed, 10.0);
}

TEST(Profiling, CollectsSamplesPerPeriod) {
    Support::FakeCounter counter;
    Gentra::PerformanceProfiler& profiler = Support::MainContext().GetPerformanceProfiler();
    Gentra::PerformanceStatistics stats;
    auto const sample = [&](std::int64_t milliseconds) {
        stats.SampleStart();
        counter.now += milliseconds;
        stats.SampleStop();
    };
    auto const expect = [&](unsigned int count, double average, double minimum, double maximum) {
        EXPECT_EQ(stats.GetSampleCount(), count);
        EXPECT_NEAR(stats.GetAvgProcessingTime(), average, 1e-12);
        EXPECT_NEAR(stats.GetMinProcessingTime(), minimum, 1e-12);
        EXPECT_NEAR(stats.GetMaxProcessingTime(), maximum, 1e-12);
    };
    sample(100);
    expect(0, 0, 0, 0);
    profiler.StartNewSession();
    sample(200);
    expect(1, 0.2, 0.2, 0.2);
    sample(100);
    sample(300);
    expect(3, 0.2, 0.1, 0.3);
    profiler.StartNewSession();
    expect(3, 0.2, 0.1, 0.3);
    counter.now += 650;
    sample(50);
    expect(1, 0.05, 0.05, 0.05);
    stats.SampleStart();
    profiler.StartNewSession();
    counter.now += 100;
    stats.SampleStop(); // a sample across periods is measured against the new clock
    expect(2, -0.275, -0.6, 0.05);
    stats.SampleStart();
    profiler.StopSession();
    stats.SampleStop();
    expect(0, 0, 0, 0);
    counter.countsPerSecond = 0;
    profiler.StartNewSession();
    sample(100);
    profiler.StopSession();
    expect(1, 0, 0, 0);
}

} // namespace
