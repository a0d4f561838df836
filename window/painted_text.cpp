// window/painted_text.cpp
#include "window/painted_text.h"

#include <exception>

#include <fmt/format.h>

#include "core/log.h"

void drawText(window_system::Painter& painter, std::string_view text, int x, int y, window_system::Colour colour) {
    try {
        painter.text(x, y, text, colour);
    } catch (const std::exception& exception) {
        log(fmt::format("TextOut utf8  to wide failed for '{}': {}", text, exception.what()));
    }
}
