// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "Canvas.h"

#include <cmath>
#include <filesystem>

namespace Example {

namespace {

constexpr double FULL_CIRCLE = 6.283185307179586;

} // namespace

Canvas::Canvas(int width, int height, double red, double green, double blue)
    : surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)), context(cairo_create(surface)) {
    cairo_set_source_rgb(context, red, green, blue);
    cairo_paint(context);
}

Canvas::~Canvas() {
    cairo_destroy(context);
    cairo_surface_destroy(surface);
}

void Canvas::Disc(double x, double y, double radius) {
    cairo_new_path(context);
    cairo_arc(context, x, y, radius, 0, FULL_CIRCLE);
    cairo_fill(context);
}

void Canvas::Dart(double x, double y, double angle, double length) {
    cairo_save(context);
    cairo_translate(context, x, y);
    cairo_rotate(context, angle);
    cairo_move_to(context, length, 0);
    cairo_line_to(context, -0.5 * length, 0.35 * length);
    cairo_line_to(context, -0.5 * length, -0.35 * length);
    cairo_close_path(context);
    cairo_fill(context);
    cairo_restore(context);
}

void Canvas::SetHue(double angle, double opacity) {
    auto const part = [angle](double shift) { return 0.5 + 0.45 * std::cos(angle + FULL_CIRCLE * shift); };
    cairo_set_source_rgba(context, part(0), part(1.0 / 3), part(2.0 / 3), opacity);
}

bool Canvas::Save(std::string const& file) const {
    return MakeFolderOf(file) && cairo_surface_write_to_png(surface, file.c_str()) == CAIRO_STATUS_SUCCESS;
}

bool MakeFolderOf(std::string const& file) {
    std::filesystem::path const folder = std::filesystem::path(file).parent_path();
    std::error_code error;
    return folder.empty() || std::filesystem::is_directory(folder, error) ||
           std::filesystem::create_directories(folder, error);
}

} // namespace Example
