#include "network/RetryAfter.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <optional>

namespace {

constexpr int unreadable = -1;

std::optional<int> monthNumber(const char* name) {
    static constexpr const char* names[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (int month = 0; month < 12; ++month) {
        if (std::strcmp(name, names[month]) == 0) {
            return month;
        }
    }
    return std::nullopt;
}

/// A year of two digits that looks more than 50 years ahead means the century before (RFC 9110, section 5.6.7).
int fullYear(int twoDigits, std::time_t now) {
    std::tm today{};
    gmtime_r(&now, &today);
    const int currentYear = today.tm_year + 1900;
    const int year = currentYear / 100 * 100 + twoDigits;
    return year > currentYear + 50 ? year - 100 : year;
}

/// The three forms of a date in HTTP. The day's name is not looked at: it says nothing that the date does not.
std::optional<std::time_t> parseDate(const std::string& text, std::time_t now) {
    char month[4] = {};
    std::tm time{};
    int end = 0;
    const char* input = text.c_str();
    const auto readAll = [&text, &end](int fields) {
        const bool whole = fields == 6 && end == static_cast<int>(text.size());
        end = 0;
        return whole;
    };

    const bool usualForm =
        readAll(std::sscanf(input, "%*3[A-Za-z], %2d %3[A-Za-z] %4d %2d:%2d:%2d GMT%n", &time.tm_mday, month,
                            &time.tm_year, &time.tm_hour, &time.tm_min, &time.tm_sec, &end)) ||
        readAll(std::sscanf(input, "%*3[A-Za-z] %3[A-Za-z] %2d %2d:%2d:%2d %4d%n", month, &time.tm_mday, &time.tm_hour,
                            &time.tm_min, &time.tm_sec, &time.tm_year, &end));
    if (!usualForm) {
        if (!readAll(std::sscanf(input, "%*9[A-Za-z], %2d-%3[A-Za-z]-%2d %2d:%2d:%2d GMT%n", &time.tm_mday, month,
                                 &time.tm_year, &time.tm_hour, &time.tm_min, &time.tm_sec, &end))) {
            return std::nullopt;
        }
        time.tm_year = fullYear(time.tm_year, now);
    }

    const std::optional<int> monthOfYear = monthNumber(month);
    const bool plausible = monthOfYear && time.tm_mday >= 1 && time.tm_mday <= 31 && time.tm_hour >= 0 &&
                           time.tm_hour <= 23 && time.tm_min >= 0 && time.tm_min <= 59 && time.tm_sec >= 0 &&
                           time.tm_sec <= 60 && time.tm_year >= 1900;
    if (!plausible) {
        return std::nullopt;
    }
    time.tm_mon = *monthOfYear;
    time.tm_year -= 1900;
    return timegm(&time);
}

} // namespace

int RetryAfter::seconds(const std::string& value, std::time_t now) {
    const std::size_t first = value.find_first_not_of(" \t");
    if (first == std::string::npos) {
        return unreadable;
    }
    const std::string text = value.substr(first, value.find_last_not_of(" \t") - first + 1);
    if (std::all_of(text.begin(), text.end(), [](char letter) { return letter >= '0' && letter <= '9'; })) {
        long long number = 0;
        for (const char digit : text) {
            number = std::min<long long>(number * 10 + (digit - '0'), INT_MAX);
        }
        return static_cast<int>(number);
    }
    const std::optional<std::time_t> date = parseDate(text, now);
    if (!date) {
        return unreadable;
    }
    return static_cast<int>(std::clamp<long long>(static_cast<long long>(*date) - now, 0, INT_MAX));
}
