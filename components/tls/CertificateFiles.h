#pragma once

#include "Context.h"

#include <openssl/evp.h>
#include <openssl/x509.h>
#include <vector>

namespace vx::components {

using Certificate = std::unique_ptr<X509, Releaser<X509_free>>;
using Key = std::unique_ptr<EVP_PKEY, Releaser<EVP_PKEY_free>>;

// Files in PEM form. A failure is a ResultException that names the file.

/// All certificates of the file; at least one.
std::vector<Certificate> readCertificates(const String& path);
/// The first private key of the file, which has no passphrase.
Key readKey(const String& path);

} // namespace vx::components
