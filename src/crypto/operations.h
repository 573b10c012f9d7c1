// The operation tables of the methods that are built, each defined beside its algorithm. Constant data.
#pragma once

#include "crypto/algorithm_method.h"

namespace kest {

extern const AlgorithmOperations md5Operations;
extern const AlgorithmOperations sha1Operations;
extern const AlgorithmOperations md5RandomOperations;
extern const AlgorithmOperations rc5CbcPadEncipherOperations;
extern const AlgorithmOperations rc5CbcPadDecipherOperations;
extern const AlgorithmOperations base64EncodeOperations;
extern const AlgorithmOperations base64DecodeOperations;
extern const AlgorithmOperations rsaPublicOperations;

}  // namespace kest
