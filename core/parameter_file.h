// core/parameter_file.h
// parameters.xml in the user's roaming application-data folder: read at each start of a run, rewritten at each change.
// One lock goes round each load, change and save, so any thread may save; a save blocks and is not for a timed path.
#pragma once

#include <filesystem>
#include <string_view>

#include "core/parameters.h"

/// The folder of the program under roaming application data, and the file in it.
std::filesystem::path gf_parameterFolder();
std::filesystem::path gf_parameterFile();

/// Reads only the window position, before the window exists. A file that does not load is kept as generation 0 and
/// deleted.
void gf_readWindowPosition();

/// Reads all parameters, adds the missing ones, or writes a fresh file and asks for both scans; shows the values in
/// their controls. After a version change the migration follows. True when the file was created fresh.
bool gf_readParameters();

/// Every setting back to its default, in memory, in the file and in its control; a file that stands there is kept as
/// generation 0.
void gf_writeDefaultParameters();

/// Writes this one value to the file and logs it. A failure is an error line and leaves the file as it was.
void saveParameter(const BoolParameter& parameter);
void saveParameter(const IntParameter& parameter);
void saveParameter(const StringParameter& parameter);

/// Deletes one parameter from the file; true when it was there and the file is saved.
bool removeParameter(std::string_view key);
