#pragma once

/// Numbering of the certificate sets that the telephone keeps, one for each kind of client.
class CertificateMgmt {
public:
    enum eInterface : int { ORVANE_SERVICE_CLIENT = 44 };
};
