// tools/build_report.h
// What the making of the data files left out, and why.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

class BuildReport {
public:
    /// "airport", "no elevation", "EHAM"
    void leftOut(std::string_view kind, std::string_view cause, std::string_view row) {
        rows_[fmt::format("{}: {}", kind, cause)].emplace_back(row);
    }
    void kept(std::string_view kind, std::size_t count) { kept_.push_back(fmt::format("{} {}", count, kind)); }

    /// How many of what were kept and left out.
    std::string sums() const {
        std::string text;
        for (const std::string& line : kept_) {
            text += line + "\n";
        }
        for (const auto& [cause, rows] : rows_) {
            text += fmt::format("left out {} {}\n", rows.size(), cause);
        }
        return text;
    }

    /// The sums, and then every row.
    std::string text() const {
        std::string text = sums();
        for (const auto& [cause, rows] : rows_) {
            text += fmt::format("\n{}\n", cause);
            for (const std::string& row : rows) {
                text += fmt::format("  {}\n", row);
            }
        }
        return text;
    }

private:
    std::vector<std::string> kept_;
    std::map<std::string, std::vector<std::string>> rows_;
};
