// core/log.h
// Log.txt: plain lines, and error lines behind "==> ". Ordinary lines are buffered until the next flush.
// Usable from any thread; gLogMutex guards the stream.
#pragma once

#include <ctime>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/clock.h"

/// Guards the log stream; a leaf: nothing else is taken while it is held.
extern std::mutex gLogMutex;

/// Keeps up to three older copies of Log.txt, opens a new one in the working directory and writes the first line.
/// Throws std::runtime_error "Failed to write file " followed by the path.
void gf_openLog();
void gf_closeLog();
void gf_flushLog();

/// One line; nothing while the log is not open.
void log(std::string_view text);
/// One line behind "==> ", and a flush.
void logError(std::string_view text);
/// log, unless the run is stopping.
void logUnlessStopping(std::string_view text);

/// A section heading: a rule of 80 characters with the title in it. Without a title it is the closing rule.
void logHeading(std::string_view title);
/// A banner of asterisks of this width with the title in it, or without one. A title that is too wide stands in full.
std::string bannerLine(std::string_view title, std::size_t width);

/// "{:3} {:3} {:02} {:02}:{:02}:{:02} {:4}": weekday, month, day, hour, minute, second, year. A month or weekday out of
/// range is "???".
std::string timeText(const std::tm& utc);
/// The same for a moment. "Invalid time" for one before 1970, which the system cannot break down.
std::string timeLine(platform::WallTime time);
/// Hours, minutes and seconds of now, UTC, with colons.
std::string clockNow();
