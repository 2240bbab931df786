// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "axlsim/configuration/Config.h"
#include "axlsim/serve/LiveRun.h"

namespace httplib {
class Server;
struct Request;
struct Response;
}  // namespace httplib

namespace axlsim {

// The live run's page and JSON API over HTTP. Every API request carries the token; every request
// names the listening address or localhost as its Host (against DNS rebinding); bodies are at
// most kMaxBody bytes.
class ApiServer {
public:
    struct Settings {
        std::string address = "127.0.0.1";
        std::string token;
        std::string page;              // the HTML of the live page
        std::function<void()> onStop;  // POST /api/stop: asks the program to end
    };

    static constexpr std::size_t kMaxBody = 64 * 1024;
    // Streams at once; more are refused (503) so that they cannot take every worker.
    static constexpr int kMaxStreams = 32;

    ApiServer(const Config& config, LiveRun& run, Settings settings);
    ~ApiServer();
    ApiServer(const ApiServer&) = delete;
    ApiServer& operator=(const ApiServer&) = delete;

    // Binds to `port` (0: a free one); returns the port, or -1 when it cannot be bound.
    int bind(int port);

    // Serves until stop(); from another thread.
    void serve();
    // Ends serve(), whether it has begun yet or not, and waits for it to return.
    void stop();

private:
    bool hostAllowed(const httplib::Request& request) const;
    bool authorised(const httplib::Request& request) const;
    void routes();
    void stream(const httplib::Request& request, httplib::Response& response);

    const Config& config_;
    LiveRun& run_;
    Settings settings_;
    std::unique_ptr<httplib::Server> server_;
    std::atomic<bool> stopping_{false};
    std::atomic<int> streams_{0};
    std::mutex servingMutex_;
    std::condition_variable servingEnded_;
    bool serving_ = false;
};

}  // namespace axlsim
