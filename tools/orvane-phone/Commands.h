#pragma once

#include <condition_variable>
#include <mutex>
#include <string>

class HostCommunicationsService;
class HostTeamService;
class LineConnection;
class LocalMgmt;
class OrvaneServiceIfc;
class Output;
class RemoteFramework;
class SiblingThread;

/// What clients of the control socket ask for, a JSON object a line:
///   {"seq":1,"method":{…}}        a remote method in the protocol adapter's form
///   {"seq":1,"raw":"…"}           a text that is handed to the service as it stands
///   {"seq":1,"command":"status"}  the telephone itself; the other members are the command's
/// Commands are answered by {"seq":1,"reply":{…}} when they are done, or {"seq":1,"error":"…"}.
class Commands {
public:
    /// Nothing is owned.
    struct Parts {
        OrvaneServiceIfc* service;
        LocalMgmt* store;
        HostCommunicationsService* communications;
        HostTeamService* team;
        SiblingThread* siblings;
        RemoteFramework* remote;
        Output* output;
    };

    explicit Commands(Parts parts) : m_parts(parts) {}

    /// Commands wait until the service is initialised.
    void open();
    /// No command begins any more.
    void close();

    void handle(LineConnection& connection, const std::string& line);
    void clientEnded(LineConnection& connection);

private:
    bool waitUntilOpen();

    Parts m_parts;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_open = false;
    bool m_closed = false;
};
