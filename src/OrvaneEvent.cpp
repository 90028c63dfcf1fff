#include "OrvaneEvent.h"

const std::string OrvaneEvent::EMPTY_EXT_ID;

OrvaneEvent::OrvaneEvent() = default;

OrvaneEvent::OrvaneEvent(const std::string& uri, const std::string& extensionId)
    : m_uri(uri), m_defaultExtensionId(extensionId) {
    parse();
}

OrvaneEvent::OrvaneEvent(const OrvaneEvent& other)
    : m_uri(other.m_uri), m_eventPath(other.m_eventPath), m_defaultExtensionId(other.m_defaultExtensionId),
      m_extensionId(other.m_extensionId), m_accountId(other.m_accountId), m_parameters(other.m_parameters) {}

OrvaneEvent& OrvaneEvent::operator=(const OrvaneEvent& other) {
    if (this != &other) {
        m_uri = other.m_uri;
        m_uriPath.clear();
        m_eventPath = other.m_eventPath;
        m_defaultExtensionId = other.m_defaultExtensionId;
        m_extensionId = other.m_extensionId;
        m_accountId = other.m_accountId;
        m_parameters = other.m_parameters;
    }
    return *this;
}

OrvaneEvent::~OrvaneEvent() = default;

void OrvaneEvent::parse() {
    const std::size_t question = m_uri.find('?');
    m_uriPath = m_uri.substr(0, question);
    parsePath(m_uriPath.find("extension"));
    parseParameters(question == std::string::npos ? 0 : question);
}

/// `extension` is the position of that segment, or npos: the positions counted from it then wrap round on purpose.
void OrvaneEvent::parsePath(std::size_t extension) {
    const std::size_t firstSlash = m_uriPath.find('/', extension + 1);
    const std::size_t secondSlash =
        firstSlash == std::string::npos ? std::string::npos : m_uriPath.find('/', firstSlash + 1);
    if (firstSlash == std::string::npos) {
        m_extensionId.clear();
    } else {
        m_extensionId = m_uriPath.substr(firstSlash + 1, secondSlash - firstSlash - 1);
    }
    if (m_extensionId == "~") {
        m_extensionId = m_defaultExtensionId;
    }
    m_eventPath = secondSlash == std::string::npos ? std::string() : m_uriPath.substr(secondSlash + 1);

    const std::size_t accountSlash = m_uriPath.find_last_of("/\\", extension - 2);
    if (accountSlash != std::string::npos) {
        m_accountId = m_uriPath.substr(accountSlash + 1, extension - 1 - (accountSlash + 1));
    }
}

/// Without a "?" the scan goes over the whole text behind its first character. A parameter without "=" that is not
/// the last one never ends it: callers keep such texts away.
void OrvaneEvent::parseParameters(std::size_t question) {
    if (question >= m_uri.size()) {
        return;
    }
    for (;;) {
        const std::size_t begin = question + 1;
        const std::size_t ampersand = m_uri.find('&', begin);
        const std::string parameter = begin <= m_uri.size() ? m_uri.substr(begin, ampersand - begin) : std::string();
        const std::size_t equals = parameter.find('=');
        if (equals != std::string::npos) {
            m_parameters.emplace(parameter.substr(0, equals), parameter.substr(equals + 1));
            question = ampersand;
        }
        if (ampersand == std::string::npos) {
            return;
        }
    }
}

bool OrvaneEvent::isParsable(const std::string& uri) {
    const std::size_t question = uri.find('?');
    std::size_t begin = question == std::string::npos ? 1 : question + 1;
    for (std::size_t ampersand = uri.find('&', begin); ampersand != std::string::npos;
         ampersand = uri.find('&', begin)) {
        if (uri.find('=', begin) >= ampersand) {
            return false;
        }
        begin = ampersand + 1;
    }
    return true;
}

bool OrvaneEvent::isEqual(OrvaneEvent& other, bool compareParameters) const {
    return m_eventPath == other.m_eventPath && m_extensionId == other.m_extensionId &&
           (!compareParameters || m_parameters == other.m_parameters);
}
