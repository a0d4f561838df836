// tests/support/damaged_containers.h
// What may become of a sealed data file on its way: one table for all that read such files.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct DamagedContainer {
    std::string name;
    /// Nothing: there is no file.
    std::optional<std::string> bytes;
    /// What its opening complains of; empty when it opens all the same, to the first part of the text.
    std::string failure;
};

/// Containers of an XML text of less than two chunks, none of which can be read to the end. The text is widened to two
/// and a half chunks by blanks before its last tag. Writes a file into the working folder, and removes it.
std::vector<DamagedContainer> damagedContainers(std::string_view xml);

/// Containers that are not as they were made, and still hold the whole text, with blanks behind it.
std::vector<DamagedContainer> toleratedContainers(std::string_view xml);

/// Puts it in the place of a data file.
void install(const DamagedContainer& container, const char* path);

/// Whether it still stands there, to the byte.
bool isInstalled(const DamagedContainer& container, const char* path);
