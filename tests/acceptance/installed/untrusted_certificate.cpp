#include "tests/acceptance/installed/untrusted_certificate.h"

#include "acceptance/key_container.h"

#include <array>
#include <cstdint>

namespace quill::test {
namespace {

using acceptance::key_container;
using acceptance::key_provider;

constexpr DWORD key_bits = 2048;

std::string failed(const char* function)
{
    return std::string(function) + " fails with error " + std::to_string(GetLastError());
}

} // namespace

untrusted_certificate::untrusted_certificate()
{
    acceptance::delete_key_container();
    if (make_key())
        make_certificate();
}

untrusted_certificate::~untrusted_certificate()
{
    certificate_.reset();
    acceptance::delete_key_container();
}

bool untrusted_certificate::make_key()
{
    HCRYPTPROV provider = 0;
    if (!CryptAcquireContextW(&provider, key_container, key_provider, PROV_RSA_AES, CRYPT_NEWKEYSET)) {
        error_ = failed("CryptAcquireContext");
        return false;
    }
    HCRYPTKEY key = 0;
    const bool made = CryptGenKey(provider, AT_KEYEXCHANGE, key_bits << 16, &key);
    if (made)
        CryptDestroyKey(key);
    else
        error_ = failed("CryptGenKey");
    CryptReleaseContext(provider, 0);
    return made;
}

bool untrusted_certificate::make_certificate()
{
    std::array<BYTE, 64> name{};
    CERT_NAME_BLOB subject{static_cast<DWORD>(name.size()), name.data()};
    if (!CertStrToNameW(X509_ASN_ENCODING, L"CN=localhost", CERT_X500_NAME_STR, nullptr, name.data(),
                        &subject.cbData, nullptr)) {
        error_ = failed("CertStrToName");
        return false;
    }
    std::wstring container = key_container;
    std::wstring provider = key_provider;
    CRYPT_KEY_PROV_INFO key{container.data(), provider.data(), PROV_RSA_AES, 0, 0, nullptr, AT_KEYEXCHANGE};
    char sha256[] = szOID_RSA_SHA256RSA;
    CRYPT_ALGORITHM_IDENTIFIER algorithm{sha256, {}};
    // From now on for a year: only the missing authority is wrong with it.
    certificate_.reset(
        CertCreateSelfSignCertificate(0, &subject, 0, &key, &algorithm, nullptr, nullptr, nullptr));
    if (!certificate_)
        error_ = failed("CertCreateSelfSignCertificate");
    return certificate_ != nullptr;
}

} // namespace quill::test
