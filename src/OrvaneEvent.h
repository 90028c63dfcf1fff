#pragma once

#include <map>
#include <string>

/// An event filter of the cloud, taken apart so that filters can be compared although one side says "~" where the
/// other gives a number.
class OrvaneEvent {
public:
    static const std::string EMPTY_EXT_ID;

    OrvaneEvent();
    /// `extensionId` stands in for "~". The text must be one on which parse() ends: a query parameter without "="
    /// may only be the last.
    OrvaneEvent(const std::string& uri, const std::string& extensionId);
    OrvaneEvent(const OrvaneEvent& other);
    OrvaneEvent& operator=(const OrvaneEvent& other);
    virtual ~OrvaneEvent();

    void parse();

    /// Whether parse() ends on that text. Texts from the network are tested before an event is made of them.
    static bool isParsable(const std::string& uri);

    /// Event path and extension id, and with `compareParameters` the query parameters too.
    bool isEqual(OrvaneEvent& other, bool compareParameters) const;

    const std::string& uri() const { return m_uri; }
    const std::string& eventPath() const { return m_eventPath; }
    const std::string& extensionId() const { return m_extensionId; }
    const std::string& accountId() const { return m_accountId; }
    const std::map<std::string, std::string>& parameters() const { return m_parameters; }

private:
    void parsePath(std::size_t extension);
    void parseParameters(std::size_t question);

    std::string m_uri;
    std::string m_uriPath; ///< m_uri without query; used during parsing only, not copied
    std::string m_eventPath;
    std::string m_defaultExtensionId;
    std::string m_extensionId;
    std::string m_accountId;
    std::map<std::string, std::string> m_parameters;
};
