// A certificate for "localhost" that signs itself, so that no authority vouches for it.
#pragma once

#include <windows.h>

#include <wincrypt.h>

#include <memory>
#include <string>

namespace quill::test {

struct certificate_closer
{
    void operator()(PCCERT_CONTEXT certificate) const noexcept { CertFreeCertificateContext(certificate); }
};
using unique_certificate = std::unique_ptr<const CERT_CONTEXT, certificate_closer>;

// The private key is in a key container of the user, because SChannel takes no other keys. The destructor
// deletes the container; one that a terminated process has left is replaced.
class untrusted_certificate
{
public:
    untrusted_certificate();
    ~untrusted_certificate();
    untrusted_certificate(const untrusted_certificate&) = delete;
    untrusted_certificate& operator=(const untrusted_certificate&) = delete;

    // Null if the system could not make one; error() says why.
    PCCERT_CONTEXT get() const { return certificate_.get(); }
    const std::string& error() const { return error_; }

private:
    bool make_key();
    bool make_certificate();

    unique_certificate certificate_;
    std::string error_;
};

} // namespace quill::test
