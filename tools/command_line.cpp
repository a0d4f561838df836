// tools/command_line.cpp
#include "tools/command_line.h"

#include <exception>
#include <filesystem>

#include <CLI/CLI.hpp>

#include "core/program_version.h"
#include "distribution/sealed_file.h"
#include "platform/files.h"
#include "tools/build.h"
#include "tools/check.h"
#include "tools/files.h"
#include "tools/publish.h"

namespace fs = std::filesystem;

namespace {

constexpr int failed = 1;

/// What the command line gives; texts, because paths are told apart only when they are used.
struct Arguments {
    std::string input;
    std::string output;
    std::string key;
    std::string version;
    std::string airports;
    std::string types;
    std::string extra;
    std::string archive;
    std::vector<std::string> wingspans;
    std::vector<std::string> airlines;
    std::vector<std::string> aircraft;
};

fs::path path(const std::string& text) {
    return platform::pathFromUtf8(text);
}

std::vector<fs::path> paths(const std::vector<std::string>& texts) {
    std::vector<fs::path> all;
    all.reserve(texts.size());
    for (const std::string& text : texts) {
        all.push_back(path(text));
    }
    return all;
}

void seal(const Arguments& arguments) {
    const DataKey key = keyOfFile(path(arguments.key));
    writeWhole(path(arguments.output),
               [&](const fs::path& side) { lf_streamSealFile(path(arguments.input), side, key); });
}

void open(const Arguments& arguments) {
    const DataKey key = keyOfFile(path(arguments.key));
    writeWhole(path(arguments.output),
               [&](const fs::path& side) { lf_streamDecryptFile(path(arguments.input), side, key); });
}

void publish(const Arguments& arguments) {
    publishDownloads(path(arguments.input), parseVersion(arguments.version), path(arguments.output),
                     keyOfFile(path(arguments.key)));
}

void build(const Arguments& arguments, std::ostream& out) {
    buildDataFiles({path(arguments.airports), path(arguments.types), paths(arguments.wingspans),
                    paths(arguments.airlines), paths(arguments.aircraft), path(arguments.extra),
                    path(arguments.archive)},
                   path(arguments.output), out);
}

void addContainerCommands(CLI::App& app, Arguments& given) {
    CLI::App* const sealing = app.add_subcommand("seal", "Make a container of a clear file");
    CLI::App* const opening = app.add_subcommand("open", "Make a clear file of a container");
    for (CLI::App* command : {sealing, opening}) {
        command->add_option("INPUT", given.input)->required();
        command->add_option("OUTPUT", given.output)->required();
        command->add_option("--key", given.key, "File with the key: 32 characters or 64 hexadecimal digits");
    }
    sealing->callback([&given] { seal(given); });
    opening->callback([&given] { open(given); });
}

void addCheckCommand(CLI::App& app, Arguments& given, int& result, std::ostream& out) {
    CLI::App* const checking = app.add_subcommand("check", "List the rows of a data file that the program would skip");
    checking->add_option("FILE", given.input, "dbase.xml or airports.xml")->required();
    checking->callback([&] { result = checkDataFile(path(given.input), out) == 0 ? 0 : failed; });
}

void addPublishCommand(CLI::App& app, Arguments& given) {
    CLI::App* const publishing = app.add_subcommand("publish", "Lay out the download server's folder");
    publishing->add_option("SOURCE", given.input, "Folder with the XML files, archive, release and docs")->required();
    publishing->add_option("TARGET", given.output, "The server's folder")->required();
    publishing->add_option("--version", given.version, "Version of the data, as 1.2.3")->required();
    publishing->add_option("--key", given.key, "File with the key");
    publishing->callback([&given] { publish(given); });
}

void addBuildCommand(CLI::App& app, Arguments& given, std::ostream& out) {
    CLI::App* const building = app.add_subcommand("build", "Make dbase.xml and airports.xml from public tables");
    building->add_option("OUTPUT", given.output, "Folder for the two files and report.txt")->required();
    building->add_option("--airports", given.airports)->required();
    building->add_option("--types", given.types)->required();
    building->add_option("--extra", given.extra, "What no table tells, in the form of dbase.xml")->required();
    building->add_option("--wingspans", given.wingspans);
    building->add_option("--airlines", given.airlines)->required();
    building->add_option("--aircraft", given.aircraft)->required();
    building->add_option("--archive", given.archive, "Folder of airport files");
    building->callback([&] { build(given, out); });
}

} // namespace

int runTools(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
    CLI::App app("Makes, checks and publishes the reference data of Tarnwing_P3D", "tarnwing_tools");
    app.require_subcommand(1);
    app.allow_windows_style_options(false); // what begins with a slash is a path
    Arguments given;
    int result = 0;
    addContainerCommands(app, given);
    addCheckCommand(app, given, result, out);
    addPublishCommand(app, given);
    addBuildCommand(app, given, out);
    try {
        std::vector<std::string> backwards(arguments.rbegin(), arguments.rend() - 1); // as CLI11 wants them
        app.parse(std::move(backwards));
    } catch (const CLI::ParseError& error) {
        return app.exit(error, out, err);
    } catch (const std::exception& exception) {
        err << "tarnwing_tools: " << exception.what() << '\n';
        return failed;
    }
    return result;
}
