// rig/report/canvas.cpp
#include "rig/report/canvas.h"

#include <fstream>
#include <numbers>
#include <stdexcept>

#include <cairo.h>

#include "platform/files.h"
#include "platform/text_encoding.h"

namespace rig {

namespace {

cairo_status_t append(void* to, const unsigned char* bytes, unsigned int count) {
    auto& file = *static_cast<std::ofstream*>(to);
    file.write(reinterpret_cast<const char*>(bytes), count);
    return file ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_WRITE_ERROR;
}

} // namespace

Canvas::Canvas(int width, int height)
    : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height), cairo_surface_destroy),
      context_(cairo_create(surface_.get()), cairo_destroy) {
    if (cairo_status(context_.get()) != CAIRO_STATUS_SUCCESS) {
        throw std::runtime_error("no memory for a picture");
    }
    choose({1, 1, 1});
    cairo_paint(context_.get());
    cairo_set_line_join(context_.get(), CAIRO_LINE_JOIN_ROUND);
}

void Canvas::choose(const Colour& colour) {
    cairo_set_source_rgb(context_.get(), colour.red, colour.green, colour.blue);
}

void Canvas::text(const Pixel& at, const std::string& text, double size, const Colour& colour, bool isBold) {
    choose(colour);
    cairo_select_font_face(context_.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                           isBold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context_.get(), size);
    cairo_move_to(context_.get(), at.x, at.y);
    // Of text that is no UTF-8 the context would take offence, and draw nothing any more.
    cairo_show_text(context_.get(), platform::readableText(text).c_str());
    cairo_new_path(context_.get());
}

void Canvas::textEndingAt(const Pixel& at, const std::string& text, double size, const Colour& colour) {
    cairo_select_font_face(context_.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context_.get(), size);
    cairo_text_extents_t extents;
    cairo_text_extents(context_.get(), platform::readableText(text).c_str(), &extents);
    this->text({at.x - extents.x_advance, at.y}, text, size, colour);
}

void Canvas::line(const std::vector<Pixel>& points, const Colour& colour, double width) {
    choose(colour);
    cairo_set_line_width(context_.get(), width);
    for (const Pixel& point : points) {
        cairo_line_to(context_.get(), point.x, point.y);
    }
    cairo_stroke(context_.get());
}

void Canvas::dot(const Pixel& at, double radius, const Colour& colour) {
    choose(colour);
    cairo_arc(context_.get(), at.x, at.y, radius, 0, 2 * std::numbers::pi);
    cairo_fill(context_.get());
}

void Canvas::ring(const Pixel& at, double radius, const Colour& colour, double width) {
    choose(colour);
    cairo_set_line_width(context_.get(), width);
    cairo_arc(context_.get(), at.x, at.y, radius, 0, 2 * std::numbers::pi);
    cairo_stroke(context_.get());
}

void Canvas::frame(const Box& box, const Colour& colour) {
    choose(colour);
    cairo_set_line_width(context_.get(), 1);
    cairo_rectangle(context_.get(), box.left, box.top, box.width, box.height);
    cairo_stroke(context_.get());
}

void Canvas::clip(const Box& box) {
    cairo_save(context_.get());
    cairo_rectangle(context_.get(), box.left, box.top, box.width, box.height);
    cairo_clip(context_.get());
}

void Canvas::unclip() {
    cairo_restore(context_.get());
}

void Canvas::write(const std::filesystem::path& file) const {
    std::ofstream to(file, std::ios::binary | std::ios::trunc);
    const bool isWritten = to && cairo_surface_write_to_png_stream(surface_.get(), append, &to) == CAIRO_STATUS_SUCCESS;
    to.close();
    if (!isWritten || !to) {
        throw std::runtime_error("cannot write " + platform::utf8FromPath(file));
    }
}

} // namespace rig
