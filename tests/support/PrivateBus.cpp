#include "support/PrivateBus.h"

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
    daemon_.emplace(std::vector<std::string>{"dbus-daemon",
                                             "--config-file=" + (folder_ / "bus.conf").native(),
                                             "--print-address=1"},
                    Daemon::Owner::ThisUser);
    address_ = daemon_->firstLine();
    if (!address_.starts_with("unix:"))
        throw std::runtime_error("no bus: " + address_);
}

} // namespace slatewise::test
