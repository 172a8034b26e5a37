#include "Reports/EssenceText.h"

#include "Offload/TimecodeFormat.h"
#include "Reports/ReportText.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <cmath>

namespace slatewise::EssenceText {

namespace {

struct NamedSize {
    int width, height;
    std::string_view name;
};

constexpr std::array<NamedSize, 5> kNamedSizes = {{
    {1920, 1080, "HD"},
    {2048, 1152, "2K"},
    {3840, 2160, "UHD"},
    {4480, 1856, "4K OG"},
    {4480, 3096, "4K 3:2"},
}};

/// Rates closer than this are the same rate, written with different care.
constexpr double kRateTolerance = 0.05;

/// Facts in order, those that are known; `pattern` is the text around a fact.
class Facts {
public:
    void add(const std::optional<std::string>& fact,
             fmt::format_string<const std::string&> pattern = "{}") {
        if (fact && !fact->empty())
            facts_.push_back(fmt::format(pattern, *fact));
    }
    template <typename Number>
    void add(const std::optional<Number>& fact, fmt::format_string<const Number&> pattern) {
        if (fact)
            facts_.push_back(fmt::format(pattern, *fact));
    }

    /// Empty when no fact is known.
    std::string joined(std::string_view between) const {
        return fmt::format("{}", fmt::join(facts_, between));
    }

private:
    std::vector<std::string> facts_;
};

std::optional<std::string> rateText(const std::optional<double>& rate, AppLanguage language) {
    if (!rate)
        return std::nullopt;
    return ReportText::number(TimecodeFormat::fpsString(*rate), language);
}

std::string identity(const ClipEssence& essence) {
    Facts facts;
    facts.add(essence.cameraModel);
    facts.add(essence.cameraSerial, "SN {}");
    facts.add(essence.cameraId, "Cam {}");
    return facts.joined("  ");
}

std::string dayAndPlace(const ClipEssence& essence) {
    Facts facts;
    facts.add(essence.recordedDate);
    facts.add(essence.location);
    return facts.joined(separator);
}

std::string technicalFacts(const ClipEssence& essence, AppLanguage language) {
    std::optional<std::string> shutter;
    if (essence.shutterDegrees)
        shutter = ReportText::number(fmt::format("{:.1f}", *essence.shutterDegrees), language);
    Facts facts;
    facts.add(rateText(essence.projectFps, language), "{} fps");
    facts.add(essence.gamma);
    facts.add(essence.whiteBalanceK, "{}K");
    facts.add(shutter, "shutter {}°");
    facts.add(essence.exposureIndex, "EI {}");
    return facts.joined(separator);
}

std::string lensAndMedium(const ClipEssence& essence) {
    Facts facts;
    facts.add(essence.lens);
    facts.add(essence.sxsSerial, "SxS {}");
    return facts.joined(separator);
}

/// The clip's sensor rate, when it is not the one that the card leads one to expect.
std::optional<double> unusualSensorFps(const ClipEssence& essence, const ClipEssence& common) {
    const auto reference = common.sensorFps ? common.sensorFps : common.projectFps;
    if (!essence.sensorFps || !reference ||
        std::abs(*essence.sensorFps - *reference) <= kRateTolerance)
        return std::nullopt;
    return essence.sensorFps;
}

std::string deviations(const ClipEssence& essence, const ClipEssence& common,
                       AppLanguage language) {
    Facts facts;
    if (!common.lookName)
        facts.add(essence.lookName);
    if (!common.exposureIndex)
        facts.add(essence.exposureIndex, "EI {}");
    facts.add(rateText(unusualSensorFps(essence, common), language), "sensor {} fps");
    return facts.joined(separator);
}

void addLine(std::vector<std::string>& lines, std::string line) {
    if (!line.empty())
        lines.push_back(std::move(line));
}

} // namespace

std::optional<std::string> recordLabel(const ClipEssence& essence) {
    Facts facts;
    facts.add(essence.codec);
    facts.add(essence.codecProfile);
    const auto label = facts.joined(" ");
    return label.empty() ? std::nullopt : std::optional(label);
}

std::optional<std::string> resolutionLabel(const ClipEssence& essence) {
    if (essence.width.value_or(0) < 1 || essence.height.value_or(0) < 1)
        return std::nullopt;
    auto label = fmt::format("{}×{}", *essence.width, *essence.height);
    for (const auto& size : kNamedSizes) {
        if (size.width == *essence.width && size.height == *essence.height)
            label += fmt::format(" ({})", size.name);
    }
    return label;
}

std::vector<std::string> cardLines(const ClipEssence& essence, AppLanguage language) {
    Facts software;
    software.add(essence.supVersion, "SUP {}");

    std::vector<std::string> lines;
    addLine(lines, identity(essence));
    addLine(lines, software.joined(""));
    addLine(lines, dayAndPlace(essence));
    addLine(lines, essence.production.value_or(""));
    addLine(lines, technicalFacts(essence, language));
    addLine(lines, lensAndMedium(essence));
    return lines;
}

std::vector<std::string> clipLines(const ClipEssence& essence, const ClipEssence& common,
                                   AppLanguage language) {
    std::vector<std::string> lines;
    addLine(lines, recordLabel(essence).value_or(""));
    addLine(lines, resolutionLabel(essence).value_or(""));
    addLine(lines, deviations(essence, common, language));
    return lines;
}

} // namespace slatewise::EssenceText
