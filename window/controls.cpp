// window/controls.cpp
#include "window/controls.h"

#include <array>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "core/log.h"
#include "core/parameters.h"
#include "platform/text_encoding.h"
#include "window/install_path.h"
#include "window/painted_text.h"
#include "window/window_layout.h"
#include "window/window_state.h"

using window_system::Painter;

namespace {

constexpr int fieldHeight = 16;

struct EditField {
    const EditParameter& parameter;
    std::string_view label;
    int labelX;
    int x;
    int width;
    void (*takeText)(const std::string& text);
};

const std::array<EditField, 1> editFields{{
    {ALL_INSTALL_PATH, "Install path:", 5, 111, 1200, takeInstallPath},
}};

/// Nothing, with a line in the log, when what stands there is no text.
std::optional<std::string> lf_getTextFromId(int id) {
    try {
        return window_system::controlText(id);
    } catch (const std::exception& exception) {
        log(fmt::format("{}: UTF-16 UTF-8 failed for id {}: {}", "lf_getTextFromId", id, exception.what()));
        return std::nullopt;
    }
}

/// A failure costs what was typed, not the window.
void take(const EditField& field, const std::string& text) {
    try {
        field.takeText(text);
    } catch (const std::exception& exception) {
        logError(fmt::format("{} exception {}", "enterPressed", platform::readableText(exception.what())));
    }
}

} // namespace

void createControls() {
    for (const EditField& field : editFields) {
        const int top = field.parameter.top;
        window_system::createControl(window_system::ControlKind::edit, field.parameter.controlId, "",
                                     {field.x, top, field.x + field.width, top + fieldHeight});
    }
}

void paintLabels(Painter& painter) {
    for (const EditField& field : editFields) {
        drawText(painter, field.label, field.labelX, field.parameter.top, black);
    }
}

void enterPressed(int id) {
    clearMessage();
    const std::optional<std::string> text = lf_getTextFromId(id);
    if (!text) {
        return;
    }
    for (const EditField& field : editFields) {
        if (field.parameter.controlId == id) {
            take(field, *text);
        }
    }
}
