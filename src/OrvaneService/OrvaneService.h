#pragma once

#include "Json.h"
#include "OrvaneEventList.h"
#include "OrvaneService/BcaLineType.h"
#include "OrvaneService/FpkPresenceDataType.h"
#include "OrvaneService/ServiceState.h"
#include "OrvaneService/WorkerThread.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceIfc.h"
#include "OrvaneServiceObserverIfc.h"
#include "OrvaneServiceTypes.h"
#include "data/MgmtAgentIfc.h"
#include "data/ValidatorIfc.h"
#include "framework/Service.h"
#include "network/HttpClientIfc.h"
#include "network/WebSocketAppIfc.h"
#include "siblings/CommunicationsServiceEventIfc.h"
#include "siblings/TeamServiceEventIfc.h"
#include "threads/Semaphore.h"

#include <jansson.h>

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

class CertificateMgmtSvcIfc;
class CommunicationsServiceIfc;
class Context;
class JournalServiceIfc;
class LocalMgmtIfc;
class ManageableData;
class SecureConnectionEstablisher;
class SecurityLogServiceIfc;
class ServiceDataManagerIfc;
class TeamServiceIfc;
class ThreaderIfc;

/// The whole state of the telephone's cloud client. Its operations live in one file a concern; they share the
/// members directly. Which semaphore guards what stands beside the semaphores; what has none is read and written
/// as it stands, on purpose.
///
/// The order of the virtual operations is the binary interface of the loaded service, the order of the members
/// decides who is destroyed first. Both are kept.
///
/// Below stand the virtual operations in their order, the other operations that are callable from outside, the helpers,
/// and the members: within the second and the third by the file that defines them, each under its name.
class OrvaneService : public Service,
                      public OrvaneServiceIfc,
                      public MgmtAgentIfc,
                      public ValidatorIfc,
                      public WebSocketAppIfc,
                      public CommunicationsServiceEventIfc,
                      public TeamServiceEventIfc {
public:
    using Headers = HttpClientIfc::Headers;
    using Records = std::vector<std::string>;
    using RecordMap = std::map<std::string, std::string>;
    using IdSet = std::set<std::string>;
    using StatusCode = HttpClientIfc::eStatusCode;

    /// Messages are sent at once in WS_STATE_READY and WS_STATE_SENDING_RECOVERY_BUFFER only.
    enum WebSocketState {
        WS_STATE_CLOSED = 0,     ///< no session; also while reconnecting
        WS_STATE_OPENED = 1,     ///< socket open, "ConnectionDetails" awaited
        WS_STATE_READY = 2,      ///< session established
        WS_STATE_RECOVERING = 3, ///< connection in doubt, messages wait in the recovery buffer
        WS_STATE_SENDING_RECOVERY_BUFFER = 4,
    };

    /// Owns both arguments, unless it throws.
    OrvaneService(ServiceDataManagerIfc* dataManager, ThreaderIfc* threader);

    // ---- Virtual operations, in slot order -------------------------------------------------------------------

    ~OrvaneService() override;
    void init(Context& context) override;
    void shutdown() override {}
    void timerEvent(int id) override;

    void subscribe(OrvaneServiceObserverIfc* observer) override;
    void unsubscribe(OrvaneServiceObserverIfc* observer) override;
    bool isRunning() override;
    void run() override {}

    bool setData(ManageableData& data) override;
    bool getData(ManageableData& data) override;
    void manageableDataChanged(ManageableData& data) override;
    bool resetUserData() override;

    void setValidation(bool) override {}
    void addItemForValidationAsPartOfGroup(const std::string&, const std::string&) override {}
    bool isGroupNeedingValidation(const std::string&) override { return false; }
    void clearValidation() override {}
    bool validateGroupAndSetData(std::string& error, const std::string& group) override;
    std::vector<std::pair<std::string, std::string>> getListValidData(const std::string& group) override;
    void allowInvalidData(bool) override {}

    void onOpen(int code) override;
    void onError(int code, const std::string& msg) override;
    void onClose(int code, int localCode, const std::string& msg) override;
    void onMessage(const std::string& msg) override;
    void onPong() override;
    void onPongTimeout() override;
    bool continueOnLoginError() override { return false; }

    void callStateChange() override {}
    void registrationStateChange() override {}
    void incomingCall() override {}
    void incomingPickupCall() override {}
    void callHeld() override {}
    void callRetrieved() override {}
    void featureSuccess() override {}
    void featureFailed() override {}
    void remoteEndpointDetailsChanged() override {}
    void incomingCallMissed() override {}
    void callForwarded() override {}
    void incomingAssociatedCall() override {}
    void messageWaiting() override {}
    void doNotDisturbSet() override {}
    void agentStateSet() override {}
    void securityStatusChanged() override {}
    void callRecordingStatus() override {}
    void preemptionStatusChanged() override {}
    void impactLevelChanged() override {}
    void serverFeatureStatusChange() override {}
    void b2buaCSTAResponse() override {}
    void b2buaCSTAEventOrRequest() override {}
    void conferenceStatusEvent() override {}
    void callCompletionEvent() override {}
    void callCompletionFailedEvent() override {}
    void bluetoothAudioStatusChanged() override {}
    void csCommunicationsServiceEvent() override {}
    void devicesChanged() override;
    void systemStatusChange(const std::string& status, const std::string& statusInfo) override;

    void dssInitiatedCall() override {}
    void blfInitiatedCall() override {}
    void blfGPUCallFailed() override {}
    void bridgeInitiatedCall() override {}
    void setOriginatingLine() override {}
    void setLineStatus() override {}
    void setBLFStatus() override {}
    void callPartyChanged() override {}
    void allLinesIdle() override {}
    void lineBusyRemoteWarning() override {}
    void reservationTimeoutWarning() override {}
    void reservationFailureWarning() override {}
    void urlSendFailure() override {}
    void linePreSelectStatus() override {}
    void dssFailureWarning() override {}
    void convertHoldStatus() override {}
    void linePreviewStatus() override {}
    void setForwardingAlternativeStatus() override {}
    void linePreviewModeEnabled() override {}
    void eaCockpitStateChanged() override {}
    void callAnswered() override {}
    void generateNotificationEvent() override {}
    void makeCallRequestForDO() override {}
    void callParkedAtParkLocation() override {}
    void parkCallRequestStatus() override {}
    void showParkedCallInformation() override {}
    void showLineKeyCallInformation() override {}
    void bmwActionEvent() override {}
    void showAllowedBMWModes() override {}
    void overviewChangedNotification(const std::string& uri, const std::string& shortDescription,
                                     bool visibleOnOverview, int positionOnOverview,
                                     ELineVisualAlert lineVisualAlertType) override;

    virtual std::string OrvaneApiServerAddressGetter();
    virtual bool OrvaneApiServerAddressSetter(const std::string& value, std::string& error);
    virtual std::string OrvaneApiSyncCallLogGetter();
    virtual bool OrvaneApiSyncCallLogSetter(const std::string& value, std::string& error);
    virtual std::string OrvaneApiSyncPhonebookGetter();
    virtual bool OrvaneApiSyncPhonebookSetter(const std::string& value, std::string& error);
    virtual std::string OrvaneApiSyncIntervalGetter();
    virtual bool OrvaneApiSyncIntervalSetter(const std::string& value, std::string& error);
    virtual std::string OrvaneApiSyncDndGetter();
    virtual bool OrvaneApiSyncDndSetter(const std::string& newVal, std::string& error);

    void clearSyncTokens() override;
    void ageMissedCall(const std::string& id) override;
    void ageMissedCalls(const std::set<std::string>& ids) override;
    bool isMissedCallViewed(const std::string& id) override;
    void deleteCallLogEntry(const std::string& id) override;
    bool deleteAllCallLogEntries() override;
    void refreshCallLogEntries() override;
    void refreshPhonebookEntries() override;
    void refreshVoicemailEntries() override;
    void reloadAllData() override;
    void addNewContact(const std::string& xmlData) override;
    void deleteSingleContact(const std::string& id) override;
    void updateEditedContact(const std::string& xmlData) override;
    void updateUserPresenceStatus(bool newDndState) override;
    bool sipVoicemailStatusProcessed(const std::string& lineURI, const std::string& lineName,
                                     bool mwiIndicated) override;

    virtual bool connectionHandler(const std::string& path, std::string body, HttpClientIfc::HTTPMETHOD method,
                                   std::string& responseData, Headers& requestHeaders, Headers& responseHeaders,
                                   StatusCode& statusCode, std::string redirectionUrl, int requestCount);
    virtual bool getToken();
    virtual bool handleTokenResponse(StatusCode status, std::string& responseData);

    // ---- OrvaneService.cpp ------------------------------------------------------------------------------------

    static std::string getStateAsText(const ServiceState& state);

    // ---- Observers.cpp ----------------------------------------------------------------------------------------

    std::size_t getNoOfObservers();
    void fireInformUserEvent(const std::string& message, OrvaneServiceTypes::UserMsgType type);
    void fireOrvaneEvent(OrvaneServiceTypes::EventType type);
    void fireOrvaneFullSyncEvent(Records& records, OrvaneServiceTypes::DataType type);
    void fireOrvaneIncrementalSyncEvent(Records& records, OrvaneServiceTypes::DataType type);
    void fireOrvaneVoicemail(std::map<std::string, OrvaneServiceTypes::Voicemail>& data);
    /// Appends all contact records in key order; takes no semaphore.
    void prepareDataForObservers(Records& records);

    // ---- ServiceCore/ConfigurationItems.cpp -------------------------------------------------------------------

    void setupDataManagement();
    bool hasCallLogConfigChanged();
    bool hasPhonebookConfigChanged();
    bool isAnyConfigItemEmpty();
    void addSecurityLogEntry(std::string text, bool success);
    bool getPLDSValue(const std::string& key, std::string& out);
    bool setPLDSValue(const std::string& key, const std::string& value);

    // ---- ServiceCore/StartAndStop.cpp -------------------------------------------------------------------------

    void asyncLogin();
    static void* asyncLoginRunner(OrvaneService* service);
    void start();
    void stop();
    void deconfigure();
    void deleteAllData(bool hotDesking);

    // ---- ServiceCore/Timers.cpp -------------------------------------------------------------------------------

    /// Returns 0, for the caller to store in its timer member.
    int stopAndDeleteTimer(int id);
    /// Milliseconds, clamped to what a timer takes.
    int calculateSyncTimer(const int& seconds);

    // ---- CloudAccess/RestRequest.cpp --------------------------------------------------------------------------

    void populateToken(Headers& headers);
    /// The caller holds m_connectionSem.
    void clearSecureConnection(bool force);

    // ---- CloudAccess/Login.cpp --------------------------------------------------------------------------------

    void getExtension();
    void handleExtensionResponse(StatusCode status, std::string& responseData);
    bool hasUserChanged();
    void reloadAllDataIfUserChanged();

    // ---- EventChannel/WebSocketConnection.cpp -----------------------------------------------------------------

    bool getWebSocketAccessToken();
    bool handleWebSocketAccessTokenResponse(StatusCode status, std::string& responseData);
    void openWebSocketConnection();
    void setWebSocketState(WebSocketState state);
    WebSocketState getWebSocketState();
    bool sendMessageOnWebsocket(const std::string& message);
    void sendRecoveryBuffer();

    // ---- EventChannel/WebSocketRecovery.cpp -------------------------------------------------------------------

    void recoverWebSocketConnection();
    void asyncRecoverWebSocketConnection();
    static void* asyncRecoverWebSocketConnectionRunner(OrvaneService* service);
    void setRecoverWebSocketConnection(bool recover);
    bool getRecoverWebSocketConnection();
    void setRecoverWebSocketConnectionWaitForLanInterfaceUp(bool wait);
    bool getRecoverWebSocketConnectionWaitForLanInterfaceUp();

    // ---- EventChannel/MessageEnvelope.cpp ---------------------------------------------------------------------

    bool getMsgTypeAndStoreWsc(std::string& type, json_t** metadata, json_t** data, const json_t* root);
    std::string generateUuid();
    bool storeUuidMessage(const std::string& uuid);
    bool findUuidMessageAndDeleteIt(const std::string& uuid);
    bool handleMsgError(json_t* metadata, json_t* data);

    // ---- EventChannel/Session.cpp -----------------------------------------------------------------------------

    bool sendHeartbeatMsg();
    bool handleMsgHeartbeat(json_t* metadata, json_t* data);
    bool handleMsgConnectionDetails(json_t* metadata, json_t* data);

    // ---- EventChannel/EventSubscription.cpp -------------------------------------------------------------------

    bool subscribeOvEvents();
    bool updateSubscriptionOvEvents();
    bool refreshOvEventsSubscription();
    bool cancelSubscriptionOvEvents();
    void setSusbcriptionId(const std::string& id);
    std::string getSubscriptionId();
    void storeSubscribedOvEvent(const std::string& filter, const std::string& extensionId);
    bool isOvEventSubscribed(const std::string& filter, bool compareParameters);

    // ---- EventChannel/SubscriptionReply.cpp -------------------------------------------------------------------

    bool handleMsgClientRequest(json_t* metadata, json_t* data);

    // ---- EventChannel/ServerNotification.cpp ------------------------------------------------------------------

    bool handleMsgServerNotification(json_t* metadata, json_t* data);

    // ---- CallData/CallLogSync.cpp -----------------------------------------------------------------------------

    void getCallLogsAndVoicemails();
    static void* asyncRefreshCallLogRunner(OrvaneService* service);
    void refreshCallLogEntriesThread();
    void getCallLogs();
    void getCallLog(Records& callRecordsVector, bool& fullSync);
    void publishCallLog(Records& callRecordsVector, bool fullSync);

    // ---- CallData/CallLogMerge.cpp ----------------------------------------------------------------------------

    void handleCallLogResponse(StatusCode statusCode, std::string& responseData, Records& callRecordsVector,
                               bool& fullSync);

    // ---- CallData/SharedLineDiscovery.cpp ---------------------------------------------------------------------

    bool getBcaLinesExtension(std::vector<BcaLineType>& removedLines, std::vector<std::string>& newLineIds);
    bool handleBcaLinesExtension(StatusCode statusCode, std::string& responseData, int& nextPage,
                                 std::map<std::string, BcaLineType>& newBcaLineMap);
    std::size_t getBcaLineListSize();
    bool getCopyOfBcaLineFromList(const std::string& extensionId, BcaLineType& line);
    bool replaceBcaLineInList(const BcaLineType& line);
    bool getDevicesAndUpdateInfo();

    // ---- CallData/SharedLineCallLog.cpp -----------------------------------------------------------------------

    void getBcaCallLog(Records& callRecordsVector);
    void getBcaCallLog(BcaLineType& line, Records& callRecordsVector, bool& fullSync);
    void syncDataForBcaLines(const std::vector<std::string>& lineIds);
    void removeSyncedDataForBcaLines(const std::vector<BcaLineType>& removedLines);

    // ---- CallData/SharedLineMerge.cpp -------------------------------------------------------------------------

    void handleBcaCallLogResponse(StatusCode statusCode, std::string& responseData, BcaLineType& line,
                                  Records& callRecordsVector);

    // ---- Directory/Phonebook.cpp ------------------------------------------------------------------------------

    void getPhonebook();
    void refreshPhonebookEntriesThread();
    static void* asyncRefreshPhonebookRunner(OrvaneService* service);
    /// True when another page follows.
    bool handlePhonebookResponse(StatusCode statusCode, std::string& response, int& nextPageId, Records& records,
                                 bool& publishData);
    bool handlePhonebookRecordResponse(StatusCode statusCode, std::string& response, Records& records,
                                       bool& publishData);
    /// True when the record changed the map and `stringRecord` is to be published.
    bool handlePhonebookRecord(json_t* record, std::string& stringRecord);

    // ---- Directory/Voicemail.cpp ------------------------------------------------------------------------------

    void publishVoicemailData();
    void getVoicemails(bool refresh);
    void refreshVoicemailEntriesThread();
    static void* asyncRefreshVoicemailRunner(OrvaneService* service);
    bool voicemailViaAPIEnabled() const;
    bool getVoicemail();
    bool getBcaVoicemail(BcaLineType& line);
    bool getBcaVoicemail(const std::string& extensionId);

    // ---- Directory/VoicemailReader.cpp ------------------------------------------------------------------------

    bool handleVoicemailResponse(StatusCode statusCode, std::string& response,
                                 OrvaneServiceTypes::Voicemail& voicemail);
    bool handleVoicemailRecord(json_t* record, OrvaneServiceTypes::Voicemail& voicemail);

    // ---- Presence/DndSync.cpp ---------------------------------------------------------------------------------

    void getServerDndStatus();
    bool handleServerDndStatusResponse(StatusCode statusCode, std::string& response);
    void fireOrvaneDndStatus(OrvaneServiceTypes::DndStatusType status);
    void asyncSyncDnd();
    static void* asyncSyncDndRunner(OrvaneService* service);
    void syncDnd();

    // ---- Presence/FunctionKeyConfiguration.cpp ----------------------------------------------------------------

    bool getFpkConfiguration(ManageableData& data, std::string& fpk, FpkPresenceDataType& out);
    bool getFpkConfigurationFromPlds(std::string& fpk, FpkPresenceDataType& out);
    std::string getIndexFromIndexedPldsItem(const std::string& id);

    // ---- Presence/FunctionKeyPresence.cpp ---------------------------------------------------------------------

    bool insertFpkPresenceDataIntoMap(const FpkPresenceDataType& record);
    bool doesFpkPresenceDataExist(const std::string& extensionId);
    bool isFpkPresenceMapEmpty();
    std::size_t getFpkPresenceMapSize();
    void getServerDndStatus(const std::string& extensionId);
    bool handleServerDndStatusBlfResponse(StatusCode statusCode, std::string& response);
    void setDNDStatusForBLF(const std::string& extensionId, bool dnd);

private:
    // ---- ServiceCore/Initialisation.cpp -----------------------------------------------------------------------

    void observeConfigurationStore(std::vector<std::string>& functionKeyNames);
    void readConfigurationStore(const std::vector<std::string>& functionKeyNames);
    void readFunctionKeys(ManageableData& data, const std::vector<std::string>& functionKeyNames);
    void buildApiPath(ManageableData& data);
    void findSiblingServices();
    void createPermanentTimers();

    // ---- ServiceCore/StartAndStop.cpp -------------------------------------------------------------------------

    bool mayStart() const;
    void cleanUpForNewUser();
    void updateBcaLines();
    void downloadForObservers();
    void stopTimersAndWorkers();
    void closeWebSocketSession();
    void forgetCallLog();
    void forgetPhonebook();

    // ---- ServiceCore/ConfigurationChanges.cpp -----------------------------------------------------------------

    void applyConfigurationGroup();
    void interfaceStatusChanged(bool up);
    void interfaceWentDown();
    void interfaceCameUp();
    void serverTypeChanged(const std::string& id, const std::string& value);

    // ---- ServiceCore/Timers.cpp -------------------------------------------------------------------------------

    void recreateRefreshCallLogTimer();
    void webSocketRecoveryTimerExpired(int id);
    void restoreAfterErrorTimerExpired(int id);

    // ---- CloudAccess/RestRequest.cpp --------------------------------------------------------------------------

    struct RestAnswer {
        StatusCode statusCode = HttpClientIfc::STATUS_NONE;
        std::string responseData;
    };
    /// One logical request from its beginning, with nothing to carry over from or to others.
    bool sendRequest(const std::string& path, HttpClientIfc::HTTPMETHOD method, RestAnswer& answer,
                     const std::string& body = std::string());

    enum class Attempt { NO_CONNECTION, SEND_FAILED, READ_FAILED, ANSWERED };
    /// What one attempt leaves behind for the decision on a follow-up.
    struct FollowUp {
        std::string location;
        int retryAfterSeconds = 0;
    };
    Attempt exchange(const std::string& path, const std::string& body, HttpClientIfc::HTTPMETHOD method,
                     std::string& responseData, Headers& requestHeaders, Headers& responseHeaders,
                     StatusCode& statusCode, const std::string& redirectionUrl, FollowUp& followUp);
    bool establishConnection(const std::string& url);
    HttpClientIfc::eResult readAnswer(HttpClientIfc& client, std::string& responseData, Headers& responseHeaders,
                                      StatusCode& statusCode);

    // ---- CloudAccess/Login.cpp --------------------------------------------------------------------------------

    int tokenRenewalDelayMilliseconds() const;

    // ---- EventChannel/MessageEnvelope.cpp ---------------------------------------------------------------------

    void storeSessionContext(json_t* metadata);
    /// A new message id, entered among those that wait for an answer.
    bool storeNewMessageId(std::string& messageId);

    // ---- EventChannel/Session.cpp -----------------------------------------------------------------------------

    /// What "ConnectionDetails" asks for.
    struct SessionStart {
        bool flushBuffer;
        bool subscribeAnew;
    };
    void startSessionTimers(int idleTimeoutSeconds);
    SessionStart decideSessionStart(json_t* data);

    // ---- EventChannel/EventSubscription.cpp -------------------------------------------------------------------

    enum class SubscriptionRequest { CREATE, UPDATE };
    /// Whose reply is awaited on the channel; CHANGE is a create, an update or a cancel.
    enum class RequestInFlight : int { NONE = 0, CHANGE = 1, RENEWAL = 2 };
    /// The "eventFilters" array, whose filters are stored as subscribed.
    OrvaneJson::Value buildEventFilters(SubscriptionRequest request);
    bool addEventFilter(json_t* filters, const std::string& filter, const std::string& extensionId);
    /// `failureMessage` is logged when the frame cannot be built, as it is without a body.
    bool sendClientRequest(const std::string& messageId, OrvaneServiceHelper::METHOD method, const std::string& path,
                           OrvaneJson::Value body, RequestInFlight requestInFlight, const char* failureMessage);

    // ---- EventChannel/SubscriptionReply.cpp -------------------------------------------------------------------

    struct SubscriptionReply {
        std::string id;
        std::string creationTime;
        std::string status;
        json_t* eventFilters = nullptr; ///< borrowed
        std::string expirationTime;
        int expiresInSeconds = 0;
        json_t* disabledFilters = nullptr; ///< borrowed, null when there are none
    };
    static bool readSubscriptionReply(json_t* data, SubscriptionReply& reply);
    void takeConfirmedEvents(const SubscriptionReply& reply);
    void takeDisabledFilters(json_t* disabledFilters, OrvaneEventList& dropped);
    void renewSubscriptionTimer(const SubscriptionReply& reply);

    // ---- EventChannel/ServerNotification.cpp ------------------------------------------------------------------

    void handlePresenceEvent(json_t* body);
    void handleMessageStoreEvent(json_t* data, json_t* body);
    void handleDndEvent(json_t* data, json_t* body);
    void handleOwnDndEvent(const std::string& extensionId, const std::string& dndStatusText);
    void handleColleagueDndEvent(const std::string& extensionId, const std::string& dndStatusText);

    // ---- CallData/CallLogMerge.cpp ----------------------------------------------------------------------------

    // Shared with the merge of shared lines; `operation` begins the log line.
    void confirmViewedMissedCalls(const char* operation, const IdSet& missedIds, const RecordMap& map);
    void forgetPendingSession(const char* operation, const std::string& telephonySessionId);
    /// Writes the first qualifying number of a response; `open` is cleared by it.
    void storeLastDialledNumber(const std::string& callType, const std::string& number, bool deleted, bool& open);
    void mergeCallRecord(const std::string& id, const std::string& record, bool deleted, Records& callRecordsVector);
    void mergeCallLogRecords(json_t* root, Records& callRecordsVector);
    void storeCallLogSyncToken(json_t* root);

    // ---- CallData/ViewedMissedCalls.cpp -----------------------------------------------------------------------

    /// The caller holds m_callLogSem.
    void saveViewedMissedCallIds();

    // ---- CallData/SharedLineDiscovery.cpp ---------------------------------------------------------------------

    bool mergeBcaLines(std::map<std::string, BcaLineType>& newBcaLineMap, std::vector<BcaLineType>& removedLines,
                       std::vector<std::string>& newLineIds);
    static void readGrantedLine(json_t* record, std::map<std::string, BcaLineType>& newBcaLineMap);

    // ---- CallData/SharedLineCallLog.cpp -----------------------------------------------------------------------

    bool takeNextReadyBcaLine(std::optional<std::string>& lastExtensionId, BcaLineType& line, std::string& path);
    std::string prepareBcaCallLogRequest(BcaLineType& line);
    void downloadBcaCallLog(const std::string& path, BcaLineType& line, Records& callRecordsVector);
    bool isCallLogSyncTokenEmpty();

    // ---- CallData/SharedLineMerge.cpp -------------------------------------------------------------------------

    void mergeBcaCallLogRecords(json_t* root, BcaLineType& line, Records& callRecordsVector);
    static void mergeBcaCallRecord(const std::string& id, const std::string& record, bool deleted, RecordMap& map,
                                   Records& callRecordsVector);

    // ---- Directory/ContactWriteBack.cpp -----------------------------------------------------------------------

    void publishContactAnswer(RestAnswer& answer);

    // ---- Directory/VoicemailReader.cpp ------------------------------------------------------------------------

    static bool readNewestVoicemail(json_t* record, OrvaneServiceTypes::Voicemail& voicemail, std::string& name,
                                    std::string& phoneNumber);

    // ---- Directory/Phonebook.cpp ------------------------------------------------------------------------------

    void downloadPhonebookPages(std::string url, Records& records, bool& publishData);
    bool isPhonebookFull() const;
    bool storePhonebookSyncToken(json_t* root, int& nextPageId, bool& anotherPage);

    // ---- Presence/FunctionKeyPresence.cpp ---------------------------------------------------------------------

    bool storeColleagueDndStatus(json_t* root, std::string& extensionId, bool& dndActive);

    // ---- Presence/FunctionKeyConfiguration.cpp ----------------------------------------------------------------

    void functionKeyChanged(const std::string& id, const std::string& value);
    void watchedKeyChanged(const std::string& index, const std::string& value, const std::string& extensionId);
    void unwatchedKeyChanged(const std::string& index, const std::string& value, const FpkPresenceDataType& record);

    // ---- Presence/DndSync.cpp ---------------------------------------------------------------------------------

    void forgetDndStatus();

    // ---- Members ----------------------------------------------------------------------------------------------

    // Framework links; the raw pointers are not owned.
    Context* m_pSvcRTEContext = nullptr;
    std::unique_ptr<ServiceDataManagerIfc> m_pDataManager;
    std::unique_ptr<ThreaderIfc> m_pThreader;
    LocalMgmtIfc* m_pLocalMgmt = nullptr;
    SecurityLogServiceIfc* m_pSecurityLogService = nullptr;
    CertificateMgmtSvcIfc* m_pCertificateMgmtService = nullptr;
    JournalServiceIfc* m_pJournalService = nullptr;
    CommunicationsServiceIfc* m_pCommunicationsService = nullptr;
    TeamServiceIfc* m_pTeamService = nullptr;
    std::unique_ptr<SecureConnectionEstablisher> m_secureConnEstablisher;

    std::vector<OrvaneServiceObserverIfc*> m_observers;

    // The semaphores stand before the worker threads, whose Threaders wait for their threads when they go.
    Semaphore m_callLogSem{1, 1, true};             ///< m_viewedMissedCallIds, m_oldViewedMissedCallIds
    Semaphore m_connectionSem{1, 1, false};         ///< m_secureConnEstablisher and the HTTP exchange
    Semaphore m_uuidMessagesSem{1, 1, false};       ///< m_uuidMessages
    Semaphore m_subscriptionIdSem{1, 1, false};     ///< m_subscriptionId
    Semaphore m_telephonySessionsSem{1, 1, false};  ///< m_pendingTelephonySessions
    Semaphore m_recoverWebSocketSem{1, 1, false};   ///< the two WebSocket recovery flags
    Semaphore m_webSocketStateSem{1, 1, false};     ///< m_webSocketState
    Semaphore m_callLogSyncTokenSem{1, 1, false};   ///< m_callLogSyncToken, m_callLogFullSyncPending
    Semaphore m_callLogResponseSem{1, 1, true};     ///< the merge of a call log response into m_callLogMap
    Semaphore m_phonebookSyncTokenSem{1, 1, false}; ///< m_phonebookSyncToken, m_phonebookFullSyncPending
    Semaphore m_phonebookResponseSem{1, 1, true};   ///< the record loop of handlePhonebookResponse
    Semaphore m_dndSem{1, 1, true};                 ///< m_sync_dnd, m_serverDndStatus and their former values
    Semaphore m_fpkPresenceMapSem{1, 1, true};      ///< m_fpkPresenceMap
    Semaphore m_observersSem{1, 1, true};           ///< m_observers
    Semaphore m_bcaLineListSem{1, 1, true};         ///< m_bcaLineList, writing of m_voicemailSummary

    WorkerThread m_refreshCallLogThread;
    WorkerThread m_refreshPhonebookThread;
    WorkerThread m_refreshVoicemailThread;
    WorkerThread m_asyncLoginThread;
    WorkerThread m_syncDndThread;
    WorkerThread m_recoverWebSocketThread;

    // A foreground synchronisation of that kind is under way: the refresh operations back off.
    bool m_callLogSyncActive = false;
    bool m_phonebookSyncActive = false;
    bool m_callLogFullSyncPending = false;
    bool m_phonebookFullSyncPending = false;

    bool m_recoverWebSocketConnection = false;
    bool m_recoverWebSocketConnectionWaitForLanInterfaceUp = false;

    // Timer ids, 0 when there is none.
    int m_tokenTimer = 0;
    int m_restartTimer = 0;
    int m_refreshCallLogTimer = 0;
    int m_refreshCallLogEventTimer = 0;
    int m_reloadAllDataTimer = 0;
    int m_refreshSubscriptionTimer = 0;
    int m_webSocketRecoveryTimer = 0;
    int m_webSocketIdleTimer = 0;
    int m_webSocketHeartbeatTimer = 0;
    int m_webSocketRestoreAfterErrorTimer = 0;

    // Mirrors of configuration items.
    std::string m_server;
    std::string m_server_old;
    int m_sync_interval = 60; ///< seconds
    int m_sync_interval_old = 60;
    bool m_sync_dnd = false;
    bool m_sync_dnd_old = false;
    bool m_sync_callLog = false;
    bool m_sync_callLog_old = false;
    bool m_sync_phonebook = false;
    bool m_sync_phonebook_old = false;
    bool m_bcaAllowed = false;

    std::string m_accessToken;
    int m_expiresIn = 0; ///< seconds
    long long m_userId = 0;
    long long m_userId_old = 0;
    std::string m_szUserId;
    std::string m_apiPath; ///< "/", model, "/", MAC address: the prefix of every REST path

    OrvaneServiceTypes::DndStatusType m_serverDndStatus = OrvaneServiceTypes::DND_UNKNOWN;
    OrvaneServiceTypes::DndStatusType m_serverDndStatusOld = OrvaneServiceTypes::DND_UNKNOWN;
    std::map<std::string, FpkPresenceDataType> m_fpkPresenceMap; ///< by extension id

    bool m_interface_status = false; ///< the network interface is "up"
    bool m_ov_server_type = false;   ///< the server type is "7"
    ServiceState m_state = INITIALIZED;

    std::string m_viewed_missed_call_ids; ///< serial form, as last read or written
    IdSet m_viewedMissedCallIds;
    IdSet m_oldViewedMissedCallIds; ///< viewed ids that no response of a full synchronisation has confirmed yet
    bool m_syncViewedMissedCallIds = false;
    bool m_needToSaveViewedMissedCallIds = false;
    std::string m_callLogSyncToken; ///< empty: the next synchronisation is a full one
    std::string m_phonebookSyncToken;
    RecordMap m_callLogMap;
    RecordMap m_phonebookMap;
    std::map<std::string, BcaLineType> m_bcaLineList; ///< by extension id
    IdSet m_pendingTelephonySessions;                 ///< ended calls whose record has not arrived yet

    OrvaneServiceTypes::Voicemail m_voicemailSummary;
    int m_voicemailCount = 0; ///< -1: messages wait, their number is unknown

    std::string m_webSocketAccessToken;
    std::string m_webSocketUri;
    int m_webSocketExpiresIn = 0; ///< seconds
    IdSet m_uuidMessages;         ///< messages sent and not answered yet
    WebSocketState m_webSocketState = WS_STATE_CLOSED;
    bool m_webSocketEnabled = false;
    bool m_webSocketConnectionEstablished = false;
    int m_webSocketSequence = 0;
    std::string m_webSocketWsc;
    int m_recoveryTimeout = 0; ///< seconds
    int m_recoveryBufferSize = 0;
    int m_idleTimeout = 0; ///< seconds
    std::deque<std::string> m_recoveryBuffer;
    bool m_heartbeatPending = false;

    RequestInFlight m_subscriptionRequestInFlight = RequestInFlight::NONE;
    std::string m_subscriptionOvEventsCreationTime;
    std::string m_subscriptionId;
    std::string m_subscriptionOvStatus;
    int m_subscriptionExpiresIn = -1; ///< seconds
    bool m_receiveOvEventEnable = false;
    int m_restoreAfterErrorRetries = 3;
    OrvaneEventList m_ovEvents;

    std::string m_imagesPath = "/data/images/";
    std::string m_volatileStoragePath;
};

/// The framework's way in: makes the service with its data manager and threader. The caller owns the result.
extern "C" __attribute__((visibility("default"))) Service* createOrvaneService();
