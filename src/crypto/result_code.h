// The toolkit's numeric results. The numbers are fixed; hosts of the toolkit compare them.
#pragma once

namespace kest {

enum ResultCode : int {
  resultSuccess = 0,
  resultAlgorithmAlreadySet = 512,
  resultNotInitialised = 514,          // update or final before initialisation
  resultAlgorithmNotSet = 515,         // an operation on an algorithm object without a descriptor
  resultAlgorithmObjectInvalid = 516,  // the algorithm object fails its self-check
  resultOperationInvalid = 517,        // not an operation of the algorithm set, or of a key object in that state
  resultNoMemory = 518,
  resultBadData = 524,           // bad padding or bad input
  resultBadLength = 525,         // the input is not a whole block or group
  resultKeyObjectInvalid = 530,  // the key object fails its self-check
  resultKeyInfoFailed = 531,     // the key-info function itself failed
  resultModulusLength = 533,
  resultItemMissing = 535,  // the object does not hold what was asked for
  resultOutputTooSmall = 536,
  resultLengthOver32767 = 537,  // key data longer than that; never said of an update
  resultRandomNotInitialised = 538,
  resultRandomObjectInvalid = 539,
  resultBadParameters = 541,  // refused by the algorithm's descriptor
  resultBadKeyData = 542,     // refused by the key's descriptor: wrong encoding or algorithm identifier
  resultNoMethod = 545,       // nothing in the chooser fits the algorithm, the direction and the key
};

// What the methods answer among themselves. The numbers matter as the entries of the table behind ToResultCode only.
enum MethodResult : int {
  methodSuccess = 0,
  methodBadData = 5,
  methodBadLength = 6,
  methodModulusLength = 7,
  methodOutputTooSmall = 10,
  methodNoMemory = 128,
};

// Maps a method's result to the toolkit's by a fixed table.
ResultCode ToResultCode(int methodResult);

}  // namespace kest
