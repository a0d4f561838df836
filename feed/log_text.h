// feed/log_text.h
// Text from the network, made fit for the log. Function without state: usable from any thread.
#pragma once

#include <string>
#include <string_view>

/// The text as one line of valid UTF-8: control characters, and all bytes outside ASCII when the text is no UTF-8,
/// become question marks. Any other text comes back unchanged.
std::string asLogText(std::string_view text);
