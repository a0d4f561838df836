// rig/server/download_server.cpp
#include "rig/server/download_server.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

#include <fmt/format.h>
#include <httplib.h>

#include "platform/files.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* host = "127.0.0.1";
constexpr const char* portalPage = "<html><body>Please log in first.</body></html>\n";
constexpr const char* contentType = "application/octet-stream";
constexpr std::chrono::milliseconds stallLook{20};
constexpr std::chrono::milliseconds slowPause{10};
constexpr std::size_t piecesOfSlowBody = 20;

struct FaultRule {
    ServerFault fault = ServerFault::none;
    std::string pathEnd;
};

std::optional<std::string> contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::error_code ignored;
    if (!fs::is_regular_file(file, ignored) || !stream) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

/// Nobody gets out of the folder.
bool isInside(const std::string& path) {
    return path.find("..") == std::string::npos && path.find('\\') == std::string::npos &&
           path.find(':') == std::string::npos;
}

void answerPage(httplib::Response& response, int status) {
    response.status = status;
    response.set_content(portalPage, "text/html");
}

void answerWhole(httplib::Response& response, const std::string& content) {
    response.set_content(content, contentType);
}

/// Promises so many bytes, sends these, and gives up if they are fewer. More are on the wire before the connection
/// ends.
void answerUnderLength(httplib::Response& response, std::size_t promised, std::string content) {
    response.set_content_provider(
        promised, contentType,
        [content = std::move(content)](std::size_t offset, std::size_t, httplib::DataSink& sink) {
            return offset < content.size() && sink.write(content.data() + offset, content.size() - offset);
        });
}

/// Promises all, sends half, and gives up.
void answerHalf(httplib::Response& response, std::string content) {
    const std::size_t promised = content.size();
    content.resize(promised / 2);
    answerUnderLength(response, promised, std::move(content));
}

/// In the end it is all there. Counts the pieces.
void answerSlowly(httplib::Response& response, std::string content, std::atomic<std::size_t>& pieces,
                  const std::atomic<bool>& ending) {
    const std::size_t piece = content.size() / piecesOfSlowBody + 1;
    const std::size_t promised = content.size();
    response.set_content_provider(promised, contentType,
                                  [content = std::move(content), piece, &pieces,
                                   &ending](std::size_t offset, std::size_t left, httplib::DataSink& sink) {
                                      std::this_thread::sleep_for(slowPause);
                                      ++pieces;
                                      return !ending && sink.write(content.data() + offset, std::min(piece, left));
                                  });
}

/// Sends half, and then looks until it is told to end or the client is gone.
void answerAndStall(httplib::Response& response, std::string content, const std::atomic<bool>& ending) {
    const std::size_t promised = content.size();
    content.resize(promised / 2);
    response.set_content_provider(promised, contentType,
                                  [content, &ending](std::size_t offset, std::size_t, httplib::DataSink& sink) {
                                      if (offset < content.size()) {
                                          return sink.write(content.data() + offset, content.size() - offset);
                                      }
                                      while (!ending && sink.is_writable()) {
                                          std::this_thread::sleep_for(stallLook);
                                      }
                                      return false;
                                  });
}

struct FaultWord {
    std::string_view word;
    ServerFault fault;
};

constexpr std::array<FaultWord, 10> words{{
    {"none", ServerFault::none},
    {"404", ServerFault::notFound},
    {"500", ServerFault::serverError},
    {"redirect", ServerFault::redirect},
    {"half", ServerFault::halfBody},
    {"slow", ServerFault::slow},
    {"stall", ServerFault::stall},
    {"length-half", ServerFault::halfLength},
    {"length-double", ServerFault::doubleLength},
    {"page", ServerFault::otherPage},
}};

} // namespace

std::string faultWords() {
    std::string text;
    for (const FaultWord& row : words) {
        const bool isLast = &row == &words.back();
        text += fmt::format("{}{}", text.empty() ? "" : isLast ? " or " : ", ", row.word);
    }
    return text;
}

std::optional<ServerFault> faultOfWord(std::string_view word) {
    const auto found =
        std::find_if(words.begin(), words.end(), [word](const FaultWord& row) { return row.word == word; });
    return found == words.end() ? std::nullopt : std::optional(found->fault);
}

struct DownloadServer::State {
    fs::path folder;
    int port = 0;
    std::atomic<bool> ending{false};
    std::atomic<std::size_t> slowPieces{0};
    mutable std::mutex mutex; // guards the three below
    FaultRule rule;
    std::vector<std::string> requests;
    std::vector<std::string> userAgents;
    httplib::Server server;
    std::thread thread;

    ServerFault note(const httplib::Request& request) {
        const std::lock_guard lock(mutex);
        requests.push_back(request.path);
        userAgents.push_back(request.get_header_value("User-Agent"));
        return request.path.ends_with(rule.pathEnd) ? rule.fault : ServerFault::none;
    }

    void answer(const httplib::Request& request, httplib::Response& response) {
        const ServerFault fault = note(request);
        std::optional<std::string> content;
        if (isInside(request.path)) {
            content = contentOf(folder / platform::pathFromUtf8(request.path.substr(1)));
        }
        switch (fault) {
        case ServerFault::notFound: answerPage(response, 404); return;
        case ServerFault::serverError: answerPage(response, 500); return;
        case ServerFault::redirect: answerPage(response, 302); return;
        case ServerFault::otherPage: answerPage(response, 200); return;
        default: break;
        }
        if (!content) {
            answerPage(response, 404);
        } else if (content->empty()) {
            answerWhole(response, *content); // of nothing there is no half
        } else {
            answerContent(response, fault, std::move(*content));
        }
    }

    void answerContent(httplib::Response& response, ServerFault fault, std::string content) {
        const std::size_t size = content.size();
        switch (fault) {
        case ServerFault::halfBody: answerHalf(response, std::move(content)); return;
        case ServerFault::slow: answerSlowly(response, std::move(content), slowPieces, ending); return;
        case ServerFault::stall: answerAndStall(response, std::move(content), ending); return;
        case ServerFault::halfLength: answerUnderLength(response, (size + 1) / 2, std::move(content)); return;
        case ServerFault::doubleLength: answerUnderLength(response, 2 * size, std::move(content)); return;
        default: answerWhole(response, content); return;
        }
    }
};

DownloadServer::DownloadServer(fs::path folder, std::uint16_t port) : state_(std::make_unique<State>()) {
    state_->folder = fs::absolute(folder);
    httplib::Server& server = state_->server;
    server.set_keep_alive_max_count(1);
    server.Get(".*", [state = state_.get()](const httplib::Request& request, httplib::Response& response) {
        state->answer(request, response);
    });
    if (port == 0) {
        state_->port = server.bind_to_any_port(host);
    } else {
        state_->port = server.bind_to_port(host, port) ? port : -1;
    }
    if (state_->port <= 0) {
        throw std::runtime_error("The download server cannot listen on its port");
    }
    state_->thread = std::thread([&server] { server.listen_after_bind(); });
    while (!server.is_running()) {
        std::this_thread::yield();
    }
}

DownloadServer::~DownloadServer() {
    state_->ending = true;
    state_->server.stop();
    state_->thread.join();
}

std::uint16_t DownloadServer::port() const {
    return static_cast<std::uint16_t>(state_->port);
}

std::string DownloadServer::root() const {
    return "http://" + std::string(host) + ":" + std::to_string(state_->port) + "/";
}

void DownloadServer::setFault(ServerFault fault, std::string_view pathEnd) {
    const std::lock_guard lock(state_->mutex);
    state_->rule = {fault, std::string(pathEnd)};
}

std::vector<std::string> DownloadServer::requests() const {
    const std::lock_guard lock(state_->mutex);
    return state_->requests;
}

std::vector<std::string> DownloadServer::userAgents() const {
    const std::lock_guard lock(state_->mutex);
    return state_->userAgents;
}

std::size_t DownloadServer::slowPieces() const {
    return state_->slowPieces;
}
