// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include <gentra/gentra.h>

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using Gentra::GlobalEventManager;
using Util::Event;
using Util::EventManager;
using Util::EventType;

EventType const ROOT("Family");
EventType const SUB(ROOT, "First", 0);
EventType const OTHER_SUB(ROOT, "Second", 1);

struct Recorder final : Util::EventListener {
    explicit Recorder(std::function<void()> newHandler) : EventListener("Recorder"), handler(std::move(newHandler)) {}
    void HandleEvent(Event const&) override { handler(); }
    using EventListener::registrations;
    std::function<void()> handler;
};

struct EventBus : testing::Test {
    std::string log;
    std::optional<EventManager> manager{std::in_place, "Test"};
    std::optional<Recorder> a{[this] { log += 'a'; }};
    Recorder b{[this] { log += 'b'; }};
    Event const event{SUB, 1, 2, nullptr};
};

TEST_F(EventBus, KeepsOneTypePerHashAndSubIndex) {
    EXPECT_EQ(ROOT.subIndex, -1);
    EXPECT_EQ(ROOT.subName, "Joker");
    EXPECT_EQ(SUB.name, "Family");
    EXPECT_TRUE(EventType(ROOT, "Wild", -1) == ROOT && ROOT < SUB);
    EXPECT_TRUE(ROOT.Matches(SUB) && SUB.Matches(ROOT) && SUB.Matches(SUB));
    EXPECT_FALSE(SUB.Matches(OTHER_SUB) || SUB.Matches(EventType("Stranger")));
    EXPECT_EQ(event.GetType().subName, "First");
    EventType const* const first = manager->RegisterListener(&*a, SUB);
    EXPECT_EQ(manager->RegisterListener(&b, EventType(ROOT, "Renamed", 0)), first);
    EXPECT_EQ(first->subName, "First");
    EXPECT_EQ(manager->RegisterListener(nullptr, SUB), nullptr);
}

TEST_F(EventBus, OutlivesListenersAndTheyIt) {
    for (Recorder* const each : {&*a, &b, &b}) {
        manager->RegisterListener(each, SUB);
        manager->RegisterListener(each, ROOT);
    }
    manager->RemoveListener(&b, SUB);
    manager->RemoveListener(&*a, SUB);
    a.reset();
    manager->Trigger(event);
    EXPECT_EQ(log, "bb");
    manager.reset();
    EXPECT_TRUE(b.registrations.empty());
}

TEST_F(EventBus, ReachesAllThoughAHandlerThrows) {
    for (EventType const& type : {SUB, ROOT}) {
        manager->RegisterListener(&*a, type);
        manager->RegisterListener(&b, type);
    }
    int thrown = 0;
    a->handler = [&] { throw ++thrown; };
    try {
        manager->Trigger(event);
        ADD_FAILURE() << "nothing is thrown on";
    } catch (int which) {
        EXPECT_EQ(which, 1) << "the first one";
    }
    EXPECT_EQ(thrown, 2);
    EXPECT_EQ(log, "bb");
    a->handler = [&] { log += 'a'; };
    manager->Trigger(event);
    EXPECT_EQ(log, "bbabab") << "idle again";
}

TEST_F(EventBus, IsReachedGloballyByTypeAndByRootName) {
    GlobalEventManager::RegisterListener(&*a, Util::String("Family"));
    GlobalEventManager::RegisterListener(&b, SUB);
    GlobalEventManager::Trigger(event);
    GlobalEventManager::RemoveListener(&*a, Util::String("Family"));
    GlobalEventManager::RemoveListener(&b, SUB);
    GlobalEventManager::Trigger(event);
    EXPECT_EQ(log, "ba");
}

constexpr int LISTENERS = 6;

struct RealBus {
    RealBus() {
        for (int i = 0; i < LISTENERS; ++i) {
            listeners.emplace_back([this, i] { handle(i); });
        }
    }
    void Register(int i, EventType const& type) { manager.RegisterListener(&*std::next(listeners.begin(), i), type); }
    void Remove(int i, EventType const& type) { manager.RemoveListener(&*std::next(listeners.begin(), i), type); }
    void Trigger(EventType const& type) { manager.Trigger(Event(type, 0, 0, nullptr)); }

    std::function<void(int)> handle;
    EventManager manager{"Test"};
    std::list<Recorder> listeners;
};

/// The bus told with lists and positions, for comparison.
struct ModelBus {
    void Register(int listener, EventType const& type) { lists[type].push_back(listener); }
    void Remove(int listener, EventType const& type) {
        auto const entry = lists.find(type);
        if (entry == lists.end()) {
            return;
        }
        if (dispatching && *next == listener) {
            while (next != list->end() && *next == listener) {
                ++next;
            }
            dispatching = next != list->end();
        }
        entry->second.remove(listener);
        if (entry->second.empty()) {
            lists.erase(entry);
        }
    }
    void Trigger(EventType const& type) {
        for (EventType const& phase : {type, EventType(type, "", -1)}) {
            auto const entry = lists.find(phase);
            if (entry == lists.end()) {
                continue;
            }
            list = &entry->second;
            next = list->begin();
            dispatching = true;
            while (dispatching) {
                int const listener = *next++;
                dispatching = next != list->end();
                handle(listener);
            }
        }
    }

    std::function<void(int)> handle;
    std::map<EventType, std::list<int>> lists;
    std::list<int>* list = nullptr;
    std::list<int>::iterator next;
    bool dispatching = false;
};

/// Whom a bus calls whose listeners meddle with it at random, told by their numbers.
template<class Bus>
std::string Calls(unsigned int seed) {
    std::mt19937 random(seed);
    std::string log;
    int depth = 0;
    Bus bus;
    auto const meddle = [&] {
        EventType const type = std::array{ROOT, SUB, OTHER_SUB}[random() % 3];
        int const listener = static_cast<int>(random() % LISTENERS);
        switch (random() % 3) {
        case 0:
            bus.Register(listener, type);
            break;
        case 1:
            bus.Remove(listener, type);
            break;
        default:
            if (depth < 3) {
                ++depth;
                bus.Trigger(type);
                --depth;
            }
        }
    };
    bus.handle = [&](int listener) {
        log += static_cast<char>('0' + listener);
        if (log.size() < 400) {
            meddle();
        }
    };
    for (int step = 0; step < 60; ++step) {
        meddle();
    }
    return log;
}

TEST(EventBusModel, AgreesWithTheBusUnderRandomHandlers) {
    for (unsigned int seed = 0; seed < 300; ++seed) {
        ASSERT_EQ(Calls<RealBus>(seed), Calls<ModelBus>(seed)) << "seed " << seed;
    }
}

} // namespace
