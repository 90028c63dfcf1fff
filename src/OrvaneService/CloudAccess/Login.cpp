#include "OrvaneService/OrvaneService.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneService/ServiceCore/Duration.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"
#include "framework/Context.h"
#include "threads/CriticalSection.h"
#include "utilities/ClientUtils.h"

#include <cstdlib>

using namespace OrvaneServiceStrings;

bool OrvaneService::getToken() {
    ORVANE_LOG(STATUS, "getToken()");
    if (isAnyConfigItemEmpty()) {
        ORVANE_LOG(ERROR, "getToken() missing data. m_server[%s]", m_server.c_str());
        m_state = DECONFIGURED;
        return false;
    }
    m_accessToken.clear();
    m_tokenTimer = stopAndDeleteTimer(m_tokenTimer);

    RestAnswer answer;
    const bool obtained = sendRequest(m_apiPath + OV_GET_TOKEN_PATH, HttpClientIfc::HTTP_GET, answer) &&
                          handleTokenResponse(answer.statusCode, answer.responseData);
    int delayMilliseconds = 0;
    if (obtained) {
        m_state = CONNECTED;
        delayMilliseconds = tokenRenewalDelayMilliseconds();
    } else {
        ORVANE_LOG(ERROR, "getToken() failed");
        m_state = STOP;
        {
            CriticalSection connection(m_connectionSem);
            clearSecureConnection(true);
        }
        fireOrvaneEvent(OrvaneServiceTypes::EVENT_TOKEN_FAILED);
        // One to five minutes, so that the telephones of a site do not come back all at once.
        delayMilliseconds = 60000 + rand() % 240001;
    }
    ORVANE_LOG(DEBUG, "getToken() retVal[%s] delay[%d]", OrvaneLog::text(obtained), delayMilliseconds);
    m_tokenTimer = m_pSvcRTEContext->createTimer(this, delayMilliseconds);
    m_pSvcRTEContext->startTimer(m_tokenTimer);
    return obtained;
}

/// Drawn between 90% and 100% of the token's validity, both ends included.
int OrvaneService::tokenRenewalDelayMilliseconds() const {
    const auto low = static_cast<long long>(m_expiresIn * 900.0);
    return OrvaneDuration::clampToMilliseconds(low + rand() % (m_expiresIn * 1000LL - low + 1));
}

bool OrvaneService::handleTokenResponse(StatusCode status, std::string& responseData) {
    const OrvaneJson::Value tree = OrvaneJson::parseAnswer("handleTokenResponse", status, responseData);
    if (!tree) {
        return false;
    }
    json_t* root = tree.get();
    if (!json_is_object(root)) {
        ORVANE_LOG(ERROR, "handleTokenResponse() not an object");
        return false;
    }
    if (!OrvaneServiceHelper::getStringFromJson(root, m_accessToken, OV_ACCESS_TOKEN) ||
        !OrvaneServiceHelper::getIntegerFromJson(root, m_expiresIn, OV_EXPIRES_IN)) {
        ORVANE_LOG(ERROR, "handleTokenResponse() not a valid response\n%s", responseData.c_str());
        return false;
    }
    ORVANE_LOG(DEBUG, "handleTokenResponse() m_accessToken[%s] m_expiresIn[%d]", m_accessToken.c_str(), m_expiresIn);
    return true;
}

void OrvaneService::getExtension() {
    ORVANE_LOG(STATUS, "getExtension()");
    if (!isRunning()) {
        return;
    }
    RestAnswer answer;
    if (sendRequest(m_apiPath + OV_GET_EXTENSION_PATH, HttpClientIfc::HTTP_GET, answer)) {
        handleExtensionResponse(answer.statusCode, answer.responseData);
    }
}

void OrvaneService::handleExtensionResponse(StatusCode status, std::string& responseData) {
    const OrvaneJson::Value tree = OrvaneJson::parseAnswer("handleExtensionResponse", status, responseData);
    if (!tree) {
        return;
    }
    json_t* root = tree.get();
    m_userId_old = m_userId;
    OrvaneServiceHelper::getLongLongIntegerFromJson(root, m_userId, OV_ID);
    m_szUserId = ClientUtils::int64tos(m_userId);
    ORVANE_LOG(DEBUG, "handleExtensionResponse() m_userId_old[%lld] m_userId[%lld][%s]", m_userId_old, m_userId,
               m_szUserId.c_str());
}

bool OrvaneService::hasUserChanged() {
    getToken();
    getExtension();
    const bool changed = m_userId != m_userId_old;
    ORVANE_LOG(DEBUG, "hasUserChanged() retVal[%s]", OrvaneLog::text(changed));
    return changed;
}

void OrvaneService::reloadAllDataIfUserChanged() {
    ORVANE_LOG(STATUS, "reloadAllDataIfUserChanged()");
    if (!isRunning() || !hasUserChanged()) {
        return;
    }
    ORVANE_LOG(STATUS, "reloadAllDataIfUserChanged() user has changed, reloading data");
    stop();
    deleteAllData(true);
    start();
}
