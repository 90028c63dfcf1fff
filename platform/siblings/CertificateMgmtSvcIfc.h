#pragma once

#include "network/CertificateMgmt.h"

#include <string>

/// The telephone's certificates, found under the service name "CertificateMgmtSvcIfc". Services pass it on to
/// SecureConnectionEstablisher, which alone calls it, on the thread that connects. All results are paths of PEM
/// files; an empty path means that there is none.
class CertificateMgmtSvcIfc {
public:
    virtual ~CertificateMgmtSvcIfc() = default;

    /// Authorities that a server's certificate chain must lead to.
    virtual std::string getCertificateAuthorities(CertificateMgmt::eInterface client) = 0;
    /// The client's own certificate chain, for servers that ask for one.
    virtual std::string getClientCertificate(CertificateMgmt::eInterface client) = 0;
    /// Private key of that certificate.
    virtual std::string getClientKey(CertificateMgmt::eInterface client) = 0;
};
