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
constexpr std::size_t expectedLines = 4096;

// --- The text ---

/// A file as lines of UTF-8.
struct CfgText {
    std::string bytes;
    std::vector<std::string> converted; // in place of bytes, where they are not what the lines are made of
    std::vector<std::string_view> lines;
};

/// As many bytes as there are at this moment; of a file that grows meanwhile, no more. Nothing when reading fails.
std::optional<std::string> wholeFile(std::ifstream& file, const fs::path& path) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    if (error) {
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
    std::size_t at = 0;
    for (; at + sizeof(std::uint64_t) <= bytes.size(); at += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + at, sizeof(word));
        if ((((word - ones) | word) & highBits) != 0) {
            return false;
        }
    }
    for (; at < bytes.size(); ++at) {
        if (bytes[at] == '\0' || static_cast<unsigned char>(bytes[at]) > 127) {
            return false;
        }
    }
    return !bytes.empty();
}

/// As linesOf does it.
void splitLines(std::string_view text, std::vector<std::string_view>& lines) {
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        while (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        lines.push_back(line);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

/// False, with a line in the log, when the file has no text.
bool readText(const ScannedFile& file, CfgText& text) {
    std::ifstream stream(file.path, std::ios::binary);
    if (stream) {
        std::optional<std::string> bytes = wholeFile(stream, file.path);
        if (!bytes) {
            log(fmt::format("! Failed reading {}", file.text));
            return false;
        }
        text.bytes = std::move(*bytes);
    }
    text.lines.reserve(expectedLines);
    if (isPlainText(text.bytes)) {
        splitLines(text.bytes, text.lines);
        return true;
    }
    const Charset charset = charsetOf(text.bytes);
    if (charset == Charset::none_found) {
        log(fmt::format("! No text encoding detected for {}", file.text));
        return false;
    }
    text.converted = linesOf(charset, text.bytes);
    text.bytes = {};
    text.lines.assign(text.converted.begin(), text.converted.end());
    return true;
}

// --- The section numbers ---

enum class LineKind : std::uint8_t { other, header, otherBracket };

/// Nothing for a number that does not fit.
std::optional<std::int32_t> parsedNumber(std::string_view digits) {
    std::int32_t number = 0;
    const auto [end, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return fault == std::errc{} ? std::optional(number) : std::nullopt;
}

struct NumberedLines {
    std::vector<LineKind> kinds; // of each line
    bool anyHeader = false;
};

/// The number of a header, or what stands for it; none for a line that is no header. Throws nothing; a number that does not
/// fit is the text that the log shows.
struct SectionNumber {
    std::optional<std::int32_t> number;
    std::string_view unfit;
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

/// What each line is. Nothing, with a word in the reports or the log, when the file is to be given up.
std::optional<NumberedLines> lf_checkFltsimNumbers(const ScannedFile& file, const CfgText& text, ScanState& scan) {
    NumberedLines result;
    result.kinds.assign(text.lines.size(), LineKind::other);
    for (std::size_t i = 0; i < text.lines.size(); ++i) {
        const std::string_view line = text.lines[i];
        if (line.find('[') == std::string_view::npos) {
            continue;
        }
        const SectionNumber found = sectionNumber(line);
        if (!found.unfit.empty()) {
            logError(fmt::format("fltsim num {} incorrect", found.unfit));
            return std::nullopt;
        }
        if (found.number > highestSection) {
            scan.reports.add(
                ScanReport::invalidFiles,
                fmt::format("{} contains a [fltsim.x] section with a number < 0 or > {}", file.text, highestSection));
            return std::nullopt;
        }
        result.kinds[i] = found.number ? LineKind::header : LineKind::otherBracket;
        result.anyHeader = result.anyHeader || found.number;
    }
    if (!result.anyHeader) {
        scan.reports.add(ScanReport::filesWithoutSections, file.text);
    }
    return result;
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

std::optional<std::string> typeInText(const CfgText& text, const ScannedFile& file, ScanState& scan) {
    for (const std::string_view line : text.lines) {
        if (const auto entry = cfgEntry(line); entry && entry->key == CfgKey::atc_model) {
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

void dropTrailingComments(std::vector<std::string_view>& section) {
    while (!section.empty() && (section.back().empty() || section.back().starts_with("//"))) {
        section.pop_back();
    }
}

/// Calls `process` with each section's lines.
template <typename Process>
void cutSections(const CfgText& text, const std::vector<LineKind>& kinds, Process process) {
    std::vector<std::string_view> section;
    bool isCollecting = false;
    const auto finish = [&section, &process] {
        dropTrailingComments(section);
        if (!section.empty()) {
            process(CfgLines(section));
        }
        section.clear();
    };
    for (std::size_t i = 0; i < text.lines.size(); ++i) {
        if (kinds[i] == LineKind::header) {
            finish();
        }
        if (kinds[i] != LineKind::other) {
            isCollecting = kinds[i] == LineKind::header;
        }
        if (isCollecting) {
            section.push_back(text.lines[i]);
        }
    }
    finish();
}

std::list<Livery> searchFile(SectionForm form, std::uint32_t scanNumber, const ScannedFile& file, ScanState& scan) {
    CfgText text;
    std::list<Livery> found;
    if (!readText(file, text)) {
        return found;
    }
    const std::optional<NumberedLines> numbered = lf_checkFltsimNumbers(file, text, scan);
    if (!numbered) {
        return found;
    }
    const auto type = form == SectionForm::ordinary ? typeInText(text, file, scan) : typeInPath(file, scan);
    if (!type) {
        return found;
    }
    const SectionFile sectionFile{file, *type, scanNumber};
    cutSections(text, numbered->kinds, [&](CfgLines section) {
        if (gf_isScanStopping()) {
            return;
        }
        if (auto livery = lf_procesFltSimSection(form, section, sectionFile, scan)) {
            found.push_back(std::move(*livery));
        }
    });
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
