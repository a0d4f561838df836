// liveries/livery_text.h
// The text of LiveriesScanned.xml in the one form that this program writes. With tens of thousands of liveries the XML library
// takes most of its time to build and to walk its document, which a text of one known form does not need; all other texts are
// the library's. Without state: usable from any thread.
#pragma once

#include <initializer_list>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "liveries/livery.h"

/// A line of the "meta" element.
struct MetaInfo {
    std::string_view name;
    std::string value;
};

/// The whole file, byte for byte as the XML library writes it.
std::string liveriesText(std::initializer_list<MetaInfo> meta, const std::list<Livery>& liveries);

/// What a text of that form holds, as views of it; characters that are written as entities are put back, in the text. Nothing
/// where the text differs from the form in any byte, or has no liveries; it may have been changed then.
std::optional<std::vector<LiveryView>> liveriesInText(std::string& text);
