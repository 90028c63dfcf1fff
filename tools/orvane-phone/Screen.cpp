#include "orvane-phone/Screen.h"

#include "orvane-phone/LocalTime.h"
#include "orvane-phone/TextWidth.h"

#include <algorithm>

namespace {

using TextWidth::fit;
using TextWidth::fitRight;

constexpr const char* reset = "\x1b[0m";
constexpr const char* bold = "\x1b[1m";
constexpr const char* dim = "\x1b[2m";
constexpr const char* red = "\x1b[31m";
constexpr const char* green = "\x1b[32m";
constexpr const char* cyan = "\x1b[36m";

constexpr int timeColumns = 12;
constexpr int kindColumns = 6;
constexpr int gapColumns = 3; ///< between the two lists
constexpr int narrowestTwoLists = 70;
constexpr int mostEventRows = 4;
constexpr int summaryColumns = 78;
constexpr std::size_t summaryCalls = 10;

/// A stretch of a line: its text without colours is what counts for the width.
struct Piece {
    std::string text;
    const char* colour = "";
};

std::string kindOf(const ViewModel::Call& call) {
    if (call.type == "Received") {
        return "in";
    }
    if (call.type == "Dialled") {
        return "out";
    }
    return call.type == "Missed" ? "missed" : "?";
}

const char* colourOf(const ViewModel::Call& call) {
    if (call.type == "Missed") {
        return red;
    }
    return call.type == "Received" ? green : cyan;
}

std::string countOf(const OrvaneServiceTypes::Voicemail& voicemail) {
    return voicemail.unreadVoicemailMessageCount < 0 ? "waiting"
                                                     : std::to_string(voicemail.unreadVoicemailMessageCount) + " new";
}

std::string voicemailText(const ViewModel& model) {
    std::string text;
    for (const auto& entry : model.voicemail()) {
        const OrvaneServiceTypes::Voicemail& voicemail = entry.second;
        text += (text.empty() ? "" : ", ") + (voicemail.name.empty() ? voicemail.number : voicemail.name) + ": " +
                countOf(voicemail);
    }
    return text.empty() ? "none" : text;
}

class Painter {
public:
    Painter(const ViewModel& model, const std::string& title, Screen::Size size, Screen::Style style)
        : m_model(model), m_title(title), m_style(style), m_width(std::max(size.columns, Screen::smallest.columns)),
          m_height(std::max(size.rows, Screen::smallest.rows)) {}

    std::vector<std::string> draw() {
        const int eventRows = std::clamp(m_height / 5, 1, mostEventRows);
        drawHeader();
        drawLists(m_height - static_cast<int>(m_lines.size()) - 4 - eventRows);
        drawRule(m_style.lineArt ? "\xE2\x94\xB4" : "+");
        drawVoicemail();
        drawKeys();
        drawEvents(eventRows);
        return std::move(m_lines);
    }

private:
    std::string paint(const Piece& piece) const {
        return m_style.colours && *piece.colour != '\0' ? piece.colour + piece.text + reset : piece.text;
    }

    /// A line of pieces, cut or filled to the width of the screen.
    void add(const std::vector<Piece>& pieces) {
        std::string line;
        int room = m_width;
        for (const Piece& piece : pieces) {
            const int columns = std::min(room, TextWidth::columnsOf(piece.text));
            line += paint({fit(piece.text, columns), piece.colour});
            room -= columns;
        }
        m_lines.push_back(line + std::string(static_cast<std::size_t>(room), ' '));
    }

    /// A narrow screen shows the calls alone.
    bool hasPhonebook() const { return m_width >= narrowestTwoLists; }
    int rightColumns() const { return m_width * 3 / 8; }
    int leftColumns() const { return hasPhonebook() ? m_width - rightColumns() - gapColumns : m_width; }
    std::string dot(bool lit) const {
        if (!m_style.lineArt) {
            return lit ? "*" : "-";
        }
        return lit ? "\xE2\x97\x8F" : "\xE2\x97\x8B";
    }
    std::string separator() const { return m_style.lineArt ? " \xE2\x94\x82 " : " | "; }

    void drawRule(const std::string& crossing) {
        const std::string dash = m_style.lineArt ? "\xE2\x94\x80" : "-";
        std::string rule;
        for (int column = 0; column < m_width; ++column) {
            rule += column == leftColumns() + 1 ? crossing : dash;
        }
        add({{rule, dim}});
    }

    void drawHeader() {
        const bool up = m_model.interfaceUp();
        const Piece network = {up ? "" : "network down  ", red};
        const Piece channel = {dot(m_model.channel()) + " channel", m_model.channel() ? green : dim};
        const Piece dnd = {dot(m_model.dnd()) + " do not disturb", m_model.dnd() ? red : dim};
        const int signs = TextWidth::columnsOf(network.text + channel.text + dnd.text) + 2;
        const int room = m_width - signs - 1;
        add({{fit(m_title, std::max(room, 0)), bold}, {" "}, network, channel, {"  "}, dnd});
        drawRule(m_style.lineArt ? "\xE2\x94\xAC" : "+");
        const std::string missed =
            m_model.missedCount() == 0 ? "" : ", " + std::to_string(m_model.missedCount()) + " missed";
        add({{fit("Calls: " + std::to_string(m_model.callCount()) + missed, leftColumns()), bold},
             {separator(), dim},
             {"Phonebook: " + std::to_string(m_model.contactCount()), bold}});
    }

    void drawLists(int rows) {
        const std::vector<ViewModel::Call> calls = m_model.calls();
        const std::vector<ViewModel::Contact> contacts = m_model.contacts();
        int durationColumns = 5;
        for (const ViewModel::Call& call : calls) {
            durationColumns = std::clamp(TextWidth::columnsOf(call.duration), durationColumns, 8);
        }
        for (int row = 0; row < rows; ++row) {
            const auto index = static_cast<std::size_t>(row);
            std::vector<Piece> line = index < calls.size() ? callPieces(calls[index], durationColumns)
                                                           : std::vector<Piece>{{fit("", leftColumns())}};
            if (hasPhonebook()) {
                line.push_back({separator(), dim});
            }
            if (hasPhonebook() && index < contacts.size()) {
                const int numberColumns = std::min(rightColumns() / 2, 15);
                line.push_back({fit(contacts[index].name, rightColumns() - numberColumns - 1) + " "});
                line.push_back({fitRight(contacts[index].number, numberColumns), dim});
            }
            add(line);
        }
    }

    std::vector<Piece> callPieces(const ViewModel::Call& call, int durationColumns) const {
        const bool isNew = m_model.isNew(call);
        const int fixed = 2 + timeColumns + 1 + kindColumns + 1 + durationColumns + 1;
        const int room = std::max(leftColumns() - fixed, 0);
        std::string party = call.party();
        if (call.hasLine()) {
            party += " @ " + call.lineLabel();
        }
        const int numberColumns = 16;
        const bool numberFits = room >= 20 + numberColumns;
        std::vector<Piece> pieces = {{isNew ? dot(true) + " " : "  ", red},
                                     {fit(LocalTime::dateAndTime(call.startTime), timeColumns) + " ", dim},
                                     {fit(kindOf(call), kindColumns) + " ", colourOf(call)},
                                     {fitRight(call.duration, durationColumns) + " "}};
        pieces.push_back({fit(party, numberFits ? room - numberColumns - 1 : room), isNew ? bold : ""});
        if (numberFits) {
            pieces.push_back(
                {" " + fitRight(call.hasName() && call.hasNumber() ? call.number : "", numberColumns), dim});
        }
        return pieces;
    }

    void drawVoicemail() {
        const bool waits = !m_model.voicemail().empty();
        add({{"Voicemail  ", bold}, {voicemailText(m_model), waits ? red : dim}});
    }

    void drawKeys() {
        std::vector<Piece> line = {{"Keys       ", bold}};
        const std::vector<ViewModel::Key> keys = m_model.keys();
        for (const ViewModel::Key& key : keys) {
            line.push_back({dot(key.dnd) + " " + key.label + "  ", key.dnd ? red : ""});
        }
        if (keys.empty()) {
            line.push_back({"none", dim});
        }
        add(line);
    }

    void drawEvents(int rows) {
        const auto& events = m_model.events();
        for (int row = rows; row > 0; --row) {
            const auto back = static_cast<std::size_t>(row);
            const std::string text = back <= events.size() ? events[events.size() - back] : std::string();
            add({{row == rows ? "Events     " : "           ", bold}, {text, dim}});
        }
        // The last row stays free: a terminal scrolls when it is filled to its last column.
        m_lines.emplace_back();
    }

    const ViewModel& m_model;
    const std::string& m_title;
    const Screen::Style m_style;
    const int m_width;
    const int m_height;
    std::vector<std::string> m_lines;
};

} // namespace

std::vector<std::string> Screen::draw(const ViewModel& model, const std::string& title, Size size, Style style) {
    return Painter(model, title, size, style).draw();
}

std::string Screen::summary(const ViewModel& model, const std::string& title) {
    std::string text = title + "\n";
    const auto row = [&text](const char* name, const std::string& value) {
        text += "  " + fit(name, 16) + value + "\n";
    };
    row("calls", std::to_string(model.callCount()) + ", " + std::to_string(model.missedCount()) + " missed");
    row("contacts", std::to_string(model.contactCount()));
    row("voicemail", voicemailText(model));
    row("do not disturb", model.dnd() ? "on" : "off");
    const std::vector<ViewModel::Call> calls = model.calls();
    const std::size_t shown = std::min(calls.size(), summaryCalls);
    if (shown > 0) {
        text += "\nLatest calls\n";
    }
    for (std::size_t index = 0; index < shown; ++index) {
        const ViewModel::Call& call = calls[index];
        const std::string number = call.hasName() && call.hasNumber() ? call.number : "";
        std::string line = "  " + fit(LocalTime::dateAndTime(call.startTime), timeColumns) + "  " +
                           fit(kindOf(call), kindColumns) + "  " + fitRight(call.duration, 8) + "  ";
        line += fit(call.party(), summaryColumns - TextWidth::columnsOf(line) - 18) + "  " + number;
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}
