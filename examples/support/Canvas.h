// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef EXAMPLES_SUPPORT_CANVAS_H
#define EXAMPLES_SUPPORT_CANVAS_H

#include <cairo.h>

#include <string>

namespace Example {

/// A picture in memory that is drawn with cairo and written as a PNG.
class Canvas {
public:
    /// Sizes are in pixels; the background in red, green and blue from 0 to 1.
    Canvas(int width, int height, double red, double green, double blue);
    Canvas(Canvas const&) = delete;
    Canvas& operator=(Canvas const&) = delete;
    ~Canvas();

    [[nodiscard]] cairo_t* Get() const { return context; }

    // Drawing, in the units that cairo's transformation gives.

    void Disc(double x, double y, double radius);
    /// A dart at a point, along an angle.
    void Dart(double x, double y, double angle, double length);
    /// The colour for a direction: the colours go round with it.
    void SetHue(double angle, double opacity);

    /// Writes the file, making its folder if need be; false when it cannot.
    [[nodiscard]] bool Save(std::string const& file) const;

private:
    cairo_surface_t* surface;
    cairo_t* context;
};

/// Makes the folder of a file, if it has one; false when it cannot.
[[nodiscard]] bool MakeFolderOf(std::string const& file);

} // namespace Example

#endif
