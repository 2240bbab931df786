// SPDX-License-Identifier: MIT
#include "axlsim/serve/ApiServer.h"

#include <httplib.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <exception>
#include <limits>
#include <string_view>

#include "axlsim/base/ValueText.h"
#include "axlsim/configuration/ConfigDocument.h"
#include "axlsim/configuration/ConfigError.h"
#include "axlsim/configuration/ConfigReader.h"
#include "axlsim/configuration/JsonParser.h"

namespace axlsim {

namespace {

using namespace std::chrono_literals;
using JsonOut = nlohmann::ordered_json;

constexpr std::array<std::string_view, 3> kClockKeys{"action", "ms", "speed"};
constexpr auto kStopRetry = 1ms;

constexpr const char* kJson = "application/json";
constexpr const char* kRequest = "request";
// Worker threads: the streams, and room beside them for the other requests.
constexpr std::size_t kWorkers = ApiServer::kMaxStreams + 16;
// The most timeline objects one answer of GET /api/timeline carries.
constexpr std::size_t kMostLines = 10000;
// How often a quiet stream says it is alive, which also finds the clients that have gone.
constexpr auto kStreamPatience = 500ms;
constexpr double kLowestSpeed = 0.1;
constexpr double kHighestSpeed = 100000.0;
constexpr int64_t kLongestStepMs = 3600 * 1000;

void answer(httplib::Response& response, int status, const JsonOut& body) {
    response.status = status;
    response.set_content(body.dump(-1, ' ', false, JsonOut::error_handler_t::replace), kJson);
}

void failure(httplib::Response& response, int status, const std::string& message) {
    answer(response, status, JsonOut{{"error", message}});
}

// A mistake in a request, told as the configuration reader tells the same mistake in a scenario
// step: the reason, and the JSON pointer into the body.
void mistake(httplib::Response& response, const ConfigError& error) {
    answer(response, 400, JsonOut{{"error", error.reason()}, {"pointer", error.place()}});
}

// Does what a request asked for, marked as the API's, and tells when.
template <class Action>
JsonOut performAsked(LiveRun& run, Action action) {
    action.source = "api";
    Config::Step step;
    step.action = std::move(action);
    return JsonOut{{"t_ms", JsonOut::parse(millisecondsText(run.perform(std::move(step))))}};
}

nlohmann::json body(const httplib::Request& request) {
    return jsonparser::parse(request.body, kRequest);
}

std::string hostName(const std::string& host) {
    if (!host.empty() && host.front() == '[') {
        const auto close = host.find(']');
        return close == std::string::npos ? host : host.substr(1, close - 1);
    }
    return host.substr(0, host.find(':'));
}

// A seq as a request gives it. The highest number stands for one below it, which no line
// reaches either: the log asks for the lines after since + 1, which would wrap to 0.
std::optional<uint64_t> sequence(const std::string& text) {
    uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || text.empty()) {
        return std::nullopt;
    }
    return std::min(value, std::numeric_limits<uint64_t>::max() - 1);
}

}  // namespace

ApiServer::ApiServer(const Config& config, LiveRun& run, Settings settings)
    : config_(config),
      run_(run),
      settings_(std::move(settings)),
      server_(std::make_unique<httplib::Server>()) {
    server_->new_task_queue = [] { return new httplib::ThreadPool(kWorkers); };
    server_->set_payload_max_length(kMaxBody);
    // Only SO_REUSEADDR: the library's SO_REUSEPORT would let a second server share a taken port.
    server_->set_socket_options([](int socket) {
        int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    server_->set_keep_alive_timeout(2);
    server_->set_read_timeout(5s);
    server_->set_write_timeout(5s);
    routes();
}

ApiServer::~ApiServer() {
    stop();
}

int ApiServer::bind(int port) {
    if (port == 0) {
        return server_->bind_to_any_port(settings_.address);
    }
    return server_->bind_to_port(settings_.address, port) ? port : -1;
}

void ApiServer::serve() {
    {
        std::lock_guard lock(servingMutex_);
        if (stopping_) {
            return;
        }
        serving_ = true;
    }
    server_->listen_after_bind();
    {
        std::lock_guard lock(servingMutex_);
        serving_ = false;
    }
    servingEnded_.notify_all();
}

// httplib's stop() does nothing until its loop has begun to accept: a stop that comes right
// after the start (a signal at once) is asked again until serve() has returned.
void ApiServer::stop() {
    stopping_ = true;
    std::unique_lock lock(servingMutex_);
    while (serving_) {
        server_->stop();
        servingEnded_.wait_for(lock, kStopRetry);
    }
}

bool ApiServer::hostAllowed(const httplib::Request& request) const {
    const std::string host = hostName(request.get_header_value("Host"));
    return host == settings_.address || host == "localhost";
}

bool ApiServer::authorised(const httplib::Request& request) const {
    return request.get_header_value("Authorization") == "Bearer " + settings_.token;
}

void ApiServer::routes() {
    httplib::Server& server = *server_;
    server.set_pre_routing_handler(
        [this](const httplib::Request& request, httplib::Response& response) {
            if (!hostAllowed(request)) {
                failure(response, 403, "the Host header names neither this server nor localhost");
                return httplib::Server::HandlerResponse::Handled;
            }
            if (request.path.rfind("/api/", 0) == 0 && !authorised(request)) {
                response.set_header("WWW-Authenticate", "Bearer");
                failure(response, 401, "the request lacks the token: Authorization: Bearer TOKEN");
                return httplib::Server::HandlerResponse::Handled;
            }
            return httplib::Server::HandlerResponse::Unhandled;
        });
    server.set_error_handler([](const httplib::Request&, httplib::Response& response) {
        if (!response.body.empty()) {
            return;
        }
        if (response.status == 404) {
            failure(response, 404, "no such page");
        } else if (response.status == 413) {
            failure(response, 413, "the body is larger than 64 KiB");
        } else {
            failure(response, response.status, "the request failed");
        }
    });
    server.set_exception_handler(
        [](const httplib::Request&, httplib::Response& response, std::exception_ptr error) {
            try {
                std::rethrow_exception(error);
            } catch (const ConfigError& mistaken) {
                mistake(response, mistaken);
            } catch (const std::exception& other) {
                failure(response, 503, other.what());
            } catch (...) {
                failure(response, 500, "unknown failure");
            }
        });

    server.Get("/", [this](const httplib::Request&, httplib::Response& response) {
        response.set_header("Cache-Control", "no-store");
        response.set_content(settings_.page, "text/html; charset=utf-8");
    });
    server.Get("/api/state", [this](const httplib::Request&, httplib::Response& response) {
        answer(response, 200, run_.state());
    });
    server.Post("/api/input", [this](const httplib::Request& request, httplib::Response& response) {
        answer(response, 200,
               performAsked(run_, configreader::inputStep(body(request), config_, kRequest)));
    });
    server.Post("/api/event", [this](const httplib::Request& request, httplib::Response& response) {
        answer(response, 200,
               performAsked(run_, configreader::eventStep(body(request), config_, kRequest)));
    });
    server.Post("/api/plc", [this](const httplib::Request& request, httplib::Response& response) {
        answer(response, 200, performAsked(run_, configreader::plcStep(body(request), kRequest)));
    });
    server.Post("/api/clock", [this](const httplib::Request& request, httplib::Response& response) {
        const nlohmann::json node = body(request);
        const Document doc(kRequest);
        doc.object(node, "", kClockKeys);
        if (node.contains("speed") == node.contains("action")) {
            doc.fail("", "a clock request has either \"action\" or \"speed\"");
        }
        if (node.contains("speed")) {
            const nlohmann::json& speed = node.at("speed");
            if (speed.is_string() && speed.get<std::string>() == "max") {
                run_.setMaxSpeed();
            } else {
                run_.setSpeed(doc.number(speed, "/speed", kLowestSpeed, kHighestSpeed));
            }
        } else {
            const std::string action = doc.text(node.at("action"), "/action");
            if (action == "pause") {
                run_.pause();
            } else if (action == "resume") {
                run_.resume();
            } else if (action == "step") {
                if (!node.contains("ms")) {
                    doc.fail("", "a step needs its \"ms\"");
                }
                run_.step(std::chrono::milliseconds(
                    doc.integer(node.at("ms"), "/ms", 1, kLongestStepMs)));
            } else {
                doc.fail("/action",
                         "unknown clock action \"" + action + "\" (known: pause, resume, step)");
            }
        }
        answer(response, 200, run_.state());
    });
    server.Get(
        "/api/timeline", [this](const httplib::Request& request, httplib::Response& response) {
            uint64_t since = 0;
            if (request.has_param("since")) {
                const auto given = sequence(request.get_param_value("since"));
                if (!given) {
                    failure(response, 400, "since: expected a whole number, the last seq seen");
                    return;
                }
                since = *given;
            }
            const TimelineLog::Lines lines = run_.log().after(since, kMostLines);
            std::string text = "[";
            for (std::size_t i = 0; i < lines.lines.size(); ++i) {
                text += (i == 0 ? "" : ",") + lines.lines[i];
            }
            text += "]";
            response.set_content(text, kJson);
        });
    server.Get("/api/stream", [this](const httplib::Request& request, httplib::Response& response) {
        stream(request, response);
    });
    server.Post("/api/stop", [this](const httplib::Request&, httplib::Response& response) {
        answer(response, 200, JsonOut{{"stopping", true}});
        if (settings_.onStop) {
            settings_.onStop();
        }
    });
}

// Server-Sent Events: each timeline object as an event whose id is its seq, from `since` (or
// Last-Event-ID) on, else from now on. A client that falls so far behind that the lines it has
// yet to read are no longer kept is let go rather than shown a gap.
void ApiServer::stream(const httplib::Request& request, httplib::Response& response) {
    std::optional<uint64_t> since;
    if (request.has_param("since")) {
        since = sequence(request.get_param_value("since"));
    } else if (request.has_header("Last-Event-ID")) {
        since = sequence(request.get_header_value("Last-Event-ID"));
    } else {
        since = run_.log().last();
    }
    if (!since) {
        failure(response, 400, "since: expected a whole number, the last seq seen");
        return;
    }
    if (++streams_ > kMaxStreams) {
        --streams_;
        failure(response, 503, "too many streams at once");
        return;
    }
    response.set_header("Cache-Control", "no-store");
    response.set_chunked_content_provider(
        "text/event-stream",
        [this, next = *since](std::size_t, httplib::DataSink& sink) mutable {
            if (stopping_ || run_.log().closed()) {
                sink.done();
                return true;
            }
            const TimelineLog::Lines lines =
                run_.log().waitAfter(next, kMostLines, kStreamPatience);
            if (lines.first > next + 1) {
                sink.done();
                return true;
            }
            std::string text;
            for (const std::string& line : lines.lines) {
                ++next;
                text += "id: " + std::to_string(next) + "\ndata: " + line + "\n\n";
            }
            if (text.empty()) {
                text = ": alive\n\n";
            }
            return sink.write(text.data(), text.size());
        },
        [this](bool) { --streams_; });
}

}  // namespace axlsim
