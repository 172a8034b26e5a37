#pragma once

#include "Platform/Json.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The tracks in the tool's JSON, and lenient readers of their values. A reader gives an empty
/// result for whatever it does not understand.
namespace slatewise::MediaInfoJSON {

/// One track of a file: an object whose "extra" values stand beside its own.
class Track {
public:
    /// A track that knows nothing, in place of one that is not there.
    Track() = default;
    explicit Track(Json::Value values);

    /// The value as text, not empty and without blanks around it. Of a list the first that is one.
    std::optional<std::string> string(const std::string& key) const;

    /// A number above 0, or a fraction such as "30000/1001".
    std::optional<double> number(const std::string& key) const;

    /// "Yes", "DF" and the like, and their opposites.
    std::optional<bool> flag(const std::string& key) const;

    /// As `string`, compared and searched without regard to case.
    std::string lowercased(const std::string& key) const;

    /// As a fraction where the track has one: beside it, the number is rounded.
    std::optional<double> frameRate() const;
    std::optional<std::int64_t> frameCount() const;
    std::optional<double> durationSeconds() const;

private:
    Json::Value values_ = Json::Value::object();
};

/// All tracks of a file in their order; none when the text is not the tool's JSON.
std::vector<Track> tracksIn(std::string_view bytes);

/// A number with a point or a comma.
std::optional<double> decimalNumber(const std::optional<std::string>& text);

/// A whole number; a fraction is cut off, blanks between digits are ignored.
std::optional<int> wholeNumber(const std::optional<std::string>& text);

} // namespace slatewise::MediaInfoJSON
