// OpenSSL's objects, each freed by the function of its kind.
#pragma once

#include <openssl/bn.h>
#include <openssl/evp.h>

#include <memory>

namespace kest::testing {

template <auto free>
struct Freer {
  template <typename T>
  void operator()(T* object) const {
    free(object);
  }
};
using BigNum = std::unique_ptr<BIGNUM, Freer<BN_free>>;
using BigNumContext = std::unique_ptr<BN_CTX, Freer<BN_CTX_free>>;
using KeyObject = std::unique_ptr<EVP_PKEY, Freer<EVP_PKEY_free>>;

}  // namespace kest::testing
