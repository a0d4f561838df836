// liveries/livery_halves.cpp
#include "liveries/livery_halves.h"

#include <algorithm>
#include <fstream>
#include <new>
#include <string>
#include <string_view>
#include <system_error>

namespace fs = std::filesystem;

namespace {

/// A declaration that names no encoding: the text is in ours.
constexpr std::string_view ourDeclaration = "<?xml version=\"1.0\"?>";
constexpr std::string_view liveryBegin = "<liv ";
constexpr std::string_view sectionBegin = "<root><liveries>";
constexpr std::string_view sectionEnd = "</liveries></root>";

/// Liveries are shorter, as a rule; where one is not, the file is loaded whole.
constexpr std::size_t searchedBytes = 4096;

/// As much of `bytes` as the file has from the place on.
std::string textAt(std::ifstream& file, std::size_t place, std::size_t bytes) {
    std::string text(bytes, '\0');
    file.clear();
    file.seekg(static_cast<std::streamoff>(place));
    file.read(text.data(), static_cast<std::streamsize>(bytes));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

/// Reads so many bytes behind `before`, and puts `behind` there. The library takes a zero for the end of a text: what
/// stands behind one must not come to light by the cut. Want of memory is left to the library to tell, as of the whole.
bool loadBetween(std::ifstream& file, std::size_t bytes, std::string_view before, std::string_view behind,
                 LiveryHalf& half) {
    const std::size_t size = before.size() + bytes + behind.size();
    half.text.reset(new (std::nothrow) char[size]);
    if (!half.text) {
        return false;
    }
    char* const place = std::copy(before.begin(), before.end(), half.text.get());
    std::copy(behind.begin(), behind.end(), place + bytes);
    file.read(place, static_cast<std::streamsize>(bytes));
    return static_cast<std::size_t>(file.gcount()) == bytes &&
           std::string_view(place, bytes).find('\0') == std::string_view::npos &&
           half.document.load_buffer_inplace(half.text.get(), size).status == pugi::status_ok;
}

/// The one of the cut, as far as can be seen.
bool isSameFile(const fs::path& file, const LiveryCut& cut) {
    std::error_code error;
    return fs::file_size(file, error) == cut.size && !error;
}

} // namespace

pugi::xml_node liveriesIn(const pugi::xml_document& document) {
    return document.child("root").child("liveries");
}

std::optional<LiveryCut> cutOf(const fs::path& file) {
    std::error_code error;
    const std::size_t size = fs::file_size(file, error);
    if (error) {
        return std::nullopt;
    }
    std::ifstream stream(file, std::ios::binary);
    if (textAt(stream, 0, ourDeclaration.size()) != ourDeclaration) {
        return std::nullopt;
    }
    const std::size_t found = textAt(stream, size / 2, searchedBytes).find(liveryBegin);
    return found == std::string::npos ? std::nullopt : std::optional(LiveryCut{size / 2 + found, size});
}

/// What is put at the end must close just what is open there, or the half is no document. Its section must be the one
/// that counts, which is the first.
bool loadFirstHalf(const fs::path& file, const LiveryCut& cut, LiveryHalf& half) {
    std::ifstream stream(file, std::ios::binary);
    if (!isSameFile(file, cut) || !loadBetween(stream, cut.place, "", sectionEnd, half)) {
        return false;
    }
    const pugi::xml_node root = half.document.child("root");
    return root == half.document.last_child() && liveriesIn(half.document) == root.last_child();
}

bool loadSecondHalf(const fs::path& file, const LiveryCut& cut, LiveryHalf& half) {
    std::ifstream stream(file, std::ios::binary);
    if (!isSameFile(file, cut) || textAt(stream, cut.place, liveryBegin.size()) != liveryBegin) {
        return false;
    }
    stream.seekg(static_cast<std::streamoff>(cut.place));
    return loadBetween(stream, cut.size - cut.place, sectionBegin, "", half);
}
