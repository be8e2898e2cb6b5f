// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "Picture.h"

#include <cairo.h>

#include <cmath>
#include <memory>

namespace Flock {

namespace {

using namespace Gentra;

constexpr int SIZE = 1000; // pixels
constexpr double FULL_CIRCLE = 6.283185307179586;

/// Red, green and blue of a hue between 0 and 1.
void SetHue(cairo_t* cairo, double hue) {
    auto const part = [hue](double shift) { return 0.5 + 0.45 * std::cos(FULL_CIRCLE * (hue + shift)); };
    cairo_set_source_rgba(cairo, part(0), part(1.0 / 3), part(2.0 / 3), 0.75);
}

} // namespace

bool WritePicture(std::string const& file, MemberPool& birds, MemberPool& leaders, float box) {
    std::unique_ptr<cairo_surface_t, void (*)(cairo_surface_t*)> const surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, SIZE, SIZE), cairo_surface_destroy);
    std::unique_ptr<cairo_t, void (*)(cairo_t*)> const context(cairo_create(surface.get()), cairo_destroy);
    cairo_t* const cairo = context.get();
    cairo_set_source_rgb(cairo, 0.07, 0.09, 0.13);
    cairo_paint(cairo);
    cairo_translate(cairo, SIZE / 2.0, SIZE / 2.0);
    cairo_scale(cairo, SIZE / static_cast<double>(box), SIZE / static_cast<double>(box));

    auto const vectors = [](MemberPool& pool, char const* name) {
        return [&pool, property = dynamic_cast<VectorProperty*>(pool.GetPropertyFromName(name).Get())](int index) {
            return property != nullptr ? property->GetVectorFromMemberSelection(pool, index) : Math::Vec3();
        };
    };
    auto const position = vectors(birds, "Position");
    auto const velocity = vectors(birds, "Velocity");
    double const length = static_cast<double>(box) / 130;
    for (int i = 0; i < birds.GetNumMembers(); ++i) {
        double const angle = std::atan2(static_cast<double>(velocity(i).z), static_cast<double>(velocity(i).x));
        cairo_save(cairo);
        cairo_translate(cairo, static_cast<double>(position(i).x), static_cast<double>(position(i).z));
        cairo_rotate(cairo, angle);
        cairo_move_to(cairo, length, 0);
        cairo_line_to(cairo, -0.5 * length, 0.35 * length);
        cairo_line_to(cairo, -0.5 * length, -0.35 * length);
        cairo_close_path(cairo);
        SetHue(cairo, angle / FULL_CIRCLE);
        cairo_fill(cairo);
        cairo_restore(cairo);
    }

    auto const leaderPosition = vectors(leaders, "Position");
    cairo_set_source_rgb(cairo, 1, 1, 1);
    for (int i = 0; i < leaders.GetNumMembers(); ++i) {
        cairo_arc(cairo, static_cast<double>(leaderPosition(i).x), static_cast<double>(leaderPosition(i).z),
                  0.7 * length, 0, FULL_CIRCLE);
        cairo_fill(cairo);
    }
    return cairo_surface_write_to_png(surface.get(), file.c_str()) == CAIRO_STATUS_SUCCESS;
}

} // namespace Flock
