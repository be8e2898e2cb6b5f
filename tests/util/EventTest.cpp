// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include <gentra/gentra.h>

#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using Util::Event;
using Util::EventManager;
using Util::EventType;

EventType const ROOT("Family");
EventType const SUB(ROOT, "First", 0);
EventType const OTHER_SUB(ROOT, "Second", 1);

class Recorder final : public Util::EventListener {
public:
    Recorder(std::string& newLog, char newMark) : EventListener("Recorder"), log(newLog), mark(newMark) {}
    void HandleEvent(Event const& event) override {
        log += mark;
        if (action) {
            action(event);
        }
    }
    using EventListener::registrations;

    std::function<void(Event const&)> action;

private:
    std::string& log;
    char mark;
};

class EventBus : public testing::Test {
protected:
    void Trigger(EventType const& type) { manager.Trigger(Event(type, 0, 0, nullptr)); }
    std::string TakeLog() { return std::exchange(log, {}); }

    std::string log;
    EventManager manager{"Test"};
    Recorder a{log, 'a'};
    Recorder b{log, 'b'};
};

TEST_F(EventBus, ComparesTypesByHashAndSubIndexOnly) {
    EXPECT_EQ(ROOT.subIndex, -1);
    EXPECT_EQ(ROOT.subName, "Joker");
    EXPECT_EQ(SUB.name, "Family");
    EXPECT_TRUE(SUB == EventType(ROOT, "Another name", 0));
    EXPECT_TRUE(EventType(ROOT, "Wild", -1) == ROOT);
    EXPECT_TRUE(ROOT < SUB);
    EXPECT_TRUE(ROOT.Matches(SUB) && SUB.Matches(ROOT) && SUB.Matches(SUB));
    EXPECT_FALSE(SUB.Matches(OTHER_SUB));
    EXPECT_FALSE(SUB.Matches(EventType("Stranger")));
    EXPECT_EQ(Event(SUB, 1, 2, nullptr).GetType().subName, "First");
}

TEST_F(EventBus, KeepsOneTypePerKeyUnderItsFirstNames) {
    EventType const* const first = manager.RegisterListener(&a, SUB);
    EventType const* const second = manager.RegisterListener(&b, EventType(ROOT, "Renamed", 0));
    EXPECT_EQ(first, second);
    EXPECT_EQ(second->subName, "First");
    EXPECT_EQ(manager.RegisterListener(nullptr, SUB), nullptr);
}

TEST_F(EventBus, LosesADestroyedListenerEverywhereInSpiteOfLeftOverRecords) {
    auto passing = std::make_unique<Recorder>(log, 'p');
    for (EventType const& type : {ROOT, SUB, SUB}) {
        manager.RegisterListener(passing.get(), type);
    }
    manager.RemoveListener(passing.get(), SUB); // leaves one record of SUB behind
    passing.reset();
    Trigger(SUB);
    EXPECT_EQ(TakeLog(), "");
}

TEST_F(EventBus, MayBeDestroyedBeforeItsListeners) {
    auto passing = std::make_unique<EventManager>("Passing");
    passing->RegisterListener(&a, SUB);
    passing->RegisterListener(&a, SUB);
    passing->RemoveListener(&a, SUB);
    passing->RegisterListener(&b, ROOT);
    passing.reset();
    EXPECT_TRUE(a.registrations.empty());
    EXPECT_TRUE(b.registrations.empty());
}

TEST_F(EventBus, IsIdleAgainAfterAHandlerThrew) {
    manager.RegisterListener(&a, SUB);
    manager.RegisterListener(&b, SUB);
    a.action = [](Event const&) { throw std::runtime_error("host"); };
    EXPECT_THROW(Trigger(SUB), std::runtime_error);
    manager.RemoveListener(&b, SUB); // must not touch a cursor of the broken delivery
    a.action = nullptr;
    TakeLog();
    Trigger(SUB);
    EXPECT_EQ(TakeLog(), "a");
}

/// The bus told with lists and positions, for comparison.
class ModelBus {
public:
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
    void Trigger(EventType const& type, std::function<void(int)> const& handle) {
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

private:
    std::map<EventType, std::list<int>> lists;
    std::list<int>* list = nullptr;
    std::list<int>::iterator next;
    bool dispatching = false;
};

/// What both do in a handler: decided by counters that run alike in bus and model.
struct Script {
    std::mt19937 random;
    int depth = 0;
    std::string log;

    template<class Register, class Remove, class Trigger>
    void Step(Register const& add, Remove const& remove, Trigger const& trigger) {
        EventType const types[] = {ROOT, SUB, OTHER_SUB};
        EventType const& type = types[random() % 3];
        int const listener = static_cast<int>(random() % 6);
        switch (random() % 6) {
        case 0:
        case 1:
            add(listener, type);
            break;
        case 2:
        case 3:
            remove(listener, type);
            break;
        default:
            if (depth < 3) {
                ++depth;
                trigger(type);
                --depth;
            }
        }
    }
};

TEST(EventBusModel, AgreesWithTheBusUnderRandomHandlers) {
    for (unsigned int seed = 0; seed < 300; ++seed) {
        Script real{std::mt19937(seed), 0, {}};
        Script model{std::mt19937(seed), 0, {}};
        std::string unused;
        EventManager manager("Test");
        std::vector<std::unique_ptr<Recorder>> listeners;
        ModelBus bus;

        std::function<void()> const realStep = [&] {
            real.Step(
                [&](int i, EventType const& type) {
                    manager.RegisterListener(listeners[static_cast<std::size_t>(i)].get(), type);
                },
                [&](int i, EventType const& type) {
                    manager.RemoveListener(listeners[static_cast<std::size_t>(i)].get(), type);
                },
                [&](EventType const& type) { manager.Trigger(Event(type, 0, 0, nullptr)); });
        };
        for (int i = 0; i < 6; ++i) {
            listeners.push_back(std::make_unique<Recorder>(unused, ' '));
            listeners.back()->action = [&, i](Event const&) {
                real.log += static_cast<char>('0' + i);
                if (real.log.size() < 400) {
                    realStep();
                }
            };
        }
        std::function<void()> modelStep;
        std::function<void(int)> const modelHandle = [&](int i) {
            model.log += static_cast<char>('0' + i);
            if (model.log.size() < 400) {
                modelStep();
            }
        };
        modelStep = [&] {
            model.Step([&](int i, EventType const& type) { bus.Register(i, type); },
                       [&](int i, EventType const& type) { bus.Remove(i, type); },
                       [&](EventType const& type) { bus.Trigger(type, modelHandle); });
        };
        for (int step = 0; step < 60; ++step) {
            realStep();
            modelStep();
        }
        ASSERT_EQ(real.log, model.log) << "seed " << seed;
    }
}

TEST(GlobalEvents, AreReachedByTypeAndByRootName) {
    std::string log;
    Recorder byName(log, 'n');
    Recorder byType(log, 't');
    Gentra::GlobalEventManager::RegisterListener(&byName, Util::String("Family"));
    Gentra::GlobalEventManager::RegisterListener(&byType, SUB);
    Gentra::GlobalEventManager::Trigger(Event(SUB, 0, 0, nullptr));
    EXPECT_EQ(log, "tn");
    Gentra::GlobalEventManager::RemoveListener(&byName, Util::String("Family"));
    Gentra::GlobalEventManager::RemoveListener(&byType, SUB);
    Gentra::GlobalEventManager::Trigger(Event(SUB, 0, 0, nullptr));
    EXPECT_EQ(log, "tn");
}

} // namespace
