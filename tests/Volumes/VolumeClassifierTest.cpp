#include "Volumes/VolumeClassifier.h"

#include <gmock/gmock.h>

using namespace slatewise;
using Reasons = std::vector<std::string>;

namespace {

constexpr auto kCard = VolumeKind::CameraCard;
constexpr auto kDestination = VolumeKind::Destination;
constexpr auto kSystem = VolumeKind::System;
constexpr auto kUnknown = VolumeKind::Unknown;

constexpr auto kOuter = "çıkarılabilir/harici";
constexpr auto kFolder = "kamera klasör imzası";
constexpr auto kXdcam = "XDCAM CONTENTS+CLIP";
constexpr auto kMisc = "MISC + FAT/exFAT";
constexpr auto kWritable = "yazılabilir hedef";

/// The facts that count, with the usual ones as defaults.
struct Volume {
    std::string name = "A001";
    std::string fileSystem = {};
    std::string protocol = {};
    std::vector<std::string> signatures = {};
    bool isInternal = false;
    bool isRemovable = false;
    bool isExternal = false;
    WriteObstacle obstacle = WriteObstacle::None;
};

VolumeFacts factsOf(const Volume& volume) {
    VolumeFacts facts;
    facts.volumeName = volume.name;
    facts.fileSystem = volume.fileSystem;
    facts.protocolName = volume.protocol;
    facts.signatures = volume.signatures;
    facts.isInternal = volume.isInternal;
    facts.isRemovable = volume.isRemovable;
    facts.isExternal = volume.isExternal;
    facts.writeObstacle = volume.obstacle;
    return facts;
}

struct Verdict {
    const char* what;
    Volume volume;
    VolumeKind kind;
    int score;
    Reasons reasons;
};

} // namespace

TEST(VolumeClassifier, WeighsFactsBehindHardGates) {
    const Verdict verdicts[] = {
        {"card in a slot",
         {.fileSystem = "ExFAT",
          .protocol = "Secure Digital",
          .signatures = {"DCIM"},
          .isRemovable = true},
         kCard,
         9,
         {kOuter, "protokol Secure Digital", "dosya sistemi ExFAT", kFolder}},
        {"empty card",
         {.fileSystem = "MS-DOS FAT32", .protocol = "Secure Digital", .isRemovable = true},
         kCard,
         6,
         {kOuter, "protokol Secure Digital", "dosya sistemi MS-DOS FAT32"}},
        {"external disk",
         {.fileSystem = "APFS", .protocol = "USB", .isExternal = true},
         kDestination,
         4,
         {kOuter, "protokol USB", kWritable}},
        {"external disk with a camera folder, written in small letters",
         {.fileSystem = "APFS", .protocol = "USB", .signatures = {"dcim"}, .isExternal = true},
         kCard,
         7,
         {kOuter, "protokol USB", kFolder}},
        {"external disk that is read-only",
         {.fileSystem = "APFS",
          .protocol = "USB",
          .isExternal = true,
          .obstacle = WriteObstacle::ReadOnly},
         kUnknown,
         4,
         {kOuter, "protokol USB", "salt okunur"}},
        {"external disk of another user",
         {.isExternal = true, .obstacle = WriteObstacle::NoPermission},
         kUnknown,
         2,
         {kOuter, "yazma izni yok"}},
        {"external disk that does not answer",
         {.isExternal = true, .obstacle = WriteObstacle::NoAnswer},
         kUnknown,
         2,
         {kOuter, "yanıt yok"}},
        {"card that is locked",
         {.fileSystem = "ExFAT", .isRemovable = true, .obstacle = WriteObstacle::ReadOnly},
         kCard,
         4,
         {kOuter, "dosya sistemi ExFAT"}},
        {"external disk of a file system that nobody knows",
         {.fileSystem = "ZFS", .isExternal = true},
         kUnknown,
         2,
         {kOuter}},
        {"external disk of a file system without a name",
         {.protocol = "PCI-Express", .isExternal = true},
         kDestination,
         2,
         {kOuter, kWritable}},
        {"external but marked internal as well",
         {.isInternal = true, .isExternal = true},
         kUnknown,
         2,
         {kOuter}},
        {"second disk inside",
         {.fileSystem = "APFS", .isInternal = true},
         kSystem,
         -100,
         {"iç sistem diski"}},
        {"network share", {}, kUnknown, 0, {}},
        {"system volume on an external disk",
         {.name = " \tDATA\n",
          .fileSystem = "ExFAT",
          .protocol = "USB",
          .signatures = {"DCIM"},
          .isExternal = true},
         kSystem,
         -100,
         {"sistem birimi adı"}},
        {"a name that only contains one of a system volume",
         {.name = "Macintosh HD - Data", .isExternal = true},
         kDestination,
         2,
         {kOuter, kWritable}},
        {"one strong signature alone", {.signatures = {"BPAV"}}, kUnknown, 3, {kFolder}},
        {"one strong signature on a disk that comes and goes",
         {.signatures = {".RDC"}, .isRemovable = true},
         kCard,
         5,
         {kOuter, kFolder}},
        {"FAT as reported in brackets, not removable",
         {.fileSystem = "MS-DOS (FAT32)", .signatures = {"MISC"}},
         kUnknown,
         3,
         {"dosya sistemi MS-DOS (FAT32)", kMisc}},
        {"FAT with MISC on a known bus",
         {.fileSystem = "msdos fat32", .protocol = "FireWire", .signatures = {"MISC"}},
         kCard,
         5,
         {"protokol FireWire", "dosya sistemi msdos fat32", kMisc}},
        {"MISC on another file system",
         {.fileSystem = "APFS", .protocol = "USB", .signatures = {"MISC"}, .isExternal = true},
         kDestination,
         4,
         {kOuter, "protokol USB", kWritable}},
        {"CONTENTS without CLIP",
         {.fileSystem = "HFS+",
          .protocol = "Thunderbolt",
          .signatures = {"CONTENTS"},
          .isExternal = true},
         kDestination,
         4,
         {kOuter, "protokol Thunderbolt", kWritable}},
        {"CONTENTS with CLIP, hiding MISC",
         {.fileSystem = "UDF", .signatures = {"MISC", "CONTENTS", "CLIP"}},
         kCard,
         5,
         {"dosya sistemi UDF", kXdcam}},
        {"CONTENTS with CLIP on a file system that is no camera's",
         {.protocol = "USB", .signatures = {"CONTENTS", "CLIP"}},
         kCard,
         5,
         {"protokol USB", kXdcam}},
        {"a strong signature hiding CONTENTS with CLIP",
         {.fileSystem = "ExFAT", .signatures = {"XDROOT", "CONTENTS", "CLIP"}},
         kCard,
         5,
         {"dosya sistemi ExFAT", kFolder}},
        {"exFAT that is no card",
         {.fileSystem = "ExFAT", .isInternal = false, .isExternal = false},
         kUnknown,
         2,
         {"dosya sistemi ExFAT"}},
    };
    for (const auto& [what, volume, kind, score, reasons] : verdicts) {
        const auto facts = factsOf(volume);
        EXPECT_EQ(VolumeClassifier::classify(facts),
                  (ClassifiedVolume{facts, kind, score, reasons}))
            << what;
    }
}
