#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

/// A program whose two outputs go to files.
class Process {
public:
    /// No file that it writes grows beyond `longestFile` bytes: such a write fails.
    Process(const std::vector<std::string>& arguments, const std::string& output, const std::string& errors,
            rlim_t longestFile = RLIM_INFINITY) {
        m_id = ::fork();
        if (m_id == 0) {
            const rlimit limit{longestFile, longestFile};
            ::setrlimit(RLIMIT_FSIZE, &limit);
            ::signal(SIGXFSZ, SIG_IGN);
            redirect(output, STDOUT_FILENO);
            redirect(errors, STDERR_FILENO);
            std::vector<char*> texts;
            for (const std::string& argument : arguments) {
                texts.push_back(const_cast<char*>(argument.c_str()));
            }
            texts.push_back(nullptr);
            ::execv(texts[0], texts.data());
            ::_exit(127);
        }
    }
    ~Process() {
        if (m_id > 0) {
            ::kill(m_id, SIGKILL);
            ::waitpid(m_id, nullptr, 0);
        }
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void signal(int number) const { ::kill(m_id, number); }
    /// The exit status; -1 when a signal ended it, or when it has not ended in time.
    int wait() {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        int status = 0;
        while (::waitpid(m_id, &status, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() > limit) {
                return -1;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        m_id = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    static void redirect(const std::string& path, int descriptor) {
        ::dup2(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), descriptor);
    }

    pid_t m_id;
};

inline std::vector<std::string> linesOf(const std::string& path) {
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}
