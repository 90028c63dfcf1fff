#include "orvane-phone/ViewOutput.h"

#include "orvane-phone/Screen.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>

namespace {

constexpr std::size_t latestCalls = 5;

Screen::Size terminalSize() {
    Screen::Size size;
    winsize window{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_col > 0 && window.ws_row > 0) {
        size.columns = window.ws_col;
        size.rows = window.ws_row;
    }
    return size;
}

void print(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

} // namespace

ViewOutput::ViewOutput(std::string title) : m_title(std::move(title)), m_terminal(::isatty(STDOUT_FILENO) == 1) {}

void ViewOutput::show(const std::string& change) {
    m_model.addEvent(change);
    if (m_terminal) {
        print("\x1b[?25l\x1b[H\x1b[2J" + Screen::draw(m_model, m_title, terminalSize(), true));
    } else {
        print(change + "\n");
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
    show("ready, control socket " + controlSocket);
}

void ViewOutput::fullSync(OrvaneServiceTypes::DataType type, const std::vector<std::string>& data) {
    apply(type, data, true);
}

void ViewOutput::incrementalSync(OrvaneServiceTypes::DataType type, const std::vector<std::string>& data) {
    apply(type, data, false);
}

void ViewOutput::event(OrvaneServiceTypes::EventType type) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    show(type == OrvaneServiceTypes::EVENT_TOKEN_FAILED ? "the cloud refuses the login; tried again in 1 to 5 minutes"
                                                        : "event " + std::to_string(type));
}

void ViewOutput::userEvent(OrvaneServiceTypes::UserMsgType type, const std::string& message) {
    if (type != OrvaneServiceTypes::USER_MSG_NONE) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        show("for the user: " + message);
    }
}

void ViewOutput::voicemail(const std::map<std::string, OrvaneServiceTypes::Voicemail>& data) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const bool changed = data.size() != m_model.voicemail().size();
    m_model.setVoicemail(data);
    if (changed) {
        show("voicemail on " + std::to_string(data.size()) + " line(s)");
    }
}

void ViewOutput::item(const std::string& name, const std::string& value) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_model.setItem(name, value);
    if (name == "CALL_DND_ACTIVATED") {
        show(value == "true" ? "do not disturb on" : "do not disturb off");
    } else if (name == "LAST_DIALLED_NUMBER") {
        show("last dialled number " + value);
    }
}

void ViewOutput::lamp(const std::string& uri, bool dnd) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_model.setLamp(uri, dnd);
    show("key " + uri + (dnd ? " shows do not disturb" : " is free"));
}

void ViewOutput::journal() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    show("journal cleaned up");
}

void ViewOutput::securityLog(bool success, const std::string& text) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    show((success ? "security log: " : "security log, failure: ") + text);
}

void ViewOutput::channel(bool open) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_model.channel() != open) {
        m_model.setChannel(open);
        show(open ? "event channel open" : "event channel closed");
    }
}

void ViewOutput::summary() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    int missed = 0;
    for (const ViewModel::Call& call : m_model.calls()) {
        missed += call.type == "Missed" ? 1 : 0;
    }
    std::string text = "\n" + m_title + "\n";
    text += "  calls      " + std::to_string(m_model.callCount()) + " (" + std::to_string(missed) + " missed)\n";
    text += "  contacts   " + std::to_string(m_model.contactCount()) + "\n";
    text += "  voicemail  " + std::to_string(m_model.voicemail().size()) + " line(s)\n";
    text += std::string("  dnd        ") + (m_model.dnd() ? "on" : "off") + "\n";
    const std::vector<ViewModel::Call> calls = m_model.calls();
    for (std::size_t index = 0; index < calls.size() && index < latestCalls; ++index) {
        const ViewModel::Call& call = calls[index];
        const std::string party = call.name == "Unknown.Name" ? call.number : call.name + "  " + call.number;
        text += "  " + Screen::localTime(call.startTime) + "  " + Screen::fit(call.type, 9) + call.duration + "  " +
                party + "\n";
    }
    print(text);
}

void ViewOutput::stopped() {
    if (m_terminal) {
        print("\x1b[?25h\n");
    }
}
