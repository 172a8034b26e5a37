#include "HardwareShapes.h"
#include "MockUDisks.h"

#include "Platform/Text.h"
#include "Volumes/DiskUtilClient.h"
#include "Volumes/VolumeClassifier.h"

#include <gmock/gmock.h>

#include <chrono>

using namespace slatewise;
using namespace slatewise::test;

namespace {

std::string described(const VolumeFacts& facts, VolumeKind kind) {
    std::string place;
    for (const auto& [is, word] :
         {std::pair(facts.isInternal, "internal"), std::pair(facts.isRemovable, "removable"),
          std::pair(facts.isExternal, "external")}) {
        if (is)
            place += (place.empty() ? "" : " ") + std::string(word);
    }
    return facts.deviceIdentifier + "|" + facts.fileSystem + "|" + facts.protocolName + "|" +
           place + "|" + std::string(rawValue(kind));
}

class Hardware : public ::testing::TestWithParam<Shape> {
protected:
    Hardware() { GetParam().build(machine); }

    Machine machine;
};

} // namespace

TEST_P(Hardware, IsWhatTheServiceSays) {
    const auto& shape = GetParam();
    const MockUDisks service(machine.objects());
    auto sources = machine.sources();
    sources.busAddress = service.address();
    const auto facts = DiskUtilClient::facts(machine.mountPoint(), sources);
    EXPECT_EQ(service.timesAskedForObjects(), 1);
    EXPECT_EQ(described(facts, VolumeClassifier::classify(facts).kind), shape.facts);
}

TEST_P(Hardware, IsTheSameWithoutTheService) {
    const auto& shape = GetParam();
    const auto facts = DiskUtilClient::facts(machine.mountPoint(), machine.sources());
    // The kernel tells what is connected how; which of it is made to be taken out it does not.
    const auto told = std::string(shape.facts);
    const auto fields = Text::pieces(told, '|');
    EXPECT_EQ(facts.deviceIdentifier, told.substr(0, told.find('|')));
    const auto kind = rawValue(VolumeClassifier::classify(facts).kind);
    if (shape.kindWithoutService)
        EXPECT_EQ(kind, rawValue(*shape.kindWithoutService));
    else
        EXPECT_EQ(kind, fields.back());
}

INSTANTIATE_TEST_SUITE_P(Shapes, Hardware, ::testing::ValuesIn(hardwareShapes()),
                         [](const auto& shape) { return std::string(shape.param.name); });

TEST(DiskService, NamesAndMeasuresAVolume) {
    Machine machine;
    readerWith(machine, "vfat");
    auto& partition = block(machine, "sdb1");
    partition["IdLabel"] = QString("Kart Ü");
    partition["IdUUID"] = QString("1234-ABCD");
    partition["IdVersion"] = QString("FAT16");
    partition["Size"] = qulonglong(2'000'000'000);
    const MockUDisks service(machine.objects());
    auto sources = machine.sources();
    sources.busAddress = service.address();

    const auto told = DiskUtilClient::facts(machine.mountPoint(), sources);
    EXPECT_EQ(told.volumeName, "Kart Ü");
    EXPECT_EQ(told.volumeUUID, "1234-ABCD");
    EXPECT_EQ(told.fileSystem, "MS-DOS FAT16");
    EXPECT_EQ(told.totalBytes, 2'000'000'000);

    const auto untold = DiskUtilClient::facts(machine.mountPoint(), machine.sources());
    EXPECT_EQ(untold.volumeName, "VOLUME");
    EXPECT_EQ(untold.totalBytes, 125'000'000 * 512LL);
}

TEST(DiskService, IsNotWaitedForLong) {
    Machine machine;
    readerWith(machine, "exfat");
    MockUDisks service(machine.objects());
    service.fallSilent();
    auto sources = machine.sources();
    sources.busAddress = service.address();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(DiskUtilClient::facts(machine.mountPoint(), sources).deviceIdentifier, "sdb1");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4));
}
