// LiveriesScanned.xml in two halves, each a document that can be loaded on a thread of its own. Usable from any thread.
// A file that is cut before a livery makes two documents, when each half gets what it lacks: the first one the ends of
// the elements that are open there, the second one their beginnings.
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

struct LiveryCut {
    std::size_t place = 0; ///< where a livery begins, behind the middle
    std::size_t size = 0;  ///< of the file
};

/// Nothing where the file does not begin as ours do, and so may be written in another encoding, or where no livery
/// begins soon behind its middle.
std::optional<LiveryCut> cutOf(const std::filesystem::path& file);

/// Loads what stands before the cut. False when that is no sound document with the section of liveries at its end, or
/// the file is not the one of the cut any more. Then, as when the other half cannot be loaded, it must be loaded whole.
bool loadFirstHalf(const std::filesystem::path& file, const LiveryCut& cut, LiveryHalf& half);

/// Loads the rest. False when that is no sound document, or the file has changed.
bool loadSecondHalf(const std::filesystem::path& file, const LiveryCut& cut, LiveryHalf& half);

/// The section of liveries of a document, whole or half.
pugi::xml_node liveriesIn(const pugi::xml_document& document);
