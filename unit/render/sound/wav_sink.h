#pragma once

#include "files/descriptor.h"
#include "render/sound/samples.h"
#include "render/sound/sink.h"

#include <array>
#include <chrono>
#include <optional>
#include <string>

namespace ZorvicRender {

/// Writes what a device would play to a file of 48 kHz, 16 bits, stereo, as time goes by. The file can be read at any
/// time: its head is brought up to date twice a second.
class WavSink final : public Sink {
public:
    /// The file's first sample is of the moment `since`; up to now it is silent. Replaces the file, or writes on in
    /// one that an earlier sink began with that moment. Throws Fault when it cannot be written.
    explicit WavSink(const std::string& file, TimePoint since = std::chrono::steady_clock::now(), bool goesOn = false);
    ~WavSink() override;

    void Turn(const Mix& mix) override;
    SinkFigures Figures() const override { return {}; }

private:
    void WriteHead();
    void Write(const void* data, std::size_t size, std::int64_t at);

    const std::string Name;
    const ZorvicUnit::Descriptor File;
    const std::int64_t First;  ///< output sample of the file's first
    std::int64_t Next;
    bool Failed = false;
};

}  // namespace ZorvicRender
