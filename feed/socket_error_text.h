// feed/socket_error_text.h
// Socket errors in words. Function without state: usable from any thread.
#pragma once

#include <string>

/// "{code} {text}" for an error code of the Windows socket library.
std::string socketErrorText(int code);
