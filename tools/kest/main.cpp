// kest: a host on the command line, for developers and scripts.
#include <CLI/CLI.hpp>
#include <functional>
#include <sstream>

#include "bill.h"
#include "buy.h"
#include "doctor.h"
#include "exit_codes.h"
#include "fields.h"
#include "products.h"
#include "receipt.h"
#include "standard_streams.h"
#include "tables.h"
#include "words.h"

namespace {

using kest_host::SaleOptions;
using kest_host::ServerOptions;

// Every command's options, filled by the parser.
struct Options {
  kest_host::ProductsOptions products;
  kest_host::BuyOptions buy;
  kest_host::BillOptions bill;
  kest_host::ReceiptOptions receipt;
  kest_host::DoctorOptions doctor;
  bool cardsJson = false;
  std::string errorCode;
  bool errorsJson = false;
};

void AddLibrary(CLI::App& command, std::string& library, std::string& guid) {
  command.add_option("--library", library, "The library to load instead of the one beside the program");
  command.add_option("--guid", guid, "GUID of the application");
}

void AddJson(CLI::App& command, bool& json) {
  command.add_flag("--json", json, "Print JSON instead of text");
}

void AddVersionId(CLI::App& command, std::string& versionId) {
  command.add_option("--version-id", versionId, "Version of the application that asks");
}

// The parser would read a leading zero as the sign of an octal number.
CLI::Validator DecimalPort() {
  const auto check = [](std::string& text) -> std::string {
    std::uint64_t port;
    if (!kest_host::ParseNumber(text, UINT16_MAX, port)) return "a port is a decimal number from 0 to 65535";
    text = std::to_string(port);
    return {};
  };
  return CLI::Validator(check, "");
}

void AddServer(CLI::App& command, ServerOptions& options, bool required) {
  command.add_option("--server", options.server, "Commerce server: host name or dotted address")->required(required);
  command.add_option("--port", options.port, "Its TCP port")->capture_default_str()->transform(DecimalPort());
  command.add_option("--key", options.keyFile, "File with the server's public key text")->required(required);
  command.add_option("--proxy", options.proxy, "HTTP proxy: HOST or HOST:PORT");
  AddLibrary(command, options.library, options.guid);
}

void AddSale(CLI::App& command, SaleOptions& options) {
  AddServer(command, options.server, true);
  command.add_option("--field", options.fields, "A further field of the checkout, NAME=VALUE; may be repeated")
      ->allow_extra_args(false);
  AddJson(command, options.json);
}

// Adds a command whose action runs when it was the one that was asked for.
CLI::App& AddCommand(CLI::App& app, const char* name, const char* words, std::function<int()>& chosen,
                     std::function<int()> action) {
  CLI::App* command = app.add_subcommand(name, words);
  command->callback([&chosen, action = std::move(action)] { chosen = action; });
  return *command;
}

void AddCommands(CLI::App& app, Options& options, std::function<int()>& chosen) {
  using namespace kest_host;
  CLI::App& products = AddCommand(app, "products", "Fetch the product list and show it", chosen,
                                  [&options] { return RunProducts(options.products); });
  AddServer(products, options.products.server, true);
  AddVersionId(products, options.products.versionId);
  AddJson(products, options.products.json);

  CLI::App& buy = AddCommand(app, "buy", "Charge a card for an order and show the purchase", chosen,
                             [&options] { return RunBuy(options.buy); });
  buy.add_option("order", options.buy.order, "What to buy: SKU or SKU:QUANTITY, ...")->required();
  buy.add_option("--card", options.buy.card, "Card number; - takes it from stdin, @FILE from a file")->required();
  AddSale(buy, options.buy.sale);

  CLI::App& bill = AddCommand(app, "bill", "Fetch the bill of a transaction and show it", chosen,
                              [&options] { return RunBill(options.bill); });
  bill.add_option("transaction", options.bill.transaction, "Number of the transaction, as kest buy showed it")
      ->required();
  AddSale(bill, options.bill.sale);

  CLI::App& receipt = AddCommand(app, "receipt", "Show the receipt that is stored here for an application", chosen,
                                 [&options] { return RunReceipt(options.receipt); });
  receipt.add_option("wanted", options.receipt.wanted, "GUID of the application; that of --guid unless given");
  AddLibrary(receipt, options.receipt.library, options.receipt.guid);
  AddJson(receipt, options.receipt.json);

  CLI::App& cards = AddCommand(app, "cards", "Show the cards that the sandbox knows", chosen,
                               [&options] { return RunCards(options.cardsJson); });
  AddJson(cards, options.cardsJson);

  CLI::App& errors = AddCommand(app, "errors", "Show what error codes mean", chosen,
                                [&options] { return RunErrors(options.errorCode, options.errorsJson); });
  errors.add_option("code", options.errorCode, "Only this code");
  AddJson(errors, options.errorsJson);

  CLI::App& doctor = AddCommand(app, "doctor", "Look what is wrong with the library, the key and the server", chosen,
                                [&options] { return RunDoctor(options.doctor); });
  AddServer(doctor, options.doctor.server, false);
  AddVersionId(doctor, options.doctor.versionId);
  AddJson(doctor, options.doctor.json);
}

int Run(int argc, char** argv) {
  CLI::App app("kest: talks to a commerce server through the KESTAPI library", "kest");
  app.require_subcommand(1);
  app.footer(
      "Exit codes: 0 done, 1 failed on this machine, 2 usage, 3 no valid answer from the server,\n"
      "4 refused by the server, 5 no such receipt or error code.");
  Options options;
  std::function<int()> chosen;
  AddCommands(app, options, chosen);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& request) {
    return app.exit(request);
  } catch (const CLI::ParseError& error) {
    std::ostringstream words;
    app.exit(error, words, words);
    kest_host::Say(words.str());
    return kest_host::exitUsage;
  }
  return chosen();
}

}  // namespace

int main(int argc, char** argv) {
  try {
    kest_host::PrepareStandardStreams();
    if (!kest_host::CanWriteOutput()) throw std::runtime_error("stdout cannot be written; nothing was done");
    return Run(argc, argv);
  } catch (const kest_host::UsageError& error) {
    kest_host::Say(error.what());
    return kest_host::exitUsage;
  } catch (const std::exception& error) {
    kest_host::Say(error.what());
    return kest_host::exitFailed;
  }
}
