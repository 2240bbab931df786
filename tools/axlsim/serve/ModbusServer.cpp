// SPDX-License-Identifier: MIT
#include "axlsim/serve/ModbusServer.h"

#include <fcntl.h>
#include <modbus/modbus.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <memory>
#include <string>

#include "axlsim/run/ProcessData.h"

namespace axlsim {

namespace {

constexpr int kBacklog = 16;
constexpr std::size_t kReadChunk = 4096;

void setNonBlocking(int socket) {
    fcntl(socket, F_SETFL, fcntl(socket, F_GETFL) | O_NONBLOCK);
}

int boundPort(int socket) {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    if (getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        return -1;
    }
    return address.ss_family == AF_INET6
               ? ntohs(reinterpret_cast<const sockaddr_in6*>(&address)->sin6_port)
               : ntohs(reinterpret_cast<const sockaddr_in*>(&address)->sin_port);
}

}  // namespace

void ModbusServer::Closer::operator()(modbus_t* context) const {
    // The context's socket is the last client's, closed on its own: only the listener is its.
    modbus_set_socket(context, -1);
    modbus_free(context);
}

void ModbusServer::Closer::operator()(modbus_mapping_t* mapping) const {
    modbus_mapping_free(mapping);
}

ModbusServer::ModbusServer(const Config& config, LiveRun& run)
    : run_(run),
      map_(config.bus),
      tables_(modbus_mapping_new(map_.size(), map_.size(), map_.size(), map_.size())) {
    if (pipe2(wake_, O_CLOEXEC) != 0) {
        wake_[0] = wake_[1] = -1;
    }
}

ModbusServer::~ModbusServer() {
    for (Connection& connection : connections_) {
        close(connection.socket);
    }
    for (int end : wake_) {
        if (end >= 0) {
            close(end);
        }
    }
    if (listener_ >= 0) {
        close(listener_);
    }
}

// The listening socket is axlsim's own, as libmodbus's reads IPv4 addresses only and does not
// say why it could not listen; libmodbus builds the replies.
int ModbusServer::bind(const std::string& address, int port) {
    context_.reset(modbus_new_tcp(nullptr, port));
    if (!context_ || !tables_ || wake_[0] < 0) {
        why_ = "out of resources";
        return -1;
    }
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
    addrinfo* found = nullptr;
    if (const int error =
            getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found);
        error != 0) {
        why_ = std::string("cannot resolve it: ") + gai_strerror(error);
        return -1;
    }
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> addresses(found, freeaddrinfo);
    for (const addrinfo* at = found; at != nullptr && listener_ < 0; at = at->ai_next) {
        const int socket = ::socket(at->ai_family, at->ai_socktype | SOCK_CLOEXEC, at->ai_protocol);
        if (socket < 0) {
            why_ = std::strerror(errno);
            continue;
        }
        const int reuse = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
        if (::bind(socket, at->ai_addr, at->ai_addrlen) != 0 || listen(socket, kBacklog) != 0) {
            why_ = std::strerror(errno);
            close(socket);
            continue;
        }
        listener_ = socket;
    }
    if (listener_ < 0) {
        return -1;
    }
    setNonBlocking(listener_);
    return boundPort(listener_);
}

void ModbusServer::stop() {
    const char wake = 0;
    // A stop before serve() began stays in the pipe and ends it at once.
    [[maybe_unused]] const ssize_t written = ::write(wake_[1], &wake, 1);
}

int ModbusServer::pollTimeout(std::chrono::steady_clock::time_point now) const {
    std::optional<std::chrono::steady_clock::time_point> first;
    for (const Connection& connection : connections_) {
        if (connection.partialSince && (!first || *connection.partialSince < *first)) {
            first = connection.partialSince;
        }
    }
    if (!first) {
        return -1;
    }
    const auto left = *first + kPartialFrameTimeout - now;
    return static_cast<int>(
        std::max<long long>(0, std::chrono::ceil<std::chrono::milliseconds>(left).count()));
}

void ModbusServer::serve() {
    std::vector<pollfd> polled;
    for (;;) {
        polled.clear();
        polled.push_back({wake_[0], POLLIN, 0});
        polled.push_back({listener_, POLLIN, 0});
        for (const Connection& connection : connections_) {
            polled.push_back({connection.socket, POLLIN, 0});
        }
        if (poll(polled.data(), polled.size(), pollTimeout(std::chrono::steady_clock::now())) < 0 &&
            errno != EINTR) {
            return;
        }
        if (polled[0].revents != 0) {
            return;
        }
        const auto now = std::chrono::steady_clock::now();
        // Connections accepted below are after the polled ones, so the indexes stay true.
        for (std::size_t i = connections_.size(); i-- > 0;) {
            Connection& connection = connections_[i];
            const bool ready = polled[i + 2].revents != 0;
            const bool open = ready ? receive(connection) : true;
            const bool stalled =
                connection.partialSince && now - *connection.partialSince >= kPartialFrameTimeout;
            if (open && !stalled) {
                continue;
            }
            close(connection.socket);
            connections_.erase(connections_.begin() + static_cast<std::ptrdiff_t>(i));
            --clients_;
        }
        if (polled[1].revents != 0) {
            accept();
        }
    }
}

// Every connection waiting in the listen queue, not one a wake-up: clients whose connect has
// returned are served without waiting behind the requests of those accepted before them.
void ModbusServer::accept() {
    for (;;) {
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (socket < 0) {
            return;
        }
        if (connections_.size() >= static_cast<std::size_t>(kMaxClients)) {
            close(socket);
            continue;
        }
        // Answers are small and go at once, not held back for more.
        const int on = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        connections_.push_back(Connection{socket, {}, std::nullopt});
        ++clients_;
    }
}

bool ModbusServer::receive(Connection& connection) {
    std::array<uint8_t, kReadChunk> chunk{};
    const ssize_t got = recv(connection.socket, chunk.data(), chunk.size(), 0);
    if (got == 0) {
        return false;
    }
    if (got < 0) {
        return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
    }
    std::vector<uint8_t>& bytes = connection.bytes;
    bytes.insert(bytes.end(), chunk.begin(), chunk.begin() + got);
    std::size_t used = 0;
    for (;;) {
        const auto rest = std::span<const uint8_t>(bytes).subspan(used);
        const int length = modbusFrameLength(rest);
        if (length < 0) {
            return false;
        }
        if (length == 0) {
            break;
        }
        if (!answer(connection.socket, rest.first(static_cast<std::size_t>(length)))) {
            return false;
        }
        used += static_cast<std::size_t>(length);
    }
    bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(used));
    if (bytes.empty()) {
        connection.partialSince.reset();
    } else if (!connection.partialSince) {
        connection.partialSince = std::chrono::steady_clock::now();
    }
    return true;
}

bool ModbusServer::answer(int socket, std::span<const uint8_t> frame) {
    const ModbusRequest request = ModbusRequest::read(frame, map_);
    modbus_set_socket(context_.get(), socket);
    if (request.exception != 0) {
        const std::vector<uint8_t> reply = modbusExceptionReply(frame, request.exception);
        return send(socket, reply.data(), reply.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(reply.size());
    }
    try {
        if (request.write) {
            write(request);
        } else {
            read(request);
        }
    } catch (const std::exception&) {
        // The run has ended: the server is about to stop as well.
        return false;
    }
    return modbus_reply(context_.get(), frame.data(), static_cast<int>(frame.size()),
                        tables_.get()) >= 0;
}

void ModbusServer::write(const ModbusRequest& request) {
    std::vector<Config::Step> steps;
    for (std::size_t n = 0; n < request.values.size(); ++n) {
        Config::Input input;
        input.position = request.pins.position;
        input.pin = request.pins.first + static_cast<int>(n);
        input.value = request.values[n];
        input.source = "modbus";
        steps.push_back(Config::Step{{}, input, {}, {}});
    }
    run_.perform(std::move(steps));
}

void ModbusServer::read(const ModbusRequest& request) {
    const ModbusMap::Pins& pins = request.pins;
    const int base = (pins.position - 1) * ModbusMap::kBlock;
    modbus_mapping_t& tables = *tables_;
    run_.readBus([&](const vplc::Station& station) {
        const std::vector<uint8_t> inputs = station.inputsOnBus(pins.position);
        for (int pin = pins.first; pin < pins.first + pins.count; ++pin) {
            const auto at = static_cast<std::size_t>(base + pin);
            switch (request.table) {
                case ModbusMap::Table::Coils:
                    tables.tab_bits[at] = digitalPin(inputs, pin) ? 1 : 0;
                    break;
                case ModbusMap::Table::DiscreteInputs:
                    tables.tab_input_bits[at] =
                        (station.digitalOutputsOnBus(pins.position) >> pin) & 1;
                    break;
                case ModbusMap::Table::HoldingRegisters:
                    tables.tab_registers[at] = analogWord(inputs, pin);
                    break;
                case ModbusMap::Table::InputRegisters:
                    tables.tab_input_registers[at] = station.analogOutputOnBus(pins.position, pin);
                    break;
            }
        }
    });
}

}  // namespace axlsim
