// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "axlsim/configuration/Config.h"
#include "axlsim/serve/LiveRun.h"
#include "axlsim/serve/ModbusMap.h"
#include "axlsim/serve/ModbusRequest.h"

typedef struct _modbus modbus_t;
typedef struct _modbus_mapping_t modbus_mapping_t;

namespace axlsim {

// The live run's bus as a Modbus TCP server: coils and holding registers set the modules'
// inputs, as a scenario input step at the virtual time the write arrives; discrete inputs and
// input registers read the outputs as they stand. One thread serves every client: it waits on
// all sockets at once, collects each client's bytes until a frame is whole and answers it with
// libmodbus, so that no client, however slow or broken, can hold up another.
class ModbusServer {
public:
    // Clients at once; more are closed as they come.
    static constexpr int kMaxClients = 64;
    // A client that leaves a frame unfinished this long is closed.
    static constexpr std::chrono::milliseconds kPartialFrameTimeout{1000};

    ModbusServer(const Config& config, LiveRun& run);
    ~ModbusServer();
    ModbusServer(const ModbusServer&) = delete;
    ModbusServer& operator=(const ModbusServer&) = delete;

    // Binds to `address` (a host name, an IPv4 or an IPv6 address) and `port` (0: a free one);
    // returns the port, or -1 when it cannot be bound, and why() says why.
    int bind(const std::string& address, int port);
    const std::string& why() const { return why_; }

    // Serves until stop(); from another thread.
    void serve();
    void stop();

    int clients() const { return clients_; }

private:
    struct Connection {
        int socket = -1;
        std::vector<uint8_t> bytes;  // received, not yet answered
        std::optional<std::chrono::steady_clock::time_point> partialSince;
    };
    struct Closer {
        void operator()(modbus_t* context) const;
        void operator()(modbus_mapping_t* mapping) const;
    };

    void accept();
    // Reads what the client sent and answers every whole frame; false when it is to be closed.
    bool receive(Connection& connection);
    bool answer(int socket, std::span<const uint8_t> frame);
    void write(const ModbusRequest& request);
    void read(const ModbusRequest& request);
    int pollTimeout(std::chrono::steady_clock::time_point now) const;

    LiveRun& run_;
    ModbusMap map_;
    std::unique_ptr<modbus_t, Closer> context_;
    std::unique_ptr<modbus_mapping_t, Closer> tables_;
    int listener_ = -1;
    std::string why_;
    int wake_[2] = {-1, -1};  // a pipe: stop() writes, the serving thread wakes
    std::vector<Connection> connections_;
    std::atomic<int> clients_{0};
};

}  // namespace axlsim
