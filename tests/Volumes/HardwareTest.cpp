#include "HardwareShapes.h"
#include "MockUDisks.h"

#include "Volumes/DiskUtilClient.h"
#include "Volumes/VolumeClassifier.h"

#include <gmock/gmock.h>

#include <chrono>

using namespace slatewise;
using namespace slatewise::test;

namespace {

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
    const auto facts = DiskUtilClient::facts(kMountPoint, sources);
    EXPECT_EQ(service.timesAskedForObjects(), 1);
    EXPECT_EQ(facts.deviceIdentifier, shape.identifier);
    EXPECT_EQ(facts.fileSystem, shape.fileSystem);
    EXPECT_EQ(facts.protocolName, shape.protocol);
    EXPECT_EQ((Place{facts.isInternal, facts.isRemovable, facts.isExternal}), shape.place);
    EXPECT_EQ(VolumeClassifier::classify(facts).kind, shape.kind);
}

TEST_P(Hardware, IsTheSameWithoutTheService) {
    const auto& shape = GetParam();
    const auto facts = DiskUtilClient::facts(kMountPoint, machine.sources());
    EXPECT_EQ(facts.deviceIdentifier, shape.identifier);
    EXPECT_EQ(facts.protocolName, shape.protocol);
    EXPECT_EQ(VolumeClassifier::classify(facts).kind,
              shape.kindWithoutService.value_or(shape.kind));
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

    const auto told = DiskUtilClient::facts(kMountPoint, sources);
    EXPECT_EQ(told.volumeName, "Kart Ü");
    EXPECT_EQ(told.volumeUUID, "1234-ABCD");
    EXPECT_EQ(told.fileSystem, "MS-DOS FAT16");
    EXPECT_EQ(told.totalBytes, 2'000'000'000);

    const auto untold = DiskUtilClient::facts(kMountPoint, machine.sources());
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
    EXPECT_EQ(DiskUtilClient::facts(kMountPoint, sources).deviceIdentifier, "sdb1");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4));
}
