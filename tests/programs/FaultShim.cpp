/// Loaded before a program's libraries, it makes one of the program's transfers fail or come up
/// short. Which one stands in the environment, as "CALL POSITION OUTCOME PREFIX": the POSITIONth
/// such CALL on a file whose path begins with PREFIX. OUTCOME is an error's number, "0" for half of
/// the bytes, or "-1" for none.

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <sstream>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

struct Order {
    std::string call;
    int position = 0;
    int outcome = 0;
    std::string prefix;
};

const Order& order() {
    static const Order order = [] {
        Order read;
        const char* text = std::getenv("SLATEWISE_FAULT");
        std::istringstream(text ? text : "") >> read.call >> read.position >> read.outcome >>
            read.prefix;
        return read;
    }();
    return order;
}

std::string pathOf(int descriptor) {
    char path[4096];
    const auto link = "/proc/self/fd/" + std::to_string(descriptor);
    const auto length = ::readlink(link.c_str(), path, sizeof path);
    return {path, length > 0 ? static_cast<std::size_t>(length) : 0};
}

/// Whether this is the call that is meant, which is then noted.
bool isMeant(std::string_view call, int descriptor) {
    static std::atomic<int> calls = 0;
    if (order().call != call || pathOf(descriptor).rfind(order().prefix, 0) != 0 ||
        ++calls != order().position)
        return false;
    const char* note = std::getenv("SLATEWISE_FAULT_NOTE");
    ::close(::creat(note ? note : "/dev/null", 0600));
    return true;
}

/// Half, in whole blocks where the file is read or written past the cache, as a kernel would.
std::size_t half(int descriptor, std::size_t count) {
    constexpr std::size_t kBlock = 4096;
    if ((::fcntl(descriptor, F_GETFL) & O_DIRECT) == 0)
        return (count + 1) / 2;
    return count > kBlock ? (count / 2 + kBlock - 1) / kBlock * kBlock : count;
}

template <typename Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

template <typename Buffer, typename... Rest>
ssize_t transfer(const char* name, int descriptor, Buffer buffer, std::size_t count, Rest... rest) {
    using Function = ssize_t (*)(int, Buffer, std::size_t, Rest...);
    static const auto function = next<Function>(name);
    if (!isMeant(name, descriptor))
        return function(descriptor, buffer, count, rest...);
    if (order().outcome == 0)
        return function(descriptor, buffer, half(descriptor, count), rest...);
    errno = order().outcome;
    return order().outcome < 0 ? 0 : -1;
}

} // namespace

extern "C" {

ssize_t read(int descriptor, void* buffer, std::size_t count) {
    return transfer("read", descriptor, buffer, count);
}

ssize_t write(int descriptor, const void* buffer, std::size_t count) {
    return transfer("write", descriptor, buffer, count);
}

ssize_t pread(int descriptor, void* buffer, std::size_t count, off64_t offset) {
    return transfer("pread64", descriptor, buffer, count, offset);
}

ssize_t pread64(int descriptor, void* buffer, std::size_t count, off64_t offset) {
    return transfer("pread64", descriptor, buffer, count, offset);
}

ssize_t pwrite64(int descriptor, const void* buffer, std::size_t count, off64_t offset) {
    return transfer("pwrite64", descriptor, buffer, count, offset);
}

int fsync(int descriptor) {
    static const auto function = next<int (*)(int)>("fsync");
    if (!isMeant("fsync", descriptor))
        return function(descriptor);
    errno = order().outcome;
    return -1;
}
}
