#pragma once

#include <string>

/// Events of the communications service, called on a sibling's thread. The operations that carry call and line
/// details are declared without them here: nobody in this project takes them.
class CommunicationsServiceEventIfc {
public:
    virtual ~CommunicationsServiceEventIfc() = default;

    virtual void callStateChange() = 0;
    virtual void registrationStateChange() = 0;
    virtual void incomingCall() = 0;
    virtual void incomingPickupCall() = 0;
    virtual void callHeld() = 0;
    virtual void callRetrieved() = 0;
    virtual void featureSuccess() = 0;
    virtual void featureFailed() = 0;
    virtual void remoteEndpointDetailsChanged() = 0;
    virtual void incomingCallMissed() = 0;
    virtual void callForwarded() = 0;
    virtual void incomingAssociatedCall() = 0;
    virtual void messageWaiting() = 0;
    virtual void doNotDisturbSet() = 0;
    virtual void agentStateSet() = 0;
    virtual void securityStatusChanged() = 0;
    virtual void callRecordingStatus() = 0;
    virtual void preemptionStatusChanged() = 0;
    virtual void impactLevelChanged() = 0;
    virtual void serverFeatureStatusChange() = 0;
    virtual void b2buaCSTAResponse() = 0;
    virtual void b2buaCSTAEventOrRequest() = 0;
    virtual void conferenceStatusEvent() = 0;
    virtual void callCompletionEvent() = 0;
    virtual void callCompletionFailedEvent() = 0;
    virtual void bluetoothAudioStatusChanged() = 0;
    virtual void csCommunicationsServiceEvent() = 0;

    /// The set of devices or lines has changed.
    virtual void devicesChanged() = 0;

    /// `status` is "Enabled" when the telephone system has come up; `statusInfo` is free text.
    virtual void systemStatusChange(const std::string& status, const std::string& statusInfo) = 0;
};
