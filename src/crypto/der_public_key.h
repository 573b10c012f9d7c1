// Reads an RSA public key from its DER form (SubjectPublicKeyInfo, RFC 5280 section 4.1; RSAPublicKey, RFC 8017
// appendix A.1.1). Any thread may call it.
#pragma once

#include "crypto/key_object.h"
#include "crypto/result_code.h"

namespace kest {

// Finds modulus and public exponent in `der` and gives them without leading zero bytes; they stay bytes of `der`. The
// algorithm identifier must be rsaEncryption (1.2.840.113549.1.1.1) or the X.500 RSA identifier (2.5.8.1.1), with NULL
// or no parameters. Every element must fill what encloses it, in DER's shortest form of lengths. 542, and `*key`
// untouched, for anything else.
ResultCode ReadDerPublicKey(const ByteItem& der, RsaPublicKey* key);

}  // namespace kest
