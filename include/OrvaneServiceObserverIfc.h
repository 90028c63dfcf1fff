#pragma once

#include "OrvaneServiceTypes.h"

#include <map>
#include <string>
#include <vector>

class Executable;

/// What the service tells its observers. The calls come on whichever thread of the service or the framework raises
/// the event, one at a time, under the service's lock on its observers: an observer returns soon, and may subscribe
/// and unsubscribe from inside a call. An observer that throws keeps the event from those behind it.
///
/// Records. A call is "{callType,id,starttime,duration,number,name,line tag,line number}" without any quoting; a
/// contact is one JSON object (Contact::serialize). Both begin with "{"; in an incremental batch an entry without
/// that "{" is the bare id of a record that is gone.
class OrvaneServiceObserverIfc {
public:
    virtual ~OrvaneServiceObserverIfc() = default;

    /// The service object that subscribed, or null for an observer elsewhere.
    virtual Executable* getSubscribingService() = 0;

    /// `msg` is the key of a text for the user: "OV.Copied.contact.OK", "OV.Copied.contact.ERROR", or empty.
    virtual void informUserEvent(const std::string& msg, OrvaneServiceTypes::UserMsgType type) = 0;

    /// Something has happened to the service itself: EVENT_TOKEN_FAILED is the one value in use.
    virtual void orvaneEvent(OrvaneServiceTypes::EventType type) = 0;

    /// All records of that kind: they replace what the observer holds, an empty vector empties it.
    virtual void orvaneFullSync(std::vector<std::string> data, OrvaneServiceTypes::DataType type) = 0;

    /// New and changed records, and bare ids of deleted ones, in the order in which they apply.
    virtual void orvaneIncrementalSync(std::vector<std::string> data, OrvaneServiceTypes::DataType type) = 0;

    /// All lines with waiting voicemail: key "~" for the user's own line, else the line's extension id. One map for
    /// all observers.
    virtual void orvaneVoicemail(std::map<std::string, OrvaneServiceTypes::Voicemail>& data) = 0;
};
