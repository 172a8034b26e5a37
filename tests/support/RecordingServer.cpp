#include "support/RecordingServer.h"

#include "Platform/Text.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <ext/stdio_filebuf.h>
#include <istream>
#include <optional>
#include <stdexcept>

namespace slatewise::test {

namespace {

int listenOnLoopback() {
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    constexpr int kBacklog = 64;
    if (::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener, kBacklog) != 0)
        throw std::runtime_error("no server");
    return listener;
}

std::uint16_t portOf(int listener) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
    return ntohs(address.sin_port);
}

std::string urlOf(int listener) {
    return "http://127.0.0.1:" + std::to_string(portOf(listener));
}

/// The next request of a connection; empty when the client has gone.
std::optional<ReceivedRequest> requestFrom(std::istream& connection) {
    ReceivedRequest request;
    std::string line;
    while (std::getline(connection, line) && line != "\r") {
        const auto colon = line.find(':');
        if (request.line.empty())
            request.line = line.substr(0, line.rfind(" HTTP/"));
        else if (colon != std::string::npos)
            request.headers[Text::asciiLowercased(line.substr(0, colon))] =
                Text::trimmed(line.substr(colon + 1));
    }
    const auto length = request.headers["content-length"];
    request.body.resize(length.empty() ? 0 : std::stoul(length));
    connection.read(request.body.data(), static_cast<std::streamsize>(request.body.size()));
    return connection ? std::optional(request) : std::nullopt;
}

/// False when the client has gone.
bool sendAll(int connection, std::string_view bytes, std::chrono::milliseconds pause) {
    while (!bytes.empty()) {
        const auto piece = pause.count() > 0 ? bytes.substr(0, 1) : bytes;
        const auto sent = ::send(connection, piece.data(), piece.size(), MSG_NOSIGNAL);
        if (sent < 1)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
        std::this_thread::sleep_for(pause);
    }
    return true;
}

} // namespace

WireAnswer WireAnswer::of(int status, std::string_view body, std::string_view moreHeaders) {
    return {.bytes = "HTTP/1.1 " + std::to_string(status) +
                     " Told\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" +
                     std::string(moreHeaders) + "\r\n" + std::string(body)};
}

RecordingServer::RecordingServer()
    : RecordingServer([](const ReceivedRequest&, std::size_t) { return WireAnswer::of(200); }) {}

RecordingServer::RecordingServer(Handler handler)
    : handler_(std::move(handler)), listener_(listenOnLoopback()),
      acceptor_([this] { acceptAll(); }) {}

RecordingServer::~RecordingServer() {
    ::shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    {
        const std::lock_guard guard(lock_);
        for (const int connection : connections_)
            ::shutdown(connection, SHUT_RDWR);
    }
    threads_.clear();
    for (const int connection : connections_)
        ::close(connection);
    ::close(listener_);
}

std::string RecordingServer::url() const {
    return urlOf(listener_);
}

std::vector<ReceivedRequest> RecordingServer::requests() const {
    const std::lock_guard guard(lock_);
    return requests_;
}

std::vector<std::string> RecordingServer::paths() const {
    // Asked again and again by who waits, and bodies may be large.
    const std::lock_guard guard(lock_);
    std::vector<std::string> paths;
    for (const auto& request : requests_)
        paths.push_back(Text::replaced(request.line, "POST /api/", ""));
    return paths;
}

void RecordingServer::acceptAll() {
    for (;;) {
        const int connection = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0)
            return;
        const int atOnce = 1;
        ::setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &atOnce, sizeof atOnce);
        const std::lock_guard guard(lock_);
        connections_.push_back(connection);
        threads_.emplace_back([this, connection] { serve(connection); });
    }
}

void RecordingServer::serve(int connection) {
    __gnu_cxx::stdio_filebuf<char> buffer(::dup(connection), std::ios::in);
    std::istream stream(&buffer);
    while (auto request = requestFrom(stream)) {
        const auto answer = record(std::move(*request));
        if (!sendAll(connection, answer.bytes, answer.pause) || answer.hangsUp)
            break;
    }
    ::shutdown(connection, SHUT_RDWR);
}

WireAnswer RecordingServer::record(ReceivedRequest request) {
    const std::lock_guard guard(lock_);
    requests_.push_back(std::move(request));
    return handler_(requests_.back(), requests_.size() - 1);
}

DeafServer::DeafServer() : listener_(listenOnLoopback()) {}

DeafServer::~DeafServer() {
    ::close(listener_);
}

std::string DeafServer::url() const {
    return urlOf(listener_);
}

} // namespace slatewise::test
