#pragma once

#include "orvane-phone/Options.h"
#include "orvane-phone/Output.h"

#include <memory>
#include <string>

/// The telephone around the service: the PC's platform, the sibling services, the control socket.
class Telephone {
public:
    Telephone(Options options, Output& output);
    ~Telephone();
    Telephone(const Telephone&) = delete;
    Telephone& operator=(const Telephone&) = delete;

    /// Builds everything, says that it is ready, and initialises the service. False with the reason in `error` and the
    /// status with which to end.
    bool begin(std::string& error, int& exitStatus);

    /// Whether the first login thread has ended.
    bool hasFirstLoginEnded() const;
    bool isRunning() const;

    /// Everything that waits ends soon; to be followed by end().
    void abort();
    /// Takes everything down in order. Blocks until the service has come down.
    void end();

private:
    struct Parts;

    bool makeStore(std::string& error);
    bool makeService(std::string& error);
    bool listen(std::string& error, int& exitStatus);
    /// What the command line says, and defaults of what nothing says. False when the store cannot be written.
    bool presetItems();
    void addServices();

    const Options m_options;
    Output& m_output;
    std::unique_ptr<Parts> m_parts;
};
