/// Loaded before a program's libraries, it makes one of the program's reads, writes or opens come
/// out otherwise: with an error, or with half of the bytes. What is to happen stands in the
/// environment, as "CALL POSITION ERRNO PREFIX": the POSITIONth such CALL on a file whose path
/// begins with PREFIX fails with ERRNO, or is cut short when that is 0.

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct Order {
    std::string call;
    int position = 0;
    int error = 0;
    std::string prefix;
};

const Order& order() {
    static const Order order = [] {
        Order read;
        const char* text = std::getenv("SLATEWISE_FAULT");
        std::istringstream(text ? text : "") >> read.call >> read.position >> read.error >>
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

/// Whether this is the call that is meant.
bool isMeant(const char* call, const std::string& path) {
    static std::atomic<int> calls = 0;
    if (order().call != call || path.compare(0, order().prefix.size(), order().prefix) != 0 ||
        ++calls != order().position)
        return false;
    constexpr char kSign[] = "(FAULT)\n";
    const char* file = std::getenv("SLATEWISE_FAULT_LOG");
    const int log = file ? ::creat(file, 0600) : -1;
    (void)!::write(log, kSign, sizeof kSign - 1);
    ::close(log);
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
    const bool isIdle = order().call != name;
    if (isIdle || !isMeant(name, pathOf(descriptor)))
        return function(descriptor, buffer, count, rest...);
    if (order().error == 0)
        return function(descriptor, buffer, half(descriptor, count), rest...);
    errno = order().error;
    return -1;
}

int open(const char* name, const char* path, int flags, mode_t mode) {
    using Function = int (*)(const char*, int, mode_t);
    static const auto function = next<Function>(name);
    if (!isMeant("open", path))
        return function(path, flags, mode);
    errno = order().error;
    return -1;
}

mode_t modeIn(int flags, va_list& rest) {
    return (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
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

int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const auto mode = modeIn(flags, rest);
    va_end(rest);
    return open("open", path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const auto mode = modeIn(flags, rest);
    va_end(rest);
    return open("open64", path, flags, mode);
}
}
