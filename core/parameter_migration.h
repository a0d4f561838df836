// core/parameter_migration.h
// What a new version of the program does to the settings and files of the version before it.
// Run thread, right after the parameters were read.
#pragma once

/// Brings the settings up to this version and deletes what earlier versions left in the program's folder. Nothing when
/// the stored version is this one; a stored version that is none is one error line, and this one takes its place.
/// Throws std::filesystem::filesystem_error when a left-over cannot be deleted; the settings are in their new form by
/// then.
void gf_migrateParameters();
