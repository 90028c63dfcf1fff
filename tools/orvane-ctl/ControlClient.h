#pragma once

#include <chrono>
#include <string>

/// One connection to a telephone's control socket, a line each way.
class ControlClient {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    ControlClient() = default;
    ~ControlClient();
    ControlClient(const ControlClient&) = delete;
    ControlClient& operator=(const ControlClient&) = delete;

    static TimePoint deadline(double seconds) {
        return std::chrono::steady_clock::now() +
               std::chrono::duration_cast<std::chrono::steady_clock::duration>(std::chrono::duration<double>(seconds));
    }

    /// A telephone that lives but takes no client is waited for until then.
    bool connect(const std::string& path, TimePoint until, std::string& error);
    /// False when the telephone has gone, or takes nothing until then; what it has said before can still be read.
    bool send(const std::string& line, TimePoint until);

    enum class Reading { LINE, TIMEOUT, ENDED };
    /// Waits until then at the latest.
    Reading read(std::string& line, TimePoint until);

private:
    /// Whether the socket is ready for the events of poll().
    bool wait(short events, TimePoint until) const;

    int m_socket = -1;
    std::string m_pending;
};
