// What the ledger tells of its past: the last sales and refusals, for those who watch the server.
#include "ledger.h"

namespace sandbox {

std::vector<RecordedSale> Ledger::LastSales(std::size_t most, std::size_t mostLines) {
  std::vector<RecordedSale> list;
  Statement find(database,
                 "SELECT number, time, merchant, card, totalCents, taxCents, "
                 "(SELECT count(*) FROM saleLines WHERE sale = number) FROM sales ORDER BY number DESC LIMIT ?");
  find.Bind(static_cast<std::int64_t>(most));
  while (find.Step()) {
    RecordedSale one;
    one.sale.number = find.Integer(0);
    one.time = find.Text(1);
    one.sale.merchant = find.Text(2);
    one.sale.card = find.Text(3);
    one.sale.total = find.Integer(4);
    one.sale.tax = find.Integer(5);
    one.lines = find.Integer(6);
    Statement lines(database, "SELECT sku, name, price, quantity FROM saleLines WHERE sale = ? ORDER BY line LIMIT ?");
    lines.Bind(one.sale.number).Bind(static_cast<std::int64_t>(mostLines));
    while (lines.Step()) {
      one.sale.products.push_back({lines.Text(0), lines.Text(1), lines.Text(2), lines.Integer(3)});
    }
    list.push_back(std::move(one));
  }
  return list;
}

std::vector<RecordedRefusal> Ledger::LastRefusals(std::size_t most) {
  std::vector<RecordedRefusal> list;
  Statement find(database, "SELECT time, code, card, cents FROM refusals ORDER BY number DESC LIMIT ?");
  find.Bind(static_cast<std::int64_t>(most));
  while (find.Step()) list.push_back({find.Text(0), find.Integer(1), find.Text(2), find.Integer(3)});
  return list;
}

}  // namespace sandbox
