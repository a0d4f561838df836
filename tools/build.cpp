// tools/build.cpp
#include "tools/build.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>

#include "core/number_text.h"
#include "platform/files.h"
#include "tools/build_report.h"
#include "tools/files.h"
#include "tools/table.h"

namespace fs = std::filesystem;

namespace {

using Codes = std::set<std::string>;

constexpr double metersPerFoot = 0.3048;
/// The share of occupied stands that the program goes by, as the directory tells it: 3 is the ordinary one.
constexpr int ordinaryStands = 3;
constexpr std::size_t codesPerElement = 50;

struct Section {
    const char* name;
    const char* element;
    const char* attribute;
};

/// The category sections, in the order in which the program asks them.
constexpr std::array categorySections{
    Section{"large", "lar", "types"},
    Section{"heavy", "hvy", "types"},
    Section{"buzjet", "bzj", "types"},
    Section{"rotorcraft", "rot", "types"},
    Section{"high_performance", "hpf", "types"},
};

/// What is taken from the extra file as it stands.
constexpr std::array copiedSections{"cargo_types", "similar_types", "cargo_operators", "publishers",
                                    "fixes",       "simaddonsP3D",  "thirdpartiesP3D"};

bool isCode(std::string_view text, std::size_t least, std::size_t most, bool withHyphen = false) {
    const auto isAllowed = [withHyphen](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || (withHyphen && c == '-');
    };
    return text.size() >= least && text.size() <= most && std::all_of(text.begin(), text.end(), isAllowed);
}

bool isJson(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    return begin != std::string_view::npos && text[begin] == '{';
}

nlohmann::json jsonOf(const std::string& text, const fs::path& path) {
    nlohmann::json document = nlohmann::json::parse(text, nullptr, false);
    if (!document.is_object()) {
        throw std::runtime_error(platform::utf8FromPath(path) + " is no JSON object");
    }
    return document;
}

/// The text at a place of a JSON list; empty when there is none.
std::string textAt(const nlohmann::json& list, std::size_t place) {
    return list.is_array() && place < list.size() && list[place].is_string() ? list[place].get<std::string>() : "";
}

// --- Types ---

struct Type {
    std::string kind; ///< "L2J": land, two engines, jet
    std::string wake; ///< L, M, H or J
};
using Types = std::map<std::string, Type>;

void addType(Types& types, const std::string& code, Type type, BuildReport& report) {
    if (!isCode(code, 2, 4)) {
        report.leftOut("type", "no designator", code);
    } else if (!types.emplace(code, std::move(type)).second) {
        report.leftOut("type", "twice", code);
    }
}

Types readTypes(const fs::path& path, BuildReport& report) {
    Types types;
    const std::string text = wholeFile(path);
    if (isJson(text)) {
        const nlohmann::json document = jsonOf(text, path);
        for (const auto& [code, row] : document.items()) {
            addType(types, code, {textAt(row, 1), textAt(row, 2)}, report);
        }
        return types;
    }
    const Table table(text);
    for (std::size_t row = 0; row < table.size(); ++row) {
        addType(
            types, std::string(table.field(row, {"designator", "icao", "icao code", "typecode"})),
            {std::string(table.field(row, {"class", "description"})), std::string(table.field(row, {"wake", "wtc"}))},
            report);
    }
    return types;
}

/// The section of a type by its class; null for light aircraft. A single-engine jet of more than light weight is a
/// fighter.
const char* sectionOfClass(const Type& type) {
    const bool isJet = type.kind.ends_with('J');
    const bool isTurbine = isJet || type.kind.ends_with('T');
    const bool hasOneEngine = type.kind.size() == 3 && type.kind[1] == '1';
    if (type.kind.starts_with('H') || type.kind.starts_with('G') || type.kind.starts_with('R')) {
        return "rotorcraft";
    }
    if (type.wake == "H" || type.wake == "J") {
        return "heavy";
    }
    if (type.wake == "M" && isTurbine) {
        return isJet && hasOneEngine ? "high_performance" : "large";
    }
    return isJet && type.wake == "L" ? "buzjet" : nullptr;
}

Codes codesOf(const pugi::xml_node& section, const Section& rule) {
    Codes codes;
    for (const pugi::xml_node& element : section.children(rule.element)) {
        std::string_view list = element.attribute(rule.attribute).as_string();
        while (!list.empty()) {
            const std::size_t comma = std::min(list.find(','), list.size());
            std::string code(list.substr(0, comma));
            std::erase_if(code, [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
            codes.insert(code);
            list.remove_prefix(std::min(comma + 1, list.size()));
        }
    }
    codes.erase("");
    return codes;
}

using Categories = std::map<std::string, Codes>;

/// What the extra file says goes before the class.
Categories categoriesOf(Types& types, const pugi::xml_node& extra) {
    Categories categories;
    Codes placed;
    for (const Section& rule : categorySections) {
        for (const std::string& code : codesOf(extra.child(rule.name), rule)) {
            categories[rule.name].insert(code);
            placed.insert(code);
            types.try_emplace(code);
        }
    }
    for (const auto& [code, type] : types) {
        const char* const section = sectionOfClass(type);
        if (section != nullptr && !placed.contains(code)) {
            categories[section].insert(code);
        }
    }
    return categories;
}

// --- Wing spans ---

using Spans = std::map<std::string, double>;

std::optional<double> spanMeters(const Table& table, std::size_t row) {
    if (table.has({"wingspan- ft", "wingspan_ft"})) {
        const auto feet = parseDouble(table.field(row, {"wingspan- ft", "wingspan_ft"}));
        return feet ? std::optional<double>(*feet * metersPerFoot) : std::nullopt;
    }
    return parseDouble(table.field(row, {"wingspan", "wingspan_m"}));
}

void readSpans(const fs::path& path, const Types& types, Spans& spans, BuildReport& report) {
    const Table table(wholeFile(path));
    for (std::size_t row = 0; row < table.size(); ++row) {
        const std::string code(table.field(row, {"icao", "icao code", "designator"}));
        const std::optional<double> meters = spanMeters(table, row);
        if (!types.contains(code)) {
            report.leftOut("wing span", "type not known", code);
        } else if (!meters || *meters <= 0) {
            report.leftOut("wing span", "no number", code);
        } else if (!spans.emplace(code, *meters).second) {
            report.leftOut("wing span", "type twice", code);
        }
    }
}

// --- Airlines ---

void readAirlines(const fs::path& path, Codes& airlines, BuildReport& report) {
    const auto add = [&](const std::string& code) {
        if (isCode(code, 3, 3)) {
            airlines.insert(code);
        } else {
            report.leftOut("airline", "no code of three letters", code);
        }
    };
    const std::string text = wholeFile(path);
    if (isJson(text)) {
        const nlohmann::json document = jsonOf(text, path);
        for (const auto& [code, row] : document.items()) {
            add(code);
        }
        return;
    }
    const Table table(text);
    for (std::size_t row = 0; row < table.size(); ++row) {
        add(std::string(table.field(row, {"icao", "3ltr", "icao_code", "code"})));
    }
}

// --- Registrations ---

struct AircraftRow {
    std::string reg;
    std::string type;
    std::string airline;
    std::string opr;
    bool cargo = false;
};

class Registrations {
public:
    Registrations(const Types& types, const Codes& airlines, BuildReport& report)
        : types_(types), airlines_(airlines), report_(report) {}

    void add(AircraftRow row) {
        if (!isCode(row.reg, 2, 10, true)) {
            report_.leftOut("aircraft", "no registration", row.reg);
        } else if (!row.type.empty() && !types_.contains(row.type)) {
            report_.leftOut("aircraft", "type not known", fmt::format("{} {}", row.reg, row.type));
        } else if (!seen_.insert(row.reg).second) {
            report_.leftOut("aircraft", "registration twice", row.reg);
        } else {
            clearUnknown(row);
            rows.push_back(std::move(row));
        }
    }

    std::vector<AircraftRow> rows;

private:
    /// An unknown airline costs itself, not the aircraft.
    void clearUnknown(AircraftRow& row) {
        for (std::string* code : {&row.airline, &row.opr}) {
            if (!code->empty() && !airlines_.contains(*code)) {
                const std::string unknown = *code;
                report_.leftOut("airline of an aircraft", "not known", fmt::format("{} {}", row.reg, unknown));
                forget(row.airline, unknown);
                forget(row.opr, unknown);
            }
        }
    }

    static void forget(std::string& code, const std::string& unknown) {
        if (code == unknown) {
            code.clear();
        }
    }

    const Types& types_;
    const Codes& airlines_;
    BuildReport& report_;
    std::set<std::string, std::less<>> seen_;
};

void readAircraft(const fs::path& path, Registrations& registrations) {
    const std::string text = wholeFile(path);
    if (isJson(text)) {
        const nlohmann::json document = jsonOf(text, path);
        for (const auto& [address, row] : document.items()) {
            registrations.add({textAt(row, 0), textAt(row, 1), {}, {}});
        }
        return;
    }
    const Table table(text);
    for (std::size_t row = 0; row < table.size(); ++row) {
        const std::string opr(table.field(row, {"operatoricao", "operator_icao", "opr", "operator"}));
        const std::string airline(table.field(row, {"airline", "airl"}));
        const std::string_view cargo = table.field(row, {"cargo"});
        registrations.add({std::string(table.field(row, {"registration", "reg"})),
                           std::string(table.field(row, {"typecode", "icaotype", "type"})),
                           airline.empty() ? opr : airline, opr, cargo == "true" || cargo == "1"});
    }
}

// --- Airports ---

struct AirportRow {
    std::string code;
    std::string iata;
    std::string lat;
    std::string lon;
    std::string alt;
};

std::string faultOf(const AirportRow& airport, std::string_view kind) {
    if (kind == "closed") {
        return "closed";
    }
    if (airport.code.empty()) {
        return "no ICAO code";
    }
    if (!isCode(airport.code, 4, 4)) {
        return "no ICAO code of four letters";
    }
    if (!parseDouble(airport.lat) || !parseDouble(airport.lon)) {
        return "no position";
    }
    return parseDouble(airport.alt) ? "" : "no elevation";
}

std::vector<AirportRow> readAirportTable(const fs::path& path, BuildReport& report) {
    const Table table(wholeFile(path));
    std::vector<AirportRow> airports;
    Codes seen;
    for (std::size_t row = 0; row < table.size(); ++row) {
        const auto field = [&](std::initializer_list<std::string_view> names) {
            return std::string(table.field(row, names));
        };
        AirportRow airport{field({"icao_code", "icao"}), field({"iata_code", "iata"}), field({"latitude_deg", "lat"}),
                           field({"longitude_deg", "lon"}), field({"elevation_ft", "alt"})};
        const std::string name = airport.code.empty() ? field({"ident", "name"}) : airport.code;
        if (const std::string fault = faultOf(airport, table.field(row, {"type"})); !fault.empty()) {
            report.leftOut("airport", fault, name);
        } else if (!seen.insert(airport.code).second) {
            report.leftOut("airport", "code twice", name);
        } else {
            airports.push_back(std::move(airport));
        }
    }
    return airports;
}

// --- Writing ---

void save(const pugi::xml_document& document, const fs::path& path) {
    writeWhole(path, [&document](const fs::path& side) {
        if (!document.save_file(side.c_str(), " ")) {
            throw std::runtime_error("cannot write " + platform::utf8FromPath(side));
        }
    });
}

pugi::xml_node newRoot(pugi::xml_document& document) {
    pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
    return document.append_child("root");
}

void appendCodes(pugi::xml_node root, const Section& rule, const Codes& codes) {
    pugi::xml_node section = root.append_child(rule.name);
    for (auto code = codes.begin(); code != codes.end();) {
        std::string list;
        for (std::size_t i = 0; i < codesPerElement && code != codes.end(); ++i, ++code) {
            list += (i == 0 ? "" : ",") + *code;
        }
        section.append_child(rule.element).append_attribute(rule.attribute) = list.c_str();
    }
}

void appendSpans(pugi::xml_node root, const Spans& spans) {
    pugi::xml_node section = root.append_child("wingspans");
    for (const auto& [code, meters] : spans) {
        pugi::xml_node element = section.append_child("wingspan");
        element.append_attribute("type") = code.c_str();
        element.append_attribute("meters") = fmt::format("{:.2f}", meters).c_str();
    }
}

/// Attributes that would be empty are left out: the file has half a million of these rows.
void appendRegistrations(pugi::xml_node root, const std::vector<AircraftRow>& rows) {
    pugi::xml_node section = root.append_child("dbase");
    for (const AircraftRow& row : rows) {
        pugi::xml_node element = section.append_child("db");
        element.append_attribute("reg") = row.reg.c_str();
        const auto append = [&element](const char* name, const std::string& text) {
            if (!text.empty()) {
                element.append_attribute(name) = text.c_str();
            }
        };
        append("airl", row.airline);
        append("type", row.type);
        append("opr", row.opr);
        append("cargo", row.cargo ? "true" : "");
    }
}

std::string coordinate(const std::string& text) {
    return fmt::format("{:.6f}", *parseDouble(text));
}

void saveAirports(const std::vector<AirportRow>& airports, const fs::path& archive, const fs::path& target) {
    pugi::xml_document document;
    pugi::xml_node section = newRoot(document).append_child("airports");
    for (const AirportRow& airport : airports) {
        const bool hasFile = !archive.empty() && fs::exists(archive / "stock" / (airport.code + ".xml"));
        pugi::xml_node element = section.append_child("airport");
        element.append_attribute("code") = airport.code.c_str();
        element.append_attribute("iata") = airport.iata.c_str();
        element.append_attribute("lat") = coordinate(airport.lat).c_str();
        element.append_attribute("lon") = coordinate(airport.lon).c_str();
        element.append_attribute("alt") = airport.alt.c_str();
        element.append_attribute("stands") = hasFile ? ordinaryStands : 0;
    }
    save(document, target);
}

void buildAirports(const BuildSources& sources, const fs::path& target, BuildReport& report) {
    const std::vector<AirportRow> airports = readAirportTable(sources.airports, report);
    saveAirports(airports, sources.archive, target / "airports.xml");
    report.kept("airports", airports.size());
}

void buildReferenceData(const BuildSources& sources, const fs::path& target, BuildReport& report) {
    pugi::xml_document extraDocument;
    const pugi::xml_parse_result loaded = extraDocument.load_file(sources.extra.c_str());
    if (!loaded) {
        throw std::runtime_error(fmt::format("{}: {}", platform::utf8FromPath(sources.extra), loaded.description()));
    }
    const pugi::xml_node extra = extraDocument.child("root");
    Types types = readTypes(sources.types, report);
    const Categories categories = categoriesOf(types, extra);
    Spans spans;
    for (const fs::path& path : sources.wingspans) {
        readSpans(path, types, spans, report);
    }
    Codes airlines;
    for (const fs::path& path : sources.airlines) {
        readAirlines(path, airlines, report);
    }
    Registrations registrations(types, airlines, report);
    for (const fs::path& path : sources.aircraft) {
        readAircraft(path, registrations);
    }

    pugi::xml_document document;
    pugi::xml_node root = newRoot(document);
    Codes allTypes;
    for (const auto& [code, type] : types) {
        allTypes.insert(code);
    }
    appendCodes(root, {"aircrafts", "aircraft", "types"}, allTypes);
    for (const Section& rule : categorySections) {
        const auto category = categories.find(rule.name);
        appendCodes(root, rule, category == categories.end() ? Codes() : category->second);
    }
    appendCodes(root, {"ICAO_airlines", "ICAO", "codes"}, airlines);
    appendSpans(root, spans);
    for (const char* section : copiedSections) {
        if (const pugi::xml_node given = extra.child(section)) {
            root.append_copy(given);
        }
    }
    appendRegistrations(root, registrations.rows);
    save(document, target / "dbase.xml");
    report.kept("types", types.size());
    report.kept("wing spans", spans.size());
    report.kept("airlines", airlines.size());
    report.kept("aircraft", registrations.rows.size());
}

} // namespace

void buildDataFiles(const BuildSources& sources, const fs::path& target, std::ostream& out) {
    fs::create_directories(target);
    BuildReport report;
    buildAirports(sources, target, report);
    buildReferenceData(sources, target, report);
    writeText(target / "report.txt", report.text());
    out << report.sums();
}
