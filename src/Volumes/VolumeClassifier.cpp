#include "Volumes/VolumeClassifier.h"

#include "Platform/Text.h"

#include <algorithm>
#include <set>
#include <span>

namespace slatewise::VolumeClassifier {

namespace {

constexpr int kSystemScore = -100;
constexpr int kBestScoreOfNoCard = 3;

constexpr std::array<std::string_view, 8> kStrongSignatures = {
    "dcim", "private/m4root", "private/avchd", "xdroot", "bpav", ".rdc", "bdmv", "canonmsc"};

bool containsAny(const std::string& reported, std::span<const std::string_view> entries) {
    const auto text = Text::asciiLowercased(reported);
    return std::any_of(entries.begin(), entries.end(), [&](std::string_view entry) {
        return text.find(entry) != std::string::npos;
    });
}

bool hasSystemName(const VolumeFacts& facts) {
    const auto name = Text::asciiLowercased(Text::trimmed(facts.volumeName));
    return std::find(systemNames.begin(), systemNames.end(), name) != systemNames.end();
}

bool comesAndGoes(const VolumeFacts& facts) {
    return facts.isRemovable || facts.isExternal;
}

ClassifiedVolume systemVolume(VolumeFacts facts, const char* reason) {
    return {std::move(facts), VolumeKind::System, kSystemScore, {reason}};
}

/// The camera folders of a volume, whatever the case of their names.
class Signatures {
public:
    explicit Signatures(const std::vector<std::string>& tags) {
        for (const auto& tag : tags)
            tags_.insert(Text::asciiLowercased(tag));
    }

    bool anyStrong() const {
        return std::any_of(kStrongSignatures.begin(), kStrongSignatures.end(),
                           [this](std::string_view tag) { return tags_.contains(tag); });
    }
    /// Each of the two says nothing by itself.
    bool contentsAndClip() const { return tags_.contains("contents") && tags_.contains("clip"); }
    bool misc() const { return tags_.contains("misc"); }

private:
    std::set<std::string, std::less<>> tags_;
};

class Weighing {
public:
    explicit Weighing(ClassifiedVolume& volume)
        : volume_(volume), signatures_(volume.facts.signatures),
          hasCameraFileSystem_(containsAny(volume.facts.fileSystem, cameraFileSystems)) {}

    void weigh() {
        const auto& facts = volume_.facts;
        if (comesAndGoes(facts))
            add(2, "çıkarılabilir/harici");
        if (containsAny(facts.protocolName, cameraProtocols))
            add(2, "protokol " + facts.protocolName);
        if (hasCameraFileSystem_)
            add(2, "dosya sistemi " + facts.fileSystem);
        weighSignatures();
    }

    bool isCameraCard() const {
        return volume_.score > kBestScoreOfNoCard &&
               (hasCameraFileSystem_ || signatures_.anyStrong() || signatures_.contentsAndClip());
    }

private:
    void add(int weight, std::string reason) {
        volume_.score += weight;
        volume_.reasons.push_back(std::move(reason));
    }

    void weighSignatures() {
        if (signatures_.anyStrong())
            add(3, "kamera klasör imzası");
        else if (signatures_.contentsAndClip())
            add(3, "XDCAM CONTENTS+CLIP");
        else if (signatures_.misc() && hasCameraFileSystem_)
            add(1, "MISC + FAT/exFAT");
    }

    ClassifiedVolume& volume_;
    Signatures signatures_;
    bool hasCameraFileSystem_;
};

/// Of a disk that suits as a destination.
std::string_view reasonOf(WriteObstacle obstacle) {
    switch (obstacle) {
    case WriteObstacle::None:
        return "yazılabilir hedef";
    case WriteObstacle::ReadOnly:
        return "salt okunur";
    case WriteObstacle::NoPermission:
        return "yazma izni yok";
    case WriteObstacle::NoAnswer:
        break;
    }
    return "yanıt yok";
}

} // namespace

bool suitsAsDestination(const VolumeFacts& facts) {
    const bool hasFileSystem =
        facts.fileSystem.empty() || containsAny(facts.fileSystem, destinationFileSystems);
    return hasFileSystem && !facts.isInternal && comesAndGoes(facts);
}

ClassifiedVolume classify(VolumeFacts facts) {
    if (hasSystemName(facts))
        return systemVolume(std::move(facts), "sistem birimi adı");
    if (facts.isInternal && !comesAndGoes(facts))
        return systemVolume(std::move(facts), "iç sistem diski");

    ClassifiedVolume volume{.facts = std::move(facts), .reasons = {}};
    Weighing weighing(volume);
    weighing.weigh();
    if (weighing.isCameraCard()) {
        volume.kind = VolumeKind::CameraCard;
    } else if (suitsAsDestination(volume.facts)) {
        if (volume.facts.isWritable())
            volume.kind = VolumeKind::Destination;
        volume.reasons.emplace_back(reasonOf(volume.facts.writeObstacle));
    }
    return volume;
}

} // namespace slatewise::VolumeClassifier
