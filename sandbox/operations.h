// What the server does for an opened request: the one place where the name of a service meets its handler. Catalogue
// and ledger are lent to it and must outlive it; it holds no state of its own. One thread at a time may run a service.
#pragma once

#include <string>
#include <string_view>

#include "catalogue.h"
#include "error_codes.h"
#include "fields.h"
#include "ledger.h"

namespace sandbox {

struct OperationResult {
  ErrorCode error;
  FieldList fields;           // "KEST-Error" first; without the fields of the sealed exchange
  std::string summary;        // for the log: no value of a request but a GUID or transaction that the server has itself
  bool serverFailed = false;  // true when the fault is the server's own, and not the request's
};

/// Makes an answer of "KEST-Error" alone; when it is not 0 its meaning is added to the summary.
OperationResult ResultOf(const ErrorCode& error, const std::string& summary);

class Operations {
 public:
  Operations(const Catalogue& products, Ledger& sales) : catalogue(products), ledger(sales) {}

  /// Tells whether there is a service of that name (byte for byte).
  static bool Offers(std::string_view service);

  /// Returns the names of all services, with commas between them.
  static std::string Names();

  /// Runs the service of that name. An unknown service, like every refusal of a service, is an answer with an error
  /// code; so is a failure of the ledger. Throws CommitError when it is unknown whether a sale was recorded: no answer
  /// would be true then.
  OperationResult Run(std::string_view service, const FieldList& request) const;

 private:
  OperationResult GetProductList(const FieldList& request) const;
  OperationResult BillCustomer(const FieldList& request) const;
  OperationResult GetBill(const FieldList& request) const;

  struct Service {
    std::string_view name;
    OperationResult (Operations::*handler)(const FieldList& request) const;
  };
  static const Service services[];

  OperationResult RunSafely(const Service& service, const FieldList& request) const;

  const Catalogue& catalogue;
  Ledger& ledger;
};

}  // namespace sandbox
