#pragma once

#include <sys/resource.h>

namespace slatewise::test {

/// While it lives, this process gets no more of a resource (`RLIMIT_…`).
class Limit {
public:
    Limit(__rlimit_resource of, rlim_t most) : of_(of) {
        ::getrlimit(of, &before_);
        const rlimit now = {most, before_.rlim_max};
        ::setrlimit(of, &now);
    }
    ~Limit() { ::setrlimit(of_, &before_); }
    Limit(const Limit&) = delete;
    Limit& operator=(const Limit&) = delete;

private:
    __rlimit_resource of_;
    rlimit before_{};
};

} // namespace slatewise::test
