// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// A flock of birds that follow leaders, drift with the wind and fly home when they are tired.
//
// The host makes two pools, fills each when it hears that it is being constructed, links behaviours that it
// asks for by name, and drives frames.

#include "Behaviours.h"
#include "Picture.h"

#include <gentra/gentra.h>

#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace Gentra;
using PropertyPtr = Util::RefCountPtr<Property>;
using BehaviourPtr = Util::RefCountPtr<Behaviour>;

constexpr float BOX = 100.0f;
constexpr int LEADERS = 6;

struct Options {
    int members = 10'000;
    int frames = 600;
    int seed = 1;
    std::string output = "out/flock.png";
};

int Refuse(std::string const& reason) {
    std::fprintf(stderr,
                 "flock: %s\n"
                 "usage: flock [--members N] [--frames N] [--seed N] [--output FILE.png]\n"
                 "  --members  birds, 1 to 1000000 (10000)\n"
                 "  --frames   frames to simulate, 0 to 1000000 (600)\n"
                 "  --seed     start of the random numbers, 0 or more (1)\n"
                 "  --output   where the picture goes (out/flock.png)\n",
                 reason.c_str());
    return 2;
}

std::optional<int> Number(char const* text, int lowest, int highest) {
    int number = 0;
    char const* const end = text + std::strlen(text);
    auto const result = std::from_chars(text, end, number);
    bool const isGood = result.ec == std::errc() && result.ptr == end && number >= lowest && number <= highest;
    return isGood ? std::optional<int>(number) : std::nullopt;
}

/// Fills the two pools.
class Host : public Util::EventListener {
public:
    Host() : EventListener("Host") { GlobalEventManager::RegisterListener(this, MemberPool::EVENT_CONSTRUCT); }

    void HandleEvent(Util::Event const& event) override {
        auto& pool = *static_cast<MemberPool*>(event.subject);
        AddValue(pool, "TimeElapsed", 0);
        AddValue(pool, "Box", BOX);
        if (&pool == &leaders) {
            ConstructLeaders();
        } else if (&pool == &birds) {
            ConstructBirds();
        }
    }

    MemberPool leaders{ContextManager::GetMainContext()};
    MemberPool birds{ContextManager::GetMainContext()};

private:
    static void AddValue(MemberPool& pool, char const* propertyName, float value) {
        Parameter parameter;
        parameter.MakePropertyCreationParameter(VALUE, propertyName, false);
        parameter.value = value;
        pool.CreatePoolPropertyFromParameter(parameter, 0);
    }
    static void AddVector(MemberPool& pool, char const* propertyName, Math::Vec3 vector) {
        Parameter parameter;
        parameter.MakePropertyCreationParameter(VECTOR, propertyName, false);
        parameter.vector = vector;
        pool.CreatePoolPropertyFromParameter(parameter, 0);
    }

    /// Links each visible parameter to the pool's property of the same name.
    static void LinkByName(MemberPool& pool, Behaviour& behaviour) {
        for (int i = 0; i < behaviour.GetNumVisibleInterfaceLinks(); ++i) {
            Util::String parameterName;
            PropertyOwner owner = POOL;
            PropertyType type = UNDEFINED;
            bool intrinsic = false;
            behaviour.GetVisibleInterfaceDescription(i, parameterName, owner, type, intrinsic);
            behaviour.LinkPropertyToVisibleInterface(pool.GetPropertyFromName(parameterName), i);
        }
    }

    static BehaviourPtr New(MemberPool& pool, char const* behaviourName) {
        BehaviourPtr behaviour = ContextManager::GetNewBehaviourFromName(behaviourName);
        LinkByName(pool, *behaviour);
        return behaviour;
    }

    void ConstructLeaders() {
        leaders.LinkActiveBehaviour(New(leaders, "Lead"));
        leaders.LinkMemberConstructionBehaviour(New(leaders, "Settle"));
    }

    void ConstructBirds() {
        AddVector(birds, "Wind", {0.8f, 0, 0.3f});
        AddVector(birds, "Home", {0, 0, 0});
        // The leaders are the members of the other pool itself.
        Util::RefCountPtr<MemberSelectionProperty> const leaderProperty(new MemberSelectionProperty("Leaders"));
        leaderProperty->SetBasePoolID(leaders.GetMemberPoolID());
        birds.AddPoolProperty(leaderProperty);

        BehaviourPtr const home = New(birds, "Home");
        Util::RefCountPtr<BehaviourProperty> const goHome(new BehaviourProperty("GoHome"));
        goHome->SetBehaviour(home.Get());
        birds.AddPoolProperty(goHome);

        birds.LinkPassiveBehaviour(home);
        for (char const* const each : {"Steer", "Rest", "Fly"}) {
            birds.LinkActiveBehaviour(New(birds, each));
        }
        birds.LinkMemberConstructionBehaviour(New(birds, "Settle"));
    }
};

void PrintMessages() {
    std::vector<char> buffer(128 * 1024);
    GlobalMessageManager::GetAllMessages(buffer.data(), static_cast<int>(buffer.size()));
    std::printf("\nMessages of the build, newest first:\n%s\n", buffer.data());
}

void PrintStatistics(char const* name, PerformanceStatistics const& stats) {
    std::printf("%-10s %8u %12.6f %12.6f %12.6f\n", name, stats.GetSampleCount(), 1e3 * stats.GetAvgProcessingTime(),
                1e3 * stats.GetMinProcessingTime(), 1e3 * stats.GetMaxProcessingTime());
}

int Run(Options const& options) {
    Flock::RegisterBehaviours(static_cast<std::uint32_t>(options.seed));
    Host host;
    host.leaders.SetName("Leaders");
    host.birds.SetName("Birds");
    Context& context = ContextManager::GetMainContext();
    context.ForceConstructAllMemberPools();
    host.leaders.SetMemberCount(LEADERS);
    host.birds.SetMemberCount(options.members);

    // The birds read the leaders through the pool property.
    MemberSelection* const leaders = &host.leaders;
    host.birds.GetPropertyFromName("Leaders")->SetPoolData(const_cast<MemberSelection**>(&leaders));

    context.GetPerformanceProfiler().StartNewSession();
    for (int frame = 1; frame <= options.frames; ++frame) {
        host.leaders.ProcessMemberPool();
        host.birds.ProcessMemberPool();
        if (frame % 20 == 0 || frame == options.frames) {
            std::printf("\rframe %d of %d, %d birds, %d of them tired ", frame, options.frames,
                        host.birds.GetNumMembers(),
                        static_cast<int>(host.birds.GetPropertyFromName("Tired birds")->value));
            std::fflush(stdout);
        }
    }
    context.GetPerformanceProfiler().StopSession();
    std::printf("\n");

    PrintMessages();
    std::printf("%-10s %8s %12s %12s %12s\n", "", "samples", "average ms", "minimum ms", "maximum ms");
    for (MemberPool const* const pool : {&host.leaders, &host.birds}) {
        PrintStatistics(pool->GetName().c_str(), pool->GetPerformaceStats());
        for (BehaviourPtr const& behaviour : pool->GetAllBehaviours()) {
            PrintStatistics(("  " + behaviour->GetName()).c_str(), behaviour->GetPerformaceStats());
        }
    }

    std::filesystem::path const output(options.output);
    std::error_code error;
    if (output.has_parent_path()) {
        std::filesystem::create_directories(output.parent_path(), error);
    }
    if (error || !Flock::WritePicture(options.output, host.birds, host.leaders, BOX)) {
        std::fprintf(stderr, "flock: the picture could not be written to %s\n", options.output.c_str());
        return 1;
    }
    std::printf("\nThe picture is in %s\n", options.output.c_str());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; i += 2) {
        std::string const option = argv[i];
        if (option != "--members" && option != "--frames" && option != "--seed" && option != "--output") {
            return Refuse("there is no option " + option);
        }
        if (i + 1 == argc) {
            return Refuse(option + " needs a value");
        }
        if (option == "--output") {
            options.output = argv[i + 1];
            continue;
        }
        bool const isMembers = option == "--members";
        std::optional<int> const number =
            Number(argv[i + 1], isMembers ? 1 : 0, option == "--seed" ? 2'147'483'647 : 1'000'000);
        if (!number) {
            return Refuse(std::string(argv[i + 1]) + " is no value for " + option);
        }
        (isMembers ? options.members : option == "--frames" ? options.frames : options.seed) = *number;
    }
    return Run(options);
}
