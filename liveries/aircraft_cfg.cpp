// liveries/aircraft_cfg.cpp
#include "liveries/aircraft_cfg.h"

#include <array>
#include <charconv>
#include <cstring>
#include <exception>
#include <fstream>
#include <iterator>
#include <optional>
#include <vector>

#include <fmt/format.h>

#include "core/log.h"
#include "core/text_files.h"
#include "liveries/cfg_line.h"
#include "liveries/cfg_section.h"
#include "liveries/reference_tables.h"
#include "platform/text_encoding.h"

namespace fs = std::filesystem;

namespace {

constexpr int highestSection = 10000;

/// No file of an aircraft comes near it. Each thread keeps a whole file in memory.
constexpr std::uintmax_t mostBytes = 256 << 20;

// --- The text ---

/// As many bytes as there are at this moment; of a file that grows meanwhile, no more. Nothing when reading fails, or
/// when nobody can have meant so many.
std::optional<std::string> wholeFile(std::ifstream& file, const fs::path& path) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    if (error || size > mostBytes) {
        return std::nullopt;
    }
    std::string bytes(size, '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return file.bad() ? std::nullopt : std::optional(std::move(bytes));
}

/// Nothing but the characters 1 to 127: the lines are the bytes themselves, and no detector could say anything else.
bool isPlainText(std::string_view bytes) {
    constexpr std::uint64_t ones = 0x0101010101010101;
    constexpr std::uint64_t highBits = 0x8080808080808080;
    std::uint64_t found = 0; // looked at in the end alone, so that many words are tested at once
    std::size_t at = 0;
    for (; at + sizeof(std::uint64_t) <= bytes.size(); at += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + at, sizeof(word));
        found |= (word - ones) | word;
    }
    for (; at < bytes.size(); ++at) {
        found |= bytes[at] == '\0' || static_cast<unsigned char>(bytes[at]) > 127 ? highBits : 0;
    }
    return !bytes.empty() && (found & highBits) == 0;
}

/// The text of a file in UTF-8. Nothing, with a line in the log, when there is none.
std::optional<std::string> readText(const ScannedFile& file) {
    std::ifstream stream(file.path, std::ios::binary);
    std::optional<std::string> bytes = stream ? wholeFile(stream, file.path) : std::string();
    if (!bytes) {
        log(fmt::format("! Failed reading {}", file.text));
        return std::nullopt;
    }
    if (isPlainText(*bytes)) {
        return bytes;
    }
    const Charset charset = charsetOf(*bytes);
    if (charset == Charset::none_found) {
        log(fmt::format("! No text encoding detected for {}", file.text));
        return std::nullopt;
    }
    std::string text;
    for (const std::string& line : linesOf(charset, *bytes)) {
        text.append(line).append("\n");
    }
    return text;
}

/// Takes the first line off the text; the line is as linesOf makes it.
std::string_view takeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    while (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line;
}

/// A line of a text, and the places where it and the next one begin.
struct LinePlace {
    std::string_view line;
    std::size_t begin;
    std::size_t next;
};

/// The next line that holds `part`. Few do, and the others need no look one by one.
std::optional<LinePlace> lineWith(std::string_view part, std::string_view text, std::size_t from) {
    const std::size_t at = text.find(part, from);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t before = text.rfind('\n', at);
    const std::size_t begin = before == std::string_view::npos ? 0 : before + 1;
    std::string_view rest = text.substr(begin);
    const std::string_view line = takeLine(rest);
    return LinePlace{line, begin, text.size() - rest.size()};
}

// --- The section numbers ---

/// Nothing for a number that does not fit.
std::optional<std::int32_t> parsedNumber(std::string_view digits) {
    std::int32_t number = 0;
    const auto [end, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return fault == std::errc{} ? std::optional(number) : std::nullopt;
}

/// What a line says of the number of a section: nothing when it is no header.
struct SectionNumber {
    std::optional<std::int32_t> number;
    std::string_view unfit; ///< the digits of one that does not fit
};

SectionNumber sectionNumber(std::string_view line) {
    if (line.starts_with("//")) {
        return {};
    }
    if (const auto digits = fltsimDigits(line)) {
        const std::optional<std::int32_t> number = parsedNumber(*digits);
        return number ? SectionNumber{number, {}} : SectionNumber{{}, *digits};
    }
    return mentionsFltsim(line) ? SectionNumber{highestSection, {}} : SectionNumber{};
}

/// Whether the file is to be given up, with a word in the reports or the log, for a number that no section has.
bool isFault(const SectionNumber& found, const ScannedFile& file, ScanState& scan) {
    if (!found.unfit.empty()) {
        logError(fmt::format("fltsim num {} incorrect", found.unfit));
        return true;
    }
    if (found.number > highestSection) {
        scan.reports.add(
            ScanReport::invalidFiles,
            fmt::format("{} contains a [fltsim.x] section with a number < 0 or > {}", file.text, highestSection));
        return true;
    }
    return false;
}

/// The texts of the sections: from the line of a header up to the next line that holds a bracket. Nothing when the file
/// is to be given up.
std::optional<std::vector<std::string_view>> lf_checkFltsimNumbers(const ScannedFile& file, std::string_view text,
                                                                   ScanState& scan) {
    std::vector<std::string_view> sections;
    constexpr std::size_t none = std::string_view::npos;
    std::size_t begin = none; // of the section that has not ended yet
    const auto end = [&](std::size_t at) {
        if (begin != none) {
            sections.push_back(text.substr(begin, at - begin));
        }
        begin = none;
    };
    for (auto found = lineWith("[", text, 0); found; found = lineWith("[", text, found->next)) {
        end(found->begin);
        const SectionNumber number = sectionNumber(found->line);
        if (isFault(number, file, scan)) {
            return std::nullopt;
        }
        if (number.number) {
            begin = found->begin;
        }
    }
    end(text.size());
    if (sections.empty()) {
        scan.reports.add(ScanReport::filesWithoutSections, file.text);
    }
    return sections;
}

// --- The type ---

/// The model itself if there is such a type, or its fix. Nothing, with the report, if there is neither.
std::optional<std::string> typeOfModel(std::string_view model, const ScannedFile& file, ScanState& scan) {
    if (gAllTypes.contains(model)) {
        return std::string(model);
    }
    if (const auto fix = gFixes.find(model); fix != gFixes.end()) {
        scan.reports.add(ScanReport::codeFixes,
                         fmt::format("Model fix: {} found in {} changed into {}", model, file.text, fix->second));
        return fix->second;
    }
    scan.reports.add(ScanReport::invalidModelCodes, fmt::format("{:16} in {}", model, file.text));
    return std::nullopt;
}

std::optional<std::string> typeInText(std::string_view text, const ScannedFile& file, ScanState& scan) {
    for (auto found = lineWith("atc_model", text, 0); found; found = lineWith("atc_model", text, found->next)) {
        if (const auto entry = cfgEntry(untilZero(found->line)); entry && entry->key == CfgKey::atc_model) {
            return typeOfModel(entry->value, file, scan);
        }
    }
    scan.reports.add(ScanReport::invalidFiles,
                     fmt::format("Line atc_model= is missing in [General] section of {}", file.text));
    return std::nullopt;
}

std::optional<std::string> typeInPath(const ScannedFile& file, ScanState& scan) {
    constexpr std::string_view noModel = "  ";
    const auto code = ivaoFolderCode(file.text);
    return typeOfModel(code ? ivaoModel(*code) : noModel, file, scan);
}

// --- The sections ---

/// The lines of a section but for the empty ones and the comments at its end.
std::vector<std::string_view> linesOfSection(std::string_view text) {
    constexpr std::size_t usualLines = 32;
    std::vector<std::string_view> lines;
    lines.reserve(usualLines);
    while (!text.empty()) {
        lines.push_back(takeLine(text));
    }
    while (!lines.empty() && (lines.back().empty() || lines.back().starts_with("//"))) {
        lines.pop_back();
    }
    return lines;
}

std::list<Livery> searchFile(SectionForm form, std::uint32_t scanNumber, const ScannedFile& file, ScanState& scan) {
    std::list<Livery> found;
    const std::optional<std::string> text = readText(file);
    if (!text) {
        return found;
    }
    const auto sections = lf_checkFltsimNumbers(file, *text, scan);
    if (!sections) {
        return found;
    }
    const auto type = form == SectionForm::ordinary ? typeInText(*text, file, scan) : typeInPath(file, scan);
    if (!type) {
        return found;
    }
    const SectionFile sectionFile{file, *type, scanNumber};
    for (const std::string_view section : *sections) {
        if (gf_isScanStopping()) {
            break;
        }
        if (auto livery = lf_procesFltSimSection(form, linesOfSection(section), sectionFile, scan)) {
            found.push_back(std::move(*livery));
        }
    }
    scan.liveriesFound += static_cast<int>(found.size());
    return found;
}

std::list<Livery> searchOrLog(SectionForm form, std::uint32_t scanNumber, const ScannedFile& file, ScanState& scan,
                              const char* routine) {
    ++scan.filesRead;
    try {
        return searchFile(form, scanNumber, file, scan);
    } catch (const std::exception& error) {
        log(fmt::format("! Exception in {} {}: {}", routine, file.text, platform::readableText(error.what())));
    } catch (...) {
        log(fmt::format("! Unknown exception in lf_searchLiveriesinIVAOFile {}", file.text));
    }
    return {};
}

// --- The folder codes of the IVAO form ---

struct CodeEnding {
    std::string_view code;
    std::size_t lettersTooMany;
};

constexpr std::array<CodeEnding, 9> codeEndings{{
    {"B744F", 1},
    {"T154M", 1},
    {"T154B2", 2},
    {"GLID_SH", 3},
    {"GLID_A13", 4},
    {"GLID_A25", 4},
    {"GLID_KA6", 4},
    {"GLID_KA8", 4},
    {"GLID_L13", 4},
}};

} // namespace

std::string_view ivaoModel(std::string_view folderCode) {
    if (folderCode.ends_with('w')) { // with winglets
        folderCode.remove_suffix(1);
    }
    for (const CodeEnding& ending : codeEndings) {
        if (folderCode == ending.code) {
            return folderCode.substr(0, folderCode.size() - ending.lettersTooMany);
        }
    }
    return folderCode;
}

std::list<Livery> lf_searchLiveriesinFile(std::uint32_t scanNumber, const ScannedFile& file, ScanState& scan) {
    return searchOrLog(SectionForm::ordinary, scanNumber, file, scan, "lf_searchLiveriesinFile");
}

std::list<Livery> lf_searchLiveriesinIVAOFile(std::uint32_t scanNumber, const ScannedFile& file, ScanState& scan) {
    return searchOrLog(SectionForm::ivao, scanNumber, file, scan, "lf_searchLiveriesinIVAOFile");
}
