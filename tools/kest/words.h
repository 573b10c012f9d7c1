// Words for people on stderr, apart from the data on stdout. Every line begins with "kest: ".
#pragma once

#include <string>

namespace kest_host {

// Writes lines without control characters and with stars for whatever is as long as a card number: users mistake
// options, and what they gave is repeated.
void Say(const std::string& lines);

// The same with every number as it is, for a text whose long numbers are known to be no cards.
void SayWithNumbers(const std::string& lines);

}  // namespace kest_host
