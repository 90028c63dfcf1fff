#pragma once

#include <string>

/// How a shared line announces a call on the overview page.
enum ELineVisualAlert : int { LINE_VISUAL_ALERT_NONE = 0, LINE_VISUAL_ALERT_LAMP = 1, LINE_VISUAL_ALERT_POPUP = 2 };

/// Events of the team service, called on a sibling's thread. The operations that carry call and line details are
/// declared without them here: nobody in this project takes them.
class TeamServiceEventIfc {
public:
    virtual ~TeamServiceEventIfc() = default;

    virtual void dssInitiatedCall() = 0;
    virtual void blfInitiatedCall() = 0;
    virtual void blfGPUCallFailed() = 0;
    virtual void bridgeInitiatedCall() = 0;
    virtual void setOriginatingLine() = 0;
    virtual void setLineStatus() = 0;
    virtual void setBLFStatus() = 0;
    virtual void callPartyChanged() = 0;
    virtual void allLinesIdle() = 0;
    virtual void lineBusyRemoteWarning() = 0;
    virtual void reservationTimeoutWarning() = 0;
    virtual void reservationFailureWarning() = 0;
    virtual void urlSendFailure() = 0;
    virtual void linePreSelectStatus() = 0;
    virtual void dssFailureWarning() = 0;
    virtual void convertHoldStatus() = 0;
    virtual void linePreviewStatus() = 0;
    virtual void setForwardingAlternativeStatus() = 0;
    virtual void linePreviewModeEnabled() = 0;
    virtual void eaCockpitStateChanged() = 0;
    virtual void callAnswered() = 0;
    virtual void generateNotificationEvent() = 0;
    virtual void makeCallRequestForDO() = 0;
    virtual void callParkedAtParkLocation() = 0;
    virtual void parkCallRequestStatus() = 0;
    virtual void showParkedCallInformation() = 0;
    virtual void showLineKeyCallInformation() = 0;
    virtual void bmwActionEvent() = 0;
    virtual void showAllowedBMWModes() = 0;

    /// An overview key has been set up: the SIP URI of its line, the text on the key, and how it is shown.
    virtual void overviewChangedNotification(const std::string& uri, const std::string& shortDescription,
                                             bool visibleOnOverview, int positionOnOverview,
                                             ELineVisualAlert lineVisualAlertType) = 0;
};
