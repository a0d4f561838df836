// tests/distribution/posix/certificate_test.cpp
// Downloads over https: from a server whose certificate nobody vouches for, and from one whose certificate is trusted.
#include <gmock/gmock.h>
#include <memory>
#include <thread>

#include <curl/curl.h>
#include <fmt/format.h>
#include <httplib.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include "core/exit_reason.h"
#include "distribution/download.h"
#include "tests/support/log_capture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

namespace {

constexpr const char* host = "127.0.0.1";

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

/// A certificate for one address that vouches for itself, good for an hour.
Certificate selfSigned(EVP_PKEY* key, const std::string& address) {
    Certificate certificate(X509_new(), X509_free);
    X509_set_version(certificate.get(), 2);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -3600);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 3600);
    X509_set_pubkey(certificate.get(), key);
    X509_NAME* const name = X509_get_subject_name(certificate.get());
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("test"), -1, -1, 0);
    X509_set_issuer_name(certificate.get(), name);
    X509_EXTENSION* const addresses =
        X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, ("IP:" + address).c_str());
    X509_add_ext(certificate.get(), addresses, -1);
    X509_EXTENSION_free(addresses);
    X509_sign(certificate.get(), key, EVP_sha256());
    return certificate;
}

void writeCertificate(const fs::path& path, X509* certificate) {
    const std::unique_ptr<BIO, decltype(&BIO_free)> memory(BIO_new(BIO_s_mem()), BIO_free);
    PEM_write_bio_X509(memory.get(), certificate);
    char* text = nullptr;
    const long length = BIO_get_mem_data(memory.get(), &text);
    writeFile(path, std::string_view(text, static_cast<std::size_t>(length)));
}

/// Answers "/a" over https, with a certificate for the address that it is given.
class SecureServer {
public:
    explicit SecureServer(const std::string& certifiedAddress)
        : certificate_(selfSigned(key_.get(), certifiedAddress)), server_(certificate_.get(), key_.get()) {
        writeCertificate("certificate.pem", certificate_.get());
        server_.set_keep_alive_max_count(1);
        server_.Get("/a",
                    [](const httplib::Request&, httplib::Response& response) { response.set_content("new", "a/b"); });
        port_ = server_.bind_to_any_port(host);
        thread_ = std::thread([this] { server_.listen_after_bind(); });
        while (!server_.is_running()) {
            std::this_thread::yield();
        }
    }
    ~SecureServer() {
        server_.stop();
        thread_.join();
    }
    SecureServer(const SecureServer&) = delete;
    SecureServer& operator=(const SecureServer&) = delete;

    std::string url() const { return fmt::format("https://{}:{}/a", host, port_); }

private:
    Key key_{EVP_EC_gen("P-256"), EVP_PKEY_free};
    Certificate certificate_;
    httplib::SSLServer server_;
    int port_ = 0;
    std::thread thread_;
};

class SecureDownload : public testing::Test {
protected:
    SecureDownload() {
        gf_resetExitReason();
        writeFile("a", "former");
    }

    bool fetch(const SecureServer& server) {
        return lf_downloadTo(handle.get(), server.url(), "a", DownloadMode::binary);
    }
    /// From here on the handle trusts the server's certificate, if it is for the server's address.
    void trustCertificate() { curl_easy_setopt(handle.get(), CURLOPT_CAINFO, "certificate.pem"); }

    LogCapture log;
    DownloadHandle handle = gf_newDownloadHandle();
};

} // namespace

TEST_F(SecureDownload, fromAServerWithATrustedCertificateSucceeds) {
    const SecureServer server(host);
    trustCertificate();
    EXPECT_TRUE(fetch(server));
    EXPECT_EQ(readFile("a"), "new");
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SecureDownload, fromAServerWhoseCertificateNobodyVouchesForKeepsTheFormerFile) {
    const SecureServer server(host);
    EXPECT_FALSE(fetch(server));
    EXPECT_EQ(readFile("a"), "former");
    EXPECT_THAT(log.lines(),
                ElementsAre(HasSubstr("Download error: 'SSL peer certificate or SSH remote key was not OK'")));
}

TEST_F(SecureDownload, fromAServerWithTheCertificateOfAnotherKeepsTheFormerFile) {
    const SecureServer server("127.0.0.2");
    trustCertificate();
    EXPECT_FALSE(fetch(server));
    EXPECT_EQ(readFile("a"), "former");
    EXPECT_THAT(log.lines(),
                ElementsAre(HasSubstr("Download error: 'SSL peer certificate or SSH remote key was not OK'")));
}
