#include "remote_list.h"

#include <commctrl.h>

#include <stdexcept>

namespace storefront_test {
namespace {

constexpr int mostCharacters = 256;

// What a message needs and brings, in the other process.
struct Exchange {
  LVITEMW item;
  RECT area;
  wchar_t text[mostCharacters];
};

class RemoteExchange {
 public:
  explicit RemoteExchange(HANDLE theProcess)
      : process(theProcess),
        address(static_cast<Exchange*>(
            VirtualAllocEx(theProcess, nullptr, sizeof(Exchange), MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE))) {
    if (address == nullptr) throw std::runtime_error("the storefront gives no memory");
  }
  ~RemoteExchange() { VirtualFreeEx(process, address, 0, MEM_RELEASE); }
  RemoteExchange(const RemoteExchange&) = delete;
  RemoteExchange& operator=(const RemoteExchange&) = delete;

  void Write(const Exchange& exchange) {
    const BOOL isWritten = WriteProcessMemory(process, address, &exchange, sizeof exchange, nullptr);
    if (!isWritten) throw std::runtime_error("the storefront's memory cannot be written");
  }
  Exchange Read() const {
    Exchange exchange{};
    const BOOL isRead = ReadProcessMemory(process, address, &exchange, sizeof exchange, nullptr);
    if (!isRead) throw std::runtime_error("the storefront's memory cannot be read");
    return exchange;
  }
  // Where the other process sees the exchange.
  Exchange* Address() const { return address; }

 private:
  HANDLE process;
  Exchange* address;
};

std::wstring ReadCell(RemoteExchange& remote, HWND list, int row, int column) {
  Exchange exchange{};
  exchange.item.iSubItem = column;
  exchange.item.pszText = remote.Address()->text;
  exchange.item.cchTextMax = mostCharacters;
  remote.Write(exchange);
  SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&remote.Address()->item));
  return remote.Read().text;
}

}  // namespace

std::vector<Row> ReadRows(HANDLE process, HWND list, int columns) {
  RemoteExchange remote(process);
  std::vector<Row> rows;
  const auto count = static_cast<int>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
  for (int row = 0; row < count; ++row) {
    rows.emplace_back();
    for (int column = 0; column < columns; ++column) rows.back().push_back(ReadCell(remote, list, row, column));
  }
  return rows;
}

POINT PlaceOfRow(HANDLE process, HWND list, int row) {
  RemoteExchange remote(process);
  Exchange exchange{};
  exchange.area.left = LVIR_LABEL;
  remote.Write(exchange);
  SendMessageW(list, LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&remote.Address()->area));
  const RECT area = remote.Read().area;
  POINT point{(area.left + area.right) / 2, (area.top + area.bottom) / 2};
  ClientToScreen(list, &point);
  return point;
}

int ChosenRow(HWND list) {
  return static_cast<int>(SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED));
}

}  // namespace storefront_test
