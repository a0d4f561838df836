// rig/report/canvas.h
// A picture to draw on, in pixels from its left upper corner, and a frame to plot values in.
// Belongs to whoever draws.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

struct _cairo;
struct _cairo_surface;

namespace rig {

struct Colour {
    double red = 0;
    double green = 0;
    double blue = 0;
};

struct Pixel {
    double x = 0;
    double y = 0;
};

struct Box {
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
};

class Canvas {
public:
    /// White. Throws std::runtime_error when there is no memory for it.
    Canvas(int width, int height);

    void text(const Pixel& at, const std::string& text, double size, const Colour& colour, bool isBold = false);
    /// The text ends at the point instead of beginning there.
    void textEndingAt(const Pixel& at, const std::string& text, double size, const Colour& colour);
    void line(const std::vector<Pixel>& points, const Colour& colour, double width);
    void dot(const Pixel& at, double radius, const Colour& colour);
    void ring(const Pixel& at, double radius, const Colour& colour, double width);
    void frame(const Box& box, const Colour& colour);
    /// What is drawn until unclip() is cut off at the box.
    void clip(const Box& box);
    void unclip();

    /// As PNG. Throws std::runtime_error when it cannot be written.
    void write(const std::filesystem::path& file) const;

private:
    void choose(const Colour& colour);

    std::unique_ptr<_cairo_surface, void (*)(_cairo_surface*)> surface_;
    std::unique_ptr<_cairo, void (*)(_cairo*)> context_;
};

} // namespace rig
