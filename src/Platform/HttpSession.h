#pragma once

#include <QCoro/QCoroTask>

#include <chrono>
#include <string>

/// Requests to web services, over one session that all of the program shares. To be used on the
/// thread of the application's object.
namespace slatewise::HttpSession {

struct Answer {
    int status = 0;
    std::string body;
};

/// How long a request may take.
struct Limits {
    /// The time in which nothing moves, in either direction, after which it ends.
    std::chrono::milliseconds idle{20'000};
    /// A network as slow as this is still given the time to take the body. Whatever else happens,
    /// the whole of a request ends after the body's time at this rate and once more `idle`: a
    /// server that hands out a byte now and then holds nobody for long.
    double slowestBytesPerSecond = 16 * 1024;
};

/// Sends JSON text by POST, once, and gives what was answered, of whatever status.
///
/// Nothing is sent twice: not when the connection breaks, and not because the answer says where
/// else to send it. Fails with `Error`, whose text holds neither address nor body, when the address
/// is none or no whole answer came in time.
QCoro::Task<Answer> postJSON(std::string address, std::string body, Limits limits = {});

/// The machine's name in the network.
std::string hostName();

} // namespace slatewise::HttpSession
