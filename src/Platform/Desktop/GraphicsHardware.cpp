#include "Platform/Desktop/GraphicsHardware.h"

#include <algorithm>

namespace slatewise::GraphicsHardware {

bool isPresent(const std::filesystem::path& devices) {
    std::error_code failure;
    // The one driver that may come without a node of its own among the others'.
    if (std::filesystem::exists(devices / "nvidiactl", failure))
        return true;
    const std::filesystem::directory_iterator nodes(devices / "dri", failure);
    return std::any_of(begin(nodes), end(nodes), [](const auto& node) {
        return node.path().filename().native().starts_with("renderD");
    });
}

} // namespace slatewise::GraphicsHardware
