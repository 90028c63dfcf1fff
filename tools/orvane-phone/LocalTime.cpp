#include "orvane-phone/LocalTime.h"

#include <array>

namespace {

std::string formatted(std::time_t seconds, const char* format) {
    std::tm local{};
    ::localtime_r(&seconds, &local);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), format, &local);
    return text.data();
}

} // namespace

std::string LocalTime::dateAndTime(const std::string& isoTime) {
    std::tm utc{};
    if (::strptime(isoTime.c_str(), "%Y-%m-%dT%H:%M:%S", &utc) == nullptr) {
        return isoTime;
    }
    return formatted(::timegm(&utc), "%d.%m. %H:%M");
}

std::string LocalTime::timeOfDay(std::time_t seconds) {
    return formatted(seconds, "%H:%M:%S");
}
