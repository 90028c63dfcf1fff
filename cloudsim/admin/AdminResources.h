#pragma once

#include "Cloud.h"
#include "admin/AdminRouter.h"
#include "life/LifeGenerator.h"
#include "tls/TlsProfiles.h"

namespace cloudsim {

/// What administration reaches beyond the data.
struct AdminReach {
    Cloud& cloud;
    TlsProfiles& tls;
    Server& server;
    CallPlayer& player;
    LifeGenerator& life;
};

/// The account as a whole, settings, devices, extensions, tokens.
void addAccountResources(AdminRouter& router, Cloud& cloud);
/// Calls, contacts, presence, grants.
void addRecordResources(AdminRouter& router, Cloud& cloud);
/// Requests, faults, connections, the port, TLS.
void addTrafficResources(AdminRouter& router, const AdminReach& reach);
/// Sessions, frames, channel faults.
void addChannelResources(AdminRouter& router, Cloud& cloud);
/// Events and life.
void addLifeResources(AdminRouter& router, const AdminReach& reach);

} // namespace cloudsim
