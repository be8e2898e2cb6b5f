// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Runs a flock, prints the build's messages and who took how long, and draws the last frame.

#include "../support/Canvas.h"
#include "Simulation.h"

#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using namespace Gentra;

constexpr int SIZE = 1000; // pixels

struct Options {
    int members = 10'000;
    int frames = 600;
    int seed = 1;
    std::string output = "out/flock.png";
};

/// Draws the box from above: the birds as darts along their course and coloured by it, the hawks as discs.
void Draw(Example::Canvas& canvas, Flock::Simulation& flock) {
    cairo_t* const cairo = canvas.Get();
    auto const box = static_cast<double>(flock.GetBox());
    cairo_translate(cairo, SIZE / 2.0, SIZE / 2.0);
    cairo_scale(cairo, SIZE / box, SIZE / box);
    MemberPool& birds = flock.GetBirds();
    int const position = birds.GetDataOffsetFromPropertyName("Position");
    int const velocity = birds.GetDataOffsetFromPropertyName("Velocity");
    for (Member const bird : birds.GetAllMembers()) {
        auto const at = Datum::Read<Math::Vec3>(bird.record + position);
        auto const course = Datum::Read<Math::Vec3>(bird.record + velocity);
        double const angle = std::atan2(static_cast<double>(course.z), static_cast<double>(course.x));
        canvas.SetHue(angle, 0.8);
        canvas.Dart(static_cast<double>(at.x), static_cast<double>(at.z), angle, box / 170);
    }
    MemberPool& hawks = flock.GetHawks();
    int const hawkPosition = hawks.GetDataOffsetFromPropertyName("Position");
    cairo_set_source_rgb(cairo, 1, 1, 1);
    for (Member const hawk : hawks.GetAllMembers()) {
        auto const at = Datum::Read<Math::Vec3>(hawk.record + hawkPosition);
        canvas.Disc(static_cast<double>(at.x), static_cast<double>(at.z), box / 140);
    }
}

void PrintMessages() {
    std::vector<char> buffer(128 * 1024);
    GlobalMessageManager::GetAllMessages(buffer.data(), static_cast<int>(buffer.size()));
    std::printf("\nMessages of the build, newest first:\n%s\n", buffer.data());
}

void PrintStatistics(std::string const& name, PerformanceStatistics const& stats) {
    std::printf("%-10s %8u %12.6f %12.6f %12.6f\n", name.c_str(), stats.GetSampleCount(),
                1e3 * stats.GetAvgProcessingTime(), 1e3 * stats.GetMinProcessingTime(),
                1e3 * stats.GetMaxProcessingTime());
}

int Main(Options const& options) {
    Flock::Simulation flock(options.members, static_cast<std::uint32_t>(options.seed));
    PerformanceProfiler& profiler = ContextManager::GetMainContext().GetPerformanceProfiler();
    profiler.StartNewSession();
    for (int frame = 1; frame <= options.frames; ++frame) {
        flock.Step();
        if (frame % 20 == 0 || frame == options.frames) {
            std::printf("\rframe %d of %d, %d birds, %d of them tired   ", frame, options.frames,
                        flock.GetBirds().GetNumMembers(),
                        static_cast<int>(flock.GetBirds().GetPropertyFromName("Tired birds")->value));
            std::fflush(stdout);
        }
    }
    profiler.StopSession();
    std::printf("\n");

    PrintMessages();
    std::printf("%-10s %8s %12s %12s %12s\n", "", "samples", "average ms", "minimum ms", "maximum ms");
    for (MemberPool const* const pool : {&flock.GetHawks(), &flock.GetBirds()}) {
        PrintStatistics(pool->GetName(), pool->GetPerformaceStats());
        for (Util::RefCountPtr<Behaviour> const& behaviour : pool->GetAllBehaviours()) {
            PrintStatistics("  " + behaviour->GetName(), behaviour->GetPerformaceStats());
        }
    }

    Example::Canvas canvas(SIZE, SIZE, 0.07, 0.09, 0.13);
    Draw(canvas, flock);
    if (!canvas.Save(options.output)) {
        std::fprintf(stderr, "flock: the picture %s could not be written\n", options.output.c_str());
        return 1;
    }
    std::printf("\nThe picture is in %s\n", options.output.c_str());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("Birds that flock, flee from hawks, drift with the wind and fly home when they are tired.", "flock");
    app.add_option("--members", options.members, "birds")->check(CLI::Range(1, 1'000'000))->capture_default_str();
    app.add_option("--frames", options.frames, "frames to simulate")
        ->check(CLI::Range(0, 1'000'000))
        ->capture_default_str();
    app.add_option("--seed", options.seed, "start of the random numbers")
        ->check(CLI::Range(0, 2'147'483'647))
        ->capture_default_str();
    app.add_option("--output", options.output, "where the picture goes")->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    return Main(options);
}
