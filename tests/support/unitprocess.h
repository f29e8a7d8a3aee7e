#pragma once

#include "support/childprocess.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// A real unit on a loopback port of its own, with a store that outlives restarts.
class UnitProcess {
public:
    /// Starts the unit and waits until it listens; `options` are added to its command line.
    UnitProcess(std::string store, std::vector<std::string> options)
        : Store(std::move(store)), Options(std::move(options)) {
        Start();
    }

    /// The same after every restart.
    std::string Host() const { return "127.0.0.1:" + Port; }
    ChildProcess& Process() { return *Child; }
    /// Kills it at once, as a power cut would.
    void Kill();
    /// Starts it again on the same port; returns when it listens.
    void Start();

private:
    std::string Store;
    std::vector<std::string> Options;
    std::string Port = "0";
    std::unique_ptr<ChildProcess> Child;
};

/// Makes a short clip with moving picture and sound with ffmpeg.
void MakeClip(const std::string& file, int seconds);
