#pragma once

#include "../FailureText.h"

#include <vx/String.h>

#include <openssl/ssl.h>

namespace vx::components {

/// The reason of the last failed call of OpenSSL on this thread. Clears its queue of errors.
String takeOpenSslReason();
/// As above, for a call on `ssl`, in the words of a user. A refused certificate is not named.
String takeReasonOf(const SSL* ssl);

} // namespace vx::components
