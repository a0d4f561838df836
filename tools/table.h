// tools/table.h
// Tables as they are commonly published: text with separators and a header line.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

class Table {
public:
    /// Reads text whose first line names the columns; the separator is the comma or the semicolon, whichever that line
    /// has more of. A field may stand in double quotes, with "" for one of them; a mark at the begin of the text is
    /// passed over.
    explicit Table(std::string_view text);

    std::size_t size() const { return rows_.size(); }
    /// The first of the columns that the table has, by its name in whatever case, in a row; empty when it has none of
    /// them or the row is too short.
    std::string_view field(std::size_t row, std::initializer_list<std::string_view> names) const;
    bool has(std::initializer_list<std::string_view> names) const;

private:
    std::size_t columnOf(std::initializer_list<std::string_view> names) const;

    std::vector<std::string> header_;
    std::vector<std::vector<std::string>> rows_;
};
