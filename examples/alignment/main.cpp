// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Self-driven particles that align with their neighbours, for several levels of noise and sizes of the crowd:
// writes the order parameter as CSV, and a picture of the largest crowd. plot.gp plots the CSV.

#include "../support/Canvas.h"
#include "../support/Output.h"
#include "Simulation.h"

#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdio>
#include <string>

namespace {

using namespace Gentra;

/// Crowds of one density.
struct Crowd {
    int particles;
    float side;
};
constexpr Crowd CROWDS[] = {{40, 3.1f}, {100, 5.0f}, {400, 10.0f}};
constexpr float FULL_TURN = 6.2831853f;
constexpr float NOISES[] = {0.1f, 0.5f, 1.0f, 1.5f, 2.0f, 2.5f, 3.0f, 3.5f, 4.0f, 4.5f, 5.0f, 5.5f, FULL_TURN};

/// The noises of the panels of the picture.
constexpr float DRAWN[] = {0.5f, 3.0f, 5.5f};
constexpr int PANEL = 420; // pixels

struct Options {
    int steps = 10'000;
    int seeds = 3;
    std::string output = "out";
};

void DrawPanel(Example::Canvas& canvas, int panel, Alignment::Simulation& simulation, float side, float noise) {
    MemberPool& particles = simulation.GetPool();
    cairo_t* const cairo = canvas.Get();
    cairo_save(cairo);
    cairo_translate(cairo, panel * PANEL + 5, 5);
    cairo_set_source_rgb(cairo, 0.07, 0.09, 0.13);
    cairo_rectangle(cairo, 0, 0, PANEL - 10, PANEL - 10);
    cairo_fill_preserve(cairo);
    cairo_clip(cairo);
    double const scale = (PANEL - 10) / static_cast<double>(side);
    cairo_scale(cairo, scale, scale);
    int const position = particles.GetDataOffsetFromPropertyName("Position");
    int const heading = particles.GetDataOffsetFromPropertyName("Heading");
    for (Member const particle : particles.GetAllMembers()) {
        auto const at = Datum::Read<Math::Vec3>(particle.record + position);
        auto const angle = static_cast<double>(Datum::Read<float>(particle.record + heading));
        canvas.SetHue(angle, 0.9);
        canvas.Dart(static_cast<double>(at.x), static_cast<double>(at.z), angle, 0.18);
    }
    cairo_restore(cairo);
    cairo_set_source_rgb(cairo, 0.2, 0.2, 0.25);
    cairo_set_font_size(cairo, 15);
    cairo_move_to(cairo, panel * PANEL + 8, PANEL + 14);
    char caption[64];
    std::snprintf(caption, sizeof caption, "noise %.1f: order %.2f", static_cast<double>(noise), simulation.Order());
    cairo_show_text(cairo, caption);
}

int Main(Options const& options) {
    Example::Output output("alignment", options.output, "particles,side,noise,seed,order parameter");
    if (!output.CanWrite()) {
        return 1;
    }
    Example::Canvas canvas(3 * PANEL, PANEL + 25, 1, 1, 1);
    std::size_t runs = 0;
    for (Crowd const& crowd : CROWDS) {
        for (float const noise : NOISES) {
            for (int seed = 1; seed <= options.seeds; ++seed) {
                std::printf("\rrun %zu of %zu: %d particles, noise %.2f, seed %d   ", ++runs,
                            std::size(CROWDS) * std::size(NOISES) * static_cast<std::size_t>(options.seeds),
                            crowd.particles, static_cast<double>(noise), seed);
                std::fflush(stdout);
                Alignment::Simulation simulation(crowd.particles, crowd.side, noise, static_cast<std::uint32_t>(seed));
                double sum = 0;
                // The first fifth is the way to the steady state.
                for (int step = -options.steps / 4; step < options.steps; ++step) {
                    simulation.Step();
                    sum += step >= 0 ? simulation.Order() : 0;
                }
                output.Rows() << crowd.particles << ',' << crowd.side << ',' << noise << ',' << seed << ','
                              << sum / options.steps << '\n';
                for (int panel = 0; panel < 3; ++panel) {
                    if (crowd.particles == CROWDS[2].particles && seed == 1 && noise == DRAWN[panel]) {
                        DrawPanel(canvas, panel, simulation, crowd.side, noise);
                    }
                }
            }
        }
    }
    return output.Finish(canvas);
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("Particles take the mean heading of their neighbours, with noise.", "alignment");
    app.add_option("--steps", options.steps, "steps that are measured in each run")
        ->check(CLI::Range(1, 10'000'000))
        ->capture_default_str();
    app.add_option("--seeds", options.seeds, "runs for each crowd and noise")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    app.add_option("--output", options.output, "folder for alignment.csv and alignment.png")->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    return Main(options);
}
