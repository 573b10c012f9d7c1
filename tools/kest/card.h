// Card numbers: read so that they need not stand in a process list, shown so that they stand in no output.
#pragma once

#include <cstdint>
#include <string>

#include "fields.h"

namespace kest_host {

// The digits of the card that an option's value names: the number itself, "-" for the first line of stdin, "@FILE" for
// the first line of a file. Blanks and dashes between the digits are dropped. Throws UsageError for a value, and
// std::runtime_error for a line, that is no number; the message never holds it.
std::string ReadCard(const std::string& value);

// Stars for every digit but the first two and the last four; for all of a number that is too short for a card. What is no
// digit stays, and so does what is masked already: a text of six digits at the most.
std::string MaskCard(const std::string& number);

// Masks the field "KEST-CCard-Number", and `number`, when it is one to hide, wherever else it stands in a value.
void HideCard(Fields& fields, const std::string& number);

// A text for people in which whatever is as long as a card number has stars.
std::string HideCards(const std::string& text);

// "Visa" for 4: the card-type code of a receipt in words.
std::string CardTypeName(const std::string& code);

}  // namespace kest_host
