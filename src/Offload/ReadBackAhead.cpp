#include "Offload/ReadBackAhead.h"

#include <system_error>
#include <utility>

namespace slatewise {

std::unique_ptr<ReadBackAhead> ReadBackAhead::start(std::stop_token stop) {
    try {
        return std::unique_ptr<ReadBackAhead>(new ReadBackAhead(std::move(stop)));
    } catch (const std::system_error&) {
        return nullptr;
    }
}

ReadBackAhead::ReadBackAhead(std::stop_token stop) : stop_(std::move(stop)) {
    for (auto& reader : readers_) {
        reader = std::jthread([this](const std::stop_token& end) {
            Transfer transfer;
            while (auto job = jobs_.take(end)) {
                // What nobody takes any more is not read.
                if (end.stop_requested())
                    return;
                (*job)(transfer);
            }
        });
    }
}

ReadBackAhead::~ReadBackAhead() {
    for (auto& reader : readers_)
        reader.request_stop();
}

void ReadBackAhead::begin(FileBeneath copy, std::vector<HashFormat> furtherFormats) {
    Job job([copy, furtherFormats = std::move(furtherFormats), stop = stop_](Transfer& transfer) {
        Read read;
        const TransferWatch watch = {
            .onBytes = [&](std::size_t count) { read.chunks.push_back(count); },
            .onAccess = [&](const FileBeneath&, FileAccess access) { read.access = access; },
            .stop = stop,
            .furtherFormats = furtherFormats};
        read.copy = Verifier::readDestination(transfer, copy, watch);
        return read;
    });
    begun_.push_back({std::move(copy.relative), job.get_future()});
    jobs_.put(std::move(job));
}

std::optional<Verifier::ReadBack> ReadBackAhead::take(const FileBeneath& copy,
                                                      const TransferWatch& watch) {
    if (begun_.empty() || begun_.front().relative != copy.relative)
        return std::nullopt;
    auto reading = std::move(begun_.front().read);
    begun_.pop_front();
    auto read = reading.get();
    for (const auto chunk : read.chunks)
        watch.onBytes(chunk);
    watch.onAccess(copy, read.access);
    return std::move(read.copy);
}

} // namespace slatewise
