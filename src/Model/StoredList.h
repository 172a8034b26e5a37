#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace slatewise {

class UserDefaults;

/// A list of texts under one key of the user's settings, as a JSON array.
namespace StoredList {

/// Empty when there is none or it cannot be read.
std::vector<std::string> load(const UserDefaults& defaults, std::string_view key);
void save(UserDefaults& defaults, std::string_view key, const std::vector<std::string>& texts);

} // namespace StoredList

} // namespace slatewise
