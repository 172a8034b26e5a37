#pragma once

#include "Arguments.h"
#include "Texts.h"

#include "Batch/TimeLeft.h"
#include "Offload/OffloadPhase.h"

#include <chrono>
#include <mutex>
#include <string>
#include <string_view>

namespace slatewise::tool {

/// Shows where an offload stands on standard error: a bar that is drawn over and over on a
/// terminal, a plain line every now and then otherwise, nothing when only errors are wanted. What
/// names hold cannot act on the terminal, and each line goes out whole. Any thread.
class ProgressDisplay {
public:
    ProgressDisplay(const Texts& texts, Output output);

    /// Text before every line from here on, such as which pair of a batch is at work.
    void setLabel(const std::string& label);

    void show(const OffloadPhase& phase);

    /// What is good to know but no error.
    void inform(std::string_view sentence);

    /// A sentence that stays and is never silent: it stands on a line of its own, whatever the bar
    /// does. One that is very long loses its middle.
    void note(std::string_view sentence);

    /// Makes room for a line of standard output, which may go to the same terminal.
    void clearBar();

private:
    std::string line(const OffloadPhase& phase, std::chrono::steady_clock::time_point now);
    void draw(const std::string& text);

    const Texts& texts_;
    const bool isSilent_;
    const bool isTerminal_;
    std::mutex lock_;
    std::string label_;
    TimeLeft timeLeft_;
    std::size_t shownKind_;
    std::chrono::steady_clock::time_point shownAt_;
    bool hasBar_ = false;
};

} // namespace slatewise::tool
