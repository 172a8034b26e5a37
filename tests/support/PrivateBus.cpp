#include "support/PrivateBus.h"

#include "support/Process.h"

#include <csignal>
#include <stdexcept>

namespace slatewise::test {

namespace {

constexpr auto kConfiguration = R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>unix:tmpdir=/tmp</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

} // namespace

PrivateBus::PrivateBus() {
    writeFile(folder_ / "bus.conf", kConfiguration);
    const auto started = run({"dbus-daemon", "--config-file=" + (folder_ / "bus.conf").native(),
                              "--fork", "--print-address=1", "--print-pid=1"});
    const auto& said = started.standardOutput;
    const auto end = said.find('\n');
    if (started.exitCode != 0 || end == std::string::npos)
        throw std::runtime_error("no bus: " + started.standardError);
    address_ = said.substr(0, end);
    daemon_ = std::stoi(said.substr(end + 1));
}

PrivateBus::~PrivateBus() {
    ::kill(daemon_, SIGTERM);
}

} // namespace slatewise::test
