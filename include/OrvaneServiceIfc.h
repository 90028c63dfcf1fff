#pragma once

#include <set>
#include <string>

class OrvaneServiceObserverIfc;

/// What other services may call, in process or by remote method. Any thread may call every operation. Unless told
/// otherwise an operation returns at once; those that send a request block until its end, which with redirections
/// and waits that the cloud asks for can be minutes. Failures are logged. Three things are thrown, or rather passed on:
/// std::out_of_range by an operation that sends a request, when the cloud redirects it to a server without a path;
/// std::bad_alloc; and what an observer throws, to whoever raised the event.
class OrvaneServiceIfc {
public:
    virtual ~OrvaneServiceIfc() = default;

    /// Adds an observer, which is not owned and must unsubscribe before it goes. Null or a repeated one changes
    /// nothing. The next synchronisation of each kind is then a full one; nothing is fetched here.
    virtual void subscribe(OrvaneServiceObserverIfc* observer) = 0;

    /// Removes an observer; when it returns, no call to that observer is under way on another thread.
    virtual void unsubscribe(OrvaneServiceObserverIfc* observer) = 0;

    /// Whether the service is logging in or logged in.
    virtual bool isRunning() = 0;

    /// Makes the next synchronisation of each kind a full one, even if an answer is still on its way.
    virtual void clearSyncTokens() = 0;

    /// Marks one missed call as seen by the user, by its record id.
    virtual void ageMissedCall(const std::string& id) = 0;
    /// The same for several, saved once.
    virtual void ageMissedCalls(const std::set<std::string>& ids) = 0;
    /// Whether that id is marked as seen; known call or not.
    virtual bool isMissedCallViewed(const std::string& id) = 0;

    /// Deletes one call here and in the cloud. Blocks for one request. A refusal by the cloud is only logged; the
    /// record then comes back with the next full synchronisation.
    virtual void deleteCallLogEntry(const std::string& id) = 0;
    /// Deletes the user's call log in the cloud, not those of shared lines. Blocks for one request. True when the
    /// cloud has deleted it; a full synchronisation then follows.
    virtual bool deleteAllCallLogEntries() = 0;

    /// Starts a synchronisation on a thread of its own, unless one of that kind is under way or the network is down.
    virtual void refreshCallLogEntries() = 0;
    virtual void refreshPhonebookEntries() = 0;
    virtual void refreshVoicemailEntries() = 0;

    /// One second after the last call: asks the cloud who the user is, and begins anew if that has changed.
    virtual void reloadAllData() = 0;

    /// Sends a contact, as phonebook XML, to the cloud. Blocks for one request; the observers are told the outcome
    /// through informUserEvent.
    virtual void addNewContact(const std::string& xmlData) = 0;
    /// Deletes a contact in the cloud by its id. Blocks for one request.
    virtual void deleteSingleContact(const std::string& id) = 0;
    /// Sends a changed contact, with its id, as phonebook XML. Blocks for one request.
    virtual void updateEditedContact(const std::string& xmlData) = 0;

    /// Tells the cloud the new state of the telephone's do-not-disturb switch. Blocks for one request.
    virtual void updateUserPresenceStatus(bool newDndState) = 0;

    /// The telephone's message-waiting indication of a line. False when the service is not running or the model has
    /// no such indication.
    virtual bool sipVoicemailStatusProcessed(const std::string& lineURI, const std::string& lineName,
                                             bool mwiIndicated) = 0;
};
