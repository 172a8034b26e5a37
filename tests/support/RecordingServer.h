#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace slatewise::test {

/// An HTTP request as it came over the wire.
struct ReceivedRequest {
    /// "POST /api/presence"
    std::string line;
    /// By lower-case name.
    std::map<std::string, std::string> headers;
    std::string body;
};

/// What a server does about a request: bytes on the wire, good or bad.
struct WireAnswer {
    static WireAnswer of(int status, std::string_view body = "{}",
                         std::string_view moreHeaders = "");
    /// Hangs up without a byte.
    static WireAnswer none() { return {.hangsUp = true}; }
    /// Says nothing and keeps the line open.
    static WireAnswer silence() { return {}; }

    std::string bytes{};
    /// Between any two bytes.
    std::chrono::milliseconds pause{0};
    bool hangsUp = false;
};

/// A real HTTP server on loopback that notes every request in its order. Answers on threads of its
/// own.
class RecordingServer {
public:
    using Handler = std::function<WireAnswer(const ReceivedRequest& request, std::size_t number)>;

    /// Answers everything with 200 and "{}".
    RecordingServer();
    /// `handler` is called for one request at a time; requests are numbered from 0.
    explicit RecordingServer(Handler handler);
    ~RecordingServer();
    RecordingServer(const RecordingServer&) = delete;
    RecordingServer& operator=(const RecordingServer&) = delete;

    std::string url() const;
    std::vector<ReceivedRequest> requests() const;
    /// The requests' lines, "POST /api/" left out.
    std::vector<std::string> paths() const;

private:
    void acceptAll();
    void serve(int connection);
    WireAnswer record(ReceivedRequest request);

    Handler handler_;
    int listener_ = -1;
    mutable std::mutex lock_;
    std::vector<ReceivedRequest> requests_;
    std::vector<int> connections_;
    std::vector<std::jthread> threads_;
    std::jthread acceptor_;
};

/// Takes connections and never reads a byte from them.
class DeafServer {
public:
    DeafServer();
    ~DeafServer();
    DeafServer(const DeafServer&) = delete;
    DeafServer& operator=(const DeafServer&) = delete;

    std::string url() const;

private:
    int listener_ = -1;
};

} // namespace slatewise::test
