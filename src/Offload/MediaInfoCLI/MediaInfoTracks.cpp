#include "Offload/MediaInfoCLI/MediaInfoTracks.h"

#include "Platform/Numbers.h"
#include "Platform/Text.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>

namespace slatewise::MediaInfoJSON {

namespace {

std::optional<std::string> textOf(const Json::Value& value) {
    if (value.is_string()) {
        auto text = Text::trimmed(value.get_ref<const std::string&>());
        return text.empty() ? std::nullopt : std::optional(std::move(text));
    }
    if (value.is_number_float())
        return fmt::format("{}", value.get<double>());
    if (value.is_number())
        return value.dump();
    if (!value.is_array())
        return std::nullopt;
    for (const auto& element : value) {
        if (auto text = textOf(element))
            return text;
    }
    return std::nullopt;
}

std::optional<double> finite(double number) {
    return std::isfinite(number) ? std::optional(number) : std::nullopt;
}

/// "00:01:40.040" or "01:40.040" in seconds.
std::optional<double> clockSeconds(const std::optional<std::string>& text) {
    if (!text)
        return std::nullopt;
    std::vector<double> parts;
    for (const auto piece : Text::pieces(*text, ':')) {
        const auto number = decimalNumber(std::string(piece));
        if (!number)
            return std::nullopt;
        parts.push_back(*number);
    }
    if (parts.size() < 2)
        return std::nullopt;
    if (parts.size() == 2)
        parts.insert(parts.begin(), 0);
    return finite(parts[0] * 3600 + parts[1] * 60 + parts[2]);
}

} // namespace

Track::Track(Json::Value values) : values_(std::move(values)) {
    const auto extra = values_.find("extra");
    if (extra == values_.end() || !extra->is_object())
        return;
    // A copy: the place of "extra" does not outlive the first insertion.
    const Json::Value further = *extra;
    for (const auto& [key, value] : further.items())
        values_.emplace(key, value);
}

std::optional<std::string> Track::string(const std::string& key) const {
    const auto found = values_.find(key);
    return found == values_.end() ? std::nullopt : textOf(*found);
}

std::optional<double> Track::number(const std::string& key) const {
    const auto text = string(key);
    if (!text)
        return std::nullopt;
    if (text->find('/') != std::string::npos)
        return Numbers::quotient(Text::replaced(*text, ",", "."));
    const auto value = decimalNumber(text);
    return value && *value > 0 ? value : std::nullopt;
}

std::optional<bool> Track::flag(const std::string& key) const {
    const auto word = lowercased(key);
    if (word == "yes" || word == "true" || word == "1" || word == "df")
        return true;
    if (word == "no" || word == "false" || word == "0" || word == "ndf")
        return false;
    return std::nullopt;
}

std::string Track::lowercased(const std::string& key) const {
    return Text::asciiLowercased(string(key).value_or(""));
}

std::optional<double> Track::frameRate() const {
    constexpr double kRounding = 0.001;
    const auto told = number("FrameRate");
    const auto frames = number("FrameRate_Num");
    const auto seconds = number("FrameRate_Den");
    const auto exact = frames && seconds ? *frames / *seconds : frames;
    return !told || (exact && std::abs(*exact - *told) < kRounding) ? exact : told;
}

std::optional<std::int64_t> Track::frameCount() const {
    return Numbers::whole(string("FrameCount").value_or(""));
}

std::optional<double> Track::durationSeconds() const {
    if (const auto seconds = clockSeconds(string("Duration_String3")))
        return seconds;
    const auto seconds = decimalNumber(string("Duration"));
    return seconds && *seconds > 0 ? seconds : std::nullopt;
}

std::vector<Track> tracksIn(std::string_view bytes) {
    // The JSON holds the file's name, which may be no valid text.
    auto root = Json::Value::parse(Text::displayable(bytes), nullptr, false);
    if (!root.is_object() || !root.contains("media") || !root["media"].is_object() ||
        !root["media"].contains("track"))
        return {};
    auto& list = root["media"]["track"];
    std::vector<Track> tracks;
    if (list.is_object()) {
        tracks.emplace_back(std::move(list));
        return tracks;
    }
    if (!list.is_array())
        return tracks;
    for (auto& element : list) {
        if (element.is_object())
            tracks.emplace_back(std::move(element));
    }
    return tracks;
}

std::optional<double> decimalNumber(const std::optional<std::string>& text) {
    return text ? Numbers::decimal(Text::replaced(*text, ",", ".")) : std::nullopt;
}

std::optional<int> wholeNumber(const std::optional<std::string>& text) {
    if (!text)
        return std::nullopt;
    using Limits = std::numeric_limits<int>;
    const auto digits = Text::replaced(*text, " ", "");
    // Every whole number that fits is exact as a double.
    const auto number = Numbers::decimal(digits);
    if (!number || *number <= Limits::min() - 1.0 || *number >= Limits::max() + 1.0)
        return std::nullopt;
    return static_cast<int>(*number);
}

} // namespace slatewise::MediaInfoJSON
