// tools/table.cpp
#include "tools/table.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::size_t noColumn = std::numeric_limits<std::size_t>::max();

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

/// Takes one field off the text, and says whether it was the last of its line.
class FieldReader {
public:
    FieldReader(std::string_view text, char separator) : text_(text), separator_(separator) {}

    bool atEnd() const { return text_.empty(); }

    std::vector<std::string> line() {
        std::vector<std::string> fields;
        do {
            fields.push_back(field());
        } while (!endsLine());
        return fields;
    }

private:
    std::string field() { return text_.starts_with('"') ? quotedField() : plainField(); }

    std::string plainField() {
        const std::size_t end = std::min(text_.find(separator_), std::min(text_.find('\n'), text_.size()));
        std::string result(text_.substr(0, end));
        text_.remove_prefix(end);
        if (result.ends_with('\r')) {
            result.pop_back();
        }
        return result;
    }

    std::string quotedField() {
        std::string result;
        for (text_.remove_prefix(1); !text_.empty(); text_.remove_prefix(1)) {
            if (text_.front() != '"') {
                result += text_.front();
            } else if (text_.substr(1).starts_with('"')) {
                result += '"';
                text_.remove_prefix(1);
            } else {
                text_.remove_prefix(1);
                break;
            }
        }
        return result + plainField(); // whatever stands behind the quotes
    }

    bool endsLine() {
        const bool isSeparator = text_.starts_with(separator_);
        if (!text_.empty()) {
            text_.remove_prefix(1);
        }
        return !isSeparator;
    }

    std::string_view text_;
    char separator_;
};

} // namespace

Table::Table(std::string_view text) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    if (text.starts_with(mark)) {
        text.remove_prefix(mark.size());
    }
    const std::string_view first = text.substr(0, text.find('\n'));
    const bool semicolons = std::count(first.begin(), first.end(), ';') > std::count(first.begin(), first.end(), ',');
    FieldReader reader(text, semicolons ? ';' : ',');
    while (!reader.atEnd()) {
        std::vector<std::string> fields = reader.line();
        if (header_.empty()) {
            std::transform(fields.begin(), fields.end(), fields.begin(), lowerCase);
            header_ = std::move(fields);
        } else {
            rows_.push_back(std::move(fields));
        }
    }
}

std::string_view Table::field(std::size_t row, std::initializer_list<std::string_view> names) const {
    const std::size_t column = columnOf(names);
    return column < rows_.at(row).size() ? std::string_view{rows_[row][column]} : std::string_view{};
}

bool Table::has(std::initializer_list<std::string_view> names) const {
    return columnOf(names) != noColumn;
}

std::size_t Table::columnOf(std::initializer_list<std::string_view> names) const {
    for (const std::string_view name : names) {
        const auto found = std::find(header_.begin(), header_.end(), lowerCase(name));
        if (found != header_.end()) {
            return static_cast<std::size_t>(found - header_.begin());
        }
    }
    return noColumn;
}
