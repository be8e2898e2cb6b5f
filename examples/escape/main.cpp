// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// People who leave a room in a hurry, for several desired speeds: writes what was measured as CSV, and a
// picture of the last speed's first run. plot.gp plots the CSV.

#include "../support/Canvas.h"
#include "../support/Output.h"
#include "Behaviours.h"
#include "Simulation.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using namespace Gentra;

/// Somebody may stand in the door for good: who is alone and wants little is kept off by both posts alike. A
/// run ends when nobody has left for so many seconds.
constexpr double PATIENCE = 60.0;

/// When the panels of the picture are taken, in seconds.
constexpr double MOMENTS[] = {2.0, 12.0, 40.0};
constexpr int PANEL = 420; // pixels

struct Options {
    int people = 200;
    std::vector<float> speeds = {0.6f, 0.8f, 1.0f, 1.25f, 1.5f, 1.75f, 2.0f, 2.5f, 3.0f, 3.5f, 4.0f, 4.5f, 5.0f};
    int seeds = 5;
    float longestStep = 0.002f;
    std::string output = "out";
};

/// Draws the people, coloured by the force that presses them (red from 4000 N on), into one panel of the picture.
void DrawPanel(Example::Canvas& canvas, int panel, Escape::Simulation& simulation) {
    MemberPool& people = simulation.GetPool();
    cairo_t* const cairo = canvas.Get();
    double const scale = PANEL / (static_cast<double>(Escape::SIDE) + 2.5);
    cairo_save(cairo);
    cairo_translate(cairo, panel * PANEL + scale, scale);
    cairo_scale(cairo, scale, scale);
    cairo_set_source_rgb(cairo, 0.2, 0.2, 0.25);
    cairo_set_line_width(cairo, 0.15);
    auto const side = static_cast<double>(Escape::SIDE);
    auto const low = static_cast<double>(Escape::DOOR_LOW);
    auto const high = static_cast<double>(Escape::DOOR_HIGH);
    cairo_move_to(cairo, side + 0.07, low);
    for (auto const& [x, z] : {std::pair(side + 0.07, -0.07),
                               {-0.07, -0.07},
                               {-0.07, side + 0.07},
                               {side + 0.07, side + 0.07},
                               {side + 0.07, high}}) {
        cairo_line_to(cairo, x, z);
    }
    cairo_stroke(cairo);
    int const position = people.GetDataOffsetFromPropertyName("Position");
    int const pressing = people.GetDataOffsetFromPropertyName("Pressure");
    int const radius = people.GetDataOffsetFromPropertyName("Radius");
    for (Member const person : people.GetAllMembers()) {
        auto const at = Datum::Read<Math::Vec3>(person.record + position);
        double const pressure = std::min(static_cast<double>(Datum::Read<float>(person.record + pressing)) / 4000, 1.0);
        cairo_set_source_rgb(cairo, 0.25 + 0.7 * pressure, 0.55 - 0.4 * pressure, 0.75 - 0.6 * pressure);
        canvas.Disc(static_cast<double>(at.x), static_cast<double>(at.z),
                    static_cast<double>(Datum::Read<float>(person.record + radius)));
    }
    cairo_restore(cairo);
    cairo_set_source_rgb(cairo, 0.2, 0.2, 0.25);
    cairo_set_font_size(cairo, 15);
    cairo_move_to(cairo, panel * PANEL + scale, PANEL + 8);
    std::string const caption = std::to_string(std::lround(simulation.GetTime())) + " s, " +
                                std::to_string(simulation.GetLeavingTimes().size()) + " have left";
    cairo_show_text(cairo, caption.c_str());
}

/// Runs until everybody has left, or nobody does any more.
template<class EachStep>
void Run(Escape::Simulation& simulation, EachStep const& eachStep) {
    std::vector<double> const& times = simulation.GetLeavingTimes();
    double const patience = PATIENCE + 30.0; // before the first
    while (simulation.GetNumPeople() > 0 &&
           simulation.GetTime() < (times.empty() ? patience : times.back() + PATIENCE)) {
        simulation.Step();
        eachStep();
    }
}

int Main(Options const& options) {
    Example::Output output("escape", options.output,
                           "desired speed in m/s,seed,people,left,leaving time in s,outflow in 1/s");
    if (!output.CanWrite()) {
        return 1;
    }
    Example::Canvas canvas(3 * PANEL, PANEL + 25, 1, 1, 1);
    std::size_t runs = 0;
    for (float const& speed : options.speeds) {
        for (int seed = 1; seed <= options.seeds; ++seed) {
            std::printf("\rrun %zu of %zu: %.2f m/s, seed %d   ", ++runs,
                        options.speeds.size() * static_cast<std::size_t>(options.seeds), static_cast<double>(speed),
                        seed);
            std::fflush(stdout);
            Escape::Simulation simulation(options.people, speed, options.longestStep, static_cast<std::uint32_t>(seed));
            bool const isDrawn = seed == 1 && &speed == &options.speeds.back();
            int panel = 0;
            Run(simulation, [&] {
                if (isDrawn && panel < 3 && simulation.GetTime() >= MOMENTS[panel]) {
                    DrawPanel(canvas, panel++, simulation);
                }
            });
            while (isDrawn && panel < 3) { // everybody left before
                DrawPanel(canvas, panel++, simulation);
            }
            std::vector<double> const& times = simulation.GetLeavingTimes();
            double const last = times.empty() ? 0 : times.back();
            output.Rows() << speed << ',' << seed << ',' << options.people << ',' << times.size() << ',' << last << ','
                          << (times.empty() ? 0 : static_cast<double>(times.size()) / last) << '\n';
        }
    }
    return output.Finish(canvas);
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("People leave a room through one door, each run with a desired speed and a seed.", "escape");
    app.add_option("--people", options.people, "people in the room")->check(CLI::Range(1, 300))->capture_default_str();
    app.add_option("--speeds", options.speeds, "desired speeds in m/s; the last one is drawn")
        ->check(CLI::Range(0.1, 10.0) & Example::Finite())
        ->capture_default_str();
    app.add_option("--seeds", options.seeds, "runs for each speed")->check(CLI::Range(1, 1000))->capture_default_str();
    app.add_option("--step", options.longestStep, "longest time step in s")
        ->check(CLI::Range(1e-5, 2e-3) & Example::Finite())
        ->capture_default_str();
    app.add_option("--output", options.output, "folder for escape.csv and escape.png")->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    return Main(options);
}
