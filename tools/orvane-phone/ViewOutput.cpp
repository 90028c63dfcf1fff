#include "orvane-phone/ViewOutput.h"

#include "orvane-phone/LocalTime.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>

namespace {

// The terminal's second screen, so that the shell's own comes back as it was.
constexpr const char* enterScreen = "\x1b[?1049h\x1b[?25l";
constexpr const char* leaveScreenText = "\x1b[?25h\x1b[?1049l";
constexpr const char* home = "\x1b[H";
constexpr const char* clearToEndOfLine = "\x1b[K";
constexpr const char* clearBelow = "\x1b[J";

Screen::Size terminalSize() {
    Screen::Size size;
    winsize window{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_col > 0 && window.ws_row > 0) {
        size.columns = window.ws_col;
        size.rows = window.ws_row;
    }
    return size;
}

/// Whether the user's locale says UTF-8; one that says nothing is taken for it, as terminals are.
bool speaksUtf8() {
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            const std::string locale = value;
            return locale.find("UTF-8") != std::string::npos || locale.find("utf8") != std::string::npos;
        }
    }
    return true;
}

} // namespace

ViewOutput::ViewOutput(std::string title) : m_title(std::move(title)), m_terminal(::isatty(STDOUT_FILENO) == 1) {
    m_style.lineArt = speaksUtf8();
}

ViewOutput::~ViewOutput() {
    leaveScreen();
}

void ViewOutput::draw() {
    if (!m_onScreen) {
        m_onScreen = true;
        print(enterScreen);
    }
    m_size = terminalSize();
    std::string text = home;
    const std::vector<std::string> lines = Screen::draw(m_model, m_title, m_size, m_style);
    for (const std::string& line : lines) {
        text += line + clearToEndOfLine + (&line == &lines.back() ? "" : "\n");
    }
    print(text + clearBelow);
}

void ViewOutput::leaveScreen() {
    if (m_onScreen) {
        m_onScreen = false;
        print(leaveScreenText);
    }
}

void ViewOutput::show(const std::string& change) {
    const std::string line = LocalTime::timeOfDay(std::time(nullptr)) + "  " + change;
    m_model.addEvent(line);
    if (m_terminal) {
        draw();
    } else {
        print(line + "\n");
    }
}

void ViewOutput::apply(OrvaneServiceTypes::DataType type, const std::vector<std::string>& data, bool full) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::vector<std::string> changes =
        type == OrvaneServiceTypes::DATA_PHONEBOOK ? m_model.applyContacts(data, full) : m_model.applyCalls(data, full);
    for (const std::string& change : changes) {
        show(change);
    }
}

void ViewOutput::ready(const std::string& controlSocket) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    show("ready; orvane-ctl reaches it on " + controlSocket);
}

void ViewOutput::fullSync(OrvaneServiceTypes::DataType type, const std::vector<std::string>& data) {
    apply(type, data, true);
}

void ViewOutput::incrementalSync(OrvaneServiceTypes::DataType type, const std::vector<std::string>& data) {
    apply(type, data, false);
}

void ViewOutput::event(OrvaneServiceTypes::EventType type) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    show(type == OrvaneServiceTypes::EVENT_TOKEN_FAILED ? "the cloud gives no access token; it is asked again later"
                                                        : "event " + std::to_string(type));
}

void ViewOutput::userEvent(OrvaneServiceTypes::UserMsgType type, const std::string& message) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    show(type == OrvaneServiceTypes::USER_MSG_NONE ? "configuration accepted" : "for the user: " + message);
}

void ViewOutput::voicemail(const std::map<std::string, OrvaneServiceTypes::Voicemail>& data) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    // The summary comes with every poll, changed or not.
    const bool changed = data.size() != m_model.voicemail().size();
    m_model.setVoicemail(data);
    if (changed) {
        show(data.empty() ? "no voicemail waits" : "voicemail waits on lines: " + std::to_string(data.size()));
    } else if (m_terminal) {
        draw();
    }
}

void ViewOutput::item(const std::string& name, const std::string& value) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_model.setItem(name, value);
    if (name == "CALL_DND_ACTIVATED") {
        show(value == "true" ? "do not disturb is on" : "do not disturb is off");
    } else if (name == "LAST_DIALLED_NUMBER") {
        show("last dialled number " + value);
    } else if (m_terminal) {
        draw();
    }
}

void ViewOutput::stored(const std::string& name, const std::string& value) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_model.setItem(name, value);
    if (m_onScreen) {
        draw();
    }
}

void ViewOutput::lamp(const std::string& uri, bool dnd) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_model.setLamp(uri, dnd);
    show("key " + m_model.keyLabel(uri) + (dnd ? " shows do not disturb" : " shows nothing"));
}

void ViewOutput::journal() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    show("journal cleaned up");
}

void ViewOutput::securityLog(bool success, const std::string& text) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    show((success ? "security log: " : "security log, failure: ") + text);
}

void ViewOutput::look(bool channelOpen) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_model.channel() != channelOpen) {
        m_model.setChannel(channelOpen);
        show(channelOpen ? "event channel open" : "event channel closed");
        return;
    }
    const Screen::Size size = m_onScreen ? terminalSize() : m_size;
    if (size.columns != m_size.columns || size.rows != m_size.rows) {
        draw();
    }
}

void ViewOutput::summary() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    leaveScreen();
    print((m_terminal ? "" : "\n") + Screen::summary(m_model, m_title));
}

void ViewOutput::stopped() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    leaveScreen();
}
