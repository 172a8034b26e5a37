#pragma once

#include "Offload/CopyEngine.h"
#include "support/Files.h"
#include "support/Offloads.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <stop_token>
#include <string>
#include <vector>

namespace slatewise::test {

using Problems = std::vector<std::string>;

/// A card and a destination folder, and what one run between them told.
class CopyEngineTest : public ::testing::Test {
protected:
    OffloadOutcome run(const std::function<void(const OffloadPhase&)>& onPhase = {}) {
        return CopyEngine::run(request, record.observer(onPhase), stop.get_token());
    }

    TemporaryFolder card;
    TemporaryFolder destination;
    CopyEngine::Request request = requestFor(card.path(), destination.path());
    RunRecord record;
    std::stop_source stop;
};

} // namespace slatewise::test
