#include "logging/LogSink.h"

#include "logging/HostLog.h"
#include "logging/Logging.h"
#include "logging/Redaction.h"

#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <pthread.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <memory>
#include <mutex>

namespace {

struct Sink {
    std::atomic<int> level{0};
    std::mutex mutex;
    bool showSecrets = false;
    Redaction redaction;
    std::shared_ptr<spdlog::logger> logger;
    std::atomic<unsigned> lostLines{0}; ///< since the last line that could be written
};

Sink& sink() {
    // Never destroyed: threads may log to the very end of the process.
    static auto* const instance = new Sink;
    return *instance;
}

std::string timeStamp() {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    std::array<char, 40> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &utc);
    std::snprintf(text.data() + length, text.size() - length, ".%03dZ", static_cast<int>(milliseconds));
    return text.data();
}

std::string threadName() {
    std::array<char, 16> name{};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return name.data();
}

std::string formatted(const char* format, std::va_list arguments) {
    std::va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    if (length < 0) {
        return format;
    }
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

void write(const Sink& target, int level, const std::string& tag, const std::string& message) {
    target.logger->log(spdlog::level::info,
                       timeStamp() + " " + std::to_string(level) + " " + tag + " [" + threadName() + "] " + message);
}

} // namespace

bool LogSink::configure(const Options& options, std::string& error) {
    Sink& target = sink();
    const std::lock_guard<std::mutex> lock(target.mutex);
    try {
        spdlog::sink_ptr output;
        if (options.file.empty()) {
            output = std::make_shared<spdlog::sinks::stderr_sink_mt>();
        } else {
            output = std::make_shared<spdlog::sinks::basic_file_sink_mt>(options.file);
        }
        auto logger = std::make_shared<spdlog::logger>("orvane", output);
        logger->set_pattern("%v");
        logger->set_level(spdlog::level::trace);
        logger->flush_on(spdlog::level::trace);
        logger->set_error_handler([&target](const std::string&) { ++target.lostLines; });
        target.logger = logger;
    } catch (const std::exception& exception) {
        error = exception.what();
        return false;
    }
    target.showSecrets = options.showSecrets;
    target.level = options.level;
    return true;
}

std::string LogSink::visible(const std::string& message) {
    std::string text;
    text.reserve(message.size());
    for (const char character : message) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '\n') {
            text += "\\n";
        } else if (character == '\t') {
            text += "\\t";
        } else if (byte < 0x20 || byte == 0x7F) {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\x%02x", byte);
            text += escape.data();
        } else {
            text += character;
        }
    }
    return text;
}

bool loggingOnAppLine(const char*, int level) {
    // Before the sink is configured its level is 0, and there is nowhere to write to.
    const int written = sink().level;
    return written > 0 && level <= written;
}

void logAppLine(const char* tag, const char*, int level, int, const char* format, ...) {
    Sink& target = sink();
    if (!loggingOnAppLine(tag, level)) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    try {
        std::string message = formatted(format, arguments);
        const std::lock_guard<std::mutex> lock(target.mutex);
        if (!target.showSecrets) {
            message = target.redaction.redact(message);
        }
        if (const unsigned lost = target.lostLines.exchange(0); lost > 0) {
            write(target, HostLog::ERROR, HostLog::tag,
                  std::to_string(lost) + " lines of this log could not be written");
        }
        write(target, level, tag, LogSink::visible(message));
    } catch (const std::exception&) {
        ++target.lostLines; // a line that cannot be written must not stop the telephone
    }
    va_end(arguments);
}
