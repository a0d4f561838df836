// LiveriesScanned.xml in two halves, each a document that can be loaded on a thread of its own. Usable from any thread.
//
// The XML library loads a text on one thread, which takes as long as most of what is then made of it. A file that is cut
// before a livery makes two documents, when each half gets what it lacks: the first one the ends of the elements that
// are open there, the second one their beginnings.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>

#include <pugixml.hpp>

struct LiveryHalf {
    std::unique_ptr<char[]> text; ///< what the document views
    pugi::xml_document document;
};

/// Where a livery begins in the middle of the file. Nothing where the file does not begin as ours do, and so may be
/// written in another encoding, or where no livery is found there.
std::optional<std::size_t> placeToCut(const std::filesystem::path& file);

/// Loads what stands before the place. False when that is no sound document with the section of liveries at its end;
/// the file must then be loaded in one piece, as well as when the other half cannot be loaded.
bool loadFirstHalf(const std::filesystem::path& file, std::size_t cut, LiveryHalf& half);

/// Loads the rest.
bool loadSecondHalf(const std::filesystem::path& file, std::size_t cut, LiveryHalf& half);

/// The section of liveries of a document, whole or half.
pugi::xml_node liveriesIn(const pugi::xml_document& document);
