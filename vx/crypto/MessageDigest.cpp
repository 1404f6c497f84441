#include "vx/crypto/MessageDigest.h"

namespace vx::crypto {

MessageDigest::~MessageDigest() noexcept = default;

} // namespace vx::crypto
