// rig/rig_main.cpp
// The world outside the program, for a machine without it: one command each for what stands in for a part of it.
#include <exception>
#include <fstream>
#include <iostream>

#include <CLI/CLI.hpp>

#include "platform/console.h"
#include "platform/files.h"
#include "platform/program_entry.h"
#include "platform/sibling_program.h"
#include "rig/objects/object_script.h"
#include "rig/path_option.h"
#include "rig/report_commands.h"
#include "rig/server/download_server.h"
#include "rig/server/server_run.h"
#include "rig/simulator/simulator_run.h"
#include "rig/trace/trace_summary.h"
#include "rig/traffic_commands.h"

namespace {

void addSimulatorOptions(CLI::App& command, rig::SimulatorOptions& options) {
    addPath(command, "--scene", options.scene, "Scene file (docs/rig.md)");
    command.get_option("--scene")->required();
    command.add_option("--port", options.port, "IPv4 port on 127.0.0.1; 0: the system chooses");
    command.add_option("--port6", options.port6, "IPv6 port on ::1; 0: the system chooses");
    command.add_option(
        "--pipe", options.pipe,
        "Name of a pipe, natively of a local socket in its place; without any port it is the simulator's");
    addPaths(command, "--titles", options.titles, "Folders below which aircraft.cfg files tell the known titles");
    addPath(command, "--trace", options.trace, "File that gets all motion and events");
    command.add_option("--seconds", options.seconds, "Ends by itself after so many seconds")
        ->check(CLI::NonNegativeNumber);
    command.add_option("--speed", options.speed, "Simulated seconds in a real one")->check(CLI::Range(0.1, 100.0));
    addPath(command, "--write-cfg", options.configurationFolder,
            "Writes a SimConnect.cfg for clients into this folder");
    addPath(command, "--drive-c", options.driveC, "Folder that clients under Wine call C:");
    command.add_option("--map-port", options.mapPort,
                       "Port of the map for a browser, on 127.0.0.1; 0: the system chooses");
}

void addObjectOptions(CLI::App& command, rig::ObjectScriptOptions& options) {
    command.add_option("--title", options.titles, "Titles of the aircraft, taken in turn")->required();
    command.add_option("--count", options.count, "How many aircraft")->check(CLI::Range(1, 500));
    command.add_option("--seconds", options.seconds, "How long they fly")->check(CLI::Range(1.0, 3600.0));
}

void addServerOptions(CLI::App& command, rig::ServerOptions& options) {
    addPath(command, "--root", options.root, "Folder to serve, as tarnwing_tools publish lays it out");
    command.get_option("--root")->required();
    command.add_option("--port", options.port, "On 127.0.0.1; 0: the system chooses");
    command.add_option("--fault", options.fault, faultWords() + "; with ':END' only for paths that end so");
    command.add_option("--seconds", options.seconds, "Ends by itself after so many seconds")
        ->check(CLI::NonNegativeNumber);
}

/// Its options are those of a program of its own, which holds the engine over a simulated world.
CLI::App* addReplay(CLI::App& app) {
    CLI::App* const command = app.add_subcommand("replay", "A recording flown by the engine as fast as it goes");
    command->set_help_flag();
    command->prefix_command();
    return command;
}

void printTrace(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + platform::utf8FromPath(path));
    }
    rig::summariseTrace(file, std::cout);
}

} // namespace

int programMain(const std::vector<std::string>& arguments) {
    CLI::App app("The world outside Tarnwing_P3D, for a machine without it.", "rig");
    app.require_subcommand(1);
    rig::SimulatorOptions simulator;
    CLI::App* const simulatorCommand = app.add_subcommand("simulator", "A stand-in for the simulator");
    addSimulatorOptions(*simulatorCommand, simulator);
    rig::ObjectScriptOptions objects;
    CLI::App* const objectsCommand = app.add_subcommand(
        "objects", "Aircraft that the program's own simulator side creates, flies, lights and removes");
    addObjectOptions(*objectsCommand, objects);
    std::filesystem::path trace;
    CLI::App* const traceCommand = app.add_subcommand("trace", "Tells what a trace holds");
    addPath(*traceCommand, "file", trace, "The trace");
    rig::ServerOptions server;
    CLI::App* const serverCommand = app.add_subcommand("server", "A stand-in for the download server");
    addServerOptions(*serverCommand, server);
    const TrafficCommands traffic(app);
    const CLI::App* const replayCommand = addReplay(app);
    const ReportCommands report(app);
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend() - 1));
        if (simulatorCommand->parsed()) {
            rig::runSimulator(simulator, std::cout, platform::outputIsTerminal());
        } else if (objectsCommand->parsed()) {
            rig::runObjectScript(objects, std::cout);
        } else if (traceCommand->parsed()) {
            printTrace(trace);
        } else if (serverCommand->parsed()) {
            rig::runServer(server, std::cout);
        } else if (replayCommand->parsed()) {
            return platform::runSibling("rig_replay", replayCommand->remaining());
        }
        traffic.run(std::cout);
        report.run(std::cout);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const std::exception& error) {
        std::cerr << "rig: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
