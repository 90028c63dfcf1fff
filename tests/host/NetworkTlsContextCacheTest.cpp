#include "network/TlsContextCache.h"
#include "support/TemporaryFolder.h"
#include "support/TestCertificates.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

class TlsContexts : public testing::Test {
protected:
    static void copy(const std::string& from, const std::string& to) {
        std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing);
    }
    TlsContext::Pointer contextFor(const std::string& authorities) {
        return cache.get(authorities, std::string(), std::string(), error);
    }

    TestCertificates certificates;
    TemporaryFolder folder;
    TlsContextCache cache;
    std::string error;
};

TEST_F(TlsContexts, OfTheSameFilesAreOne) {
    const TlsContext::Pointer first = contextFor(certificates.authority().certificate);

    const TlsContext::Pointer second = contextFor(certificates.authority().certificate);

    ASSERT_NE(first, nullptr) << error;
    EXPECT_EQ(first, second);
}

TEST_F(TlsContexts, OfOtherFilesAreOthers) {
    const TlsContext::Pointer trusting = contextFor(certificates.authority().certificate);

    const TlsContext::Pointer trustingNobody = contextFor(std::string());

    ASSERT_NE(trustingNobody, nullptr) << error;
    EXPECT_NE(trusting, trustingNobody);
}

TEST_F(TlsContexts, AreMadeAnewWhenAFileHasChanged) {
    const std::string authorities = folder.file("authorities.pem");
    copy(certificates.authority().certificate, authorities);
    const TlsContext::Pointer before = contextFor(authorities);
    copy(certificates.server().certificate, authorities);

    const TlsContext::Pointer after = contextFor(authorities);

    ASSERT_NE(after, nullptr) << error;
    EXPECT_NE(before, after);
}

TEST_F(TlsContexts, AreRefusedWhenAFileHasGoneAndMadeAgainWhenItIsBack) {
    const std::string authorities = folder.file("authorities.pem");
    copy(certificates.authority().certificate, authorities);
    ASSERT_NE(contextFor(authorities), nullptr);
    std::filesystem::remove(authorities);

    const TlsContext::Pointer without = contextFor(authorities);
    const std::string reason = error;
    copy(certificates.authority().certificate, authorities);

    EXPECT_EQ(without, nullptr);
    EXPECT_NE(reason.find(authorities), std::string::npos) << reason;
    EXPECT_NE(contextFor(authorities), nullptr);
}

} // namespace
