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

// `text` with stars in `number` wherever its digits stand, blanks and dashes between them or not. A number shorter than
// eight digits is none to hide.
std::string HideNumber(const std::string& text, const std::string& number);

// Masks the field "KEST-CCard-Number", `number` in every name and value, and, as HideCards does, whatever else is as long
// as a card number; of this the values of KEST-TxN, of amounts, SKU and Quantity are left out.
void HideCard(Fields& fields, const std::string& number);

// A text in which whatever is as long as a card number, blanks and dashes between its digits or not, has stars. A GUID
// with a letter stays.
std::string HideCards(const std::string& text);

// "Visa" for 4: the card-type code of a receipt in words.
std::string CardTypeName(const std::string& code);

}  // namespace kest_host
