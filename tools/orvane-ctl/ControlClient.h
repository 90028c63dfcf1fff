#pragma once

#include <chrono>
#include <optional>
#include <string>

/// One connection to a telephone's control socket, a line each way.
class ControlClient {
public:
    ControlClient() = default;
    ~ControlClient();
    ControlClient(const ControlClient&) = delete;
    ControlClient& operator=(const ControlClient&) = delete;

    bool connect(const std::string& path, std::string& error);
    bool send(const std::string& line);

    enum class Reading { LINE, TIMEOUT, ENDED };
    using TimePoint = std::chrono::steady_clock::time_point;
    /// Waits until then at the latest; for ever without it.
    Reading read(std::string& line, std::optional<TimePoint> until);

private:
    int m_socket = -1;
    std::string m_pending;
};
