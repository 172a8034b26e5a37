#include "support/Sandbox.h"

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>

#include <array>
#include <cstddef>
#include <stdexcept>
#include <thread>

namespace slatewise::test {

namespace {

void forbid(unsigned call, unsigned code) {
    std::array<sock_filter, 4> program = {{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | code),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }};
    const sock_fprog filter{.len = program.size(), .filter = program.data()};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0)
        throw std::runtime_error("no system call can be forbidden here");
}

} // namespace

void runWithout(long call, int code, const std::function<void()>& body) {
    std::thread([&] {
        if (code != 0)
            forbid(static_cast<unsigned>(call), static_cast<unsigned>(code));
        body();
    }).join();
}

} // namespace slatewise::test
