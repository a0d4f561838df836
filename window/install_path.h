// window/install_path.h
// The simulator's folder as the user types it. Window thread only.
#pragma once

#include <string>

/// Stores the folder and starts a new run with it; an empty text only forgets the stored one, for this run. What is no
/// folder, or cannot be looked at, is told in the message line, and in place of an error that asks for the path; no
/// setting changes then. The quotes round a path that was copied from the file manager do not count.
void takeInstallPath(const std::string& typed);
