#include "Volumes/VolumeClassifier.h"

#include "Platform/Text.h"

#include <fmt/ranges.h>
#include <gmock/gmock.h>

using namespace slatewise;

namespace {

/// The facts that count, as words with blanks between them, and what becomes of them: the kind, the
/// score, and the reasons.
struct Verdict {
    const char *what, *fileSystem, *protocol, *signatures, *place, *told;
    const char* name = "A001";
};

VolumeFacts factsOf(const Verdict& verdict) {
    const std::string place = verdict.place;
    const auto is = [&](const char* word) {
        return place.find(word) != std::string::npos;
    };
    VolumeFacts facts;
    facts.volumeName = verdict.name;
    facts.fileSystem = verdict.fileSystem;
    facts.protocolName = verdict.protocol;
    for (const auto signature : Text::pieces(verdict.signatures, ' '))
        facts.signatures.emplace_back(signature);
    facts.isInternal = is("internal");
    facts.isRemovable = is("removable");
    facts.isExternal = is("external");
    facts.writeObstacle = is("locked")    ? WriteObstacle::ReadOnly
                          : is("foreign") ? WriteObstacle::NoPermission
                          : is("silent")  ? WriteObstacle::NoAnswer
                                          : WriteObstacle::None;
    return facts;
}

// clang-format off
const Verdict kVerdicts[] = {
    {"card in a slot", "ExFAT", "Secure Digital", "DCIM", "removable", "cameraCard 9: çıkarılabilir/harici; protokol Secure Digital; dosya sistemi ExFAT; kamera klasör imzası"},
    {"empty card", "MS-DOS FAT32", "Secure Digital", "", "removable", "cameraCard 6: çıkarılabilir/harici; protokol Secure Digital; dosya sistemi MS-DOS FAT32"},
    {"card that is locked", "ExFAT", "", "", "removable locked", "cameraCard 4: çıkarılabilir/harici; dosya sistemi ExFAT"},
    {"external disk", "APFS", "USB", "", "external", "destination 4: çıkarılabilir/harici; protokol USB; yazılabilir hedef"},
    {"with a camera folder, written in small letters", "APFS", "USB", "dcim", "external", "cameraCard 7: çıkarılabilir/harici; protokol USB; kamera klasör imzası"},
    {"that is read-only", "APFS", "USB", "", "external locked", "unknown 4: çıkarılabilir/harici; protokol USB; salt okunur"},
    {"of another user", "", "", "", "external foreign", "unknown 2: çıkarılabilir/harici; yazma izni yok"},
    {"that does not answer", "", "", "", "external silent", "unknown 2: çıkarılabilir/harici; yanıt yok"},
    {"of a file system that nobody knows", "ZFS", "", "", "external", "unknown 2: çıkarılabilir/harici"},
    {"of a file system without a name", "", "PCI-Express", "", "external", "destination 2: çıkarılabilir/harici; yazılabilir hedef"},
    {"external but marked internal as well", "", "", "", "internal external", "unknown 2: çıkarılabilir/harici"},
    {"second disk inside", "APFS", "", "", "internal", "system -100: iç sistem diski"},
    {"network share", "", "", "", "", "unknown 0: "},
    {"system volume on an external disk", "ExFAT", "USB", "DCIM", "external", "system -100: sistem birimi adı", " \tDATA\n"},
    {"a name that only contains one of a system volume", "", "", "", "external", "destination 2: çıkarılabilir/harici; yazılabilir hedef", "Macintosh HD - Data"},
    {"one strong signature alone", "", "", "BPAV", "", "unknown 3: kamera klasör imzası"},
    {"one strong signature on a disk that comes and goes", "", "", ".RDC", "removable", "cameraCard 5: çıkarılabilir/harici; kamera klasör imzası"},
    {"FAT as reported in brackets, not removable", "MS-DOS (FAT32)", "", "MISC", "", "unknown 3: dosya sistemi MS-DOS (FAT32); MISC + FAT/exFAT"},
    {"FAT with MISC on a known bus", "msdos fat32", "FireWire", "MISC", "", "cameraCard 5: protokol FireWire; dosya sistemi msdos fat32; MISC + FAT/exFAT"},
    {"MISC on another file system", "APFS", "USB", "MISC", "external", "destination 4: çıkarılabilir/harici; protokol USB; yazılabilir hedef"},
    {"CONTENTS without CLIP", "HFS+", "Thunderbolt", "CONTENTS", "external", "destination 4: çıkarılabilir/harici; protokol Thunderbolt; yazılabilir hedef"},
    {"CONTENTS with CLIP, hiding MISC", "UDF", "", "MISC CONTENTS CLIP", "", "cameraCard 5: dosya sistemi UDF; XDCAM CONTENTS+CLIP"},
    {"CONTENTS with CLIP on a file system that is no camera's", "", "USB", "CONTENTS CLIP", "", "cameraCard 5: protokol USB; XDCAM CONTENTS+CLIP"},
    {"a strong signature hiding CONTENTS with CLIP", "ExFAT", "", "XDROOT CONTENTS CLIP", "", "cameraCard 5: dosya sistemi ExFAT; kamera klasör imzası"},
    {"exFAT that is no card", "ExFAT", "", "", "", "unknown 2: dosya sistemi ExFAT"},
};
// clang-format on

} // namespace

TEST(VolumeClassifier, WeighsFactsBehindHardGates) {
    for (const auto& verdict : kVerdicts) {
        const auto facts = factsOf(verdict);
        const auto volume = VolumeClassifier::classify(facts);
        EXPECT_EQ(volume.facts, facts) << verdict.what;
        EXPECT_EQ(fmt::format("{} {}: {}", rawValue(volume.kind), volume.score,
                              fmt::join(volume.reasons, "; ")),
                  verdict.told)
            << verdict.what;
    }
}
