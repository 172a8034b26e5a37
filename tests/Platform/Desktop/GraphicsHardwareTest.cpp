#include "Platform/Desktop/GraphicsHardware.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <vector>

using namespace slatewise;
using namespace slatewise::test;

TEST(GraphicsHardware, IsToldByItsDeviceFiles) {
    const struct {
        std::vector<const char*> files;
        bool isPresent;
    } cases[] = {
        {{}, false},
        {{"fb0"}, false},
        {{"dri/card0"}, false}, // shows pictures, computes none
        {{"dri/card0", "dri/renderD128"}, true},
        {{"nvidia0", "nvidiactl"}, true},
    };
    for (const auto& testCase : cases) {
        const TemporaryFolder devices;
        for (const auto* file : testCase.files)
            writeFile(devices / file, "");
        EXPECT_EQ(GraphicsHardware::isPresent(devices.path()), testCase.isPresent)
            << ::testing::PrintToString(testCase.files);
    }
}
