#include "orvane-phone/Screen.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <vector>

namespace {

constexpr const char* reset = "\x1b[0m";
constexpr const char* bold = "\x1b[1m";
constexpr const char* dim = "\x1b[2m";
constexpr const char* red = "\x1b[31m";
constexpr const char* green = "\x1b[32m";

/// Control characters have no place on a screen.
std::string printable(const std::string& text) {
    std::string clean;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        clean += byte < 0x20 || byte == 0x7F ? ' ' : character;
    }
    return clean;
}

class Painter {
public:
    explicit Painter(bool colours) : m_colours(colours) {}

    std::string paint(const char* colour, const std::string& text) const {
        return m_colours ? colour + text + reset : text;
    }

private:
    bool m_colours;
};

const char* sign(const ViewModel::Call& call) {
    if (call.type == "Missed") {
        return "missed  ";
    }
    if (call.type == "Received") {
        return "received";
    }
    return call.type == "Dialled" ? "dialled " : "unknown ";
}

std::string voicemailText(const ViewModel& model) {
    if (model.voicemail().empty()) {
        return "none";
    }
    std::string text;
    for (const auto& [line, voicemail] : model.voicemail()) {
        const int count = voicemail.unreadVoicemailMessageCount;
        text += (text.empty() ? "" : ", ") + (voicemail.name.empty() ? voicemail.number : voicemail.name) +
                (count < 0 ? "" : " " + std::to_string(count));
    }
    return text;
}

std::string lampText(const ViewModel& model) {
    std::string text;
    for (const auto& [uri, lit] : model.lamps()) {
        text += (text.empty() ? "" : "  ") + uri + (lit ? " busy" : " free");
    }
    return text.empty() ? "none" : text;
}

} // namespace

std::string Screen::fit(const std::string& text, int columns) {
    const std::string clean = printable(text);
    std::string fitted;
    int used = 0;
    for (std::size_t position = 0; position < clean.size();) {
        std::size_t next = position + 1;
        while (next < clean.size() && (static_cast<unsigned char>(clean[next]) & 0xC0) == 0x80) {
            ++next;
        }
        if (used == columns) {
            break;
        }
        fitted.append(clean, position, next - position);
        position = next;
        ++used;
    }
    return fitted + std::string(static_cast<std::size_t>(std::max(0, columns - used)), ' ');
}

std::string Screen::localTime(const std::string& isoTime) {
    std::tm utc{};
    if (::strptime(isoTime.c_str(), "%Y-%m-%dT%H:%M:%S", &utc) == nullptr) {
        return isoTime;
    }
    const std::time_t seconds = ::timegm(&utc);
    std::tm local{};
    ::localtime_r(&seconds, &local);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%d.%m. %H:%M", &local);
    return text.data();
}

std::string Screen::draw(const ViewModel& model, const std::string& title, Size size, bool colours) {
    const Painter painter(colours);
    const int width = std::max(size.columns, 40);
    const int height = std::max(size.rows, 12);
    const int left = width * 5 / 8;
    const int right = width - left - 3;
    std::vector<std::string> lines;

    const std::string channel = model.channel() ? painter.paint(green, "channel open  ") : "channel closed";
    const std::string dnd = model.dnd() ? painter.paint(red, "do not disturb") : "              ";
    lines.push_back(painter.paint(bold, fit(title, width - 32)) + "  " + channel + "  " + dnd);
    lines.push_back(painter.paint(dim, std::string(static_cast<std::size_t>(width), '-')));
    lines.push_back(painter.paint(bold, fit("Calls (" + std::to_string(model.callCount()) + ")", left)) + "   " +
                    painter.paint(bold, fit("Phonebook (" + std::to_string(model.contactCount()) + ")", right)));

    const int eventRows = 3;
    const int listRows = height - static_cast<int>(lines.size()) - 3 - eventRows;
    const std::vector<ViewModel::Call> calls = model.calls();
    const std::vector<ViewModel::Contact> contacts = model.contacts();
    for (int row = 0; row < listRows; ++row) {
        const auto index = static_cast<std::size_t>(row);
        std::string callText = fit("", left);
        if (index < calls.size()) {
            const ViewModel::Call& call = calls[index];
            const bool unseen = call.type == "Missed" && !model.isViewed(call.id);
            const std::string party = call.name == "Unknown.Name" ? call.number : call.name + "  " + call.number;
            callText = fit(localTime(call.startTime) + "  " + sign(call) + (unseen ? "* " : "  ") +
                               fit(call.duration, 8) + party,
                           left);
            callText = unseen ? painter.paint(red, callText) : callText;
        }
        std::string contactText = fit("", right);
        if (index < contacts.size()) {
            contactText = fit(fit(contacts[index].name, right * 3 / 5) + " " + contacts[index].number, right);
        }
        lines.push_back(callText + painter.paint(dim, " | ") + contactText);
    }
    lines.push_back(painter.paint(dim, std::string(static_cast<std::size_t>(width), '-')));
    lines.push_back(fit("Voicemail: " + voicemailText(model), width));
    lines.push_back(fit("Keys: " + lampText(model), width));
    for (int row = eventRows; row > 0; --row) {
        const auto back = static_cast<std::size_t>(row);
        const std::string text = back <= model.events().size() ? model.events()[model.events().size() - back] : "";
        lines.push_back(painter.paint(dim, fit(text, width)));
    }
    std::string screen;
    for (std::size_t index = 0; index < lines.size(); ++index) {
        screen += lines[index] + (index + 1 < lines.size() ? "\n" : "");
    }
    return screen;
}
