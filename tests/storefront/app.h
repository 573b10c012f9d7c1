// A running storefront: what it shows, and a hand on its mouse and keyboard. It is ended with the object. Every look at
// the window is bounded: one that does not answer within two seconds is frozen, and that throws.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "examples/storefront/resource.h"
#include "remote_list.h"

namespace storefront_test {

class App {
 public:
  // Starts the program with a file of settings. Throws std::runtime_error when it cannot be started.
  explicit App(const std::wstring& settings);
  ~App();
  App(const App&) = delete;
  App& operator=(const App&) = delete;

  // Looks until the condition holds; false when it does not within `seconds`, or the program has ended before.
  bool WaitFor(const std::function<bool()>& condition, unsigned seconds = 20) const;
  // Waits for the main window and the keyboard's focus in it. False when neither comes.
  bool WaitForWindow();
  // Answers whether the program ended by itself within 20 seconds.
  bool WaitForEnd() const { return WaitForSingleObject(process, 20000) == WAIT_OBJECT_0; }
  DWORD ExitCode() const;

  HWND Window() const { return window; }
  HWND Part(int part) const { return GetDlgItem(window, part); }
  std::wstring Text(int part) const { return TextOf(Part(part)); }
  bool Shows(int part, const std::wstring& text) const { return Text(part).find(text) != std::wstring::npos; }
  bool IsEnabled(int part) const { return IsWindowEnabled(Part(part)) != 0; }
  int FocusedPart() const;
  std::vector<Row> Products() const { return ReadRows(process, Part(IDC_PRODUCTS), 2); }
  std::vector<Row> PastSales() const { return ReadRows(process, Part(IDC_PAST), 5); }

  void Click(int part) const;
  void ClickRow(int list, int row) const;
  // Clicks into a field and types in place of what is there.
  void Fill(int field, const std::string& text) const;

  // The question or warning that stands before the window; null when there is none.
  HWND Box() const;
  // Its words; empty when there is none.
  std::wstring BoxText() const;
  // Clicks one of its buttons (IDYES ...).
  void AnswerBox(int button) const;

 private:
  static std::wstring TextOf(HWND part);
  void ClickMiddleOf(HWND part) const;

  HANDLE process = nullptr;
  DWORD processId = 0;
  DWORD threadId = 0;
  HWND window = nullptr;
};

}  // namespace storefront_test
