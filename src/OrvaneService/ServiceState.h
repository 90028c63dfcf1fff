#pragma once

/// Where the service stands between its start and its end. The numbers are known to others.
enum ServiceState : int {
    INITIALIZED = 0,
    CONFIGURED_ON_INIT = 1,
    DECONFIGURED_ON_INIT = 2,
    CONFIGURED = 3,
    CONFIGURED_MOBILITY_WAITING = 4,
    CONFIGURED_MOBILITY_READY = 5,
    CONFIGURED_ON_NETWORK_UP = 6,
    START = 7,
    CONNECTED = 8,
    DECONFIGURING = 9,
    DECONFIGURED = 10,
    STOP = 11,
    STOP_ON_MOBILITY = 12,
    STOP_ON_NETWORK_DOWN = 13,
};
