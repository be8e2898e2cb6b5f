// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Building and triggering one event.

#include "RatioTable.h"

#include <gentra/gentra.h>

#include <boost/signals2.hpp>

#include <memory>
#include <vector>

namespace {

using Util::Event;
using Util::EventType;

class Counter : public Util::EventListener {
public:
    Counter() : EventListener("Counter") {}
    void HandleEvent(Event const& event) override { count += static_cast<std::uint64_t>(event.param1); }
    std::uint64_t count = 0;
};

EventType const& Type() {
    static EventType const type(EventType("Bench"), "Sub", 1);
    return type;
}

/// So many listeners, and how often each was called per event.
class Audience {
public:
    explicit Audience(benchmark::State const& state) {
        for (int i = 0; i < state.range(0); ++i) {
            listeners.push_back(std::make_unique<Counter>());
        }
    }
    void Report(benchmark::State& state) const {
        std::uint64_t total = 0;
        for (auto const& listener : listeners) {
            total += listener->count;
        }
        Bench::SetResult(state, total / static_cast<std::uint64_t>(state.iterations()) << 12);
    }
    std::vector<std::unique_ptr<Counter>> listeners;
};

void Bus(benchmark::State& state) {
    Audience audience(state);
    Util::EventManager manager("Bench");
    for (auto const& listener : audience.listeners) {
        manager.RegisterListener(listener.get(), Type());
    }
    for (auto _ : state) {
        manager.Trigger(Event(Type(), 1, 0, nullptr));
    }
    audience.Report(state);
}

void PlainLoop(benchmark::State& state) {
    Audience audience(state);
    std::vector<Util::EventListener*> listeners;
    for (auto const& listener : audience.listeners) {
        listeners.push_back(listener.get());
    }
    for (auto _ : state) {
        Event const event(Type(), 1, 0, nullptr);
        for (Util::EventListener* const listener : listeners) {
            listener->HandleEvent(event);
        }
    }
    audience.Report(state);
}

void Signals(benchmark::State& state) {
    Audience audience(state);
    boost::signals2::signal<void(Event const&)> signal;
    for (auto const& listener : audience.listeners) {
        signal.connect([target = listener.get()](Event const& event) { target->HandleEvent(event); });
    }
    for (auto _ : state) {
        signal(Event(Type(), 1, 0, nullptr));
    }
    audience.Report(state);
}

void Register() {
    for (int const listeners : {0, 1, 1000}) {
        benchmark::RegisterBenchmark("events-bus", Bus)->Arg(listeners);
        benchmark::RegisterBenchmark("events-plain", PlainLoop)->Arg(listeners);
        benchmark::RegisterBenchmark("events-signals", Signals)->Arg(listeners);
    }
    Bench::CompareTimes("event, 1000 listeners: bus / plain loop of virtual calls", "events-bus/1000",
                        "events-plain/1000", 1.1);
    Bench::CompareTimes("event, 1 listener: bus / Boost.Signals2", "events-bus/1", "events-signals/1", 0.5);
    Bench::CompareTimes("event, no listener: bus / Boost.Signals2", "events-bus/0", "events-signals/0", 1.0);
}

[[maybe_unused]] int const registered = (Register(), 0);

} // namespace
