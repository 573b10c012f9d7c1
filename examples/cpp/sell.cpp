// Sells one product from the command line: a whole host in C++17, linked against the library.
//
// usage: sell SKU <CARD    the card number is the first line of the input, so that it stands in no list of processes
// KEST_SERVER, KEST_PORT, KEST_KEY_FILE (a file with the server's public key) and KEST_GUID are in the environment.
// exit: 0 sold; 1 nothing was sold: this machine's fault, or no server answered; 2 usage; 3 nobody knows whether the
// card was charged; 4 the server refused, nothing was sold.
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <limits>

#include "kest_objects.h"

namespace {

enum class Outcome { sold = 0, notSold = 1, wrongUsage = 2, unknown = 3, refused = 4 };

// Why nothing was sent for charging, in words for the customer.
struct Failure {
  Outcome outcome;
  std::string words;
};

Failure UsageFailure() {
  return {Outcome::wrongUsage, "usage: sell SKU <CARD, with KEST_SERVER, KEST_PORT, KEST_KEY_FILE and KEST_GUID set"};
}

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr) throw UsageFailure();
  return value;
}

// The first line without its end; empty when there is none.
std::string FirstLine(std::istream& input) {
  std::string line;
  std::getline(input, line);
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return line;
}

// A whole number of digits alone, up to `most`: what is not understood is not sold.
std::uint32_t Number(const std::string& text, std::uint32_t most) {
  std::uint32_t number = 0;
  const char* end = text.data() + text.size();
  const auto [next, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || next != end || number > most) throw UsageFailure();
  return number;
}

// Says once for the whole process which server sells, and for which application.
void Configure() {
  const std::string server = Environment("KEST_SERVER"), port = Environment("KEST_PORT");
  const std::string guid = Environment("KEST_GUID"), keyFile = Environment("KEST_KEY_FILE");
  std::ifstream file(keyFile);
  const std::string key = FirstLine(file);
  if (key.empty() || !KestSetServer(server.c_str(), Number(port, 65535), key.c_str())) {
    throw Failure{Outcome::notSold, keyFile + " holds no public key of a server."};
  }
  KestSetApplicationGuid(guid.c_str());
}

void PrintProducts() {
  const auto list = kest::Own<kest::ProductList>(KestCreateProductList());
  if (!KestGetProductList(list.get(), "1.0")) {
    throw Failure{Outcome::notSold, "No valid answer from the server (error 102). Nothing was charged: "
                                    "check server, port and key."};
  }
  // A refusal does not make the call fail: it is a field of the list.
  const std::string error = kest::Field(list.get(), "KEST-Error");
  if (!error.empty() && error != "0") {
    throw Failure{Outcome::refused, "The server refused the product list (error " + error + "). Nothing was charged."};
  }
  while (KestFieldSet* product = KestNextProduct(list.get())) {
    std::cout << std::left << std::setw(6) << kest::Field(product, "SKU") << ' ' << std::setw(24)
              << kest::Field(product, "Name") << ' ' << kest::Field(product, "Price") << '\n';
  }
  // What cannot be written now could not be told after the sale either.
  if (!std::cout.flush()) throw Failure{Outcome::notSold, "The output cannot be written. Nothing was charged."};
}

// The codes are the server's own: these are the sandbox's.
const char* Meaning(std::int32_t code) {
  switch (code) {
    case 1403: return "the card was declined";
    case 1404: return "the card has insufficient funds";
    case 1405: return "the card has expired";
    default: return "see the server's list of errors";
  }
}

Outcome ExplainFailure(std::int32_t code) {
  if (code == KEST_ERROR_NONE) throw std::bad_alloc();
  if (code == KEST_ERROR_EXCHANGE) {
    std::cerr << "No valid answer to the sale (error 102): the card may have been charged.\n"
                 "Do not just repeat it; ask the seller first whether there is such a sale.\n";
    return Outcome::unknown;
  }
  std::cerr << "The server refused the sale (error " << code << "): " << Meaning(code) << ". Nothing was charged.\n";
  return Outcome::refused;
}

// Throws std::bad_alloc only while nothing has been sent: behind the billing nothing is allocated.
Outcome Sell(std::uint32_t sku, const std::string& card) {
  const auto checkout = kest::Own<kest::Checkout>(KestCreateCheckout());
  KestSetField(KEST_FIELDS(checkout.get()), "KEST-CCard-Number", card.c_str());
  KestAddOrderLine(checkout.get(), sku, 1);
  KestPurchase* purchase = KestBillCustomer(checkout.get());
  if (purchase == nullptr) return ExplainFailure(KestGetErrorCode(KEST_FIELDS(checkout.get())));
  std::cout << "Charged " << kest::Field(purchase, "KEST-TotalAmount") << ", of which "
            << kest::Field(purchase, "KEST-TaxAmount") << " is tax.\n"
            << "Transaction " << kest::Field(purchase, "KEST-TxN") << std::endl;
  // It is a sale, whatever becomes of the output.
  if (!std::cout) std::cerr << "Charged. Transaction " << kest::Field(purchase, "KEST-TxN") << '\n';
  return Outcome::sold;
}

Outcome Run(int count, char** arguments) {
  if (count != 2) throw UsageFailure();
  const std::uint32_t sku = Number(arguments[1], std::numeric_limits<std::uint32_t>::max());
  Configure();
  const std::string card = FirstLine(std::cin);
  if (card.empty()) throw Failure{Outcome::wrongUsage, "The first line of the input is to be a card number."};
  PrintProducts();
  return Sell(sku, card);
}

}  // namespace

int main(int count, char** arguments) {
#ifdef SIGPIPE
  // A reader that has left must not end the program in the midst of a sale.
  std::signal(SIGPIPE, SIG_IGN);
#endif
  try {
    return static_cast<int>(Run(count, arguments));
  } catch (const Failure& failure) {
    std::cerr << failure.words << '\n';
    return static_cast<int>(failure.outcome);
  } catch (const std::bad_alloc&) {
    std::cerr << "Nothing was sent and nothing charged: memory ran out.\n";
    return static_cast<int>(Outcome::notSold);
  }
}
